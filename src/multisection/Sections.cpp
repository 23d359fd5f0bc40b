// SPDX-License-Identifier: MIT
// The sections of a file as a whole: their cursor and names, adding and deleting them.
#include <cstring>
#include <string>

#include "MultiSectionFile.h"
#include "config/entries/CopyOut.h"
#include "config/entries/Walk.h"
#include "multisection/ConfigSection.h"
#include "multisection/SectionSyntax.h"

namespace Configuration {

namespace {

constexpr std::size_t kNoSection = 0xFFFFFFFF;  // 32 bits set, not the largest size_t

// Writes `text` over the line, whose block may move.
void Rewrite(ConfigLineList& lines, ConfigLinePosition line, const std::string& text) {
  if (text.size() > line->length) {
    lines.GrowLine(line, text.size() - line->length);
  } else {
    lines.ShrinkLine(line, line->length - text.size(), true);
  }
  std::memcpy(line->text, text.c_str(), text.size() + 1);
}

// What a file object lends for one insertion.
struct SectionsScope {
  ConfigLineList& lines;
  ConfigSectionList& sections;
  const std::shared_ptr<ConfigEntryList::Pool>& entryPool;
  SectionSyntax::SectionTokens tokens;
};

// Where a new section goes: before this line, and in the index before this section.
struct Place {
  ConfigLinePosition line;
  ConfigSectionPosition section;
};

ConfigSectionPosition Insert(const SectionsScope& scope, Place place, std::string_view name) {
  const SectionSyntax::SectionTokens& tokens = scope.tokens;
  const SectionSyntax::NameLine nameLine = SectionSyntax::ComposeNameLine(name, tokens);
  scope.sections.Reserve();  // with the node at hand, nothing after the lines' insertion throws
  const ConfigLinePosition first =
      tokens.IsTwoLineForm()
          ? scope.lines.InsertLines(place.line,
                                    {nameLine.text, tokens.StartNeedle(), tokens.StopNeedle()})
          : scope.lines.InsertLines(place.line, {nameLine.text, tokens.StopNeedle()});
  const ConfigSectionPosition section = scope.sections.Insert(place.section, scope.entryPool);
  section->name = first->text + nameLine.nameAt;
  section->nameLength = name.size();
  section->startLine = first;
  section->stopLine = first.Next();
  if (tokens.IsTwoLineForm()) section->stopLine.StepForward();
  return section;
}

// Whether the section's name line ends the section before it.
bool SharesLineWithPrevious(ConfigSectionPosition section) {
  ConfigSectionPosition previous = section;
  previous.StepBack();
  return previous->stopLine == section->startLine;
}

}  // namespace

void MultiSectionFile::Restart() {
  afterDelete = false;
  *sectionCursor = {};
  *entryCursor = {};
}

bool MultiSectionFile::GotoSection(const char* name) {
  return Walk::To(*sections, *sectionCursor, afterDelete, name);
}

bool MultiSectionFile::GotoNextSection() {
  return Walk::Forward(*sections, *sectionCursor, afterDelete);
}

bool MultiSectionFile::GotoPreviousSection() {
  return Walk::Back(*sections, *sectionCursor, afterDelete);
}

bool MultiSectionFile::GotoFirstSection() {
  return Walk::ToFirst(*sections, *sectionCursor, afterDelete);
}

bool MultiSectionFile::GotoLastSection() {
  return Walk::ToLast(*sections, *sectionCursor, afterDelete);
}

std::size_t MultiSectionFile::GetSectionName(char* buffer, std::size_t size) {
  afterDelete = false;
  const ConfigSection* section = SettledSection();
  return section != nullptr ? CopyOut(section->Name(), {buffer, size}) : kNoSection;
}

bool MultiSectionFile::SetSectionName(const char* name) {
  afterDelete = false;
  ConfigSection* section = SettledSection();
  if (section == nullptr || section->name == nullptr || lines->IsShared(section->startLine)) {
    return false;
  }
  const SectionSyntax::NameLine nameLine = SectionSyntax::ComposeNameLine(name, Tokens());
  Rewrite(*lines, section->startLine, nameLine.text);
  section->name = section->startLine->text + nameLine.nameAt;
  section->nameLength = std::strlen(name);
  return true;
}

std::size_t MultiSectionFile::GetSectionCount() const { return sections->Count(); }

bool MultiSectionFile::AddSection(const char* name, bool atFront) {
  const Place place =
      atFront ? Place{lines->First(), sections->First()} : Place{lines->End(), sections->End()};
  *sectionCursor = Insert({*lines, *sections, entries->GetPool(), Tokens()}, place, name);
  afterDelete = false;
  return true;
}

bool MultiSectionFile::AddSection(bool atFront) { return AddSection("", atFront); }

bool MultiSectionFile::InsertSection(const char* name) {
  Walk::Settle(*sections, *sectionCursor);
  // Before the first section means the very top of the file, also of an empty one.
  if (*sectionCursor == sections->First()) return AddSection(name, true);
  if (sectionCursor->IsEnd()) return AddSection(name, false);
  const ConfigSectionPosition current = *sectionCursor;
  if (SharesLineWithPrevious(current)) return false;
  const Place place = {current->startLine, current};
  *sectionCursor = Insert({*lines, *sections, entries->GetPool(), Tokens()}, place, name);
  afterDelete = false;
  return true;
}

std::size_t MultiSectionFile::DeleteSection() {
  const ConfigSection* section = SettledSection();
  if (section == nullptr || lines->IsShared(section->startLine) ||
      lines->IsShared(section->stopLine)) {
    return kNoSection;
  }
  const ConfigLinePosition after = section->stopLine.Next();
  for (ConfigLinePosition line = section->startLine; line != after;) line = lines->EraseLine(line);
  *sectionCursor = sections->Erase(*sectionCursor);
  afterDelete = true;
  return sections->Count();
}

std::size_t MultiSectionFile::DeleteSection(const char* name) {
  return GotoSection(name) ? DeleteSection() : kNoSection;
}

ConfigSection* MultiSectionFile::CurrentSection() const {
  return sectionCursor->IsAtElement() ? &**sectionCursor : nullptr;
}

ConfigSection* MultiSectionFile::SettledSection() const {
  Walk::Settle(*sections, *sectionCursor);
  return CurrentSection();
}

}  // namespace Configuration
