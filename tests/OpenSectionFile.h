// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_OPEN_SECTION_FILE_H
#define ZELCONFUTILS_TESTS_OPEN_SECTION_FILE_H

#include <string>

#include "MultiSectionFile.h"
#include "OpenConfigFile.h"
#include "multisection/ConfigSection.h"

/// A `MultiSectionFile` that tests may look into.
class OpenSectionFile : public OpenFile<Configuration::MultiSectionFile> {
 public:
  using MultiSectionFile::entryCursor;
  using MultiSectionFile::sectionCursor;
  using MultiSectionFile::sections;
  using MultiSectionFile::Tidy;

  explicit OpenSectionFile(const FileTokens& with, const char* filePath = nullptr)
      : OpenFile(filePath, false, false, false, with.keyword, with.start, with.stop, with.separator,
                 with.comment, with.prefix) {}

  std::string Name() {
    char name[4096] = "";
    const std::string result = Told(GetSectionName(name, sizeof name));
    return result + name;
  }

  /// `*x[1]y[2]; A{^a[1]}*B{b[2]$}+`: top level, sections, the flag. The mark `*` is in front of
  /// the element that a cursor is at, `^` of a list whose cursor is unset, `$` behind one at end.
  std::string Picture(bool capacities = false) const {
    std::string picture = Listed(*entries, *entryCursor, capacities) + "; ";
    picture += sectionCursor->IsUnset() ? "^" : "";
    for (const auto& section : *sections) {
      if (sectionCursor->IsAtElement() && &**sectionCursor == &section) picture += "*";
      picture.append(section.Name()).append("{");
      picture += Listed(section.entries, section.entryCursor, capacities) + "}";
    }
    return picture + (sectionCursor->IsEnd() ? "$" : "") + (afterDelete ? "+" : "");
  }

  /// What is broken in the image or its index, or an empty text.
  std::string Fault() const {
    std::string fault = ::Fault(*lines, *entries);
    auto line = lines->First();
    for (const auto& section : *sections) {
      fault += ::Fault(*lines, section.entries);
      while (line.IsAtElement() && line != section.startLine) line.StepForward();
      if (!line.IsAtElement()) return fault + "a name line";
      const char *name = section.name, *text = line->text;
      if (name != nullptr && (name < text || name + section.nameLength > text + line->length)) {
        return fault + "a name's view";
      }
      auto entry = section.entries.begin();
      for (line.StepForward(); line != section.stopLine; line.StepForward()) {
        if (!line.IsAtElement()) return fault + "a stop line";
        if (entry != section.entries.end() && (*entry).line == line) ++entry;
      }
      if (entry != section.entries.end()) return fault + "an entry outside its section";
    }
    return fault;
  }
};

#endif
