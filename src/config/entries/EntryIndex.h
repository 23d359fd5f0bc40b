// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ENTRIES_ENTRY_INDEX_H
#define ZELCONFUTILS_ENTRIES_ENTRY_INDEX_H

#include <cstddef>
#include <string_view>

#include "config/entries/ConfigEntry.h"
#include "config/lines/ConfigLineList.h"

/// Makes entries of lines. No line is copied or changed. May throw `std::bad_alloc`, with a part
/// of the entries appended.
namespace Configuration::EntryIndex {

/// Appends the entry of `line`, whose first separator stands at `separatorAt`.
void Append(ConfigEntryList& entries, ConfigLinePosition line, std::size_t separatorAt,
            std::size_t separatorLength);

/// Appends the entries of all lines of a flat file.
void AppendAll(ConfigEntryList& entries, ConfigLineList& lines, std::string_view separator,
               std::string_view comment);

}  // namespace Configuration::EntryIndex

#endif
