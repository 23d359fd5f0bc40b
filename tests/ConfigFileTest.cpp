// SPDX-License-Identifier: MIT
// Flat and sectioned files at their edges: paths, texts in memory, saves and failures.
#include "ConfigFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <new>
#include <string>

#include "FailingNew.h"
#include "OpenSectionFile.h"
#include "SmartBuffer.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "config/PathCheck.h"

namespace {

namespace fs = std::filesystem;

template <class File>
concept AddsByNameAlone = requires(File& file) {
  file.AddSection("name");
};
static_assert(!AddsByNameAlone<OpenSectionFile>);  // it would be the flag

constexpr FileTokens kTokens = {nullptr, "{\n", "}\n", "=", "#", "\t"};

// Relative paths of a test start in a directory of its own. Most tests run for both file classes.
template <class F>
class File : public testing::Test {
 protected:
  File() { fs::current_path(directory_.Path()); }
  ~File() override { fs::current_path(former_); }

 private:
  fs::path former_ = fs::current_path();
  TestFiles::TemporaryDirectory directory_;
};
using Files = testing::Types<OpenConfigFile, OpenSectionFile>;
TYPED_TEST_SUITE(File, Files);
using FlatFile = File<OpenConfigFile>;
using SectionFile = File<OpenSectionFile>;

TEST_F(FlatFile, TheSaveBufferGrowsEverMoreRarely) {
  static const struct {
    std::size_t image, capacity, growth;
  } runs[][4] = {{{0, 0, 1}, {65535, 65536, 1}, {65536, 67585, 2}, {9, 67585, 2}},
                 {{65536, 66561, 1}, {71025, 73074, 2}, {65000, 73074, 2}, {73074, 77171, 4}}};
  for (const auto& run : runs) {
    OpenConfigFile file(kTokens);
    file.AttachToBuffer("", "file");
    for (const auto& row : run) {
      file.ClearAll();
      file.lines->AddLine(std::string(row.image, 'x'), true);
      EXPECT_TRUE(file.Save(true, nullptr));
      EXPECT_EQ(file.lines->saveCapacity, row.capacity) << row.image;
      EXPECT_EQ(file.lines->saveGrowth, row.growth) << row.image;
    }
  }
}

TEST(LineStore, ForgetsWhatItHeld) {
  Configuration::ConfigLineList lines;
  for (int i = 0; i < 3; ++i) {  // each time in the same place of memory, if the system so likes
    lines.AddLine("ab", true);
    EXPECT_FALSE(lines.IsFrozen(lines.First()));
    lines.Freeze(lines.First());
    lines.ShrinkLine(lines.First(), 1, true);
    EXPECT_STREQ(lines.First()->text, "a");
    lines.Clear();
  }
}

TYPED_TEST(File, KeepsEveryByteBeyondTheBuffers) {
  const auto line = [](std::size_t bytes) { return std::string(bytes - 1, 'x') + "\n"; };
  std::string block;  // what a writer's block of 32768 bytes holds, less 32 bytes
  while (block.size() < 32 * 1023) block += line(1023);
  std::string small;  // more lines than the largest slab of a pool holds
  while (small.size() < 300000) small += "a=1\n";
  for (const std::string& image : {small, block + line(32) + block + line(33) + block,
                                   line(2500) + line(70000) + std::string(3000, '\0') + "end"}) {
    TestFiles::Write("file", image);
    TypeParam file(kTokens, "file", false, true);
    EXPECT_TRUE(file.Save(false, "blocks") && file.Save(true, "once"));
    EXPECT_TRUE(TestFiles::Read("blocks") == image && TestFiles::Read("once") == image);
    const std::string large(40000, 'v');  // in one line, larger than the writer's block
    EXPECT_TRUE(file.AddEntry("k", "", true) && file.SetEntry("k", large.c_str()) == 2);
    EXPECT_TRUE(file.Save(false, "out") && TestFiles::Read("out") == file.Image());
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

TEST_F(SectionFile, ThePresetHasItsTokens) {
  using Preset = Configuration::MultiSectionConfigFile;
  EXPECT_EQ(Outcome([] { return Preset("made", true, true, false, false), "done"; }), "done");
  Preset preset("a {\nb=}\n{\n}\nsection b {\n}\n#=1\n", false, true, false, true);
  EXPECT_TRUE(preset.GetSectionCount() == 3 && preset.GotoSection("b"));
  EXPECT_TRUE(preset.GetEntryCount() == 0 && preset.AddSectionEntry("k", "v"));
  char image[64];
  EXPECT_TRUE(preset.AddSection(false) && preset.SaveToBuffer(image, sizeof image));
  EXPECT_STREQ(image, "a {\nb=}\n{\n}\nsection b {\nk=v\n}\n#=1\n{\n}\n");
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

TEST(SmartBuffer, IsABlockOf1024Bytes) {
  SmartBuffer buffer;
  EXPECT_TRUE(buffer.size() == 1024 && buffer[0] == '\0');
  buffer[1023] = 'x';
  EXPECT_TRUE((&buffer)[1023] == 'x' && buffer() == &buffer);
}

// Every allocation fails once in what makes, copies, saves or loses an object. What an object keeps
// when one of its operations fails is shown beside the model.
TEST_F(FlatFile, LeavesNothingOfWhatFailed) {
  static const struct {
    std::string (*run)();
    const char* failure;  // that the operation itself tells of
  } rows[] = {
      {[] { return OpenConfigFile(kTokens, "file").Image(); }, "none"},
      {[] { return OpenConfigFile(kTokens, "a=1\n", true, true, true).Image(); }, "none"},
      {[] { return OpenSectionFile(kTokens, "file").Image(); }, "none"},
      {[] { return OpenSectionFile(kTokens, "a {\n", true, true, true).Image(); }, "corrupted!"},
      {[] { return Told(OpenConfigFile("file").Save(false, "out")); }, "none"},
      {[] { return Told(OpenConfigFile("file").Save(true, "out")); }, "file is too big."},
      {[] { return Told(OpenConfigFile("file").Save(true, "no/out")); }, "\"no/out\" : "},
      {[] { return std::string(SmartBuffer()()); }, "none"},
      {[] {
         ConfigException exception("a"), copy(exception);
         try {
           exception = ConfigException("b");
         } catch (const std::bad_alloc&) {
           EXPECT_STREQ(exception.what(), "a");
         }
         return std::string(copy.what());
       },
       "none"},
  };
  TestFiles::Write("file", "n=1\n{\nk=v\n}\n" + std::string(300, 'x'));
  const int openFiles = TestSystem::OpenFiles();
  for (const auto& row : rows) {
    bool told = false;
    long blocks = 0;
    const auto run = [&] { told |= Outcome(row.run).find(row.failure) != std::string::npos; };
    const auto setUp = [&]() -> std::function<void()> {
      blocks = FailingNew::LiveBlocks();
      return [&run] { run(); };
    };
    const int failed = FailingNew::ForEachAllocation(setUp, [&](bool) {
      EXPECT_EQ(FailingNew::LiveBlocks(), blocks) << &row - rows;
      EXPECT_EQ(TestSystem::OpenFiles(), openFiles) << &row - rows;
    });
    EXPECT_GT(failed, 0);
    EXPECT_EQ(told, row.failure != std::string("none")) << &row - rows;
  }
}

}  // namespace
