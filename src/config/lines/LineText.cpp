// SPDX-License-Identifier: MIT
#include "config/lines/LineText.h"

#include <cstring>

namespace Configuration::LineText {

bool Split(const char* text, ConfigLineList& lines) {
  while (const char* end = std::strchr(text, '\n')) {
    const std::string_view line(text, static_cast<std::size_t>(end - text) + 1);
    if (line.size() > kLongestLineBytes) return false;
    lines.AddLine(line, true);
    text = end + 1;
  }
  return true;
}

bool CopyImage(const ConfigLineList& lines, char* buffer, std::size_t size) {
  if (size == 0) return false;
  char* end = buffer;
  for (const ConfigLine& line : lines.Lines()) {
    if (line.length >= size - static_cast<std::size_t>(end - buffer)) {
      *buffer = '\0';
      return false;
    }
    std::memcpy(end, line.text, line.length);
    end += line.length;
  }
  *end = '\0';
  return true;
}

}  // namespace Configuration::LineText
