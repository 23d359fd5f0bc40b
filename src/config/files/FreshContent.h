// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_FILES_FRESH_CONTENT_H
#define ZELCONFUTILS_FILES_FRESH_CONTENT_H

#include <memory>

#include "config/entries/ConfigEntry.h"
#include "config/lines/ConfigLineList.h"
#include "config/memory/Release.h"

namespace Configuration {

/// Lines and entries that are filled beside those of a file object: these stay untouched until
/// nothing can fail any more.
struct FreshContent {
  std::unique_ptr<ConfigLineList> lines = std::make_unique<ConfigLineList>();
  std::unique_ptr<ConfigEntryList> entries = std::make_unique<ConfigEntryList>();

  /// Makes this the content of the object, its cursor on the first entry or at end.
  void SwapIn(ConfigLineList*& objectLines, ConfigEntryList*& objectEntries,
              ConfigEntryPosition& cursor) noexcept {
    lines->InheritSaveBuffer(*objectLines);
    Exchange(objectLines, lines);
    Exchange(objectEntries, entries);
    cursor = objectEntries->First();
  }
};

}  // namespace Configuration

#endif
