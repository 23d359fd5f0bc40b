// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_LINES_LINE_TEXT_H
#define ZELCONFUTILS_LINES_LINE_TEXT_H

#include <cstddef>
#include <cstring>
#include <string_view>

#include "config/lines/ConfigLineList.h"

/// From a text to lines and back.
namespace Configuration::LineText {

/// A physical line that is longer is stored as several lines; written back, they join up again.
constexpr std::size_t kLongestLineBytes = 1023;

/// The length of the first line in `text`: up to and with its line feed, or all that fits a line.
/// 0 when `text` ends before either.
inline std::size_t FirstLineLength(std::string_view text) {  // for the loop over a whole file
  const std::string_view reach = text.substr(0, kLongestLineBytes);
  const void* end = std::memchr(reach.data(), '\n', reach.size());
  if (end != nullptr) {
    return static_cast<std::size_t>(static_cast<const char*>(end) - reach.data()) + 1;
  }
  return reach.size() == kLongestLineBytes ? kLongestLineBytes : 0;
}

/// Appends the lines of `text` to `lines`. Bytes after the last line feed are dropped. False at
/// a line that is too long; the lines before it are kept.
bool Split(const char* text, ConfigLineList& lines);

/// Copies the file image with a terminator to `buffer`. False when it does not fit `size` bytes;
/// `buffer` then holds an empty text, if it has room for one.
bool CopyImage(const ConfigLineList& lines, char* buffer, std::size_t size);

}  // namespace Configuration::LineText

#endif
