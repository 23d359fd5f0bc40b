// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_ALL_TEXTS_H
#define ZELCONFUTILS_TESTS_ALL_TEXTS_H

#include <cstddef>
#include <string>
#include <vector>

/// All texts of up to `maxLength` bytes that can be made of the bytes given.
inline std::vector<std::string> AllTexts(const std::string& bytes, std::size_t maxLength) {
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (texts[i].size() == maxLength) break;
    for (const char byte : bytes) texts.push_back(texts[i] + byte);
  }
  return texts;
}

#endif
