// SPDX-License-Identifier: MIT
// Flat and sectioned files as objects: how they are made, read, saved and cleared, what they say
// when that fails, and what they keep when memory runs out.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
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
#include "config/lines/ConfigLineList.h"

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

TYPED_TEST(FileLife, TextInMemoryLosesALastLineWithoutLineFeed) {
  TypeParam file(this->tokens, "a=1\nb=2", true, false, true);
  EXPECT_EQ(file.Image() + file.Entries(), "a=1\n>a[1]");
}

TYPED_TEST(FileLife, AttachToBufferTakesLinesOf1023BytesAndRefuses1024) {
  TypeParam file(this->tokens, "z=0\n", true, false, true);
  const std::string fits = "a=" + std::string(1020, 'v') + "\n", tooLong = "b" + fits;
  EXPECT_FALSE(file.AttachToBuffer((fits + tooLong + fits).c_str(), "path"));
  EXPECT_EQ(file.Image() + file.Entries(), fits + "(end)");
  EXPECT_TRUE(file.Save(false, nullptr));
  EXPECT_EQ(TestFiles::Read("path"), fits);
}

TYPED_TEST(FileLife, AttachToBufferDecidesThePathAnew) {
  TestFiles::Write("file", "a=1\n");
  TypeParam file(this->tokens, "file");
  EXPECT_TRUE(file.AttachToBuffer("b=2\n", "other") && file.Save(false, nullptr));
  EXPECT_EQ(TestFiles::Read("file") + TestFiles::Read("other"), "a=1\nb=2\n");
  EXPECT_TRUE(file.AttachToBuffer("c=3\n", nullptr));
  EXPECT_FALSE(file.Save(false, nullptr));
  EXPECT_TRUE(file.AttachToBuffer("c=3\n", ""));  // an empty path is a path
  EXPECT_EQ(Outcome([&] { return file.Save(false, nullptr); }),
            std::string("Error saving file \"\" : ") + std::strerror(ENOENT));
}

TYPED_TEST(FileLife, WithoutAPathSaveTouchesNoFileAndReloadDoesNothing) {
  TypeParam file(this->tokens, "a=1\nb=2\n", true, false, true);
  EXPECT_TRUE(file.DeleteEntry("a"));
  EXPECT_FALSE(file.Save(false, "target") || file.Save(true, nullptr) || fs::exists("target"));
  file.Reload();
  EXPECT_EQ(file.Entries(), ">b[2]");
  EXPECT_TRUE(file.DeleteMark());
}

TYPED_TEST(FileLife, SavesToATargetAndKeepsItsPath) {
  TestFiles::Write("file", "a=1\nb=2\n");
  TypeParam file(this->tokens, "file");
  EXPECT_TRUE(file.DeleteEntry("a") && file.Save(true, "target"));
  EXPECT_EQ(TestFiles::Read("file") + TestFiles::Read("target"), "a=1\nb=2\nb=2\n");
  EXPECT_EQ(file.Entries(), ">b[2]");
  EXPECT_TRUE(file.Save(false, ""));  // as null
  EXPECT_EQ(TestFiles::Read("file"), "b=2\n");
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
  auto line = [n = 0](std::size_t bytes) mutable {
    return std::string(bytes - 1, static_cast<char>('a' + n++ % 26)) + "\n";
  };
  std::string block;  // what two of a writer's blocks hold, less 32 bytes
  while (block.size() < 32 * 1023) block += line(1023);
  std::string small;  // more lines than the largest slab of a pool holds
  while (small.size() < 300000) small += "ab=1\n";
  for (const std::string& image : {small, block + line(32) + block + line(33) + block,
                                   line(2500) + line(70000) + std::string(3000, '\0') + "end"}) {
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
}

// Lines of each length beside each other; each grows past its room, and every second is deleted and
// added again, so that blocks of each size are taken and used anew.
TYPED_TEST(FileLife, EachLineKeepsToItsOwnBytes) {
  const auto line = [](std::size_t key, std::size_t more) {
    return std::to_string(key) + "=" + std::string(key + more, static_cast<char>('a' + more % 26)) +
           "\n";
  };
  const auto set = [](TypeParam& file, const std::string& text) {
    const std::size_t is = text.find('=');
    file.SetEntry(text.substr(0, is).c_str(), text.substr(is + 1, text.size() - is - 2).c_str());
  };
  TypeParam file(kPresetTokens, nullptr);
  std::string even, odd;
  for (const std::size_t more : {0u, 34u, 67u}) {  // a new line has room for 33 bytes, then for 32
    for (std::size_t n = 1; n <= 300; ++n) set(file, line(n, more));
  }
  for (std::size_t n = 1; n <= 300; ++n) {
    (n % 2 == 0 ? even : odd) += line(n, n % 2 == 0 ? 67 : 66);
    if (n % 2 == 1) file.DeleteEntry(std::to_string(n).c_str());
  }
  for (std::size_t n = 1; n <= 300; n += 2) set(file, line(n, 66));
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

TEST(ConfigLineList, LineHasRoomFor33BytesAndOnceMovedFor32) {
  Configuration::ConfigLineList lines;
  lines.AddLine("0123456789", true);
  const auto line = lines.First();
  static const struct {
    std::size_t grow, capacity;
  } rows[] = {{33, 43}, {1, 76}, {32, 76}, {1, 109}};
  for (const auto& row : rows) {
    lines.GrowLine(line, row.grow);
    EXPECT_EQ(line->Capacity(), row.capacity);
    EXPECT_EQ(lines.totalLength, line->length);
  }
}

TEST_F(FlatFileLife, TheSaveBufferGrowsEverMoreRarely) {
  struct LineFile : FlatFile {
    using FlatFile::FlatFile;
    using FlatFile::lines;
  };
  const struct {
    std::size_t image, capacity, growth;
    bool isNew;
  } rows[] = {{0, 0, 1, true},          {65535, 65536, 1, false}, {65536, 67585, 2, false},
              {67585, 71682, 4, false}, {71682, 79875, 8, false}, {65536, 66561, 1, true},
              {66561, 68610, 2, false}, {9, 68610, 2, false}};
  std::optional<LineFile> file;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.image);
    if (row.isNew) file.emplace(tokens, nullptr);
    if (row.isNew) file->AttachToBuffer("", "file");
    file->ClearAll();
    file->lines->AddLine(std::string(row.image, 'x'), true);
    EXPECT_TRUE(file->Save(true, nullptr));
    EXPECT_EQ(file->lines->saveCapacity, row.capacity);
    EXPECT_EQ(file->lines->saveGrowth, row.growth);
  }
}

TYPED_TEST(FileLife, EditsThatTakeEachOtherBackNeedNoMoreMemory) {
  for (const bool clears : {false, true}) {
    TypeParam file(this->tokens, nullptr);
    long blocks = 0;
    for (int i = 0; i < 3000; ++i) {
      if (i == 100) blocks = FailingNew::LiveBlocks();
      file.AddEntry("k", "", true);
      file.SetEntry("k", "a value that is too long for the room after the line");
      if constexpr (TypeParam::kHasSections) {
        file.AddSection("s", true);
        file.AddSectionEntry("k", "");
        file.DeleteSection();
      }
      clears ? file.ClearAll() : (void)file.DeleteEntry("k");
    }
    EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
  }
}

TYPED_TEST(FileLife, ClearAllGivesAllMemoryBack) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "a=1\n{\nb=2\n}\n";
  TypeParam file(this->tokens, nullptr);
  const long blocks = FailingNew::LiveBlocks();
  file.AttachToBuffer(text.c_str(), nullptr);
  EXPECT_GT(FailingNew::LiveBlocks(), blocks);
  file.ClearAll();
  EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
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
  const auto made = [&](const std::string& source, bool create, bool reads) {
    return
        [&with, source, create, reads] { return F(with, source.c_str(), create, reads).Image(); };
  };
  const auto bounded = [](const char* start, const char* stop) {
    const FileTokens chosen = {nullptr, start, stop, "=", "#", nullptr};
    return [chosen] { return SectionFile(chosen, "file").Image(); };
  };
  const auto on = [&with](auto call) {
    return [&with, call] {
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
      {made("conf/sub/cfg", true, false), "Path conf/sub does not exist."},
      {made(far + "/c", false, false), "Path " + far + " does not exist."},
      {made("none", false, false), failure("opening", "none", ENOENT)},
      {made("none", true, true), failure("opening", "none", ENOENT)},
      {made(far, true, false), failure("opening", far, TestSystem::kLongNameError)},
      {made("dir", false, true), failure("opening", "dir", TestSystem::kDirectoryError)},
      {made("made", true, false), ""},
      {made("file", false, false), image},
      {[&] { return SectionFile(with, "{\n", true, true, true).Image(); },
       "File \"\" is corrupted!"},
      {bounded("{", "}\n"), isShort},
      {bounded("{\n", "\n"), isShort},
      {on([](F& file) { return file.Save(false, "out"); }), "true"},
      {on([](F& file) { return file.Save(true, "out"); }), "true"},
      {on([](F& file) { return file.Save(true, "no/c"); }), failure("saving", "no/c", ENOENT)},
      {on([](F& file) { return file.Save(true, "dir"); }),
       failure("saving", "dir", TestSystem::kDirectoryError)},
      {on([](F& file) { return file.AttachToBuffer("", "none"), file.Reload(), true; }),
       failure("opening", "none", ENOENT)},
  };
  fs::create_directory("dir");
  const int openFiles = TestSystem::OpenFiles();
  bool aSaveMissedItsBuffer = false;
  std::string said;
  said.reserve(10000);  // no block of its own while one fails
  for (const auto& row : rows) {
    SCOPED_TRACE(row.said);
    TestFiles::Write("file", image);
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
      {"file/sub/cfg", true, false, "file/sub"},
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
  for (const bool ignored : {false, true}) {
    const std::string path = TestFiles::Written("x = 1\nsection a {\n# k=0\nk=1\n}\n");
    Configuration::MultiSectionConfigFile file(path.c_str(), false, ignored, true, false);
    char name[4], value[4], image[80];
    EXPECT_EQ(file.GetSectionName(name, 4) + file.GetSectionEntry("k", value, 4), 2u);
    EXPECT_EQ(name + std::string(value), "a1");
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
