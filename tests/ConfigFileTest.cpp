// SPDX-License-Identifier: MIT
// Flat and sectioned files at their edges: paths, texts in memory, saves and failures.
#include "ConfigFile.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <new>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "FailingNew.h"
#include "OpenFiles.h"
#include "SmartBuffer.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "config/files/PathCheck.h"

namespace {

namespace fs = std::filesystem;

constexpr FileTokens kTokens = {nullptr, "{\n", "}\n", "=", "#", "\t"};

// Relative paths of a test start in a directory of its own. Most tests run for both file classes.
template <class F>
struct File : testing::Test {
  const fs::path former = fs::current_path(), directory = TestFiles::Path("test");
  File() {
    fs::create_directory(directory);
    fs::current_path(directory);
  }
  ~File() override {
    fs::current_path(former);
    fs::remove_all(directory);
  }
};
using Files = testing::Types<OpenConfigFile, OpenSectionFile>;
TYPED_TEST_SUITE(File, Files);
using FlatFile = File<OpenConfigFile>;

TYPED_TEST(File, KeepsEveryByteBeyondTheBuffers) {
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
    TypeParam file(kTokens, "file", false, true);
    for (const bool coalesced : {true, false}) {
      EXPECT_TRUE(file.Save(coalesced, "out") && TestFiles::Read("out") == file.Image());
    }
    const std::string large(40000, 'v');  // in one line, larger than the writer's block
    EXPECT_TRUE(file.Image() == image && file.AddEntry("k", "", true));
    EXPECT_EQ(file.SetEntry("k", large.c_str()), 2u);
    for (const bool coalesced : {true, false}) {
      EXPECT_TRUE(file.Save(coalesced, "out") && TestFiles::Read("out") == file.Image());
    }
  }
}

TEST_F(FlatFile, TheSaveBufferGrowsEverMoreRarely) {
  using Row = std::array<std::size_t, 3>;  // image, capacity, growth
  for (const auto& run : {std::vector<Row>{{0, 0, 1}, {65535, 65536, 1}, {65536, 67585, 2}},
                          {{65536, 66561, 1}, {66561, 68610, 2}, {9, 68610, 2}}}) {
    OpenConfigFile file(kTokens);
    file.AttachToBuffer("", "file");
    for (const Row& row : run) {
      file.ClearAll();
      file.lines->AddLine(std::string(row[0], 'x'), true);
      EXPECT_TRUE(file.Save(true, nullptr));
      EXPECT_EQ(row, (Row{row[0], file.lines->saveCapacity, file.lines->saveGrowth}));
    }
  }
}

TYPED_TEST(File, EditsThatTakeEachOtherBackNeedNoMoreMemory) {
  for (const bool clears : {false, true}) {
    TypeParam file(kTokens);
    long blocks = 0;
    for (int i = 0; i < 3000; ++i) {
      if (i == 100) blocks = FailingNew::LiveBlocks();
      file.AddEntry("k", "", true);
      file.SetEntry("k", "a value that is too long for the room behind the line");
      if constexpr (std::is_same_v<TypeParam, OpenSectionFile>) {
        file.AddSection("s", true);
        file.AddSectionEntry("k", "");
        file.DeleteSection();
      }
      clears ? file.ClearAll() : (void)file.DeleteEntry("k");
    }
    EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
  }
}

// Where the system has one, line ends are folded and unfolded, and 0x1A ends the file.
TEST_F(FlatFile, IsReadAndWrittenInTextMode) {
  const std::string bytes = "a=1\r\nb\n\r\r\n\x1A=2";
  for (int way = 0; way < 6; ++way) {
    TestFiles::Write("file", bytes, std::ios::binary);
    OpenConfigFile file(kTokens, "file", way % 3 == 1, way % 3 == 2);
    EXPECT_EQ(file.Image(), TestSystem::kHasTextMode ? "a=1\nb\n\r\n" : bytes);
    EXPECT_TRUE(file.Save(way < 3, "out"));
    EXPECT_EQ(TestFiles::Read("out", std::ios::binary),
              TestSystem::kHasTextMode ? "a=1\r\nb\r\n\r\r\n" : bytes);
  }
}

TYPED_TEST(File, IsMadeOfAFileOrATextOrNothing) {
  TypeParam none(kTokens, nullptr, true);
  EXPECT_EQ(none.Picture()[0], '^');
  EXPECT_TRUE(none.AddEntry("a", "1", false) && none.DeleteEntry("a"));
  none.Reload();  // no path: not even the flag changes
  EXPECT_TRUE(none.afterDelete);
  TypeParam text(kTokens, "a=1\nb=2", true, false, true);
  EXPECT_EQ(text.Image() + text.Picture(), "a=1\n*a[1]; $");
  EXPECT_FALSE(none.Save(false, "file") || text.Save(false, "file") || fs::exists("file"));
  EXPECT_TRUE(text.AttachToBuffer("a=1\n", "file") && text.AddEntry("b", "2", false));
  EXPECT_FALSE(fs::exists("file"));
  EXPECT_TRUE(text.Save(false, ""));
  TypeParam file(kTokens, "file", false, true);
  EXPECT_EQ(file.Image() + file.Picture(), "a=1\n\tb=2\n*a[1]b[2]; $");
  EXPECT_TRUE(file.DeleteEntry("a") && file.Save(true, "other"));
  EXPECT_EQ(TestFiles::Read("file") + TestFiles::Read("other"), "a=1\n\tb=2\n\tb=2\n");
  file.ClearAll();
  EXPECT_TRUE(file.Save(true, nullptr));
  EXPECT_EQ(TestFiles::Read("file"), "");
}

// What a file object says when it is made, saved or loaded, or the message of what it throws. Each
// allocation fails once; what an object keeps then is shown beside the model.
TYPED_TEST(File, NamesTheFileAndTheReasonAndLeavesNothing) {
  using F = TypeParam;
  const auto failure = [](const char* action, const std::string& path, int error) {
    return std::string("Error ") + action + " file \"" + path + "\" : " + std::strerror(error);
  };
  const auto with = [](const char* start, const char* stop) {
    const FileTokens tokens = {nullptr, start, stop, "=", "#", nullptr};
    return OpenSectionFile(tokens, "no/cfg").Image();
  };
  const auto on = [](auto call) {
    F file(kTokens, "file");
    const std::string told = Outcome([&] { return Told(call(file)); });
    EXPECT_EQ(told != "1",
              file.lines == nullptr && file.path == nullptr && file.entries == nullptr);
    return told;
  };
  const std::string image = "n=1\n{\nk=v\n}\n" + std::string(300, 'x');
  const std::string far(300, 'f');  // refused by the system; the message comes whole
  const std::string isShort = "Length of section's start & stop tokens must be at least 2!";
  const struct {
    std::function<std::string()> run;
    std::string told;
  } rows[] = {
      {[] { return F(kTokens, "conf/sub/cfg", true).Image(); }, "Path conf/sub does not exist."},
      {[&] { return F(kTokens, (far + "/c").c_str()).Image(); },
       "Path " + far + " does not exist."},
      {[] { return F(kTokens, "none").Image(); }, failure("opening", "none", ENOENT)},
      {[] { return F(kTokens, "none", true, true).Image(); }, failure("opening", "none", ENOENT)},
      {[&] { return F(kTokens, far.c_str(), true).Image(); },
       failure("opening", far, TestSystem::kLongNameError)},
      {[] { return F(kTokens, "dir", false, true).Image(); },
       failure("opening", "dir", TestSystem::kDirectoryError)},
      {[] { return F(kTokens, "made", true).Image(); }, ""},
      {[] { return F(kTokens, "file").Image(); }, image},
      {[] { return F(kTokens, "a=1\n", true, true, true).Image(); }, "a=1\n"},
      {[] { return OpenSectionFile(kTokens, "{\n", true, true, true).Image(); },
       "File \"\" is corrupted!"},
      {[&] { return with("{", "}\n"); }, isShort},
      {[&] { return with("{\n", "\n"); }, isShort},
      {[&] { return with("\n{", "\n}"); }, "Path no does not exist."},
      {[&] { return on([](F& f) { return f.Save(false, "out"); }); }, "1"},
      {[&] { return on([](F& f) { return f.Save(true, "out"); }); }, "1"},
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
  std::string told, all;
  told.reserve(10000);  // no block of theirs while one fails
  all.reserve(100000);
  for (const auto& row : rows) {
    TestFiles::Write("file", image);
    const int failed = FailingNew::ForEachAllocationOn<std::monostate>(
        [&](auto&) {
          told.clear();
          told += Outcome(row.run);
        },
        [&](auto&, bool) {
          EXPECT_EQ(TestSystem::OpenFiles(), openFiles) << row.told;
          all += told;
        });
    EXPECT_EQ(told, row.told);
    EXPECT_GT(failed, 0);
  }
  EXPECT_TRUE(!fs::exists("none") && fs::exists("made"));
  EXPECT_NE(all.find("saving file \"out\" : file is too big."), std::string::npos);
}

TYPED_TEST(File, ReadAndLoadDoAllOrNothing) {
  std::string text;
  while (text.size() < 5000) text += "a=1\nb\n{\nc=2\n}\n";
  TestFiles::Write("file", text);
  TypeParam file(kTokens, "file");
  const std::string picture = file.Picture();
  file.ClearAll();
  const int reads = FailingNew::ForEachAllocation(
      [&] { file.Read(); }, [&](bool failed) { EXPECT_EQ(file.Image(), failed ? "" : text); });
  const int loads = FailingNew::ForEachAllocation(
      [&] { file.Load(); },
      [&](bool failed) { EXPECT_EQ(file.Picture(), failed ? "$; $" : picture); });
  EXPECT_TRUE(reads > 2 && loads > 2) << reads << loads;
  file.ClearAll();
  file.lines->AddLine("{\n", true);  // a section without an end: also the message takes memory
  FailingNew::ForEachAllocation(
      [&] {
        try {
          file.Load();
        } catch (const ConfigException&) {
        }
      },
      [&](bool failed) { EXPECT_TRUE(!failed || file.Picture() == "$; $"); });
}

TEST_F(FlatFile, ThePathCheckAsksForTheDirectoryThatThePathNames) {
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
    const Configuration::PathCheck check(row.path.c_str(), row.create);
    EXPECT_EQ(check.Exists(), row.exists) << row.path;
    EXPECT_EQ(check.Text(), row.text);
    EXPECT_TRUE(fs::is_directory(row.made)) << row.made;
  }
}

}  // namespace
