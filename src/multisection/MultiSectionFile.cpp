// SPDX-License-Identifier: MIT
#include "MultiSectionFile.h"

#include <cstring>

#include "config/entries/EntryEdit.h"
#include "config/entries/EntrySyntax.h"
#include "config/files/FileAccess.h"
#include "config/files/Refill.h"
#include "config/memory/Release.h"
#include "multisection/ConfigSection.h"
#include "multisection/SectionLoad.h"
#include "multisection/SectionSyntax.h"
#include "text/Text.h"

namespace Text = zelconfutils::Text;

namespace Configuration {

namespace {

constexpr std::size_t kShortestTokenBytes = 2;  // a leading line feed counts

}  // namespace

MultiSectionFile::MultiSectionFile() = default;

// Behind the delegation the object counts as built: whatever throws, the destructor cleans up.
MultiSectionFile::MultiSectionFile(const char* source, bool create, bool readOnlyMode,
                                   bool fromBuffer, const char* keyword, const char* start,
                                   const char* stop, const char* separatorToken,
                                   const char* commentToken, const char* prefix)
    : MultiSectionFile() {
  lines = new ConfigLineList;
  sections = new ConfigSectionList;
  entries = new ConfigEntryList;
  sectionCursor = new ConfigSectionPosition;
  entryCursor = new ConfigEntryPosition;
  fileLock = new FileLock;
  if (!fromBuffer) path = Text::Duplicate(source);
  startToken = Text::Duplicate(start);
  stopToken = Text::Duplicate(stop);
  separator = Text::Duplicate(separatorToken);
  separatorLength = std::strlen(separator);
  comment = Text::Duplicate(commentToken);
  sectionKeyword = Text::Duplicate(keyword != nullptr ? keyword : "");
  sectionKeywordLength = std::strlen(sectionKeyword);
  linePrefix = Text::Duplicate(prefix != nullptr ? prefix : "");
  linePrefixLength = std::strlen(linePrefix);
  readOnly = readOnlyMode;
  createIfMissing = create;
  if (std::strlen(startToken) < kShortestTokenBytes ||
      std::strlen(stopToken) < kShortestTokenBytes) {
    FileAccess::ThrowTokenTooShort();
  }
  lineBuffer = new char[EntrySyntax::kWorkBufferBytes];
  tailBuffer = new char[EntrySyntax::kWorkBufferBytes];
  if (source == nullptr) return;
  if (fromBuffer) {
    AttachToBuffer(source, nullptr);
    return;
  }
  FileAccess::RequireDirectory(path);
  Read();
  Load();
}

MultiSectionFile::~MultiSectionFile() { Tidy(); }

MultiSectionFile& MultiSectionFile::operator=(const MultiSectionFile& other) = default;

void MultiSectionFile::Tidy() {
  Release(lines);
  Release(sections);
  Release(entries);
  Release(sectionCursor);
  Release(entryCursor);
  Release(fileLock);
  for (char** text : {&path, &startToken, &stopToken, &separator, &comment, &sectionKeyword,
                      &linePrefix, &lineBuffer, &tailBuffer}) {
    Release(*text);
  }
}

void MultiSectionFile::Read() {
  TidyOnFailure([this] { FileAccess::Read(*lines, *fileLock, path, readOnly, createIfMissing); },
                [this] { Tidy(); });
}

bool MultiSectionFile::Save(bool coalesced, const char* target) {
  return TidyOnFailure([&] { return FileAccess::Save(*lines, *fileLock, path, coalesced, target); },
                       [this] { Tidy(); });
}

void MultiSectionFile::Load() {
  const auto clear = [this] {
    sections->Clear();
    entries->Clear();
    *sectionCursor = sections->End();
    *entryCursor = entries->End();
  };
  const auto index = [this] {
    if (!LoadSections(*lines, Tokens(), *sections, *entries)) FileAccess::ThrowCorrupted(path);
  };
  TidyOnFailure([&] { OnFailure<std::bad_alloc>(index, clear); }, [this] { Tidy(); });
  *sectionCursor = sections->First();
  *entryCursor = entries->First();
}

void MultiSectionFile::Reload() {
  if (path == nullptr) return;
  Refill(
      [this] {
        ClearAll();
        Read();
        Load();
      },
      *lines, *entries, *sections, *sectionCursor, *entryCursor, afterDelete);
}

void MultiSectionFile::ClearAll() {
  afterDelete = false;
  lines->Clear();
  sections->Clear();
  *sectionCursor = sections->End();
  entries->Clear();
  *entryCursor = entries->End();
}

bool MultiSectionFile::AttachToBuffer(const char* text, const char* newPath) {
  return Refill(
      [&] {
        ClearAll();
        path = Text::Duplicate(newPath);
        if (!FileAccess::CutIntoLines(text, *lines)) return false;
        Load();
        return true;
      },
      *lines, *entries, *sections, *sectionCursor, *entryCursor, afterDelete, path);
}

bool MultiSectionFile::SaveToBuffer(char* buffer, std::size_t size) {
  return FileAccess::CopyImage(*lines, buffer, size);
}

SectionSyntax::SectionTokens MultiSectionFile::Tokens() const {
  return {startToken,
          stopToken,
          {separator, separatorLength},
          comment,
          {sectionKeyword, sectionKeywordLength}};
}

EntryScope MultiSectionFile::Scope(ConfigEntryList& scopeEntries, ConfigEntryPosition& cursor) {
  return {*lines,
          scopeEntries,
          cursor,
          afterDelete,
          {separator, separatorLength},
          {linePrefix, linePrefixLength},
          lineBuffer,
          tailBuffer};
}

MultiSectionConfigFile::MultiSectionConfigFile(const char* source, bool create,
                                               bool /*ignoredFlag*/, bool readOnlyMode,
                                               bool fromBuffer)
    : MultiSectionFile(source, create, readOnlyMode, fromBuffer, "section", "{\n", "}\n", "=", "#",
                       nullptr) {}

MultiSectionConfigFile::~MultiSectionConfigFile() = default;

MultiSectionConfigFile& MultiSectionConfigFile::operator=(const MultiSectionConfigFile& other) =
    default;

}  // namespace Configuration
