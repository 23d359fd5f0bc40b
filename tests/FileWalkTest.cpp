// SPDX-License-Identifier: MIT
// File objects beside a model through random steps.
#include "FileWalk.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

namespace {

void Walk(const std::string& input) {
  try {
    const long blocks = FailingNew::LiveBlocks();
    RunFileWalk(input);
    if (FailingNew::LiveBlocks() != blocks) {
      const long after = FailingNew::LiveBlocks();  // the first walk of all made the tables
      RunFileWalk(input);
      EXPECT_EQ(FailingNew::LiveBlocks(), after) << "a leak in the input " << Quoted(input);
    }
  } catch (const std::runtime_error& failure) {
    FAIL() << failure.what();
  }
}

TEST(FileWalk, OfEachKeptInputGoesAsTheModelSays) {
  int walked = 0;
  for (const auto& kept : std::filesystem::directory_iterator(ZELCONFUTILS_FILE_CORPUS)) {
    SCOPED_TRACE(kept.path().filename());
    Walk(TestFiles::Read(kept.path().string(), std::ios::binary));
    ++walked;
  }
  EXPECT_GT(walked, 0);
}

TEST(FileWalk, OfEachSeedGoesAsTheModelSays) {
  for (unsigned seed = 1; seed <= 1500 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::string input(random() % 1000, '\0');
    for (char& byte : input) byte = static_cast<char>(random());
    Walk(input);
  }
}

}  // namespace
