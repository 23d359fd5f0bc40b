// SPDX-License-Identifier: MIT
// The bytes of a file, its image in memory and the bytes of a save, on a system that has a text
// mode. Elsewhere all three are the same.
#include <gtest/gtest.h>

#include <string>

#include "OpenConfigFile.h"
#include "TestFiles.h"
#include "TestSystem.h"

namespace {

void Check(const std::string& bytes, const std::string& image, const std::string& saved) {
  static const TestFiles::TemporaryDirectory directory;
  const std::string path = directory.Path("file"), target = directory.Path("target");
  TestFiles::Write(path, bytes, std::ios::binary);
  const struct { bool create, readOnly; } modes[] = {{false, false}, {false, true}, {true, false}};
  for (const auto& mode : modes) {
    for (const bool coalesced : {false, true}) {
      OpenConfigFile file(path.c_str(), mode.create, mode.readOnly, false, "=", "#", "");
      EXPECT_EQ(file.Image(), TestSystem::kHasTextMode ? image : bytes);
      EXPECT_TRUE(file.Save(coalesced, target.c_str()));
      EXPECT_EQ(TestFiles::Read(target, std::ios::binary),
                TestSystem::kHasTextMode ? saved : bytes);
    }
  }
  EXPECT_EQ(TestFiles::Read(path, std::ios::binary), bytes);
}

TEST(TextMode, EachKindOfLineEnd) {
  static const struct {
    std::string bytes, image, saved;
  } rows[] = {
      {"a=1\r\nb=2\r\n", "a=1\nb=2\n", "a=1\r\nb=2\r\n"},
      {"a=1\r\nb=2", "a=1\nb=2", "a=1\r\nb=2"},
      {"\r\n\r\n", "\n\n", "\r\n\r\n"},
      {"a=1\r\r\n\rb=2\r", "a=1\r\n\rb=2\r", "a=1\r\r\n\rb=2\r"},
      {"a=1\nb=2\n", "a=1\nb=2\n", "a=1\r\nb=2\r\n"},
      {"a=1\nb=2\r\n", "a=1\nb=2\n", "a=1\r\nb=2\r\n"},
      {std::string("a\0=1\r\n\0", 7), std::string("a\0=1\n\0", 6), std::string("a\0=1\r\n\0", 7)},
      {"a=1\r\nb=\x1A\r\nc=3\r\n", "a=1\nb=", "a=1\r\nb="},
      {"\x1A", "", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.bytes));
    Check(row.bytes, row.image, row.saved);
  }
}

// A pair over the border of a line buffer, a stream's buffer or a block of the reader.
TEST(TextMode, ALineEndAtEveryPlaceOfABorder) {
  for (const std::size_t border : {1024u, 4096u, 65536u, 131072u}) {
    for (std::size_t length = border - 4; length < border + 3; ++length) {
      SCOPED_TRACE(length);
      const std::string front(length, 'x'), bytes = front + "\r\nlast=1\r\n";
      Check(bytes, front + "\nlast=1\n", bytes);
    }
  }
}

}  // namespace
