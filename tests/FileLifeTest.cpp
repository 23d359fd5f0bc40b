// SPDX-License-Identifier: MIT
// Flat and sectioned files as objects: how they are made, read, saved and cleared, what they say
// when that fails, and what they keep when memory runs out.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

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
  EXPECT_TRUE(file.AttachToBuffer((fits + fits).c_str(), nullptr));
  EXPECT_EQ(file.GetEntryCount(), 2u);
  EXPECT_FALSE(file.AttachToBuffer((fits + tooLong + fits).c_str(), "path"));
  EXPECT_EQ(file.Image(), fits);
  EXPECT_EQ(file.Entries(), "(end)");
  EXPECT_TRUE(file.Save(false, nullptr));
  EXPECT_EQ(TestFiles::Read("path"), fits);
  EXPECT_EQ(TypeParam(this->tokens, tooLong.c_str(), true, false, true).Image(), "");
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

TYPED_TEST(FileLife, ReloadDropsWhatWasNotSaved) {
  TestFiles::Write("file", "a=1\nb=2\n{\nc=3\n}\n");
  TypeParam file(this->tokens, "file");
  const std::string loaded = file.Dump();
  file.SetEntry("a", "9");
  file.AddEntry("c", "9", false);
  file.DeleteEntry("b");
  file.Reload();
  EXPECT_EQ(file.Dump(), loaded);
}

TYPED_TEST(FileLife, ClearAllLeavesCursorsAtEndAndKeepsThePath) {
  TestFiles::Write("file", "a=1\n{\nc=3\n}\n");
  TypeParam file(this->tokens, "file");
  file.Restart();
  file.ClearAll();
  EXPECT_EQ(file.Image() + file.Entries(), "(end)");
  EXPECT_TRUE(file.Save(true, nullptr));
  EXPECT_EQ(TestFiles::Read("file"), "");
  EXPECT_TRUE(file.AddEntry("b", "", false) && !file.GotoNextEntry());
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
  std::string block;  // what a writer's block of 32768 bytes holds, less 32 bytes
  while (block.size() < 32 * 1023) block += line(1023);
  std::string small;  // more lines than the largest slab of a pool holds
  while (small.size() < 300000) small += "ab=1\n";
  for (const std::string& image : {small, block + line(32) + block + line(33) + block,
                                   line(2500) + line(70000) + std::string(3000, '\0') + "end"}) {
    TestFiles::Write("file", image);
    TypeParam file(this->tokens, "file", false, true);
    EXPECT_EQ(Quoted(file.Image()), Quoted(image));
    for (const std::size_t longer : {0u, 40000u}) {  // in one line, larger than the writer's block
      if (longer > 0) file.SetEntry("k", "");
      if (longer > 0) file.SetEntry("k", std::string(longer, 'v').c_str());
      for (const bool coalesced : {true, false}) {
        EXPECT_TRUE(file.Save(coalesced, "out"));
        EXPECT_EQ(Quoted(TestFiles::Read("out")), Quoted(file.Image()));
      }
    }
  }
}

// Lines of each length beside each other; each grows to its room's end and one byte past it, and
// every second is deleted and added again, so that blocks of each size are taken and used anew.
TYPED_TEST(FileLife, EachLineKeepsToItsOwnBytes) {
  constexpr std::size_t kLines = 300;
  const auto key = [](std::size_t n) { return std::to_string(n); };
  const auto value = [](std::size_t n, std::size_t more) {
    return std::string(n + more, static_cast<char>('a' + more % 26));
  };
  std::string image, odd;
  for (std::size_t n = 1; n <= kLines; ++n) image += key(n) + "=" + value(n, 0) + "\n";
  TestFiles::Write("file", image);
  TypeParam file(this->tokens, "file");
  for (const std::size_t more : {33u, 34u, 66u, 67u}) {  // room for 33 bytes, then for 32
    image.clear();
    for (std::size_t n = 1; n <= kLines; ++n) {
      file.SetEntry(key(n).c_str(), value(n, more).c_str());
      image += key(n) + "=" + value(n, more) + "\n";
    }
    ASSERT_EQ(Quoted(file.Image()), Quoted(image)) << more;
  }
  image.clear();
  for (std::size_t n = 1; n <= kLines; ++n) {
    if (n % 2 == 0) image += key(n) + "=" + value(n, 67) + "\n";
    if (n % 2 == 0) continue;
    file.DeleteEntry(key(n).c_str());
    odd += "\t" + key(n) + "=" + value(n, 66) + "\n";
  }
  for (std::size_t n = 1; n <= kLines; n += 2) {
    file.AddEntry(key(n).c_str(), value(n, 66).c_str(), false);
  }
  EXPECT_EQ(Quoted(file.Image()), Quoted(image + odd));
}

// Where the system has one, line ends are folded and unfolded, and 0x1A ends the file.
TYPED_TEST(FileLife, IsReadAndWrittenInTextMode) {
  const std::string bytes = "a=1\r\nb\n\r\r\n\x1A=2";
  for (int way = 0; way < 6; ++way) {
    TestFiles::Write("file", bytes, std::ios::binary);
    TypeParam file(this->tokens, "file", way % 3 == 1, way % 3 == 2);
    EXPECT_EQ(Quoted(file.Image()), Quoted(TestSystem::kHasTextMode ? "a=1\nb\n\r\n" : bytes));
    EXPECT_TRUE(file.Save(way < 3, "out"));
    EXPECT_EQ(Quoted(TestFiles::Read("out", std::ios::binary)),
              Quoted(TestSystem::kHasTextMode ? "a=1\r\nb\r\n\r\r\n" : bytes));
  }
}

// --- Memory ---

TEST(ConfigLineList, LineHasRoomFor33BytesAndOnceMovedFor32) {
  Configuration::ConfigLineList lines;
  lines.AddLine("0123456789", true);
  const auto line = lines.First();
  static const struct {
    std::size_t shrink, grow;
    bool moves;
    std::size_t capacity;
  } rows[] = {{0, 33, false, 43}, {33, 0, false, 43},    {0, 34, true, 76}, {0, 32, false, 76},
              {0, 1, true, 109},  {77, 109, false, 109}, {0, 1, true, 142}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.shrink) + " less, " + std::to_string(row.grow) + " more");
    lines.ShrinkLine(line, row.shrink, true);
    EXPECT_EQ(line->text[line->length] == '\0' || row.shrink == 0, true);
    EXPECT_EQ(lines.GrowLine(line, row.grow), row.moves);
    EXPECT_EQ(line->Capacity(), row.capacity);
    EXPECT_EQ(lines.totalLength, line->length);
  }
}

TEST_F(FlatFileLife, TheSaveBufferGrowsEverMoreRarely) {
  struct LineFile : FlatFile {
    using FlatFile::FlatFile;
    using FlatFile::lines;
  };
  struct Row {
    std::size_t image, capacity, growth;
  };
  const std::vector<Row> runs[] = {
      {{0, 0, 1}, {65535, 65536, 1}, {65536, 67585, 2}, {67585, 71682, 4}, {71682, 79875, 8}},
      {{65536, 66561, 1}, {66561, 68610, 2}, {9, 68610, 2}}};
  for (const auto& run : runs) {
    LineFile file(tokens, nullptr);
    file.AttachToBuffer("", "file");
    for (const Row& row : run) {
      SCOPED_TRACE(row.image);
      file.ClearAll();
      file.lines->AddLine(std::string(row.image, 'x'), true);
      EXPECT_TRUE(file.Save(true, nullptr));
      EXPECT_EQ(file.lines->saveCapacity, row.capacity);
      EXPECT_EQ(file.lines->saveGrowth, row.growth);
    }
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
  std::string text;
  while (text.size() < 5000) text += "a=1\nb=2\nc=3\nd=4\ne=5\nf=6\ng=7\n{\nh=8\n}\n";
  TestFiles::Write("file", text);
  TypeParam file(this->tokens, "file");
  const std::string loaded = file.Dump();
  file.ClearAll();
  const int reads = FailingNew::ForEachAllocation(
      [&] { file.Read(); }, [&](bool failed) { EXPECT_EQ(file.Image(), failed ? "" : text); });
  const std::string unloaded = file.Dump();
  const int loads = FailingNew::ForEachAllocation(
      [&] { file.Load(); },
      [&](bool failed) { EXPECT_EQ(file.Dump(), failed ? unloaded : loaded); });
  EXPECT_GT(reads, 2);
  EXPECT_GT(loads, 1);  // more entries than a file of that many lines is expected to have
  // A section without an end: also the message takes memory.
  TestFiles::Write("file", "a=1\n{\n");
  file.ClearAll();
  file.Read();
  FailingNew::ForEachAllocation(
      [&] {
        try {
          file.Load();
        } catch (const ConfigException&) {
        }
      },
      [&](bool failed) { EXPECT_TRUE(!failed || file.Entries() == "(end)"); });
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
  const auto bounded = [](const char* start, const char* stop) {
    return SectionFile(FileTokens{nullptr, start, stop, "=", "#", nullptr}, "no/cfg").Image();
  };
  const auto on = [&](auto call) {
    F file(with, "file");
    const std::string said = Outcome([&] { return call(file); });
    EXPECT_EQ(file.IsTornDown(), said != "true");
    return said;
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
      {[&] { return F(with, "a=1\n", true, true, true).Image(); }, "a=1\n"},
      {[&] { return SectionFile(with, "{\n", true, true, true).Image(); },
       "File \"\" is corrupted!"},
      {[&] { return bounded("{", "}\n"); }, isShort},
      {[&] { return bounded("{\n", "\n"); }, isShort},
      {[&] { return bounded("\n{", "\n}"); }, "Path no does not exist."},
      {[&] { return on([](F& f) { return f.Save(false, "out"); }); }, "true"},
      {[&] { return on([](F& f) { return f.Save(true, "out"); }); }, "true"},
      {[&] { return on([](F& f) { return f.Save(true, "no/c"); }); },
       failure("saving", "no/c", ENOENT)},
      {[&] { return on([](F& f) { return f.Save(true, "dir"); }); },
       failure("saving", "dir", TestSystem::kDirectoryError)},
      {[&] { return on([](F& f) { return fs::remove("file"), f.Reload(), true; }); },
       failure("opening", "file", ENOENT)},
      {[] { return std::string(SmartBuffer()()); }, ""},
      {[] {
         ConfigException exception("a"), copy(exception);
         try {
           exception = ConfigException("b");
         } catch (const std::bad_alloc&) {
           EXPECT_STREQ(exception.what(), "a");
         }
         return std::string(copy.what()) + exception.what();
       },
       "ab"},
  };
  fs::create_directory("dir");
  const int openFiles = TestSystem::OpenFiles();
  std::string said, all;
  said.reserve(10000);  // no block of theirs while one fails
  all.reserve(100000);
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
          all += said;
        });
    EXPECT_EQ(said, row.said);
    EXPECT_GT(failed, 0);
  }
  EXPECT_TRUE(!fs::exists("none") && fs::exists("made"));
  // A coalesced save without memory for its buffer.
  EXPECT_NE(all.find("saving file \"out\" : file is too big."), std::string::npos);
}

TEST_F(FlatFileLife, ThePathCheckAsksForTheDirectoryThatThePathNames) {
  const std::string absolute = fs::current_path().generic_string() + "/d/e";
  const struct {
    std::string path;
    bool create, exists;
    std::string text, made;
  } rows[] = {
      {"cfg.txt", false, true, "cfg.txt", "."},
      {"", false, true, "", "."},
      {"/cfg.txt", true, true, "/cfg.txt", "."},
      {"q/c", false, false, "q", "."},
      {"here\\", false, true, "here", "."},
      {"conf/sub/cfg.txt", false, false, "conf/sub", "."},
      {"here//cfg.txt", false, true, "here/", "."},
      {"C:\\cfg.txt", false, TestSystem::kHasDrives, "C:\\", "."},
      {"Q:/sub\\cfg.txt", false, false, "Q:/sub", "."},
      {"a\\b/c/file", true, true, "a/b/c", "a/b/c"},
      {absolute + "/file", true, true, absolute, "d/e"},
      {"file/sub/cfg", true, false, "file/sub", "."},
  };
  fs::create_directory("here");
  TestFiles::Write("file", "");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    const Configuration::PathCheck check(row.path.c_str(), row.create);
    EXPECT_EQ(check.Exists(), row.exists);
    EXPECT_EQ(check.Text(), row.text);
    EXPECT_TRUE(fs::is_directory(row.made)) << row.made;
  }
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

TEST(SmartBuffer, HasAThousandAndTwentyFourBytes) {
  SmartBuffer buffer;
  EXPECT_EQ(buffer.size(), 1024u);
  EXPECT_STREQ(buffer(), "");
  buffer[0] = 'a';
  (&buffer)[1] = '\0';
  EXPECT_STREQ(buffer(), "a");
  EXPECT_EQ(static_cast<const void*>(buffer()), &buffer);
}

}  // namespace
