// SPDX-License-Identifier: MIT
// The entries outside sections: the operations of the flat file, on this object's members.
#include "MultiSectionFile.h"
#include "config/entries/EntryOperations.h"
#include "config/entries/Walk.h"

namespace Configuration {

bool MultiSectionFile::GotoEntry(const char* key) {
  return Walk::To(*entries, *entryCursor, afterDelete, key);
}

bool MultiSectionFile::GotoNextEntry() {
  return Walk::Forward(*entries, *entryCursor, afterDelete);
}

bool MultiSectionFile::GotoPreviousEntry() {
  return Walk::Back(*entries, *entryCursor, afterDelete);
}

bool MultiSectionFile::GotoFirstEntry() {
  return Walk::ToFirst(*entries, *entryCursor, afterDelete);
}

bool MultiSectionFile::GotoLastEntry() { return Walk::ToLast(*entries, *entryCursor, afterDelete); }

std::size_t MultiSectionFile::GetEntryCount() const { return entries->Count(); }

std::size_t MultiSectionFile::GetEntry(const char* key, char* buffer, std::size_t size) {
  afterDelete = false;
  return CopyValueOf(*entries, key, {buffer, size});
}

std::size_t MultiSectionFile::GetCurrentEntry(char* keyBuffer, std::size_t keySize,
                                              char* valueBuffer, std::size_t valueSize) {
  return EntryOperations::GetCurrentEntry(*entries, *entryCursor, {keyBuffer, keySize},
                                          {valueBuffer, valueSize});
}

bool MultiSectionFile::RenameEntry(const char* newKey) {
  return EntryOperations::RenameEntry(TopLevelScope(), newKey);
}

bool MultiSectionFile::AddEntry(const char* key, const char* value, bool atBeginning) {
  return EntryOperations::AddEntry(TopLevelScope(), key, value, atBeginning);
}

bool MultiSectionFile::InsertEntry(const char* key, const char* value) {
  return EntryOperations::InsertEntry(TopLevelScope(), key, value);
}

std::size_t MultiSectionFile::SetEntry(const char* key, const char* value) {
  return EntryOperations::SetEntry(TopLevelScope(), key, value);
}

bool MultiSectionFile::DeleteEntry(const char* key) {
  return EntryOperations::DeleteEntry(TopLevelScope(), key);
}

bool MultiSectionFile::DeleteCurrentEntry() {
  return EntryOperations::DeleteCurrentEntry(TopLevelScope());
}

EntryScope MultiSectionFile::TopLevelScope() { return Scope(*entries, *entryCursor); }

}  // namespace Configuration
