// SPDX-License-Identifier: MIT
// The bytes of a file, its image in memory and the bytes of a save, on a system that has a text
// mode. Elsewhere all three are the same.
#include <gtest/gtest.h>

#include <string>

#include "AllTexts.h"
#include "OpenConfigFile.h"
#include "TestFiles.h"
#include "TestSystem.h"

namespace {

// At the start of a file, and over the end of a line buffer, of a stream's buffer and of a block
// of the reader; by each way to read and to save in turn.
TEST(TextMode, FoldsAndUnfoldsLineEndsEverywhere) {
  const TestFiles::TemporaryDirectory directory;
  const std::string path = directory.Path("file"), target = directory.Path("target");
  int way = 0;
  for (const std::size_t length : {0u, 1021u, 4093u, 65533u, 131069u}) {
    for (const std::string& text : AllTexts(std::string("a\r\n\x1A\0", 5), length == 0 ? 4 : 3)) {
      const std::string bytes = std::string(length, 'x') + text;
      std::string image = bytes, saved = bytes;
      if (TestSystem::kHasTextMode) {
        image = saved = "";
        for (std::size_t i = 0; i < bytes.size() && bytes[i] != '\x1A'; ++i) {
          if (bytes.compare(i, 2, "\r\n") == 0) continue;
          image += bytes[i];
          saved.append(bytes[i] == '\n' ? "\r" : "").append(1, bytes[i]);
        }
      }
      TestFiles::Write(path, bytes, std::ios::binary);
      way = (way + 1) % 6;
      OpenConfigFile file(path.c_str(), way % 3 == 1, way % 3 == 2, false, "=", "#", "");
      ASSERT_EQ(file.Image(), image);
      EXPECT_TRUE(file.Save(way < 3, target.c_str()));
      ASSERT_EQ(TestFiles::Read(target, std::ios::binary), saved);
      ASSERT_EQ(TestFiles::Read(path, std::ios::binary), bytes);
    }
  }
}

}  // namespace
