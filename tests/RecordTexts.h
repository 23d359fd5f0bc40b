// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_RECORD_TEXTS_H
#define ZELCONFUTILS_TESTS_RECORD_TEXTS_H

#include <sstream>
#include <string>

#include "ZelSection.h"

/// Section records as texts, and made of such texts. An entry is `key/value/comment`, where `~` is
/// null and nulls at the end are left out; a section is `name: entry entry`.
namespace RecordTexts {

/// All that the block holds up to the last byte that is not zero: remains of another text show.
inline std::string Text(const char* block) {
  if (block == nullptr) return "~";
  const std::string bytes(block, 512);
  return bytes.substr(0, bytes.find_last_not_of('\0') + 1);
}
inline std::string Text(const ZelSectionEntry& entry) {
  std::string text = Text(entry.GetKeyName()) + '/' + Text(entry.GetValue()) + '/';
  text += Text(entry.GetComment());
  while (text.ends_with("/~")) text.resize(text.size() - 2);
  return text;
}
inline std::string Text(const ZelSection& section) {
  std::string text = Text(section.GetName()) + ':';
  for (const auto* entry : *section.GetEntryList()) {
    text.append(" ").append(entry == nullptr ? "null" : Text(*entry));
  }
  return text;
}

inline ZelSectionEntry Entry(const std::string& text) {
  std::istringstream parts(text + "/~/~");
  std::string key, value, comment;
  std::getline(std::getline(std::getline(parts, key, '/'), value, '/'), comment, '/');
  const auto given = [](const std::string& part) { return part == "~" ? nullptr : part.c_str(); };
  return {given(key), given(value), given(comment)};
}
inline ZelSection Section(const std::string& text) {
  std::istringstream words(text);
  std::string word;
  std::getline(words, word, ':');
  ZelSection section(word == "~" ? nullptr : word.c_str());
  while (words >> word) {
    ZelSectionEntry entry = Entry(word);
    section.AddEntry(&entry);
  }
  return section;
}

}  // namespace RecordTexts

#endif
