// SPDX-License-Identifier: MIT
#include "MultiSectionFile.h"

#include <cstring>
#include <memory>

#include "config/entries/EntryEdit.h"
#include "config/entries/EntrySyntax.h"
#include "config/files/Failure.h"
#include "config/files/FileAccess.h"
#include "config/files/FreshContent.h"
#include "config/lines/LineText.h"
#include "config/memory/Release.h"
#include "multisection/ConfigSection.h"
#include "multisection/SectionLoad.h"
#include "multisection/SectionSyntax.h"
#include "text/Text.h"

namespace Text = zelconfutils::Text;

namespace Configuration {

namespace {

constexpr std::size_t kShortestTokenBytes = 2;  // a leading line feed counts

// With the sections that a sectioned file has beside its lines and top-level entries.
struct FreshSections : FreshContent {
  std::unique_ptr<ConfigSectionList> sections = std::make_unique<ConfigSectionList>();

  using FreshContent::SwapIn;
  void SwapIn(ConfigSectionList*& objectSections, ConfigSectionPosition& cursor) noexcept {
    Exchange(objectSections, sections);
    cursor = objectSections->First();
  }
};

}  // namespace

MultiSectionFile::MultiSectionFile() = default;

// After the delegation the object counts as built: whatever throws, the destructor cleans up.
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
    Failure::ThrowTokenTooShort();
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

void MultiSectionFile::Read() try {
  FileAccess::Read(*lines, *fileLock, path, readOnly, createIfMissing);
} catch (const ConfigException&) {
  Tidy();
  throw;
}

bool MultiSectionFile::Save(bool coalesced, const char* target) try {
  return FileAccess::Save(*lines, *fileLock, path, coalesced, target);
} catch (const ConfigException&) {
  Tidy();
  throw;
}

void MultiSectionFile::Load() try {
  ConfigSectionList addedSections(sections->GetPool());
  ConfigEntryList addedEntries(entries->GetPool());
  if (!LoadSections(*lines, Tokens(), addedSections, addedEntries)) {
    Failure::ThrowCorrupted(path);
  }
  sections->TakeAll(addedSections);
  entries->TakeAll(addedEntries);
  *sectionCursor = sections->First();
  *entryCursor = entries->First();
} catch (const ConfigException&) {
  Tidy();
  throw;
}

void MultiSectionFile::Reload() try {
  if (path == nullptr) return;
  FreshSections fresh;
  FileAccess::Read(*fresh.lines, *fileLock, path, readOnly, createIfMissing);
  if (!LoadSections(*fresh.lines, Tokens(), *fresh.sections, *fresh.entries)) {
    Failure::ThrowCorrupted(path);
  }
  fresh.SwapIn(lines, entries, *entryCursor);
  fresh.SwapIn(sections, *sectionCursor);
  afterDelete = false;
} catch (const ConfigException&) {
  Tidy();
  throw;
}

void MultiSectionFile::ClearAll() {
  afterDelete = false;
  lines->Clear();
  // Sections first: the pool of the entries is released only when no section holds nodes of it.
  sections->Clear();
  *sectionCursor = sections->End();
  entries->Clear();
  *entryCursor = entries->End();
}

bool MultiSectionFile::AttachToBuffer(const char* text, const char* newPath) try {
  FreshSections fresh;
  std::unique_ptr<char[]> freshPath(Text::Duplicate(newPath));
  const bool complete = LineText::Split(text, *fresh.lines);
  if (complete && !LoadSections(*fresh.lines, Tokens(), *fresh.sections, *fresh.entries)) {
    Failure::ThrowCorrupted(newPath);
  }
  fresh.SwapIn(lines, entries, *entryCursor);
  fresh.SwapIn(sections, *sectionCursor);
  Exchange(path, freshPath);
  afterDelete = false;
  return complete;
} catch (const ConfigException&) {
  Tidy();
  throw;
}

bool MultiSectionFile::SaveToBuffer(char* buffer, std::size_t size) {
  return LineText::CopyImage(*lines, buffer, size);
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
          lineBuffer};
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
