// SPDX-License-Identifier: MIT
#include "text/Text.h"

#include <cstring>

namespace zelconfutils::Text {

bool EqualIgnoringCase(const char* left, const char* right) {
  while (*left != '\0' && ToLower(*left) == ToLower(*right)) {
    ++left;
    ++right;
  }
  return ToLower(*left) == ToLower(*right);
}

char* Duplicate(const char* text) {
  if (text == nullptr) return nullptr;
  const std::size_t bytes = std::strlen(text) + 1;
  char* copy = new char[bytes];
  std::memcpy(copy, text, bytes);
  return copy;
}

}  // namespace zelconfutils::Text
