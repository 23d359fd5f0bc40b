// SPDX-License-Identifier: MIT
#include "config/entries/EntrySyntax.h"

#include <algorithm>
#include <cstring>

#include "text/Text.h"

namespace Text = zelconfutils::Text;

namespace Configuration::EntrySyntax {

EntrySpans Parse(std::string_view line, std::size_t separatorAt, std::size_t separatorLength) {
  const std::size_t keyEnd = KeyEnd(line, separatorAt);
  std::size_t key = 0;
  while (key < keyEnd && Text::IsSpace(line[key])) ++key;
  const std::size_t value = separatorAt + separatorLength;
  const std::size_t valueEnd = std::max(value, TrimmedLength(line));
  return {key, keyEnd - key, value, valueEnd - value};
}

std::size_t KeyEnd(std::string_view line, std::size_t separatorAt) {
  return TrimmedLength(line.substr(0, separatorAt));
}

std::size_t TrimmedLength(std::string_view text) {
  std::size_t length = text.size();
  while (length > 1 && Text::IsSpace(text[length - 1])) --length;
  return length;
}

std::string_view Compose(std::initializer_list<std::string_view> parts, char* buffer) {
  std::size_t length = 1;  // the line feed
  for (const std::string_view part : parts) length += part.size();
  if (length + 1 > kWorkBufferBytes) return {};
  char* end = buffer;
  for (const std::string_view part : parts) {
    std::memcpy(end, part.data(), part.size());
    end += part.size();
  }
  *end++ = '\n';
  *end = '\0';
  return {buffer, length};
}

}  // namespace Configuration::EntrySyntax
