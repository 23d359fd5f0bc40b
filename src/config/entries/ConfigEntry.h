// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ENTRIES_CONFIG_ENTRY_H
#define ZELCONFUTILS_ENTRIES_CONFIG_ENTRY_H

#include <cstddef>
#include <string_view>

#include "config/lines/ConfigLineList.h"
#include "config/memory/LinkedList.h"

namespace Configuration {

/// The index record of one key/value pair: views into the text of its line, without terminators.
/// A line carries one entry at most, so a text that moves voids the views of one entry alone.
struct ConfigEntry {
  char* key;
  std::size_t keyLength;
  char* value;
  std::size_t valueLength;
  ConfigLinePosition line;

  std::string_view Name() const { return {key, keyLength}; }
  std::string_view Value() const { return {value, valueLength}; }
};

/// Entries stand in the order of their lines.
using ConfigEntryList = LinkedList<ConfigEntry>;
using ConfigEntryPosition = LinkedListPosition<ConfigEntry>;

}  // namespace Configuration

#endif
