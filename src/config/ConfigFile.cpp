// SPDX-License-Identifier: MIT
#include "ConfigFile.h"

#include <cstring>
#include <memory>

#include "config/entries/ConfigEntry.h"
#include "config/entries/EntryIndex.h"
#include "config/entries/EntryOperations.h"
#include "config/entries/EntrySyntax.h"
#include "config/entries/Walk.h"
#include "config/files/FileAccess.h"
#include "config/files/FreshContent.h"
#include "config/lines/LineText.h"
#include "config/memory/Release.h"
#include "text/Text.h"

namespace Text = zelconfutils::Text;

namespace Configuration {

ConfigFile::ConfigFile() = default;

// After the delegation the object counts as built: whatever throws, the destructor cleans up.
ConfigFile::ConfigFile(const char* source, bool create, bool readOnlyMode, bool fromBuffer,
                       const char* separatorToken, const char* commentToken, const char* prefix)
    : ConfigFile() {
  lines = new ConfigLineList;
  entries = new ConfigEntryList;
  cursor = new ConfigEntryPosition;
  fileLock = new FileLock;
  if (!fromBuffer) path = Text::Duplicate(source);
  separator = Text::Duplicate(separatorToken);
  separatorLength = std::strlen(separator);
  comment = Text::Duplicate(commentToken);
  linePrefix = Text::Duplicate(prefix != nullptr ? prefix : "");
  linePrefixLength = std::strlen(linePrefix);
  lineBuffer = new char[EntrySyntax::kWorkBufferBytes];
  tailBuffer = new char[EntrySyntax::kWorkBufferBytes];
  readOnly = readOnlyMode;
  createIfMissing = create;
  if (source == nullptr) return;
  if (fromBuffer) {
    AttachToBuffer(source, nullptr);
    return;
  }
  FileAccess::RequireDirectory(path);
  Read();
  Load();
}

ConfigFile::~ConfigFile() { Tidy(); }

ConfigFile& ConfigFile::operator=(const ConfigFile& other) = default;

void ConfigFile::Tidy() {
  Release(lines);
  Release(entries);
  Release(cursor);
  Release(fileLock);
  Release(path);
  Release(separator);
  Release(comment);
  Release(linePrefix);
  Release(lineBuffer);
  Release(tailBuffer);
}

void ConfigFile::Read() try {
  FileAccess::Read(*lines, *fileLock, path, readOnly, createIfMissing);
} catch (const ConfigException&) {
  Tidy();
  throw;
}

bool ConfigFile::Save(bool coalesced, const char* target) try {
  return FileAccess::Save(*lines, *fileLock, path, coalesced, target);
} catch (const ConfigException&) {
  Tidy();
  throw;
}

void ConfigFile::Load() {
  ConfigEntryList added(entries->GetPool());
  EntryIndex::AppendAll(added, *lines, {separator, separatorLength}, comment);
  entries->TakeAll(added);
  *cursor = entries->First();
}

void ConfigFile::Reload() try {
  if (path == nullptr) return;
  FreshContent fresh;
  FileAccess::Read(*fresh.lines, *fileLock, path, readOnly, createIfMissing);
  EntryIndex::AppendAll(*fresh.entries, *fresh.lines, {separator, separatorLength}, comment);
  fresh.SwapIn(lines, entries, *cursor);
  afterDelete = false;
} catch (const ConfigException&) {
  Tidy();
  throw;
}

void ConfigFile::ClearAll() {
  afterDelete = false;
  lines->Clear();
  entries->Clear();
  *cursor = entries->End();
}

bool ConfigFile::AttachToBuffer(const char* text, const char* newPath) {
  FreshContent fresh;
  std::unique_ptr<char[]> freshPath(Text::Duplicate(newPath));
  const bool complete = LineText::Split(text, *fresh.lines);
  if (complete) {
    EntryIndex::AppendAll(*fresh.entries, *fresh.lines, {separator, separatorLength}, comment);
  }
  fresh.SwapIn(lines, entries, *cursor);
  Exchange(path, freshPath);
  afterDelete = false;
  return complete;
}

bool ConfigFile::SaveToBuffer(char* buffer, std::size_t size) {
  return LineText::CopyImage(*lines, buffer, size);
}

void ConfigFile::Restart() {
  afterDelete = false;
  *cursor = {};
}

bool ConfigFile::GotoEntry(const char* key) {
  return Walk::To(*entries, *cursor, afterDelete, key);
}

bool ConfigFile::GotoNextEntry() { return Walk::Forward(*entries, *cursor, afterDelete); }

bool ConfigFile::GotoPreviousEntry() { return Walk::Back(*entries, *cursor, afterDelete); }

bool ConfigFile::GotoFirstEntry() { return Walk::ToFirst(*entries, *cursor, afterDelete); }

bool ConfigFile::GotoLastEntry() { return Walk::ToLast(*entries, *cursor, afterDelete); }

std::size_t ConfigFile::GetEntryCount() const { return entries->Count(); }

std::size_t ConfigFile::GetEntry(const char* key, char* buffer, std::size_t size) {
  afterDelete = false;
  return CopyValueOf(*entries, key, {buffer, size});
}

std::size_t ConfigFile::GetCurrentEntry(char* keyBuffer, std::size_t keySize, char* valueBuffer,
                                        std::size_t valueSize) {
  return EntryOperations::GetCurrentEntry(*entries, *cursor, {keyBuffer, keySize},
                                          {valueBuffer, valueSize});
}

bool ConfigFile::AddEntry(const char* key, const char* value, bool atBeginning) {
  return EntryOperations::AddEntry(Scope(), key, value, atBeginning);
}

bool ConfigFile::InsertEntry(const char* key, const char* value) {
  return EntryOperations::InsertEntry(Scope(), key, value);
}

std::size_t ConfigFile::SetEntry(const char* key, const char* value) {
  return EntryOperations::SetEntry(Scope(), key, value);
}

std::size_t ConfigFile::SetCurrentEntry(const char* value) {
  return EntryOperations::SetCurrentEntry(Scope(), value);
}

bool ConfigFile::RenameEntry(const char* newKey) {
  return EntryOperations::RenameEntry(Scope(), newKey);
}

bool ConfigFile::DeleteEntry(const char* key) { return EntryOperations::DeleteEntry(Scope(), key); }

bool ConfigFile::DeleteCurrentEntry() { return EntryOperations::DeleteCurrentEntry(Scope()); }

EntryScope ConfigFile::Scope() {
  return {*lines,
          *entries,
          *cursor,
          afterDelete,
          {separator, separatorLength},
          {linePrefix, linePrefixLength},
          lineBuffer};
}

}  // namespace Configuration
