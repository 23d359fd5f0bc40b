// SPDX-License-Identifier: MIT
// Every allocation of every operation failed once.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>

#include "ConfigException.h"
#include "FailingNew.h"
#include "OpenConfigFile.h"
#include "SmartBuffer.h"
#include "TestFiles.h"
#include "TestSystem.h"

namespace {

using File = OpenConfigFile;

const std::string kFifty(50, 'x'), kLong(300, 'x'), kText = "n=1\n" + kFifty + "\nm=2\n";
const std::string kRefused = kText + std::string(1024, 'x') + "\n";
const TestFiles::TemporaryDirectory kScratch;
const std::string kPath = kScratch.Path("file"), kTarget = kScratch.Path("target");

TEST(FailedAllocation, LeavesTheImageBeforeOrAfter) {
  static const struct {
    const char* name;
    void (*run)(File& file);
    std::string failure;  // what a save says instead of `std::bad_alloc`
    int atLeast;          // allocations that must have been made to fail
  } rows[] = {
      {"Reload", [](File& f) { f.Reload(); }, "", 4},
      {"Attach", [](File& f) { f.AttachToBuffer(kText.c_str(), "new"); }, "", 4},
      {"Attach, refused", [](File& f) { f.AttachToBuffer(kRefused.c_str(), ""); }, "", 4},
      {"AddEntry", [](File& f) { f.AddEntry("k", kFifty.c_str(), true); }, "", 2},
      {"InsertEntry", [](File& f) { f.InsertEntry("k", kLong.c_str()); }, "", 2},
      {"SetEntry", [](File& f) { f.SetEntry("a", kLong.c_str()); }, "", 2},
      {"SetCurrent", [](File& f) { f.SetCurrentEntry(kFifty.c_str()); }, "", 1},
      {"Rename", [](File& f) { f.RenameEntry(kLong.c_str()); }, "", 2},
      {"Save", [](File& f) { f.Save(false, kTarget.c_str()); }, "", 0},
      {"Save at once", [](File& f) { f.Save(true, kTarget.c_str()); }, "file is too big.", 8},
      {"Save nowhere", [](File& f) { f.Save(true, "no/such/place"); }, "\"no/such/place\" : ", 8},
  };
  TestFiles::Write(kPath, "# head\na = 1\nb=2\nc=3\n" + kFifty + "\n" + kLong);
  const int openFiles = TestSystem::OpenFiles();
  std::unique_ptr<File> file;
  std::string failure, before, after;
  failure.reserve(500);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    int failed = 0;
    // Some more entries each time, so that every pool is at its brink once.
    for (int more = 0; more < 8; ++more) {
      long blocks = 0;
      const auto run = [&] {
        try {
          row.run(*file);
        } catch (const ConfigException& exception) {
          failure = exception.what();
        }
      };
      const auto make = [&]() -> std::function<void()> {
        file.reset();
        failure.clear();
        blocks = FailingNew::LiveBlocks();
        file = std::make_unique<File>(kPath);
        file->DeleteEntry("b");
        for (int i = 0; i < more; ++i) file->AddEntry("d", kFifty.c_str(), false);
        return [&run] { run(); };
      };
      const auto unharmed = make();
      before = file->Image();
      unharmed();
      if (file->lines != nullptr) after = file->Image();
      failed += FailingNew::ForEachAllocation(make, [&](bool threw) {
        if (file->lines == nullptr) {
          EXPECT_TRUE(!row.failure.empty() && failure.find(row.failure) != failure.npos);
        } else {
          EXPECT_EQ(file->Image(), threw ? before : after);
          EXPECT_EQ(file->Fault(), "");
          EXPECT_TRUE(!threw || file->path == kPath);
        }
        file.reset();
        EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
      });
    }
    EXPECT_GE(failed, row.atLeast);
  }
  EXPECT_EQ(TestSystem::OpenFiles(), openFiles);
}

TEST(FailedAllocation, LeavesNothingOfAnObjectThatWasNotBuilt) {
  static std::unique_ptr<File> file;
  static std::unique_ptr<SmartBuffer> buffer;
  static std::unique_ptr<ConfigException> exception, other;
  static void (*const rows[])() = {
      [] { file = std::make_unique<File>(kPath); },
      [] { file.reset(new File(kText.c_str(), false, false, true, "=", "#", "  ")); },
      [] { file.reset(new File(nullptr, false, false, false, "=", "#", nullptr)); },
      [] { buffer = std::make_unique<SmartBuffer>(); },
      [] { exception = std::make_unique<ConfigException>(*other); },
      [] { *other = ConfigException("text"); },
  };
  TestFiles::Write(kPath, kText + kLong);
  const int openFiles = TestSystem::OpenFiles();
  for (const auto& row : rows) {
    const long blocks = FailingNew::LiveBlocks();
    const auto make = [&row]() -> std::function<void()> {
      other = std::make_unique<ConfigException>("text");
      return row;
    };
    const int failed = FailingNew::ForEachAllocation(make, [&](bool) {
      EXPECT_STREQ(other->what(), "text");
      file.reset();
      buffer.reset();
      exception.reset();
      other.reset();
      EXPECT_LE(FailingNew::LiveBlocks(), blocks + 1);  // a function object's own
    });
    EXPECT_GE(failed, 1);
    EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
  }
  EXPECT_EQ(TestSystem::OpenFiles(), openFiles);
}

}  // namespace
