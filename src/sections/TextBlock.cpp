// SPDX-License-Identifier: MIT
#include "sections/TextBlock.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "text/Text.h"

namespace zelconfutils::TextBlock {

void Set(char*& block, const char* text) {
  if (text == nullptr) return;
  if (block == nullptr) block = new char[kBytes];  // what follows writes every byte of it
  const std::size_t length = std::min(std::strlen(text), kBytes - 1);
  std::memmove(block, text, length);  // not memcpy: the text may be the block's own
  std::memset(block + length, 0, kBytes - length);
}

void Adopt(char*& block, char*& fresh, const char* text) {
  if (block == nullptr) {
    std::swap(block, fresh);
  } else {
    Set(block, text);
  }
}

void Wipe(char* block) {
  if (block != nullptr) std::memset(block, 0, kBytes);
}

bool Match(const char* left, const char* right) {
  if (left == nullptr || right == nullptr) return left == right;
  return Text::EqualIgnoringCase(left, right);
}

}  // namespace zelconfutils::TextBlock
