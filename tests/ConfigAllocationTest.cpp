// SPDX-License-Identifier: MIT
// Every allocation of every operation failed once.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "ConfigException.h"
#include "FailingNew.h"
#include "OpenConfigFile.h"
#include "SmartBuffer.h"
#include "TestFiles.h"

namespace {

const std::string kFifty(50, 'x'), kLong(300, 'x');
const std::string kText = "n=1\n" + kFifty + "\nm=2\n",
                  kRefused = kText + std::string(1024, 'x') + "\n";

// Streams that are left open, where the system lets itself be asked.
long OpenFiles() {
  std::error_code error;
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd", error), {});
}

TEST(FailedAllocation, LeavesTheImageBeforeOrAfter) {
  static std::string target;
  static const struct {
    const char* name;
    void (*run)(OpenConfigFile& file);
    std::string failure;  // what a save says instead of `std::bad_alloc`
    int atLeast;          // allocations that must have been made to fail
  } rows[] = {
      {"Reload", [](OpenConfigFile& f) { f.Reload(); }, "", 4},
      {"Attach", [](OpenConfigFile& f) { f.AttachToBuffer(kText.c_str(), "new"); }, "", 4},
      {"Attach, refused", [](OpenConfigFile& f) { f.AttachToBuffer(kRefused.c_str(), ""); }, "", 4},
      {"AddEntry", [](OpenConfigFile& f) { f.AddEntry("k", kFifty.c_str(), true); }, "", 2},
      {"InsertEntry", [](OpenConfigFile& f) { f.InsertEntry("k", kLong.c_str()); }, "", 2},
      {"SetEntry", [](OpenConfigFile& f) { f.SetEntry("a", kLong.c_str()); }, "", 2},
      {"SetEntry, new", [](OpenConfigFile& f) { f.SetEntry("k", kFifty.c_str()); }, "", 2},
      {"SetCurrent", [](OpenConfigFile& f) { f.SetCurrentEntry(kFifty.c_str()); }, "", 1},
      {"Rename", [](OpenConfigFile& f) { f.RenameEntry(kLong.c_str()); }, "", 2},
      {"Delete", [](OpenConfigFile& f) { f.DeleteCurrentEntry(); }, "", 0},
      {"Save", [](OpenConfigFile& f) { f.Save(false, target.c_str()); }, "", 0},
      {"Save, coalesced", [](OpenConfigFile& f) { f.Save(true, target.c_str()); },
       "\" : file is too big.", 8},
      {"Save, failing", [](OpenConfigFile& f) { f.Save(true, "no/such/place"); },
       "\" : No such file or directory", 8},
  };
  TestFiles::TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  target = directory.Path("target");
  TestFiles::Write(path, "# head\na = 1\nb=2\nc=3\n" + kFifty + "\n" + kLong);
  const long openFiles = OpenFiles();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    int failed = 0;
    // Some more entries each time, so that every pool is at its brink once.
    for (int more = 0; more < 8; ++more) {
      std::unique_ptr<OpenConfigFile> file;
      std::string failure, before, after;
      failure.reserve(1000);
      long blocks = 0;
      const auto make = [&] {
        failure.clear();
        blocks = FailingNew::LiveBlocks();
        file = std::make_unique<OpenConfigFile>(path);
        file->DeleteEntry("b");
        for (int i = 0; i < more; ++i) file->AddEntry("d", kFifty.c_str(), false);
      };
      const auto run = [&] {
        try {
          row.run(*file);
        } catch (const ConfigException& exception) {
          failure = exception.what();
        }
      };
      make();
      before = file->Image();
      run();
      if (file->lines != nullptr) after = file->Image();
      file.reset();
      failed += FailingNew::ForEachAllocation(
          [&]() -> std::function<void()> {
            make();
            return [&run] { run(); };
          },
          [&](bool threw) {
            if (file->lines == nullptr) {
              ASSERT_FALSE(row.failure.empty());
              EXPECT_NE(failure.find(row.failure), std::string::npos);
            } else {
              EXPECT_EQ(file->Image(), threw ? before : after);
              EXPECT_EQ(file->Fault(), "");
            }
            file.reset();
            EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
          });
    }
    EXPECT_GE(failed, row.atLeast);
  }
  EXPECT_EQ(OpenFiles(), openFiles);
}

TEST(FailedAllocation, LeavesNothingOfAnObjectThatWasNotBuilt) {
  static std::string path;
  static std::unique_ptr<OpenConfigFile> file;
  static std::unique_ptr<SmartBuffer> buffer;
  static std::unique_ptr<ConfigException> exception, other;
  static void (*const rows[])() = {
      [] { file = std::make_unique<OpenConfigFile>(path); },
      [] { file.reset(new OpenConfigFile(kText.c_str(), false, false, true, "=", "#", "  ")); },
      [] { file.reset(new OpenConfigFile(nullptr, false, false, false, "=", "#", nullptr)); },
      [] { buffer = std::make_unique<SmartBuffer>(); },
      [] { exception = std::make_unique<ConfigException>("text"); },
      [] { exception = std::make_unique<ConfigException>(*other); },
      [] { *other = ConfigException("text"); },
  };
  TestFiles::TemporaryDirectory directory;
  path = directory.Path("file");
  TestFiles::Write(path, kText + kLong);
  const long openFiles = OpenFiles();
  for (const auto& row : rows) {
    long blocks = 0;
    const int failed = FailingNew::ForEachAllocation(
        [&]() -> std::function<void()> {
          blocks = FailingNew::LiveBlocks();
          other = std::make_unique<ConfigException>("text");
          return row;
        },
        [&](bool) {
          EXPECT_STREQ(other->what(), "text");
          file.reset();
          buffer.reset();
          exception.reset();
          other.reset();
          EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
        });
    EXPECT_GE(failed, 1);
  }
  EXPECT_EQ(OpenFiles(), openFiles);
}

}  // namespace
