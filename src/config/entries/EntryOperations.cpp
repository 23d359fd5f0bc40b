// SPDX-License-Identifier: MIT
#include "config/entries/EntryOperations.h"

#include "config/entries/Walk.h"

namespace Configuration::EntryOperations {

std::size_t GetCurrentEntry(ConfigEntryList& entries, ConfigEntryPosition& cursor, char* keyBuffer,
                            std::size_t keySize, char* valueBuffer, std::size_t valueSize) {
  Walk::Settle(entries, cursor);
  if (cursor.IsEnd()) return 0;
  return EntryEdit::CopyOut(*cursor, keyBuffer, keySize, valueBuffer, valueSize);
}

bool AddEntry(EntryScope scope, const char* key, const char* value, bool atBeginning) {
  scope.afterDelete = false;
  const ConfigLinePosition line = atBeginning ? scope.lines.First() : scope.lines.End();
  const ConfigEntryPosition entry = atBeginning ? scope.entries.First() : scope.entries.End();
  return !EntryEdit::Insert(scope, line, entry, key, value).IsUnset();
}

bool InsertEntry(EntryScope scope, const char* key, const char* value) {
  Walk::Settle(scope.entries, scope.cursor);
  // In front of the first entry means the very top of the file, also of an empty one.
  if (scope.cursor == scope.entries.First()) return AddEntry(scope, key, value, true);
  if (scope.cursor.IsEnd()) return AddEntry(scope, key, value, false);
  scope.afterDelete = false;
  return !EntryEdit::Insert(scope, scope.cursor->line, scope.cursor, key, value).IsUnset();
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
