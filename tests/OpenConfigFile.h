// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_OPEN_CONFIG_FILE_H
#define ZELCONFUTILS_TESTS_OPEN_CONFIG_FILE_H

#include <cstddef>
#include <string>

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

/// A `ConfigFile` that tests may look into.
class OpenConfigFile : public Configuration::ConfigFile {
 public:
  using ConfigFile::afterDelete;
  using ConfigFile::ConfigFile;
  using ConfigFile::cursor;
  using ConfigFile::entries;
  using ConfigFile::lines;
  using ConfigFile::Load;
  using ConfigFile::path;

  /// Reads a file, "=" and "#" its tokens unless others are given.
  explicit OpenConfigFile(const std::string& filePath, const char* separatorToken = "=",
                          const char* commentToken = "#", const char* prefix = nullptr)
      : ConfigFile(filePath.c_str(), false, false, false, separatorToken, commentToken, prefix) {}

  /// The image, by way of a buffer that just fits; one byte less must be refused.
  std::string Image() {
    std::string image(lines->totalLength + 1, '?');
    const bool fitsOneLess = SaveToBuffer(image.data(), lines->totalLength);
    if (fitsOneLess || (lines->totalLength > 0 && image[0] != '\0')) return "one byte too few";
    if (!SaveToBuffer(image.data(), image.size()) || image.back() != '\0') return "no image";
    image.pop_back();
    return image;
  }

  std::string Fault() const { return ::Fault(*lines, *entries); }
};

#endif
