// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/Text.h"

namespace {

TEST(Text, EqualIgnoringCaseFoldsAsciiLettersOnly) {
  static const struct {
    const char *left, *right;
    bool equal;
  } rows[] = {
      {"", "", true},     {"Key", "kEY", true},    {"a", "ab", false},
      {"ab", "a", false}, {"[", "{", false},       {"@", "`", false},
      {"Z", "z", true},   {"\xC4", "\xE4", false}, {"\xC4", "\xC4", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.left) + " / " + row.right);
    EXPECT_EQ(Text::EqualIgnoringCase(row.left, row.right), row.equal);
  }
}

TEST(Text, NoByteFrom0x80UpHasAClass) {
  for (int c = 0x80; c <= 0xFF; ++c) {
    const char byte = static_cast<char>(c);
    EXPECT_FALSE(Text::IsSpace(byte) || Text::IsDigit(byte) || Text::IsLetter(byte)) << c;
  }
}

}  // namespace
