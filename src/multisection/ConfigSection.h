// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MULTISECTION_CONFIG_SECTION_H
#define ZELCONFUTILS_MULTISECTION_CONFIG_SECTION_H

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "config/entries/ConfigEntry.h"
#include "config/lines/ConfigLineList.h"
#include "config/memory/LinkedList.h"

namespace Configuration {

/// The record of one section. Its lines are those from `startLine` through `stopLine`; nothing
/// else ties the lines without an entry to it.
struct ConfigSection {
  /// The entries' nodes come from `pool`: all sections of a file share one.
  explicit ConfigSection(std::shared_ptr<ConfigEntryList::Pool> pool) : entries(std::move(pool)) {}

  char* name = nullptr;  ///< view into the name line; null when the section has no name line
  std::size_t nameLength = 0;
  ConfigEntryList entries;
  ConfigLinePosition startLine;  ///< the name line, or the token line where there is none
  ConfigLinePosition stopLine;
  ConfigEntryPosition entryCursor;

  std::string_view Name() const { return {name, nameLength}; }
};

using ConfigSectionList = LinkedList<ConfigSection>;
using ConfigSectionPosition = LinkedListPosition<ConfigSection>;

}  // namespace Configuration

#endif
