// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_OPEN_FILES_H
#define ZELCONFUTILS_TESTS_OPEN_FILES_H

#include <cstddef>
#include <string>

#include "ConfigException.h"
#include "ConfigFile.h"
#include "MultiSectionFile.h"
#include "config/entries/ConfigEntry.h"
#include "config/lines/ConfigLineList.h"
#include "multisection/ConfigSection.h"

struct FileTokens {
  const char *keyword, *start, *stop, *separator, *comment, *prefix;
};

inline std::string Told(bool result) { return result ? "1" : "0"; }
inline std::string Told(std::size_t n) { return n == 4294967295 ? "!" : std::to_string(n); }
inline std::string Told(const std::string& what) { return what; }

/// What a call says, or the message of what it throws.
template <class Call>
std::string Outcome(Call call) {
  try {
    return call();
  } catch (const ConfigException& failure) {
    return failure.what();
  }
}

/// `a[1]*b[2]`: the mark `*` is in front of the element that the cursor is at, `^` of a list whose
/// cursor is unset, `$` behind one at end.
template <class List, class Show>
std::string Listed(const List& list, const typename List::Position& cursor, Show show) {
  std::string listed = cursor.IsUnset() ? "^" : "";
  for (const auto& element : list) {
    if (cursor.IsAtElement() && &*cursor == &element) listed += "*";
    listed.append(element.Name()) += show(element);
  }
  return listed + (cursor.IsEnd() ? "$" : "");
}

/// Entries; a `?` tells of a view that leaves its line.
inline std::string Listed(const Configuration::ConfigEntryList& list,
                          const Configuration::ConfigEntryPosition& cursor) {
  return Listed(list, cursor, [](const Configuration::ConfigEntry& e) {
    const char* const end = e.line->text + e.line->length;
    const bool stray =
        e.key < e.line->text || e.key + e.keyLength > e.value || e.value + e.valueLength > end;
    return std::string("[").append(e.Value()) + (stray ? "?" : "]");
  });
}

/// A file that tests may look into.
template <class Base>
class OpenFile : public Base {
 public:
  using Base::afterDelete;
  using Base::Base;
  using Base::entries;
  using Base::lines;
  using Base::Load;
  using Base::path;
  using Base::Read;

  /// The image, by way of a buffer that just fits; one byte less must be refused.
  std::string Image() {
    std::string image(lines->totalLength + 1, '?');
    const bool fitsOneLess = this->SaveToBuffer(image.data(), lines->totalLength);
    if (fitsOneLess || (lines->totalLength > 0 && image[0] != '\0')) return "one byte too few";
    if (!this->SaveToBuffer(image.data(), image.size()) || image.back() != '\0') return "no image";
    image.pop_back();
    return image;
  }

  /// The longest text that each line's block holds; a `?` tells of a text without its end.
  std::string Capacities() const {
    std::string all;
    for (const auto& line : lines->Lines()) {
      all += std::to_string(line.capacity) + (line.text[line.length] == '\0' ? " " : "?");
    }
    return all;
  }

  // Reads: the result and what the buffers hold.
  template <class F>
  std::string Get(std::size_t (F::*get)(const char*, char*, std::size_t), const char* key) {
    F& file = static_cast<F&>(*this);
    return Copied([&](char* to, std::size_t size) { return (file.*get)(key, to, size); });
  }
  template <class F>
  std::string Read(std::size_t (F::*get)(char*, std::size_t, char*, std::size_t)) {
    F& file = static_cast<F&>(*this);
    const auto read = [&](auto... arguments) { return (file.*get)(arguments...); };
    char key[kRoom] = "", value[kRoom] = "";
    std::string told = Told(read(key, kRoom, value, kRoom));
    told += Copied([&](char* to, std::size_t size) { return read(to, size, nullptr, 0u); }) + ",";
    told += Copied([&](char* to, std::size_t size) { return read(nullptr, 0u, to, size); }) + ",";
    key[0] = value[0] = '~';
    key[1] = value[1] = '\0';
    told += Told(read(key, 0u, value, kRoom)) + value;
    return told + Told(read(key, kRoom, value, 0u)) + key;
  }

 protected:
  /// What `copy` says and writes when there is more room than needed; just enough must do as well,
  /// and one byte less be refused.
  template <class Copy>
  static std::string Copied(Copy copy) {
    std::string all(kRoom, '~');
    const std::size_t n = copy(all.data(), kRoom);
    if (all == std::string(kRoom, '~')) return Told(n) + " untouched";
    if (all == std::string(kRoom, '\0')) return Told(n) + "zeros";
    std::string fits(n + 1, '~'), less(n, '~');
    const bool whole =
        copy(fits.data(), n + 1) == n && all == fits + std::string(kRoom - n - 1, '~');
    const bool none = Told(copy(less.data(), n)) == "!" && less == std::string(n, '\0');
    return Told(n) + (whole && none && fits[n] == '\0' ? fits.substr(0, n) : " torn");
  }

 private:
  static constexpr std::size_t kRoom = 4096;
};

class OpenConfigFile : public OpenFile<Configuration::ConfigFile> {
 public:
  using ConfigFile::cursor;
  using OpenFile::OpenFile;

  explicit OpenConfigFile(const FileTokens& with, const char* source = nullptr, bool create = false,
                          bool reads = false, bool isText = false)
      : OpenFile(source, create, reads, isText, with.separator, with.comment, with.prefix) {}

  /// As that of a sectioned file without sections.
  std::string Picture() const {
    return Listed(*entries, *cursor) + "; $" + (afterDelete ? "+" : "");
  }
};

/// A `MultiSectionFile` that tests may look into.
class OpenSectionFile : public OpenFile<Configuration::MultiSectionFile> {
 public:
  using MultiSectionFile::entryCursor;
  using MultiSectionFile::sectionCursor;
  using MultiSectionFile::sections;

  explicit OpenSectionFile(const FileTokens& with, const char* source = nullptr,
                           bool create = false, bool reads = false, bool isText = false)
      : OpenFile(source, create, reads, isText, with.keyword, with.start, with.stop, with.separator,
                 with.comment, with.prefix) {}

  std::string Name() {
    return Copied([&](char* to, std::size_t size) { return GetSectionName(to, size); });
  }

  /// `*x[1]y[2]; A{^a[1]}*B{b[2]$}+`: top level, sections, the flag.
  std::string Picture() const {
    const auto show = [](const Configuration::ConfigSection& s) {
      const char *const text = s.startLine->text, *const end = text + s.startLine->length;
      const bool stray = s.name != nullptr && (s.name < text || s.name + s.nameLength > end);
      return std::string(stray ? "?{" : "{") + Listed(s.entries, s.entryCursor) + "}";
    };
    return Listed(*entries, *entryCursor) + "; " + Listed(*sections, *sectionCursor, show) +
           (afterDelete ? "+" : "");
  }
};

#endif
