// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ENTRIES_ENTRY_EDIT_H
#define ZELCONFUTILS_ENTRIES_ENTRY_EDIT_H

#include <cstddef>
#include <string_view>

#include "config/entries/ConfigEntry.h"
#include "config/lines/ConfigLineList.h"

namespace Configuration {

/// What a file object lends to one call of an entry operation: the lines, one list of entries
/// with its cursor, the shared flag, the tokens and the work buffers. Owns nothing.
struct EntryScope {
  ConfigLineList& lines;
  ConfigEntryList& entries;
  ConfigEntryPosition& cursor;
  bool& afterDelete;
  std::string_view separator;
  std::string_view linePrefix;
  char* lineBuffer;
  char* tailBuffer;
};

/// Results of the operations that return a `size_t`.
constexpr std::size_t kNothingDone = 0;
constexpr std::size_t kAlreadySo = 1;
constexpr std::size_t kWritten = 2;
/// A buffer that is too small, or no section: 32 bits set, not the largest `size_t`.
constexpr std::size_t kTooSmall = 0xFFFFFFFF;

/// The steps that all entry operations are made of. None moves a cursor or touches the flag but
/// `Erase`. A refused edit changes nothing, and neither does one that throws `std::bad_alloc`.
namespace EntryEdit {

/// Copies `text` with a terminator, whole or not at all: its length; or `kTooSmall`, and then all
/// `size` bytes of `buffer` are 0.
std::size_t CopyOut(std::string_view text, char* buffer, std::size_t size);

/// Copies key and value, each if its buffer is not null; a buffer that is too small ends it.
/// The key's length if a key was copied that is not empty, else the value's if one was copied.
std::size_t CopyOut(const ConfigEntry& entry, char* keyBuffer, std::size_t keySize,
                    char* valueBuffer, std::size_t valueSize);

/// Copies the value of the first entry with that key. Without one: 0, and a buffer of zeros.
std::size_t CopyValueOf(ConfigEntryList& entries, std::string_view key, char* buffer,
                        std::size_t size);

/// Writes `value` over the entry's value; tail and line end stay. `kNothingDone` when the tail is
/// too long to carry over or the line is frozen.
std::size_t ReplaceValue(const EntryScope& scope, ConfigEntry& entry, std::string_view value);

/// `ReplaceValue`, but `kAlreadySo` and nothing written where the value is equal.
std::size_t SetValue(const EntryScope& scope, ConfigEntry& entry, std::string_view value);

/// Writes `newKey` over the entry's key; all other bytes stay. False when the rest of the line is
/// too long to carry over or the line is frozen.
bool ReplaceKey(const EntryScope& scope, ConfigEntry& entry, std::string_view newKey);

/// Composes a line and inserts it in front of `line`, its entry in front of `entry`. The result is
/// the new entry, or unset when the line would not fit.
ConfigEntryPosition Insert(const EntryScope& scope, ConfigLinePosition line,
                           ConfigEntryPosition entry, std::string_view key, std::string_view value);

/// Erases the entry with its line, puts the cursor on the entry behind it and sets the flag.
/// False when the line is frozen.
bool Erase(const EntryScope& scope, ConfigEntryPosition entry);

}  // namespace EntryEdit

}  // namespace Configuration

#endif
