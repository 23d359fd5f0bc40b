// SPDX-License-Identifier: MIT
// What fills a file object anew replaces its content when all that may fail is done, and what
// empties it gives the memory back.
#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "ConfigFile.h"
#include "FailingNew.h"
#include "MultiSectionFile.h"
#include "TestFiles.h"

namespace {

// A derived class sees the delete mark; nobody else can look at it without taking it away.
struct FlatFile : Configuration::ConfigFile {
  explicit FlatFile(const char* source) : ConfigFile(source, true, false, false, "=", "#", "") {}
  using ConfigFile::afterDelete;
};
struct SectionFile : Configuration::MultiSectionConfigFile {
  explicit SectionFile(const char* source)
      : MultiSectionConfigFile(source, true, false, false, false) {}
  using MultiSectionConfigFile::afterDelete;
};

template <class F>
std::string Dump(F& file) {
  const bool mark = file.afterDelete;
  char image[128] = "", key[16] = "none", sectionKey[16] = "none";
  file.SaveToBuffer(image, sizeof image);
  file.GetCurrentEntry(key, sizeof key, nullptr, 0);
  if constexpr (std::is_same_v<F, SectionFile>) {
    file.GetSecCurrentEntry(sectionKey, sizeof sectionKey, nullptr, 0);
  }
  file.afterDelete = mark;
  return std::string(image) + "entry: " + key + ", in the section: " + sectionKey +
         (mark ? ", delete mark" : "");
}

template <class F>
struct Content : testing::Test {
  static constexpr char kText[] = "a=1\nb=2\nc=3\nsection s {\nx=1\ny=2\n}\n";
  const std::string path = TestFiles::Path("content");
};
using Files = testing::Types<FlatFile, SectionFile>;
TYPED_TEST_SUITE(Content, Files);

TYPED_TEST(Content, StaysUntouchedWhereRefillingItFindsNoMemory) {
  static const struct {
    const char* name;
    void (*refill)(TypeParam&);
    const char* after;
  } rows[] = {
      {"Reload", [](TypeParam& f) { f.Reload(); },
       "a=1\nb=2\nc=3\nsection s {\nx=1\ny=2\n}\nentry: a, in the section: "},
      {"AttachToBuffer", [](TypeParam& f) { f.AttachToBuffer("k=v\nsection t {\nz=3\n}\n", "p"); },
       "k=v\nsection t {\nz=3\n}\nentry: k, in the section: "},
      {"AttachToBuffer of a line that is too long",
       [](TypeParam& f) {
         static const std::string text = "k=v\n" + std::string(1023, 'x') + "\n";
         f.AttachToBuffer(text.c_str(), nullptr);
       },
       "k=v\nentry: none, in the section: "},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    TestFiles::Write(this->path, this->kText);
    TypeParam file(this->path.c_str());
    if constexpr (std::is_same_v<TypeParam, SectionFile>) file.GotoSecLastEntry();
    file.GotoEntry("b");
    file.DeleteCurrentEntry();
    const std::string before = Dump(file);
    const auto untouched = [&](bool failed) {
      if (failed) {
        EXPECT_EQ(Dump(file), before);
      }
    };
    const int failures = FailingNew::ForEachAllocation([&] { row.refill(file); }, untouched);
    EXPECT_GT(failures, 4);
    EXPECT_EQ(Dump(file).substr(0, std::string(row.after).size()), row.after);
    EXPECT_FALSE(file.afterDelete);
  }
}

// The entries of all sections lie in the slabs of the top-level entries.
TYPED_TEST(Content, LeavesNoMemoryTakenWhenItIsCleared) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "a=1\nsection s {\nb=2\n}\n";
  TypeParam file(nullptr);
  const long blocks = FailingNew::LiveBlocks();
  file.AttachToBuffer(text.c_str(), nullptr);
  EXPECT_GT(FailingNew::LiveBlocks(), blocks);
  file.ClearAll();
  EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
}

}  // namespace
