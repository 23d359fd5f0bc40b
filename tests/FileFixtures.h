// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_FIXTURES_H
#define ZELCONFUTILS_TESTS_FILE_FIXTURES_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "ConfigException.h"
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
inline constexpr FileTokens kTwoLineTokens = {"section", "\n{\n", "}\n", "=", "#", ""};

constexpr std::size_t kTooSmall = 4294967295;  // also: no such section

inline std::string ResultText(bool result) { return result ? "true" : "false"; }
inline std::string ResultText(std::size_t result) { return std::to_string(result); }
inline std::string ResultText(const std::string& text) { return text; }

/// What a call says, or the message of what it throws.
template <class Call>
std::string Outcome(Call call) {
  try {
    if constexpr (std::is_void_v<decltype(call())>) {
      call();
      return "";
    } else {
      return ResultText(call());
    }
  } catch (const ConfigException& failure) {
    return failure.what();
  }
}

/// The place of a cursor: none when it is unset, the number of elements when it is at end.
using CursorPlace = std::optional<std::size_t>;

/// `a[1] >b[2]`: the cursor is at b. `(unset) a[1] b[2]` and `a[1] b[2] (end)` are its other
/// states.
inline std::string ListText(const std::vector<std::string>& elements, CursorPlace cursor) {
  std::string all = cursor ? "" : "(unset) ";
  for (std::size_t i = 0; i < elements.size(); ++i) {
    all += (cursor == i ? ">" : "") + elements[i] + " ";
  }
  if (cursor == elements.size()) all += "(end) ";
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

template <class Element, class Show>
std::string ListText(Configuration::LinkedList<Element>& list,
                     Configuration::LinkedListPosition<Element> cursor, Show show) {
  std::vector<std::string> elements;
  CursorPlace place;
  for (auto at = list.First();; at.StepForward()) {
    if (at == cursor) place = elements.size();
    if (at.IsEnd()) return ListText(elements, place);
    elements.push_back(show(*at));
  }
}

/// A file object with verbs for tests. A look at it changes nothing: it reads the members.
template <class Base>
class FileFixture : public Base {
 public:
  static constexpr bool kHasSections = std::is_base_of_v<Configuration::MultiSectionFile, Base>;
  using Base::Base;
  using Base::Load;
  using Base::Read;

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
      if (!this->sections->IsEmpty()) {
        return ListText(*this->sections, *this->sectionCursor, [](auto& section) {
          return SectionText(std::string(section.Name()),
                             EntriesText(section.entries, section.entryCursor));
        });
      }
    }
    return "(none)";
  }
  std::string Dump() {
    if (IsTornDown()) return "torn down\n";
    return DumpText(Image(), Entries(), Sections(), DeleteMark());
  }

 private:
  static std::string EntriesText(Configuration::ConfigEntryList& entries,
                                 Configuration::ConfigEntryPosition cursor) {
    return ListText(entries, cursor, [](auto& entry) {
      return EntryText(std::string(entry.Name()), std::string(entry.Value()));
    });
  }
};

class FlatFile : public FileFixture<Configuration::ConfigFile> {
 public:
  /// A real file with that content.
  explicit FlatFile(std::string_view content, const FileTokens& with = kFlatTokens)
      : FlatFile(with, TestFiles::Written(content).c_str()) {}
  FlatFile(const FileTokens& with, const char* source, bool create = false, bool reads = false,
           bool isText = false)
      : FileFixture(source, create, reads, isText, with.separator, with.comment, with.prefix) {}
};

class SectionFile : public FileFixture<Configuration::MultiSectionFile> {
 public:
  explicit SectionFile(std::string_view content, const FileTokens& with = kPresetTokens)
      : SectionFile(with, TestFiles::Written(content).c_str()) {}
  SectionFile(const FileTokens& with, const char* source, bool create = false, bool reads = false,
              bool isText = false)
      : FileFixture(source, create, reads, isText, with.keyword, with.start, with.stop,
                    with.separator, with.comment, with.prefix) {}
};

/// What a read of the file at `path` says: its image, or its message.
inline std::string Reading(const std::string& path, bool readOnly) {
  return Outcome([&] { return FlatFile(kFlatTokens, path.c_str(), false, readOnly).Image(); });
}
/// What a save of `text` to `path` says.
inline std::string Saving(const std::string& path, bool coalesced, const char* text) {
  FlatFile file(kFlatTokens, nullptr);
  file.AttachToBuffer(text, path.c_str());
  return Outcome([&] { return file.Save(coalesced, nullptr); });
}

#endif
