// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ENTRIES_ENTRY_EDIT_H
#define ZELCONFUTILS_ENTRIES_ENTRY_EDIT_H

#include <cstddef>
#include <string_view>

#include "config/entries/ConfigEntry.h"
#include "config/lines/ConfigLineList.h"

namespace Configuration {

/// What a file object lends to one call of an entry operation: the lines, one list of entries
/// with its cursor, the delete mark, the tokens and the work buffer. Owns nothing.
struct EntryScope {
  ConfigLineList& lines;
  ConfigEntryList& entries;
  ConfigEntryPosition& cursor;
  bool& afterDelete;
  std::string_view separator;
  std::string_view linePrefix;
  char* lineBuffer;
};

/// Results of the operations that set a value.
constexpr std::size_t kNothingDone = 0;
constexpr std::size_t kAlreadySo = 1;
constexpr std::size_t kWritten = 2;

/// The changes that all entry operations are made of. None moves a cursor or touches the delete
/// mark but `Erase`. A refused edit changes nothing, and neither does one that throws
/// `std::bad_alloc`.
namespace EntryEdit {

/// Writes `value` over the entry's value; tail and line end stay. `kAlreadySo` and nothing written
/// where the value is equal; `kNothingDone` when the tail is too long or the line is shared.
std::size_t SetValue(const EntryScope& scope, ConfigEntry& entry, std::string_view value);

/// Writes `newKey` over the entry's key; all other bytes stay. False when the rest of the line is
/// too long or the line is shared.
bool ReplaceKey(const EntryScope& scope, ConfigEntry& entry, std::string_view newKey);

/// Where a new entry goes: before this line, and in the index before this entry.
struct Place {
  ConfigLinePosition line;
  ConfigEntryPosition entry;
};

/// Composes a line and inserts it with its entry. The result is the new entry, or unset when the
/// line would not fit.
ConfigEntryPosition Insert(const EntryScope& scope, Place place, std::string_view key,
                           std::string_view value);

/// Erases the entry with its line, puts the cursor on the entry after it and sets the delete mark.
/// False when the line is shared.
bool Erase(const EntryScope& scope, ConfigEntryPosition entry);

}  // namespace EntryEdit

}  // namespace Configuration

#endif
