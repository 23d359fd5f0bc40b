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
#include <variant>
#include <vector>

#include "FailingNew.h"
#include "OpenFiles.h"
#include "SmartBuffer.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "config/PathCheck.h"

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
using SectionFile = File<OpenSectionFile>;

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

TYPED_TEST(File, AFailureNamesTheFileAndTheReason) {
  const auto failure = [](const char* action, const std::string& path, int error) {
    return std::string("Error ") + action + " file \"" + path + "\" : " + std::strerror(error);
  };
  const std::string far(300, 'f');  // refused by the system; the message comes whole
  const struct {
    std::string path;
    bool create, readOnly;
    std::string message;
  } rows[] = {
      {"conf/sub/cfg", true, false, "Path conf/sub does not exist."},
      {far + "/cfg", false, false, "Path " + far + " does not exist."},
      {"none", false, false, failure("opening", "none", ENOENT)},
      {"none", true, true, failure("opening", "none", ENOENT)},
      {far, true, false, failure("opening", far, TestSystem::kLongNameError)},
      {"dir", false, true, failure("opening", "dir", TestSystem::kDirectoryError)},
      {"made", true, false, ""},
  };
  fs::create_directory("dir");
  for (const auto& row : rows) {
    const auto make = [&] {
      return TypeParam(kTokens, row.path.c_str(), row.create, row.readOnly).Image();
    };
    EXPECT_EQ(Outcome(make), row.message) << row.path << row.create << row.readOnly;
  }
  EXPECT_TRUE(!fs::exists("none") && fs::exists("made"));
  const auto act = [&](auto call) {
    TypeParam file(kTokens, "made");
    const std::string message = Outcome([&] { return call(file), "done"; });
    EXPECT_TRUE(file.lines == nullptr && file.path == nullptr && file.entries == nullptr);
    return message;
  };
  EXPECT_EQ(act([](TypeParam& file) { file.Save(true, "no/cfg"); }),
            failure("saving", "no/cfg", ENOENT));
  EXPECT_EQ(act([](TypeParam& file) { file.Save(true, "dir"); }),
            failure("saving", "dir", TestSystem::kDirectoryError));
  EXPECT_EQ(act([](TypeParam& file) { fs::remove("made"), file.Reload(); }),
            failure("opening", "made", ENOENT));
}

TEST_F(SectionFile, RefusesAnUnfinishedSectionAndAShortToken) {
  for (const char* path : {"x", static_cast<const char*>(nullptr)}) {
    OpenSectionFile file(kTokens);
    EXPECT_EQ(Outcome([&] { return Told(file.AttachToBuffer("a\n{\n", path)); }),
              std::string("File \"") + (path != nullptr ? path : "") + "\" is corrupted!");
    EXPECT_TRUE(file.lines == nullptr && file.sections == nullptr);
  }
  const auto make = [](const char* start, const char* stop) {
    const FileTokens tokens = {nullptr, start, stop, "=", "#", nullptr};
    return Outcome([&] { return OpenSectionFile(tokens, "no/cfg").Image(); });
  };
  const std::string message = "Length of section's start & stop tokens must be at least 2!";
  EXPECT_EQ(make("{", "}\n"), message);
  EXPECT_EQ(make("{\n", "\n"), message);
  EXPECT_EQ(make("\n{", "\n}"), "Path no does not exist.");
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

// Every allocation fails once in what makes, copies, saves or loses an object. What an object keeps
// when one of its operations fails is shown beside the model.
TEST_F(FlatFile, LeavesNothingOfWhatFailed) {
  const std::function<std::string()> rows[] = {
      [] { return OpenConfigFile(kTokens, "file").Image(); },
      [] { return OpenConfigFile(kTokens, "a=1\n", true, true, true).Image(); },
      [] { return OpenSectionFile(kTokens, "file").Image(); },
      [] { return OpenSectionFile(kTokens, "a {\n", true, true, true).Image(); },
      [] { return Told(OpenConfigFile("file").Save(false, "out")); },
      [] { return Told(OpenConfigFile("file").Save(true, "out")); },
      [] { return Told(OpenConfigFile("file").Save(true, "no/out")); },
      [] { return std::string(SmartBuffer()()); },
      [] {
        ConfigException exception("a"), copy(exception);
        try {
          exception = ConfigException("b");
        } catch (const std::bad_alloc&) {
          EXPECT_STREQ(exception.what(), "a");
        }
        return std::string(copy.what());
      },
  };
  TestFiles::Write("file", "n=1\n{\nk=v\n}\n" + std::string(300, 'x'));
  const int openFiles = TestSystem::OpenFiles();
  std::string told;
  told.reserve(100000);  // no block of it while one fails
  for (const auto& row : rows) {
    const int failed = FailingNew::ForEachAllocationOn<std::monostate>(
        [&](auto&) { told += Outcome(row); },
        [&](auto&, bool) { EXPECT_EQ(TestSystem::OpenFiles(), openFiles) << &row - rows; });
    EXPECT_GT(failed, 0);
  }
  EXPECT_NE(told.find("saving file \"out\" : file is too big."), std::string::npos);
}

}  // namespace
