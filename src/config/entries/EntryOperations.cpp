// SPDX-License-Identifier: MIT
#include "config/entries/EntryOperations.h"

#include "config/entries/Walk.h"

namespace Configuration::EntryOperations {

std::size_t GetCurrentEntry(ConfigEntryList& entries, ConfigEntryPosition& cursor, Buffer key,
                            Buffer value) {
  Walk::Settle(entries, cursor);
  if (cursor.IsEnd()) return 0;
  return CopyOut(*cursor, key, value);
}

bool AddEntry(EntryScope scope, const char* key, const char* value, bool atBeginning) {
  scope.afterDelete = false;
  const EntryEdit::Place place = atBeginning
                                     ? EntryEdit::Place{scope.lines.First(), scope.entries.First()}
                                     : EntryEdit::Place{scope.lines.End(), scope.entries.End()};
  return !EntryEdit::Insert(scope, place, key, value).IsUnset();
}

bool InsertEntry(EntryScope scope, const char* key, const char* value) {
  Walk::Settle(scope.entries, scope.cursor);
  // Before the first entry means the very top of the file, also of an empty one.
  if (scope.cursor == scope.entries.First()) return AddEntry(scope, key, value, true);
  if (scope.cursor.IsEnd()) return AddEntry(scope, key, value, false);
  scope.afterDelete = false;
  return !EntryEdit::Insert(scope, {scope.cursor->line, scope.cursor}, key, value).IsUnset();
}

std::size_t SetEntry(EntryScope scope, const char* key, const char* value) {
  const ConfigEntryPosition found = Walk::Find(scope.entries, key);
  if (found.IsEnd()) return AddEntry(scope, key, value, false) ? kWritten : kNothingDone;
  scope.afterDelete = false;
  return EntryEdit::SetValue(scope, *found, value);
}

std::size_t SetCurrentEntry(EntryScope scope, const char* value) {
  Walk::Settle(scope.entries, scope.cursor);
  if (scope.cursor.IsEnd()) return kNothingDone;
  const std::size_t result = EntryEdit::SetValue(scope, *scope.cursor, value);
  if (result != kAlreadySo) scope.afterDelete = false;
  return result;
}

bool RenameEntry(EntryScope scope, const char* newKey) {
  Walk::Settle(scope.entries, scope.cursor);
  if (scope.cursor.IsEnd() || *newKey == '\0') return false;
  return EntryEdit::ReplaceKey(scope, *scope.cursor, newKey);
}

bool DeleteEntry(EntryScope scope, const char* key) {
  scope.afterDelete = false;
  const ConfigEntryPosition found = Walk::Find(scope.entries, key);
  return found.IsAtElement() && EntryEdit::Erase(scope, found);
}

bool DeleteCurrentEntry(EntryScope scope) {
  Walk::Settle(scope.entries, scope.cursor);
  return scope.cursor.IsAtElement() && EntryEdit::Erase(scope, scope.cursor);
}

}  // namespace Configuration::EntryOperations
