// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_FIXTURES_H
#define ZELCONFUTILS_TESTS_FILE_FIXTURES_H

#include <string>
#include <type_traits>

#include "Calls.h"
#include "ConfigFile.h"
#include "MultiSectionFile.h"
#include "Quoted.h"
#include "TestFiles.h"
#include "multisection/ConfigSection.h"

struct FileTokens {
  const char *keyword, *start, *stop, *separator, *comment, *prefix;
};
inline constexpr FileTokens kFlatTokens = {"", "", "", "=", "#", ""};
inline constexpr FileTokens kPresetTokens = {"section", "{\n", "}\n", "=", "#", ""};

/// `a[1] >b[2]`: the cursor is at b. `(unset) a[1] b[2]` and `a[1] b[2] (end)` are its other
/// states.
template <class List, class IsAt, class Show>
std::string ListText(List& list, bool isUnset, IsAt isAt, Show show) {
  std::string all = isUnset ? "(unset) " : "";
  for (auto place = list.begin(); place != list.end(); ++place) {
    all += (isAt(place) ? ">" : "") + show(*place) + " ";
  }
  if (isAt(list.end())) all += "(end) ";
  if (!all.empty()) all.pop_back();
  return all;
}
inline std::string NameText(const std::string& name) {
  return name.starts_with(' ') || name.ends_with(' ') ? Quoted(name) : Bare(name);
}
inline std::string EntryText(const std::string& key, const std::string& value) {
  return NameText(key) + "[" + Bare(value) + "]";
}
inline std::string SectionText(const std::string& name, const std::string& entries) {
  return NameText(name) + "{" + entries + "}";
}
inline std::string DumpText(const std::string& image, const std::string& entries,
                            const std::string& sections, bool deleteMark) {
  return "image:       " + Quoted(image) + "\nentries:     " + entries +
         "\nsections:    " + sections + "\ndelete mark: " + (deleteMark ? "set" : "clear") + "\n";
}

/// A file object with verbs for tests. A look at it changes nothing: it reads the members.
template <class Base>
class FileFixture : public Base {
 public:
  static constexpr bool kHasSections = std::is_base_of_v<Configuration::MultiSectionFile, Base>;
  static constexpr FileTokens kUsualTokens = kHasSections ? kPresetTokens : kFlatTokens;

  FileFixture(const FileTokens& with, const char* source, bool create = false, bool reads = false,
              bool isText = false) requires kHasSections
      : Base(source, create, reads, isText, with.keyword, with.start, with.stop, with.separator,
             with.comment, with.prefix) {}
  FileFixture(const FileTokens& with, const char* source, bool create = false, bool reads = false,
              bool isText = false) requires(!kHasSections)
      : Base(source, create, reads, isText, with.separator, with.comment, with.prefix) {}

  bool DeleteMark() const { return this->afterDelete; }
  bool IsTornDown() const {
    return this->lines == nullptr && this->path == nullptr && this->entries == nullptr;
  }
  std::string Image() {
    std::string image(this->lines->totalLength + 1, '~');
    if (!this->SaveToBuffer(image.data(), image.size())) return "(longer than its lines)";
    image.pop_back();
    return image;
  }
  /// The entries (of a sectioned file those outside sections), and their cursor.
  std::string Entries() {
    if constexpr (kHasSections) return EntriesText(*this->entries, *this->entryCursor);
    if constexpr (!kHasSections) return EntriesText(*this->entries, *this->cursor);
  }
  /// The sections with their entries, and all their cursors.
  std::string Sections() {
    if constexpr (kHasSections) {
      const auto show = [](auto& section) {
        return SectionText(std::string(section.Name()),
                           EntriesText(section.entries, section.entryCursor));
      };
      if (!this->sections->IsEmpty()) return Text(*this->sections, *this->sectionCursor, show);
    }
    return "(none)";
  }
  std::string Dump() {
    if (IsTornDown()) return "torn down\n";
    return DumpText(Image(), Entries(), Sections(), DeleteMark());
  }

 private:
  static std::string EntriesText(auto& entries, auto cursor) {
    return Text(entries, cursor, [](auto& entry) {
      return EntryText(std::string(entry.Name()), std::string(entry.Value()));
    });
  }
  static std::string Text(auto& list, auto cursor, auto show) {
    const auto isAt = [&](auto place) { return list.PositionOf(place) == cursor; };
    return ListText(list, cursor.IsUnset(), isAt, show);
  }
};
using FlatFile = FileFixture<Configuration::ConfigFile>;
using SectionFile = FileFixture<Configuration::MultiSectionFile>;

/// What a read of the file at `path` says: its image, or its message.
inline std::string Reading(const std::string& path, bool readOnly) {
  return Outcome([&] { return FlatFile(kFlatTokens, path.c_str(), false, readOnly).Image(); });
}
/// What a save of `text` to `path` says.
inline std::string Saving(const std::string& path, bool coalesced, const char* text) {
  FlatFile file(kFlatTokens, nullptr);
  file.AttachToBuffer(text, path.c_str());
  return Outcome([&] { return file.Save(coalesced, nullptr) ? "true" : "false"; });
}

#endif
