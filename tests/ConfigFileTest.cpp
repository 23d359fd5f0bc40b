// SPDX-License-Identifier: MIT
#include "ConfigFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>

#include "ConfigException.h"
#include "FailingNew.h"
#include "OpenConfigFile.h"
#include "SmartBuffer.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "config/PathCheck.h"

namespace {

namespace fs = std::filesystem;

// Relative paths of a test start in a directory of its own. Contents come by way of a file: a text
// in memory would lose a last line without its end.
class InScratch : public testing::Test {
 protected:
  InScratch() { fs::current_path(directory_.Path()); }
  ~InScratch() override { fs::current_path(former_); }

 private:
  fs::path former_ = fs::current_path();
  TestFiles::TemporaryDirectory directory_;
};
using Format = InScratch;
using Edit = InScratch;
using File = InScratch;

std::string Entries(const OpenConfigFile& file) {
  std::string all;
  for (const Configuration::ConfigEntry& entry : *file.entries) {
    all.append("[").append(entry.Name()).append("|").append(entry.Value()).append("]");
  }
  return all;
}

TEST(LineStore, ABlockCarriesSlackMeasuredWhenItIsMade) {
  Configuration::ConfigLineList lines;
  Configuration::ConfigLinePosition line = lines.End();
  lines.InsertLine(line, "0123456789");
  EXPECT_EQ(line, lines.Lines().Last());
  EXPECT_FALSE(lines.GrowLine(line, 0) || lines.GrowLine(line, 33));
  lines.ShrinkLine(line, 33, true);
  EXPECT_EQ(line->capacity, 43u);
  EXPECT_TRUE(lines.GrowLine(line, 34));
  EXPECT_EQ(line->capacity, 76u);
  EXPECT_STREQ(line->text, "0123456789");
  lines.AddLine("", false);
  EXPECT_EQ(lines.First()->capacity, 33u);
  EXPECT_EQ(lines.EraseLine(lines.First()), line);
  EXPECT_EQ(lines.totalLength, 44u);
}

TEST(LineStore, TheSaveBufferGrowsEverMoreRarely) {
  static const struct {
    std::size_t image, capacity, growth;
  } runs[][4] = {{{0, 0, 1}, {65535, 65536, 1}, {65536, 67585, 2}, {9, 67585, 2}},
                 {{70000, 71025, 1}, {71025, 73074, 2}, {65000, 73074, 2}, {73074, 77171, 4}}};
  for (const auto& run : runs) {
    Configuration::ConfigLineList lines;
    for (const auto& row : run) {
      lines.Clear();
      lines.AddLine(std::string(row.image, 'x'), true);
      std::FILE* stream = std::tmpfile();
      EXPECT_TRUE(lines.WriteAll(stream, true));
      std::fclose(stream);
      EXPECT_EQ(lines.saveCapacity, row.capacity) << row.image;
      EXPECT_EQ(lines.saveGrowth, row.growth) << row.image;
    }
  }
}

TEST_F(Format, EachLineIsACommentAnEntryOrNeither) {
  const std::string k(1021, 'k');
  const struct {
    std::string text;
    const char *separator, *comment;
    std::string entries;
  } rows[] = {
      {"name = value\n  name  =  some value  \n", "=", "#", "[name| value][name|  some value]"},
      {"# a=b\n # a=b\n#\n", "=", "#", "[# a|b]"},
      {"a=b=c\na=1 # note\n", "=", "#", "[a|b=c][a|1 # note]"},
      {"key=\nkey=   \n", "=", "#", "[key|][key|]"},
      {" =v\n=w\n \t =\n=\n", "=", "#", "[|v][|w][|][|]"},
      {"plain text\n\n  \n\f\v\r\n", "=", "#", ""},
      {"a=1\r\nb=2\t\v\f\r\nc=3", "=", "#", "[a|1][b|2][c|3]"},
      {"\xA0k\x85=\xA0v\x85\xA0\n", "=", "#", "[\xA0k\x85|\xA0v\x85\xA0]"},
      {"a := b\na:b=c\n", ":=", "#", "[a| b]"},
      {"a = b\na=b\n = v\nc = \n", " = ", "#", "[a|b][|v][c|]"},
      {"a\tb\t\n\tx\n\t\n", "\t", "#", "[a|b][|x][|]"},
      {"a=1\n", "=", "", ""},
      {"a=1\n", "", "#", ""},
      {"//a=1\n/a=1\n", "=", "//", "[/a|1]"},
      {"\xEF\xBB\xBF#c=1\n", "=", "#", "[\xEF\xBB\xBF#c|1]"},
      {k + "==\n", "=", "#", "[" + k + "|=]"},        // 1023 bytes, and the line feed alone
      {k + "x===\n", "=", "#", "[" + k + "x|][|=]"},  // the value ends with the piece
      {k + "xx#c=1\n", "=", "#", ""},                 // a later piece may be a comment
      {k + "x:=v\n", ":=", "#", ""},                  // the separator lies over the border
  };
  for (const auto& row : rows) {
    TestFiles::Write("file", row.text);
    const OpenConfigFile file("file", row.separator, row.comment);
    EXPECT_EQ(Entries(file), row.entries) << row.text.substr(0, 40);
    EXPECT_EQ(file.Fault(), "") << row.text.substr(0, 40);
  }
}

TEST_F(Format, HoldsEveryByteThatNoEditNames) {
  const auto line = [](std::size_t bytes) { return std::string(bytes - 1, 'x') + "\n"; };
  std::string block;  // what a writer's block of 32768 bytes holds, less 32 bytes
  while (block.size() < 32 * 1023) block += line(1023);
  const std::string hazards[] = {"",
                                 "\n",
                                 "x",
                                 " \t\v\f\r\n  ",
                                 std::string("a\0b=\0c\0\n\0", 9),
                                 std::string(3000, '\0'),
                                 "a=1\rb=2\r",
                                 "a=1\r\nb=2\r\n",
                                 "a=1\r\nb=2\nc=3\rd=4\n\r\n\n\r",
                                 line(1022),
                                 line(1023),
                                 line(1024),
                                 line(1025),
                                 line(1026),
                                 line(2500),
                                 line(2500) + line(70000) + "end",
                                 "\xEF\xBB\xBF\na=1\n",
                                 "gr\xFC\xDFt=\xE4\xA0\xFF\n\xFF\n",
                                 "=\n==\n=\n# only\n#",
                                 "a=1\nb=2",
                                 std::string(1023, '=') + std::string(1100, ' ') + "\n",
                                 block + line(32) + block + line(33) + block};
  const std::string longer = "a value that moves the text of its line";
  for (const std::string& hazard : hazards) {
    SCOPED_TRACE(testing::PrintToString(hazard.substr(0, 40)));
    for (const bool coalesced : {false, true}) {
      TestFiles::Write("file", hazard);
      EXPECT_TRUE(OpenConfigFile("file").Save(coalesced, "out"));
      EXPECT_EQ(TestFiles::Read("out"), hazard);
    }
    TestFiles::Write("file", "zz= 1 \n" + hazard + "\nzz=1");
    OpenConfigFile file("file");
    EXPECT_EQ(file.SetEntry("zz", longer.c_str()), 2u);
    EXPECT_EQ(file.Image(), "zz=" + longer + " \n" + hazard + "\nzz=1");
    EXPECT_TRUE(file.DeleteEntry("zz"));
    EXPECT_EQ(file.SetEntry("zz", "22"), 2u);
    EXPECT_EQ(file.Image(), hazard + "\nzz=22");
  }
}

TEST_F(Edit, CarriesOver1023BytesBehindThePart) {
  for (const bool fits : {true, false}) {
    OpenConfigFile file(nullptr, false, false, false, "=", "#", nullptr);
    const std::string line = "t=1" + std::string(fits ? 1022 : 1023, ' ') + "\n";
    file.lines->AddLine(line, true);
    file.Load();
    EXPECT_EQ(file.SetCurrentEntry("22"), fits ? 2u : 0u);
    EXPECT_EQ(file.Image() == line, !fits);
    file.lines->ShrinkLine(file.lines->First(), fits ? 3 : 2, true);
    EXPECT_EQ(file.RenameEntry("n"), fits);
    EXPECT_EQ(file.Fault(), "");
  }
}

TEST_F(File, ATextInMemoryIsTakenLineByLine) {
  const auto line = [](std::size_t bytes) { return "k=" + std::string(bytes - 3, 'v') + "\n"; };
  OpenConfigFile file(nullptr, false, false, false, "=", "#", nullptr);
  EXPECT_TRUE(file.cursor->IsUnset());
  EXPECT_FALSE(file.Save(false, "out") || fs::exists("out"));
  const struct {
    std::string text;
    bool taken;
    std::string image;
  } rows[] = {{"a=1\nb=2", true, "a=1\n"},
              {std::string(2000, 'x'), true, ""},
              {"a=1\n" + line(1023), true, "a=1\n" + line(1023)},
              {"a=1\n" + line(1024) + "c=3\n", false, "a=1\n"}};
  for (const auto& row : rows) {
    OpenConfigFile made(row.text.c_str(), false, false, true, "=", "#", nullptr);
    EXPECT_FALSE(made.Save(false, "out"));
    EXPECT_EQ(file.AttachToBuffer(row.text.c_str(), "new"), row.taken);
    for (OpenConfigFile* object : {&made, &file}) {
      EXPECT_EQ(object->Image(), row.image);
      EXPECT_EQ(object->GetEntryCount() > 0, row.taken && !row.image.empty());
      EXPECT_EQ(*object->cursor, object->entries->First());
    }
    EXPECT_TRUE(file.Save(false, "other"));
    EXPECT_EQ(TestFiles::Read("other"), row.image);
    EXPECT_FALSE(fs::exists("new"));
  }
  EXPECT_TRUE(file.AttachToBuffer("a=1\nb=2\n", nullptr) && file.DeleteEntry("a"));
  file.Reload();  // no path: not even the flag changes
  EXPECT_TRUE(file.afterDelete);
  EXPECT_EQ(file.Image(), "b=2\n");
  EXPECT_FALSE(file.SaveToBuffer(nullptr, 0));
}

TEST_F(File, PathCheckAsksForTheDirectoryThatThePathNames) {
  const std::string absolute = fs::current_path().generic_string() + "/d/e";
  const struct {
    std::string path;
    bool create, exists;
    std::string text, made;
  } rows[] = {
      {"cfg.txt", false, true, "cfg.txt", "."},
      {"", false, true, "", "."},
      {"/cfg.txt", true, true, "/cfg.txt", "."},
      {"\\cfg.txt", true, true, "\\cfg.txt", "."},
      {"here/cfg.txt", false, true, "here", "."},
      {"here\\", false, true, "here", "."},
      {"conf/sub/cfg.txt", false, false, "conf/sub", "."},
      {"here//cfg.txt", false, true, "here/", "."},
      {"C:\\cfg.txt", false, TestSystem::kHasDrives, "C:\\", "."},
      {"C:/cfg.txt", false, TestSystem::kHasDrives, "C:/", "."},
      {"Q:\\cfg.txt", false, false, "Q:\\", "."},
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

// What a failure raises; the object is then released to the last block.
std::string Failure(const std::function<void()>& action) {
  const long blocks = FailingNew::LiveBlocks();
  std::string message;
  try {
    action();
  } catch (const ConfigException& failure) {
    const ConfigException copy(failure);
    message = copy.what();
  }
  EXPECT_LE(FailingNew::LiveBlocks(), blocks + 1);  // the message's own
  return message;
}

TEST_F(File, AFailureNamesTheFileAndTheReason) {
  const std::string missing = std::strerror(ENOENT),
                    directory = std::strerror(TestSystem::kDirectoryError);
  const std::string far(300, 'f');  // refused by the system; the message comes whole
  const struct {
    std::string path;
    bool create, readOnly;
    std::string message;
  } rows[] = {
      {"conf/sub/cfg", true, false, "Path conf/sub does not exist."},
      {far + "/cfg", false, false, "Path " + far + " does not exist."},
      {"none", false, false, "Error opening file \"none\" : " + missing},
      {"none", true, true, "Error opening file \"none\" : " + missing},
      {"", false, true, "Error opening file \"\" : " + missing},
      {far, true, false,
       "Error opening file \"" + far + "\" : " + std::strerror(TestSystem::kLongNameError)},
      {"dir", false, true, "Error opening file \"dir\" : " + directory},
      {"dir", true, false, "Error opening file \"dir\" : " + directory},
      {"made", true, false, ""},
  };
  fs::create_directory("dir");
  for (const auto& row : rows) {
    const auto make = [&] {
      OpenConfigFile(row.path.c_str(), row.create, row.readOnly, false, "=", "#", "");
    };
    EXPECT_EQ(Failure(make), row.message) << row.path << row.create << row.readOnly;
  }
  EXPECT_FALSE(fs::exists("none"));
  EXPECT_TRUE(fs::exists("made"));
  const auto act = [](bool reload, const char* target) {
    OpenConfigFile file("made");
    try {
      if (reload) fs::remove("made");
      reload ? file.Reload() : static_cast<void>(file.Save(true, target));
    } catch (const ConfigException&) {
      EXPECT_TRUE(file.lines == nullptr && file.path == nullptr && file.cursor == nullptr);
      throw;
    }
  };
  EXPECT_EQ(Failure([&] { act(false, "no/cfg"); }), "Error saving file \"no/cfg\" : " + missing);
  EXPECT_EQ(Failure([&] { act(false, "dir"); }), "Error saving file \"dir\" : " + directory);
  EXPECT_EQ(Failure([&] { act(true, ""); }), "Error opening file \"made\" : " + missing);
}

TEST_F(File, ASaveGoesWhereItIsToldAndForgetsIt) {
  TestFiles::Write("file", "a=1\n");
  OpenConfigFile file("file", false, true, false, "=", "#", "");
  EXPECT_EQ(file.SetEntry("a", "2"), 2u);
  EXPECT_TRUE(file.Save(false, "other"));
  EXPECT_EQ(TestFiles::Read("file") + TestFiles::Read("other"), "a=1\na=2\n");
  EXPECT_TRUE(file.Save(true, ""));
  EXPECT_EQ(TestFiles::Read("file"), "a=2\n");
  file.ClearAll();
  EXPECT_TRUE(file.cursor->IsEnd());
  EXPECT_TRUE(file.Save(true, nullptr));
  EXPECT_EQ(TestFiles::Read("file"), "");
}

TEST(SmartBuffer, IsABlockOf1024Bytes) {
  SmartBuffer buffer;
  EXPECT_EQ(buffer.size(), 1024u);
  EXPECT_EQ(buffer[0], '\0');
  buffer[1023] = 'x';
  EXPECT_EQ((&buffer)[1023], 'x');
  EXPECT_EQ(buffer(), &buffer);
}

}  // namespace
