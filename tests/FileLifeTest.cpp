// SPDX-License-Identifier: MIT
// Flat and sectioned files as objects: how they are made, read, saved and cleared, what they say
// when that fails, and what they keep when memory runs out.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <variant>

#include "ConfigException.h"
#include "FailingNew.h"
#include "FileFixtures.h"
#include "SmartBuffer.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "config/files/PathCheck.h"

namespace {

namespace fs = std::filesystem;

// Relative paths of a test start in a directory of its own. Most tests run for both file classes.
template <class F>
struct FileLife : testing::Test {
  const fs::path former = fs::current_path(), directory = TestFiles::Path("test");
  const FileTokens tokens = {"section", "{\n", "}\n", "=", "#", "\t"};
  FileLife() {
    fs::create_directory(directory);
    fs::current_path(directory);
  }
  ~FileLife() override {
    fs::current_path(former);
    fs::remove_all(directory);
  }
};
using Files = testing::Types<FlatFile, SectionFile>;
TYPED_TEST_SUITE(FileLife, Files);
struct FlatFileLife : FileLife<FlatFile> {};

// --- Making, filling and clearing ---

TYPED_TEST(FileLife, WithoutASourceCursorsAreUnsetAndEditsWork) {
  TypeParam file(this->tokens, nullptr, true);
  EXPECT_EQ(file.Entries(), "(unset)");
  EXPECT_TRUE(file.AddEntry("a", "1", false) && file.GotoNextEntry());
  EXPECT_EQ(file.Image() + file.Entries(), "\ta=1\n>a[1]");
}

TYPED_TEST(FileLife, SaveWritesItsTargetOrThePathThatAttachToBufferDecided) {
  TestFiles::Write("file", "a=1\n");
  TypeParam file(this->tokens, "file");
  EXPECT_TRUE(file.AttachToBuffer("b=2\n", "path") && file.Save(true, "target"));
  EXPECT_FALSE(fs::exists("path"));
  EXPECT_TRUE(file.Save(false, ""));  // as null; no target becomes the path
  EXPECT_EQ(TestFiles::Read("file") + TestFiles::Read("path") + TestFiles::Read("target"),
            "a=1\nb=2\nb=2\n");
  EXPECT_TRUE(file.AttachToBuffer("c=3\n", nullptr));
  EXPECT_FALSE(file.Save(false, "other") || file.Save(true, nullptr) || fs::exists("other"));
}

TYPED_TEST(FileLife, AssignmentSharesAllMembers) {
  TypeParam file(this->tokens, "a=1\n{\n}\n", true, false, true), other(this->tokens, nullptr);
  std::string own(reinterpret_cast<const char*>(&other), sizeof other);  // released in its place
  other = file;
  EXPECT_TRUE(other.AddEntry("b", "2", false) && file.GotoLastEntry());
  EXPECT_EQ(other.Entries() + other.Image(), "a[1] >b[2]a=1\n{\n}\n\tb=2\n");
  own.copy(reinterpret_cast<char*>(&other), sizeof other);
}

// --- Bytes ---

TYPED_TEST(FileLife, KeepsEveryByteBeyondTheBuffers) {
  std::string image;
  while (image.size() < 300000) image += "ab=1\n";  // more lines than the largest slab holds
  for (std::size_t n = 1; n < 1100; ++n) {
    image += std::string(n, static_cast<char>('a' + n % 26)) + "\n";
  }
  image += std::string(70000, 'x') + std::string(3000, '\0') + "end";
  TestFiles::Write("file", image);
  TypeParam file(this->tokens, "file", false, true);
  EXPECT_EQ(Quoted(file.Image()), Quoted(image));
  file.SetEntry("k", "");
  file.SetEntry("k", std::string(40000, 'v').c_str());  // a line larger than the writer's block
  for (const bool coalesced : {true, false}) {
    EXPECT_TRUE(file.Save(coalesced, "out"));
    EXPECT_EQ(Quoted(TestFiles::Read("out")), Quoted(file.Image()));
  }
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

TYPED_TEST(FileLife, CoalescedSavesNeedMemoryEverMoreRarely) {
  static const struct {
    int file;
    std::size_t imageBytes;
    long blocks;
  } rows[] = {{0, 0, 0},     {0, 1, 1},     {0, 65535, 0}, {0, 65536, 1}, {0, 67584, 0},
              {0, 67585, 1}, {0, 71681, 0}, {0, 71682, 1}, {0, 79874, 0}, {0, 79875, 1},
              {1, 65536, 1}, {1, 66560, 0}, {1, 66561, 1}};
  TypeParam files[] = {{this->tokens, nullptr}, {this->tokens, nullptr}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.imageBytes);
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
    file.ClearAll();
    EXPECT_EQ(FailingNew::LiveBlocks(), atFirst);
  }
}

TYPED_TEST(FileLife, ReadAndLoadDoAllOrNothing) {
  std::string text(70000, 'x');  // the first block tells of fewer lines than come
  while (text.size() < 75000) text += "a=1\nb=2\nc=3\nd=4\ne=5\nf=6\ng=7\n{\nh=8\n}\n";
  TestFiles::Write("file", text);
  TypeParam file(this->tokens, "file");
  const std::string loaded = file.Dump();
  file.ClearAll();
  const int reads = FailingNew::ForEachAllocation(
      [&] { file.Read(); },
      [&](bool failed) { EXPECT_EQ(Quoted(file.Image()), Quoted(failed ? "" : text)); });
  const std::string unloaded = file.Dump();
  const int loads = FailingNew::ForEachAllocation(
      [&] { file.Load(); },
      [&](bool failed) { EXPECT_EQ(file.Dump(), failed ? unloaded : loaded); });
  EXPECT_GT(reads, 2);
  EXPECT_GT(loads, 1);  // more entries than a file of that many lines is expected to have
}

// --- Messages ---

// What a file object says when it is made, saved or loaded, or the message of what it throws. Each
// allocation fails once, and then nothing is left: no block, no open file.
TYPED_TEST(FileLife, MessagesNameTheFileAndTheReasonAndNothingIsLeft) {
  using F = TypeParam;
  const FileTokens& with = this->tokens;
  const auto failure = [](const char* action, const std::string& path, int error) {
    return std::string("Error ") + action + " file \"" + path + "\" : " + std::strerror(error);
  };
  const auto on = [&](auto call) {
    return [&, call] {
      F file(with, "file");
      const std::string said = Outcome([&] { return call(file); });
      EXPECT_EQ(file.IsTornDown(), said != "true");
      return said;
    };
  };
  const std::string image = "n=1\n{\nk=v\n}\n" + std::string(300, 'x');
  const std::string far(300, 'f');  // refused by the system; the message comes whole
  const std::string isShort = "Length of section's start & stop tokens must be at least 2!";
  const struct {
    std::function<std::string()> run;
    std::string said;
  } rows[] = {
      {[&] { return F(with, "conf/sub/cfg", true).Image(); }, "Path conf/sub does not exist."},
      {[&] { return F(with, (far + "/c").c_str()).Image(); }, "Path " + far + " does not exist."},
      {[&] { return F(with, "none").Image(); }, failure("opening", "none", ENOENT)},
      {[&] { return F(with, "none", true, true).Image(); }, failure("opening", "none", ENOENT)},
      {[&] { return F(with, far.c_str(), true).Image(); },
       failure("opening", far, TestSystem::kLongNameError)},
      {[&] { return F(with, "dir", false, true).Image(); },
       failure("opening", "dir", TestSystem::kDirectoryError)},
      {[&] { return F(with, "made", true).Image(); }, ""},
      {[&] { return F(with, "file").Image(); }, image},
      {[&] { return SectionFile(with, "{\n", true, true, true).Image(); },
       "File \"\" is corrupted!"},
      {[] {
         return SectionFile({"", "{", "}\n", "=", "#", ""}, nullptr).Image();
       },
       isShort},
      {[] {
         return SectionFile({"", "{\n", "\n", "=", "#", ""}, nullptr).Image();
       },
       isShort},
      {on([](F& file) { return file.Save(false, "out"); }), "true"},
      {on([](F& file) { return file.Save(true, "out"); }), "true"},
      {on([](F& file) { return file.Save(true, "no/c"); }), failure("saving", "no/c", ENOENT)},
      {on([](F& file) { return file.Save(true, "dir"); }),
       failure("saving", "dir", TestSystem::kDirectoryError)},
      {on([](F& file) { return file.AttachToBuffer("", ""), file.Save(false, nullptr); }),
       failure("saving", "", ENOENT)},  // an empty path is a path
      {on([](F& file) { return file.AttachToBuffer("", "none"), file.Reload(), true; }),
       failure("opening", "none", ENOENT)},
  };
  fs::create_directory("dir");
  TestFiles::Write("file", image);
  const int openFiles = TestSystem::OpenFiles();
  bool aSaveMissedItsBuffer = false;
  std::string said;
  said.reserve(10000);  // no block of its own while one fails
  for (const auto& row : rows) {
    SCOPED_TRACE(row.said);
    const int failed = FailingNew::ForEachAllocationOn<std::monostate>(
        [&](auto&) {
          said.clear();
          said += Outcome(row.run);
        },
        [&](auto&, bool) {
          EXPECT_EQ(TestSystem::OpenFiles(), openFiles);
          aSaveMissedItsBuffer |= said.ends_with("saving file \"out\" : file is too big.");
        });
    EXPECT_EQ(said, row.said);
    EXPECT_GT(failed, 0);
  }
  EXPECT_TRUE(!fs::exists("none") && fs::exists("made"));
  EXPECT_TRUE(aSaveMissedItsBuffer);
}

TEST_F(FlatFileLife, ThePathCheckAsksForTheDirectoryThatThePathNames) {
  const std::string absolute = fs::current_path().generic_string() + "/d/e";
  const struct {
    std::string path;
    bool create, exists;
    std::string text;
  } rows[] = {
      {"cfg.txt", false, true, "cfg.txt"},
      {"", false, true, ""},
      {"/cfg.txt", true, true, "/cfg.txt"},
      {"q/c", false, false, "q"},
      {"here\\", false, true, "here"},
      {"conf/sub/cfg.txt", false, false, "conf/sub"},
      {"here//cfg.txt", false, true, "here/"},
      {"C:\\cfg.txt", false, TestSystem::kHasDrives, "C:\\"},
      {"Q:/sub\\cfg.txt", false, false, "Q:/sub"},
      {"a\\b/c/file", true, true, "a/b/c"},
      {absolute + "/file", true, true, absolute},
      {"file/cfg", true, false, "file"},
  };
  fs::create_directory("here");
  TestFiles::Write("file", "");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    const Configuration::PathCheck check(row.path.c_str(), row.create);
    EXPECT_EQ(check.Exists(), row.exists);
    EXPECT_EQ(check.Text(), row.text);
  }
  EXPECT_TRUE(fs::is_directory("a/b/c") && fs::is_directory("d/e"));
}

TEST(MultiSectionConfigFile, HasItsTokensWhateverItsThirdArgument) {
  const std::string path = TestFiles::Written("x = 1\nsection a {\n# k=0\nk=1\n}\n");
  for (const bool ignored : {false, true}) {
    FileFixture<Configuration::MultiSectionConfigFile> file(path.c_str(), false, ignored, true,
                                                            false);
    EXPECT_TRUE(file.AddSection("b", false) && file.AddSectionEntry("k", "2"));
    EXPECT_EQ(file.Image(), "x = 1\nsection a {\n# k=0\nk=1\n}\nsection b {\nk=2\n}\n");
    EXPECT_EQ(file.Sections(), "a{(unset) k[1]} >b{(unset) k[2]}");
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
