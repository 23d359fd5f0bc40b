// SPDX-License-Identifier: MIT
// The entries of the current section. Most operations are: clear the delete mark, settle the
// section, do what the top level does. Those that differ in cursor or mark differ on purpose.
#include "MultiSectionFile.h"
#include "config/entries/EntryOperations.h"
#include "config/entries/Walk.h"
#include "multisection/ConfigSection.h"

namespace Configuration {

std::size_t MultiSectionFile::GetSecEntryCount() const {
  const ConfigSection* section = SettledSection();
  return section != nullptr ? section->entries.Count() : 0;
}

bool MultiSectionFile::GotoSecEntry(const char* key) {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  return section != nullptr && Walk::To(section->entries, section->entryCursor, afterDelete, key);
}

bool MultiSectionFile::GotoSecNextEntry() {
  ConfigSection* section = SettledSection();
  if (section == nullptr) {
    afterDelete = false;
    return false;
  }
  return Walk::Forward(section->entries, section->entryCursor, afterDelete);
}

bool MultiSectionFile::GotoSecPrevEntry() {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  return section != nullptr && Walk::Back(section->entries, section->entryCursor, afterDelete);
}

bool MultiSectionFile::GotoSecFirstEntry() {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  return section != nullptr && Walk::ToFirst(section->entries, section->entryCursor, afterDelete);
}

bool MultiSectionFile::GotoSecLastEntry() {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  return section != nullptr && Walk::ToLast(section->entries, section->entryCursor, afterDelete);
}

void MultiSectionFile::RestartSection() {
  afterDelete = false;
  if (ConfigSection* section = CurrentSection()) section->entryCursor = {};
}

std::size_t MultiSectionFile::GetSectionEntry(const char* key, char* buffer, std::size_t size) {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  if (section == nullptr) return CopyNothing({buffer, size});
  return CopyValueOf(section->entries, key, {buffer, size});
}

std::size_t MultiSectionFile::GetSecCurrentEntry(char* keyBuffer, std::size_t keySize,
                                                 char* valueBuffer, std::size_t valueSize) {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  if (section == nullptr) return 0;
  return EntryOperations::GetCurrentEntry(section->entries, section->entryCursor,
                                          {keyBuffer, keySize}, {valueBuffer, valueSize});
}

std::size_t MultiSectionFile::SetSecCurrentEntry(const char* value) {
  afterDelete = false;
  ConfigSection* section = CurrentSection();
  if (section == nullptr || !section->entryCursor.IsAtElement()) return kNothingDone;
  return EntryEdit::SetValue(SectionScope(*section), *section->entryCursor, value);
}

bool MultiSectionFile::RenameSectionEntry(const char* newKey) {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  return section != nullptr && EntryOperations::RenameEntry(SectionScope(*section), newKey);
}

bool MultiSectionFile::AddSectionEntry(const char* key, const char* value) {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  if (section == nullptr) return false;
  const EntryEdit::Place place = {section->stopLine, section->entries.End()};
  return !EntryEdit::Insert(SectionScope(*section), place, key, value).IsUnset();
}

std::size_t MultiSectionFile::SetSectionEntry(const char* key, const char* value) {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  if (section == nullptr) return kNothingDone;
  const ConfigEntryPosition found = Walk::Find(section->entries, key);
  if (found.IsEnd()) return AddSectionEntry(key, value) ? kWritten : kNothingDone;
  return EntryEdit::SetValue(SectionScope(*section), *found, value);
}

bool MultiSectionFile::InsertSectionEntry(const char* key, const char* value,
                                          bool replaceExisting) {
  ConfigSection* section = SettledSection();
  if (section == nullptr) return false;
  if (replaceExisting) {
    const ConfigEntryPosition found = Walk::Find(section->entries, key);
    if (found.IsAtElement()) {
      afterDelete = false;
      return EntryEdit::SetValue(SectionScope(*section), *found, value) != kNothingDone;
    }
  }
  ConfigEntryPosition& cursor = section->entryCursor;
  Walk::Settle(section->entries, cursor);
  if (cursor.IsEnd()) return AddSectionEntry(key, value);
  afterDelete = false;
  const ConfigEntryPosition added =
      EntryEdit::Insert(SectionScope(*section), {cursor->line, cursor}, key, value);
  if (added.IsUnset()) return false;
  cursor = added;
  return true;
}

bool MultiSectionFile::DeleteSectionEntry(const char* key) {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  return section != nullptr && EntryOperations::DeleteEntry(SectionScope(*section), key);
}

bool MultiSectionFile::DeleteSectionEntry() {
  afterDelete = false;
  ConfigSection* section = CurrentSection();
  if (section == nullptr || !section->entryCursor.IsAtElement()) return false;
  return EntryEdit::Erase(SectionScope(*section), section->entryCursor);
}

EntryScope MultiSectionFile::SectionScope(ConfigSection& section) {
  return Scope(section.entries, section.entryCursor);
}

}  // namespace Configuration
