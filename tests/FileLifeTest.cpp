// SPDX-License-Identifier: MIT
// Flat and sectioned files as objects: how they are made, read, saved and cleared, what they say
// when that fails, and what they keep when memory runs out.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "ConfigException.h"
#include "FailingNew.h"
#include "FileFixtures.h"
#include "SmartBuffer.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "config/memory/Poison.h"
#include "config/memory/TextPool.h"

namespace {

// Most tests run for both file classes.
template <class F>
struct FileLife : testing::Test {
  FileLife() { TestFiles::Clear(); }
  const FileTokens tokens = {"section", "{\n", "}\n", "=", "#", "\t"};
};
using Files = testing::Types<FlatFile, SectionFile>;
TYPED_TEST_SUITE(FileLife, Files);

// --- Making, filling and clearing ---

TYPED_TEST(FileLife, AssignmentSharesAllMembers) {
  TypeParam file(this->tokens, "a=1\n{\n}\n", true, false, true), other(this->tokens, nullptr);
  std::string own(reinterpret_cast<const char*>(&other), sizeof other);  // released in its place
  other = file;
  EXPECT_TRUE(other.AddEntry("b", "2", false) && file.GotoLastEntry());
  EXPECT_EQ(other.Entries() + other.Image(), "a[1] >b[2]a=1\n{\n}\n\tb=2\n");
  own.copy(reinterpret_cast<char*>(&other), sizeof other);
}

// --- Bytes ---

// Lines of each length beside each other; each grows past its room, and every second is deleted and
// added again, so that blocks of each size are taken and used anew.
TYPED_TEST(FileLife, EachLineKeepsToItsOwnBytes) {
  const auto line = [](std::size_t key, std::size_t more) {
    return std::to_string(key) + "=" + std::string(key + more, "abc"[more % 3]) + "\n";
  };
  const auto set = [](TypeParam& file, const std::string& text) {
    const std::size_t is = text.find('=');
    file.SetEntry(text.substr(0, is).c_str(), text.substr(is + 1, text.size() - is - 2).c_str());
  };
  TypeParam file(kPresetTokens, nullptr);
  std::string even, odd;
  for (const std::size_t more : {0u, 33u, 34u, 66u, 67u, 99u}) {  // room for 33 bytes, then for 32
    for (std::size_t n = 1; n <= 300; ++n) set(file, line(n, more));
  }
  for (std::size_t n = 1; n <= 300; ++n) {
    (n % 2 == 0 ? even : odd) += line(n, n % 2 == 0 ? 99 : 98);
    if (n % 2 == 1) file.DeleteEntry(std::to_string(n).c_str());
  }
  for (std::size_t n = 1; n <= 300; n += 2) set(file, line(n, 98));
  EXPECT_EQ(Quoted(file.Image()), Quoted(even + odd));
}

// Where the system has one, line ends are folded and unfolded, and 0x1A ends the file.
TYPED_TEST(FileLife, IsReadAndWrittenInTextMode) {
  const std::string bytes = "a=1\r\nb\n\r\r\n\x1A=2";
  for (const auto& [create, reads] : {std::pair(false, false), {true, false}, {false, true}}) {
    TestFiles::Write("file", bytes, std::ios::binary);
    TypeParam file(this->tokens, "file", create, reads);
    EXPECT_EQ(Quoted(file.Image()), Quoted(TestSystem::kHasTextMode ? "a=1\nb\n\r\n" : bytes));
    for (const bool coalesced : {true, false}) {
      EXPECT_TRUE(file.Save(coalesced, "out"));
      EXPECT_EQ(Quoted(TestFiles::Read("out", std::ios::binary)),
                Quoted(TestSystem::kHasTextMode ? "a=1\r\nb\r\n\r\r\n" : bytes));
    }
  }
}

// --- Memory ---

TEST(TextPool, TextsLieSideBySideAndNothingReleasedIsUsed) {
  for (const std::size_t capacity : {22u, 300u}) {  // in a slab, and on its own
    Configuration::TextPool pool;
    char* const text = pool.Take(capacity);
    EXPECT_EQ(Configuration::TextPool::Capacity(text), capacity);
    EXPECT_TRUE(capacity > 22 || pool.Take(22) == text + 24 + Configuration::Poison::kGapBytes);
    pool.Give(text);
    pool.Reset();
    const long before = FailingNew::AllBlocks();
    pool.Take(capacity);
    EXPECT_GT(FailingNew::AllBlocks(), before);
  }
}

TYPED_TEST(FileLife, CoalescedSavesNeedMemoryEverMoreRarely) {
  static const struct {
    int file;
    std::size_t imageBytes;
    long blocks;
  } rows[] = {{0, 0, 0},     {0, 1, 1},     {0, 65535, 0}, {0, 65536, 1},
              {0, 67584, 0}, {0, 67585, 1}, {0, 71681, 0}, {0, 71682, 1},
              {1, 65536, 1}, {1, 66560, 0}, {1, 66561, 1}};
  TypeParam files[] = {{this->tokens, nullptr}, {this->tokens, nullptr}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.imageBytes);
    files[row.file].ClearAll();
    files[row.file].AttachToBuffer(std::string(row.imageBytes, '\n').c_str(), "file");
    const long before = FailingNew::AllBlocks();
    files[row.file].Save(true, nullptr);
    EXPECT_EQ(FailingNew::AllBlocks() - before, row.blocks);
  }
}

TYPED_TEST(FileLife, EditsThatTakeEachOtherBackNeedNoMoreMemoryAndClearAllGivesItBack) {
  for (const bool clears : {false, true}) {
    TypeParam file(this->tokens, nullptr);
    const long atFirst = FailingNew::LiveBlocks();
    long blocks = 0;
    for (int i = 0; i < 3000; ++i) {
      if (i == 100) blocks = FailingNew::LiveBlocks();
      file.AddEntry("k", "", true);
      file.SetEntry("k", "a value that is too long for the room after the line");
      if constexpr (TypeParam::kHasSections) {
        file.AddSection("s", true);
        file.AddSectionEntry("k", "");
        if (!clears) file.DeleteSection();
      }
      clears ? file.ClearAll() : (void)file.DeleteEntry("k");
    }
    EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
    if (!clears) file.ClearAll();
    EXPECT_EQ(FailingNew::LiveBlocks(), atFirst);
  }
}

TYPED_TEST(FileLife, ReloadAndAttachToBufferDoAllOrNothing) {
  std::string lines;  // more entries than a file of that many lines is expected to have
  while (lines.size() < 5000) lines += "a=1\nb=2\nc=3\nd=4\ne=5\nf=6\ng=7\n{\nh=8\n}\n";
  const std::string longer = std::string(70000, 'x') + lines;  // than its first block tells
  for (const std::string& text : {lines, longer}) {
    TestFiles::Write("file", text);
    TypeParam file(this->tokens, "file");
    const std::string loaded = file.Dump();
    file.AttachToBuffer("k=v\n", "file");
    const std::string before = file.Dump();
    const int failed = FailingNew::ForEachAllocation(
        [&] { text == lines ? (void)file.AttachToBuffer(lines.c_str(), "file") : file.Reload(); },
        [&](bool fails) { EXPECT_EQ(file.Dump(), fails ? before : loaded); });
    EXPECT_GT(failed, 20);
  }
}

TYPED_TEST(FileLife, ACoalescedSaveThatFindsNoMemoryFails) {
  TypeParam file(this->tokens, "file", true);
  file.AddEntry("a", "1", false);
  std::string said;
  const auto save = [&] {
    if (!file.IsTornDown()) said = Outcome([&] { return std::to_string(file.Save(true, "")); });
  };
  FailingNew::ForEachAllocation(save, [](bool) {});
  EXPECT_EQ(said, "Error saving file \"file\" : file is too big.");
}

// --- Classes that stand alone ---

TEST(MultiSectionConfigFile, HasItsTokensWhateverItsThirdArgument) {
  TestFiles::Write(TestFiles::Path("file"), "x = 1\nsection a {\n# k=0\nk=1\n}\n");
  for (const bool ignored : {false, true}) {
    Configuration::MultiSectionConfigFile file("file", false, ignored, true, false);
    char image[80];
    EXPECT_TRUE(file.GotoSection("a") && file.GetSecEntryCount() == 1);
    EXPECT_TRUE(file.AddSection("b", false) && file.AddSectionEntry("k", "2"));
    EXPECT_TRUE(file.SaveToBuffer(image, sizeof image));
    EXPECT_STREQ(image, "x = 1\nsection a {\n# k=0\nk=1\n}\nsection b {\nk=2\n}\n");
  }
}

TEST(ConfigException, KeepsItsTextWhereAnAssignmentFindsNoMemory) {
  ConfigException exception("a");
  const ConfigException other("b");
  FailingNew::ForEachAllocation(
      [&] { exception = other; },
      [&](bool failed) { EXPECT_STREQ(exception.what(), failed ? "a" : "b"); });
}

TEST(SmartBuffer, HasAThousandAndTwentyFourBytes) {
  SmartBuffer buffer;
  EXPECT_EQ(buffer.size(), 1024u);
  EXPECT_STREQ(buffer(), "");
  buffer[0] = 'a';
  (&buffer)[1] = '\0';
  EXPECT_STREQ(buffer(), "a");
}

}  // namespace
