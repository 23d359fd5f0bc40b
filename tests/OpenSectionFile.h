// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_OPEN_SECTION_FILE_H
#define ZELCONFUTILS_TESTS_OPEN_SECTION_FILE_H

#include <string>

#include "MultiSectionFile.h"
#include "OpenConfigFile.h"
#include "multisection/ConfigSection.h"

struct SectionTokens {
  const char *keyword, *start, *stop, *separator, *comment, *prefix;
};

inline std::string Told(bool result) { return result ? "1" : "0"; }
inline std::string Told(std::size_t n) { return n == 4294967295 ? "!" : std::to_string(n); }

/// A `MultiSectionFile` that tests may look into.
class OpenSectionFile : public Configuration::MultiSectionFile {
 public:
  using MultiSectionFile::afterDelete;
  using MultiSectionFile::entries;
  using MultiSectionFile::entryCursor;
  using MultiSectionFile::lines;
  using MultiSectionFile::path;
  using MultiSectionFile::sectionCursor;
  using MultiSectionFile::sections;
  using MultiSectionFile::Tidy;

  explicit OpenSectionFile(const SectionTokens& with, const char* filePath = nullptr)
      : MultiSectionFile(filePath, false, false, false, with.keyword, with.start, with.stop,
                         with.separator, with.comment, with.prefix) {}

  /// Puts the bytes in place of the content, cut into lines as a file is.
  void Take(std::string_view bytes) {
    ClearAll();
    while (!bytes.empty()) {
      const std::size_t end = bytes.substr(0, 1023).find('\n');
      const std::string_view line = bytes.substr(0, end == bytes.npos ? 1023 : end + 1);
      lines->AddLine(line, true);
      bytes.remove_prefix(line.size());
    }
    Load();
  }

  std::string Image() {
    std::string image(lines->totalLength + 1, '?');
    if (!SaveToBuffer(image.data(), image.size())) return "no image";
    image.pop_back();
    return image;
  }

  // Reads: the result and what the buffers hold.
  std::string Name() {
    char name[4096] = "";
    const std::string result = Told(GetSectionName(name, sizeof name));
    return result + name;
  }
  std::string Get(std::size_t (OpenSectionFile::*get)(const char*, char*, std::size_t),
                  const char* key) {
    char value[4096] = "?";
    const std::string result = Told((this->*get)(key, value, sizeof value));
    return result + value;
  }
  std::string Read(std::size_t (OpenSectionFile::*read)(char*, std::size_t, char*, std::size_t)) {
    char key[4096] = "", value[4096] = "";
    const std::string result = Told((this->*read)(key, sizeof key, value, sizeof value));
    return result + key + "," + value;
  }

  /// `*x[1]y[2]; A{^a[1]}*B{b[2]$}+`: top level, sections, the flag. The mark `*` is in front of
  /// the element that a cursor is at, `^` of a list whose cursor is unset, `$` behind one at end.
  std::string Picture() const {
    std::string picture = Listed(*entries, *entryCursor) + "; ";
    picture += sectionCursor->IsUnset() ? "^" : "";
    for (const auto& section : *sections) {
      if (sectionCursor->IsAtElement() && &**sectionCursor == &section) picture += "*";
      picture.append(section.Name()).append("{");
      picture += Listed(section.entries, section.entryCursor) + "}";
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

 private:
  static std::string Listed(const Configuration::ConfigEntryList& list,
                            const Configuration::ConfigEntryPosition& cursor) {
    std::string listed = cursor.IsUnset() ? "^" : "";
    for (const auto& entry : list) {
      if (cursor.IsAtElement() && &*cursor == &entry) listed += "*";
      listed.append(entry.Name()).append("[").append(entry.Value()).append("]");
    }
    return listed + (cursor.IsEnd() ? "$" : "");
  }
};

#endif
