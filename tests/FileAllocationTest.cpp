// SPDX-License-Identifier: MIT
// Every allocation of every operation failed once.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "ConfigException.h"
#include "FailingNew.h"
#include "OpenSectionFile.h"
#include "SmartBuffer.h"
#include "TestFiles.h"
#include "TestSystem.h"

namespace {

using File = OpenConfigFile;
using Sections = OpenSectionFile;

constexpr FileTokens kTwoLines = {"section", "\n{\n", "}\n", "=", "#", nullptr};
const std::string kFifty(50, 'x'), kLong(300, 'x'), kText = "n=1\n" + kFifty + "\nm=2\n";
const std::string kRefused = kText + std::string(1024, 'x') + "\n";
const std::string kSections = "k=1\n{\n}\nn\n{\na=1\n}\n{\n}\n";
const TestFiles::TemporaryDirectory kScratch;
const std::string kPath = kScratch.Path("file"), kTarget = kScratch.Path("target");

template <class F>
struct Operation {
  const char* name;
  void (*run)(F& file);
  int atLeast;                // allocations that must have been made to fail
  std::string failure;        // what may be said instead of `std::bad_alloc`, all then released
  bool keepsCursors = false;  // when it fails
};

template <class F>
void CheckImages(const std::vector<Operation<F>>& rows, std::unique_ptr<F> (*make)(int more)) {
  const int openFiles = TestSystem::OpenFiles();
  std::unique_ptr<F> file;
  std::string failure, before, after, picture;
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
      const auto setUp = [&]() -> std::function<void()> {
        file.reset();
        failure.clear();
        blocks = FailingNew::LiveBlocks();
        file = make(more);
        return [&run] { run(); };
      };
      const auto unharmed = setUp();
      before = file->Image();
      picture = file->Picture();
      unharmed();
      if (file->lines != nullptr) after = file->Image();
      failed += FailingNew::ForEachAllocation(setUp, [&](bool threw) {
        if (file->lines == nullptr) {
          EXPECT_TRUE(!row.failure.empty() && failure.find(row.failure) != failure.npos);
        } else {
          EXPECT_EQ(file->Image(), threw ? before : after);
          EXPECT_EQ(file->Fault(), "");
          EXPECT_TRUE(!threw || file->path == kPath);
          EXPECT_TRUE(!threw || !row.keepsCursors || file->Picture() == picture);
          if constexpr (std::is_same_v<F, Sections>) {
            EXPECT_FALSE(file->GotoSection("k=1") && file->SetSectionName("frozen"));
          }
        }
        file.reset();
        EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
      });
    }
    EXPECT_GE(failed, row.atLeast);
  }
  EXPECT_EQ(TestSystem::OpenFiles(), openFiles);
}

TEST(FailedAllocation, LeavesAFlatImageBeforeOrAfter) {
  TestFiles::Write(kPath, "# head\na = 1\nb=2\nc=3\n" + kFifty + "\n" + kLong);
  const auto make = [](int more) {
    auto file = std::make_unique<File>(kPath);
    file->DeleteEntry("b");
    for (int i = 0; i < more; ++i) file->AddEntry("d", kFifty.c_str(), false);
    return file;
  };
  CheckImages<File>(
      {
          {"Reload", [](File& f) { f.Reload(); }, 4, "", true},
          {"Attach", [](File& f) { f.AttachToBuffer(kText.c_str(), "new"); }, 4, "", true},
          {"Attach, refused", [](File& f) { f.AttachToBuffer(kRefused.c_str(), ""); }, 4, "", true},
          {"AddEntry", [](File& f) { f.AddEntry("k", kFifty.c_str(), true); }, 2, ""},
          {"InsertEntry", [](File& f) { f.InsertEntry("k", kLong.c_str()); }, 2, ""},
          {"SetEntry", [](File& f) { f.SetEntry("a", kLong.c_str()); }, 2, ""},
          {"SetCurrent", [](File& f) { f.SetCurrentEntry(kFifty.c_str()); }, 1, ""},
          {"Rename", [](File& f) { f.RenameEntry(kLong.c_str()); }, 2, ""},
          {"Save", [](File& f) { f.Save(false, kTarget.c_str()); }, 0, ""},
          {"Save at once", [](File& f) { f.Save(true, kTarget.c_str()); }, 8, "file is too big."},
          {"Save nowhere", [](File& f) { f.Save(true, "no/place"); }, 8, "\"no/place\" : "},
      },
      make);
}

TEST(FailedAllocation, LeavesASectionedImageBeforeOrAfter) {
  TestFiles::Write(kPath, kSections);
  const auto make = [](int more) {
    auto file = std::make_unique<Sections>(kTwoLines, kPath.c_str());
    for (int i = 0; i < more; ++i) file->AddSection("d", true), file->AddEntry("e", "1", true);
    file->GotoSection("n");
    file->afterDelete = true;
    return file;
  };
  using F = Sections;
  CheckImages<F>(
      {
          {"Reload", [](F& f) { f.Reload(); }, 5, "", true},
          {"Attach", [](F& f) { f.AttachToBuffer(kSections.c_str(), "new"); }, 5, "", true},
          {"Corrupted", [](F& f) { f.AttachToBuffer("a\n{\n", "new"); }, 5, "corrupted!", true},
          {"AddSection", [](F& f) { f.AddSection(kLong.c_str(), false); }, 3, ""},
          {"AddSection, front", [](F& f) { f.AddSection(kFifty.c_str(), true); }, 2, ""},
          {"InsertSection", [](F& f) { f.InsertSection(kLong.c_str()); }, 3, ""},
          {"SetSectionName", [](F& f) { f.SetSectionName(kLong.c_str()); }, 2, ""},
          {"DeleteSection", [](F& f) { f.DeleteSection("d"); }, 0, ""},
          {"AddSectionEntry", [](F& f) { f.AddSectionEntry("k", kLong.c_str()); }, 9, ""},
          {"SetSectionEntry", [](F& f) { f.SetSectionEntry("a", kLong.c_str()); }, 1, ""},
          {"SetSectionEntry, new", [](F& f) { f.SetSectionEntry("k", kFifty.c_str()); }, 1, ""},
          {"Insert", [](F& f) { f.InsertSectionEntry("k", "2", false); }, 1, ""},
          {"Rename", [](F& f) { f.RenameSectionEntry(kLong.c_str()); }, 1, ""},
      },
      make);
}

TEST(FailedAllocation, LeavesNothingOfAnObjectThatWasNotBuilt) {
  static std::unique_ptr<File> file;
  static std::unique_ptr<Sections> sections;
  static std::unique_ptr<SmartBuffer> buffer;
  static std::unique_ptr<ConfigException> exception, other;
  static void (*const rows[])() = {
      [] { file = std::make_unique<File>(kPath); },
      [] { file.reset(new File(kText.c_str(), false, false, true, "=", "#", "  ")); },
      [] { file.reset(new File(nullptr, false, false, false, "=", "#", nullptr)); },
      [] { sections = std::make_unique<Sections>(kTwoLines, kTarget.c_str()); },
      [] { buffer = std::make_unique<SmartBuffer>(); },
      [] { exception = std::make_unique<ConfigException>(*other); },
      [] { *other = ConfigException("text"); },
  };
  TestFiles::Write(kPath, kText + kLong);
  TestFiles::Write(kTarget, kSections);
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
      sections.reset();
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
