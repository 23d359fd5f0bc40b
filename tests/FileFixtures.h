// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_FIXTURES_H
#define ZELCONFUTILS_TESTS_FILE_FIXTURES_H

#include <cstddef>
#include <functional>
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

/// One of an object's cursors, by what a caller has for it. No call tells where a cursor is: it is
/// found by stepping back, which moves it; from unset, `Advance` takes it there again.
struct CursorCalls {
  std::function<std::size_t()> count;
  std::function<bool()> toFirst, toNext, toPrevious;
  std::function<bool()> add, remove;  // an element of its own at the end of the list
  std::function<std::string()> element;

  CursorPlace Find() const {
    if (count() == 0) {  // only an element that is added tells unset from end
      if (!add()) return 0;
      const CursorPlace place = toPrevious() ? CursorPlace(0) : std::nullopt;
      remove();
      return place;
    }
    std::size_t steps = 0;
    while (steps <= count() && toPrevious()) ++steps;
    if (steps > 0) return steps;
    toNext();  // from unset to the first element, from the first away from it
    return toPrevious() ? CursorPlace(0) : std::nullopt;
  }
  void Advance(CursorPlace place) const {
    for (std::size_t steps = 0; place >= steps; ++steps) toNext();
  }
  std::string List(CursorPlace place) const {
    std::vector<std::string> elements;
    for (bool more = toFirst(); more && elements.size() <= count(); more = toNext()) {
      elements.push_back(element());
    }
    return ListText(elements, place);
  }
};

/// A file object with verbs for tests. What it shows is got by public operations and leaves every
/// cursor where it was; the delete mark is read, and put back, as a derived class can.
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
    std::string image(1024, '~');
    while (!this->SaveToBuffer(image.data(), image.size())) image.assign(2 * image.size(), '~');
    return image.substr(0, image.rfind('\0'));
  }
  /// The entries (of a sectioned file those outside sections), and their cursor.
  std::string Entries() { return Look().entries; }
  /// The sections with their entries, and all their cursors.
  std::string Sections() { return Look().sections; }
  std::string Dump() {
    if (IsTornDown()) return "torn down\n";
    const Seen seen = Look();
    return DumpText(Image(), seen.entries, seen.sections, DeleteMark());
  }

 protected:
  struct Seen {
    std::string entries, sections = "(none)";
  };
  Seen Look() {
    const bool mark = this->afterDelete;
    Seen seen;
    const CursorCalls topLevel = TopLevel();
    const CursorPlace place = topLevel.Find();
    seen.entries = topLevel.List(place);
    if constexpr (kHasSections) {
      const CursorCalls sectionList = SectionList();
      const bool hasSections = this->GetSectionCount() > 0;
      const CursorPlace section = hasSections ? sectionList.Find() : std::nullopt;
      if (hasSections) seen.sections = sectionList.List(section);
      this->Restart();
      sectionList.Advance(section);
    } else {
      this->Restart();
    }
    topLevel.Advance(place);
    this->afterDelete = mark;
    return seen;
  }
  CursorCalls TopLevel() {
    return {[this] { return this->GetEntryCount(); },
            [this] { return this->GotoFirstEntry(); },
            [this] { return this->GotoNextEntry(); },
            [this] { return this->GotoPreviousEntry(); },
            [this] { return this->AddEntry("~", "", false); },
            [this] { return this->DeleteEntry("~"); },
            [this] { return CurrentText(&Base::GetCurrentEntry); }};
  }
  CursorCalls SectionList() {
    return {[this] { return this->GetSectionCount(); },
            [this] { return this->GotoFirstSection(); },
            [this] { return this->GotoNextSection(); },
            [this] { return this->GotoPreviousSection(); },
            nullptr,
            nullptr,
            [this] { return SectionText(); }};
  }
  std::string SectionText() {
    const CursorCalls calls = {[this] { return this->GetSecEntryCount(); },
                               [this] { return this->GotoSecFirstEntry(); },
                               [this] { return this->GotoSecNextEntry(); },
                               [this] { return this->GotoSecPrevEntry(); },
                               [this] { return this->AddSectionEntry("~", ""); },
                               [this] { return this->DeleteSectionEntry("~"); },
                               [this] { return CurrentText(&Base::GetSecCurrentEntry); }};
    const CursorPlace place = calls.Find();
    const std::string listed = calls.List(place);
    this->RestartSection();
    calls.Advance(place);
    return ::SectionText(
        Copied([this](char* to, std::size_t size) { return this->GetSectionName(to, size); }),
        listed);
  }
  std::string CurrentText(std::size_t (Base::*read)(char*, std::size_t, char*, std::size_t)) {
    return EntryText(
        Copied([&](char* to, std::size_t size) { return (this->*read)(to, size, nullptr, 0); }),
        Copied([&](char* to, std::size_t size) { return (this->*read)(nullptr, 0, to, size); }));
  }
  // The whole text that `copy` writes when there is room enough.
  template <class Copy>
  static std::string Copied(Copy copy) {
    std::string text(3000, '~');
    std::size_t length = copy(text.data(), text.size());
    if (length == kTooSmall) text.resize(1000000);
    if (length == kTooSmall) length = copy(text.data(), text.size());
    return length < text.size() ? text.substr(0, length) : "(not to be read)";
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
