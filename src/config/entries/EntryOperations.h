// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ENTRIES_ENTRY_OPERATIONS_H
#define ZELCONFUTILS_ENTRIES_ENTRY_OPERATIONS_H

#include <cstddef>

#include "config/entries/CopyOut.h"
#include "config/entries/EntryEdit.h"

/// The operations over the entries of a whole file, with their rules for cursor and delete mark:
/// those of `ConfigFile`, and those of the top level of `MultiSectionFile`. The public headers tell
/// what each does. What needs no rule beyond `Walk` and `CopyOut` is not repeated here.
///
/// They differ on purpose from the operations over a section's entries.
namespace Configuration::EntryOperations {

std::size_t GetCurrentEntry(ConfigEntryList& entries, ConfigEntryPosition& cursor, Buffer key,
                            Buffer value);
bool AddEntry(EntryScope scope, const char* key, const char* value, bool atBeginning);
bool InsertEntry(EntryScope scope, const char* key, const char* value);
std::size_t SetEntry(EntryScope scope, const char* key, const char* value);
std::size_t SetCurrentEntry(EntryScope scope, const char* value);
bool RenameEntry(EntryScope scope, const char* newKey);
bool DeleteEntry(EntryScope scope, const char* key);
bool DeleteCurrentEntry(EntryScope scope);

}  // namespace Configuration::EntryOperations

#endif
