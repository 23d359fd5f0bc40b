// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_OPEN_CONFIG_FILE_H
#define ZELCONFUTILS_TESTS_OPEN_CONFIG_FILE_H

#include <cstddef>
#include <string>
#include <string_view>

#include "ConfigFile.h"
#include "config/ConfigEntry.h"
#include "config/ConfigLineList.h"

/// What is broken in a file image and one index of it, or an empty text.
inline std::string Fault(const Configuration::ConfigLineList& lines,
                         const Configuration::ConfigEntryList& entries) {
  std::size_t total = 0;
  auto entry = entries.begin();
  for (const Configuration::ConfigLine& line : lines.Lines()) {
    total += line.length;
    if (line.length > line.capacity || line.text[line.length] != '\0') return "a line's end";
    if (!(entry != entries.end()) || &*(*entry).line != &line) continue;
    const auto& [key, keyLength, value, valueLength, position] = *entry;
    if (key < line.text || key + keyLength > value) return "a key's view";
    if (value + valueLength > line.text + line.length) return "a value's view";
    ++entry;
  }
  if (entry != entries.end()) return "an entry without its line, or out of order";
  return total == lines.totalLength ? "" : "totalLength";
}

struct FileTokens {
  const char *keyword, *start, *stop, *separator, *comment, *prefix;
};

inline std::string Told(bool result) { return result ? "1" : "0"; }
inline std::string Told(std::size_t n) { return n == 4294967295 ? "!" : std::to_string(n); }

/// `a[1]*b[2]`: the mark `*` is in front of the entry that the cursor is at, `^` of a list whose
/// cursor is unset, `$` behind one at end.
inline std::string Listed(const Configuration::ConfigEntryList& list,
                          const Configuration::ConfigEntryPosition& cursor, bool capacities) {
  std::string listed = cursor.IsUnset() ? "^" : "";
  for (const auto& entry : list) {
    if (cursor.IsAtElement() && &*cursor == &entry) listed += "*";
    listed.append(entry.Name()).append("[").append(entry.Value()).append("]");
    if (capacities) listed += std::to_string(entry.line->capacity);
  }
  return listed + (cursor.IsEnd() ? "$" : "");
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

  /// Puts the bytes in place of the content, cut into lines as a file is.
  void Take(std::string_view bytes) {
    this->ClearAll();
    while (!bytes.empty()) {
      const std::size_t end = bytes.substr(0, 1023).find('\n');
      const std::string_view line = bytes.substr(0, end == bytes.npos ? 1023 : end + 1);
      lines->AddLine(line, true);
      bytes.remove_prefix(line.size());
    }
    Load();
  }

  /// The image, by way of a buffer that just fits; one byte less must be refused.
  std::string Image() {
    std::string image(lines->totalLength + 1, '?');
    const bool fitsOneLess = this->SaveToBuffer(image.data(), lines->totalLength);
    if (fitsOneLess || (lines->totalLength > 0 && image[0] != '\0')) return "one byte too few";
    if (!this->SaveToBuffer(image.data(), image.size()) || image.back() != '\0') return "no image";
    image.pop_back();
    return image;
  }

  // Reads: the result and what the buffers hold.
  template <class F>
  std::string Get(std::size_t (F::*get)(const char*, char*, std::size_t), const char* key) {
    char value[4096] = "?";
    const std::string result = Told((static_cast<F&>(*this).*get)(key, value, sizeof value));
    return result + value;
  }
  template <class F>
  std::string Read(std::size_t (F::*read)(char*, std::size_t, char*, std::size_t)) {
    char key[4096] = "", value[4096] = "";
    const std::string result =
        Told((static_cast<F&>(*this).*read)(key, sizeof key, value, sizeof value));
    return result + key + "," + value;
  }
};

class OpenConfigFile : public OpenFile<Configuration::ConfigFile> {
 public:
  using ConfigFile::cursor;
  using OpenFile::OpenFile;

  /// Reads a file, "=" and "#" its tokens unless others are given.
  explicit OpenConfigFile(const std::string& filePath, const char* separatorToken = "=",
                          const char* commentToken = "#", const char* prefix = nullptr)
      : OpenFile(filePath.c_str(), false, false, false, separatorToken, commentToken, prefix) {}
  explicit OpenConfigFile(const FileTokens& with, const char* filePath = nullptr)
      : OpenFile(filePath, false, false, false, with.separator, with.comment, with.prefix) {}

  /// As that of a sectioned file without sections.
  std::string Picture(bool capacities = false) const {
    return Listed(*entries, *cursor, capacities) + "; $" + (afterDelete ? "+" : "");
  }
  std::string Fault() const { return ::Fault(*lines, *entries); }
};

#endif
