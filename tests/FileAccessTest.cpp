// SPDX-License-Identifier: MIT
#include "config/FileAccess.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>

#include "ConfigException.h"
#include "FailingNew.h"
#include "OpenConfigFile.h"
#include "TestFiles.h"
#include "config/PathCheck.h"

namespace {

namespace fs = std::filesystem;

// Relative paths of a test start in a directory of its own.
class InScratch : public testing::Test {
 protected:
  InScratch() { fs::current_path(directory_.Path()); }
  ~InScratch() override { fs::current_path(former_); }

 private:
  fs::path former_ = fs::current_path();
  TestFiles::TemporaryDirectory directory_;
};

using PathCheck = InScratch;
using Messages = InScratch;

TEST_F(PathCheck, AsksForTheDirectoryThatThePathNames) {
  fs::create_directory("here");
  static const struct {
    const char* path;
    bool create, exists;
    const char *text, *made;
  } rows[] = {
      {"cfg.txt", false, true, "cfg.txt", nullptr},
      {"", false, true, "", nullptr},
      {"/cfg.txt", true, true, "/cfg.txt", nullptr},
      {"\\cfg.txt", true, true, "\\cfg.txt", nullptr},
      {"here/cfg.txt", false, true, "here", nullptr},
      {"here\\cfg.txt", false, true, "here", nullptr},
      {"here/", false, true, "here", nullptr},
      {"conf/sub/cfg.txt", false, false, "conf/sub", nullptr},
      {"Q:\\cfg.txt", false, false, "Q:\\", nullptr},
      {"Q:/sub\\cfg.txt", false, false, "Q:/sub", nullptr},
      {"a\\b/c/file", true, true, "a/b/c", "a/b/c"},
      {"here//x\\\\y/file", true, true, "here//x//y", "here/x/y"},
      {"file/sub/cfg", true, false, "file/sub", nullptr},
  };
  TestFiles::Write("file", "");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    const Configuration::PathCheck check(row.path, row.create);
    EXPECT_EQ(check.Exists(), row.exists);
    EXPECT_STREQ(check.Text(), row.text);
    EXPECT_TRUE(row.made == nullptr || fs::is_directory(row.made));
  }
  const std::string absolute = fs::current_path().string() + "/d/e/file";
  EXPECT_TRUE(Configuration::PathCheck(absolute.c_str(), true).Exists());
  EXPECT_TRUE(fs::is_directory("d/e"));
}

// What a failure raises, with the object (if there was one) released to the last block.
std::string Failure(const std::function<void()>& action) {
  const long blocks = FailingNew::LiveBlocks();
  std::string message = "no failure";
  message.reserve(600);
  try {
    action();
  } catch (const ConfigException& failure) {
    message = failure.what();
  }
  EXPECT_EQ(FailingNew::LiveBlocks(), blocks + 1);  // the message's own
  return message;
}

TEST_F(Messages, NameTheFileAndTheReason) {
  const std::string missing = std::strerror(ENOENT), directory = std::strerror(EISDIR);
  const std::string far(300, 'f');  // a name that the system refuses; the message comes whole
  fs::create_directory("dir");
  TestFiles::Write("file", "a=1\n");
  const struct {
    std::string path;
    bool create, readOnly;
    std::string message;
  } reads[] = {
      {"conf/sub/cfg", true, false, "Path conf/sub does not exist."},
      {far + "/cfg", false, false, "Path " + far + " does not exist."},
      {"none", false, false, "Error opening file \"none\" : " + missing},
      {"none", false, true, "Error opening file \"none\" : " + missing},
      {"none", true, true, "Error opening file \"none\" : " + missing},
      {"", false, true, "Error opening file \"\" : " + missing},
      {far, true, false, "Error opening file \"" + far + "\" : " + std::strerror(ENAMETOOLONG)},
      {"dir", false, true, "Error opening file \"dir\" : " + directory},
      {"dir", true, false, "Error opening file \"dir\" : " + directory},
  };
  for (const auto& row : reads) {
    SCOPED_TRACE(row.path.substr(0, 20) + (row.create ? " create" : "") +
                 (row.readOnly ? " r" : ""));
    EXPECT_EQ(Failure([&] {
                OpenConfigFile(row.path.c_str(), row.create, row.readOnly, false, "=", "#", "");
              }),
              row.message);
  }
  EXPECT_FALSE(fs::exists("none"));
  OpenConfigFile("made", true, false, false, "=", "#", "");
  EXPECT_TRUE(fs::exists("made"));

  const struct {
    const char* target;
    std::string message;
  } saves[] = {{"no/cfg", "Error saving file \"no/cfg\" : " + missing},
               {"dir", "Error saving file \"dir\" : " + directory}};
  for (const auto& row : saves) {
    EXPECT_EQ(Failure([&] {
                OpenConfigFile file("file", false, true, false, "=", "#", "");
                try {
                  file.Save(true, row.target);
                } catch (const ConfigException&) {
                  EXPECT_EQ(file.lines, nullptr);  // torn down; its destructor still runs
                  EXPECT_EQ(file.path, nullptr);
                  throw;
                }
              }),
              row.message);
  }
  EXPECT_EQ(Failure([&] {
              OpenConfigFile file("file", false, false, false, "=", "#", "");
              fs::remove("file");
              file.Reload();
            }),
            "Error opening file \"file\" : " + missing);
}

TEST_F(Messages, ASaveGoesWhereItIsToldAndForgetsIt) {
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
  TestFiles::Write("file", "b=1\n");
  file.Reload();
  EXPECT_TRUE(file.cursor->IsAtElement());
  EXPECT_EQ(file.Image(), "b=1\n");
}

}  // namespace
