// SPDX-License-Identifier: MIT
#include "multisection/SectionLoad.h"

#include "config/entries/EntryIndex.h"

namespace Configuration {

namespace {

using SectionSyntax::LineKind;

void TakeName(ConfigSection& section, const SectionSyntax::SectionTokens& tokens) {
  const auto name = SectionSyntax::CutName(section.startLine->View(), tokens);
  section.name = section.startLine->text + name.start;
  section.nameLength = name.length;
}

// Whether the line already belongs to the section or the top-level entry that was read last.
bool HasOwner(ConfigLinePosition line, ConfigSectionList& sections, ConfigEntryList& entries) {
  return (!sections.IsEmpty() && sections.Last()->stopLine == line) ||
         (!entries.IsEmpty() && entries.Last()->line == line);
}

}  // namespace

bool LoadSections(ConfigLineList& lines, const SectionSyntax::SectionTokens& tokens,
                  ConfigSectionList& sections, ConfigEntryList& entries) {
  const std::size_t separatorLength = tokens.separator.size();
  entries.Expect(lines.Lines().Count() / 4 * 3);  // for the sections too: they share a pool
  ConfigSection* open = nullptr;
  ConfigLinePosition before;  // the line before the current one; unset at the first
  for (ConfigLinePosition line = lines.First(); line.IsAtElement(); line.StepForward()) {
    if (open != nullptr) {
      const auto [kind, separatorAt] = SectionSyntax::ClassifyInside(line->View(), tokens);
      if (kind == LineKind::kEntry) {
        EntryIndex::Append(open->entries, line, separatorAt, separatorLength);
      } else if (kind == LineKind::kStop) {
        open->stopLine = line;
        open = nullptr;
      }
    } else {
      const auto [kind, separatorAt] = SectionSyntax::ClassifyOutside(line->View(), tokens);
      if (kind == LineKind::kEntry) {
        EntryIndex::Append(entries, line, separatorAt, separatorLength);
      } else if (kind == LineKind::kHeader) {
        const bool twoLineForm = tokens.IsTwoLineForm();
        const bool hasNameLine = !twoLineForm || before.IsAtElement();
        if (twoLineForm && hasNameLine && HasOwner(before, sections, entries))
          lines.MarkShared(before);
        open = &*sections.Append(entries.GetPool());
        open->startLine = twoLineForm && hasNameLine ? before : line;
        if (hasNameLine) TakeName(*open, tokens);
      }
    }
    before = line;
  }
  return open == nullptr;
}

}  // namespace Configuration
