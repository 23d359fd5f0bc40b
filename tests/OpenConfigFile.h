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
  std::size_t total = 0, count = 0;
  auto entry = entries.begin();
  for (const Configuration::ConfigLine& line : lines.Lines()) {
    total += line.length;
    if (line.length > line.capacity || line.text[line.length] != '\0') return "a line's end";
    if (!(entry != entries.end()) || &*(*entry).line != &line) continue;
    const auto& [key, keyLength, value, valueLength, position] = *entry;
    if (key < line.text || key + keyLength > value) return "a key's view";
    if (value + valueLength > line.text + line.length) return "a value's view";
    ++entry;
    ++count;
  }
  if (entry != entries.end()) return "an entry without its line, or out of order";
  if (count != entries.Count()) return "the count of entries";
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
  using ConfigFile::Tidy;

  /// Reads the file at `filePath`, which may be written too.
  explicit OpenConfigFile(const std::string& filePath, const char* separatorToken = "=",
                          const char* commentToken = "#", const char* prefix = nullptr)
      : ConfigFile(filePath.c_str(), false, false, false, separatorToken, commentToken, prefix) {}

  /// The image, by way of `SaveToBuffer`; with nothing to spare and with one byte too few.
  std::string Image() {
    std::string image(lines->totalLength + 1, '?');
    const bool fitsOneLess = SaveToBuffer(image.data(), lines->totalLength);
    if (fitsOneLess || (lines->totalLength > 0 && image[0] != '\0')) return "one byte too few";
    if (!SaveToBuffer(image.data(), image.size())) return "no image";
    image.pop_back();
    return image;
  }

  std::string Fault() const { return ::Fault(*lines, *entries); }
};

#endif
