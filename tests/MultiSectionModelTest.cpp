// SPDX-License-Identifier: MIT
// Every operation from every state, and random operations, held against a plain model.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <random>
#include <string>

#include "ConfigException.h"
#include "SectionModel.h"
#include "TestFiles.h"

namespace {

using std::string;

constexpr SectionTokens kPreset = {"section", "{\n", "}\n", "=", "#", ""};
constexpr SectionTokens kTwoLines = {"section", "\n{\n", "\n}\n", "=", "#", ""};

void ExpectAgreement(const SectionStep& step, OpenSectionFile& file, SectionModel& model,
                     const string& a, const string& b) {
  const string before = file.Picture() + "\n" + file.Image();
  const string trace = step.name + "(" + a + ", " + b + ") on " + before;
  ASSERT_EQ(step.run(file, a.c_str(), b.c_str()), step.On(model, a, b)) << trace;
  ASSERT_EQ(file.Picture(), model.Picture()) << trace;
  ASSERT_EQ(file.Image(), model.Image()) << trace;
  ASSERT_EQ(file.Fault(), "") << trace;
}

// Element `n` of the list, unset below 0, end at its count.
template <class List, class Position>
void Put(List& list, Position& cursor, int n) {
  cursor = {};
  if (n >= 0) cursor = list.First();
  for (int i = 0; i < n && cursor.IsAtElement(); ++i) cursor.StepForward();
}

void Put(SectionModel::Walk& walk, int n) {
  const auto at = static_cast<std::size_t>(n);
  walk.at = n < 0 ? SectionModel::kUnset : at < walk.ids.size() ? walk.ids[at] : SectionModel::kEnd;
}

TEST(SectionModel, AgreesOnEveryStepFromEveryState) {
  static const struct {
    SectionTokens tokens;
    const char* text;
  } rows[] = {
      {kPreset, ""},
      {kPreset, "a=1\n"},
      {kPreset, "section {\n}\n"},
      {kPreset, "#\na=1\nsection b {\na=2\nb=3\n}\nz=4\nsection a {\n#\nb=5\n}\n b = 6 \n"},
      // Frozen: a name line that is an entry, one that is the former section's last.
      {kTwoLines, "{\na=1\n}\nb=2\n{\n}\na\n{\nb=3\n}\n{\na=4\n}\n"},
  };
  for (const auto& row : rows) {
    for (const auto& step : SectionSteps()) {
      for (int state = 0; state < 6 * 4 * 2 * 3; ++state) {
        OpenSectionFile file(row.tokens);
        SectionModel model(row.tokens);
        file.Take(row.text);
        ASSERT_TRUE(model.Load(row.text));
        const int entry = state / 6 % 4 - 1;
        Put(*file.sections, *file.sectionCursor, state % 6 - 1);
        Put(model.sections, state % 6 - 1);
        Put(*file.entries, *file.entryCursor, entry);
        Put(model.top, entry);
        for (auto& section : *file.sections) Put(section.entries, section.entryCursor, entry);
        for (int id : model.sections.ids) Put(model.items[id].entries, entry);
        file.afterDelete = model.stay = state / 24 % 2 == 1;
        const char* const a[] = {"a", "q", ""};
        ASSERT_NO_FATAL_FAILURE(ExpectAgreement(step, file, model, a[state / 48], "2"));
      }
    }
  }
}

class Random {
 public:
  explicit Random(unsigned seed) : generator_(seed) {}
  std::size_t Below(std::size_t end) { return generator_() % end; }
  template <std::size_t n>
  const string& Of(const string (&texts)[n], std::size_t lessAtEnd) {
    return texts[Below(n - lessAtEnd)];
  }

 private:
  std::mt19937 generator_;
};

string WithoutCursors(string picture) {
  const auto isMark = [](char c) { return string("*^$+").find(c) != string::npos; };
  picture.erase(std::remove_if(picture.begin(), picture.end(), isMark), picture.end());
  return picture;
}

TEST(SectionModel, AgreesOnRandomOperations) {
  static const struct {
    SectionTokens tokens;
    bool readsBack;  // what it composes
  } sets[] = {
      {kPreset, true},
      {kTwoLines, true},
      {{"", "\nBEGIN\n", "END\n", ":=", "//", "\t"}, true},
      {{"", " <\n", "\n>\n", "::", "#", "\t"}, true},
      {{"section", "{{", "}}", "=", "#", ""}, false},
      {{"s", "\n{", "\n}", "==", ";;", ""}, false},
      {{"", " {\n", "}\n", " ", "#", "\t"}, false},  // a separator in the start token
  };
  const char* given = std::getenv("ZELCONFUTILS_TEST_SEED");
  const unsigned seed = given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                                         : std::random_device()();
  std::cout << "ZELCONFUTILS_TEST_SEED=" << seed << "\n";
  Random random(seed);
  TestFiles::TemporaryDirectory directory;
  const string path = directory.Path("file");
  for (int round = 0; round < 700; ++round) {
    const auto& [t, readsBack] = sets[random.Below(std::size(sets))];
    const bool plain = random.Below(2) == 0;  // texts that read back as what they were
    const string separator = t.separator, stop = t.stop, start = t.start;
    const string lines[] = {t.keyword + string(" a") + start,
                            "b" + start,
                            start,
                            "a\n",
                            stop,
                            stop,
                            " " + stop,
                            t.comment + stop,
                            " " + string(t.comment) + stop,
                            "a" + separator + " 1 \n",
                            " b " + separator + "2\n",
                            separator + "v\n",
                            "  " + separator + "\n",
                            "k" + separator + stop,
                            "k" + separator + start,
                            " \n",
                            "\r\n",
                            string("\0=\0", 3),
                            string(1020, 'x') + separator + stop + "1\n"};
    const string names[] = {
        "", "a", "b", "k", "a b", string(40, 'n'), "a" + separator + "b", string(70, 'n')};
    const string values[] = {
        "", "1", " 2", "3", string(40, 'v'), "4", stop, "5 \n", string(1100, 'v')};
    string text;
    for (auto n = plain ? 0 : random.Below(20); n > 0; --n) text += random.Of(lines, 0);
    text += plain ? "" : stop;
    SectionModel model(t);
    OpenSectionFile file(t);
    ASSERT_TRUE(file.AttachToBuffer("", path.c_str()));
    if (!model.Load(text)) {
      EXPECT_THROW(file.Take(text), ConfigException) << text;
      continue;
    }
    file.Take(text);
    ASSERT_EQ(file.Picture(), model.Picture()) << text;
    for (int i = 0; i < 50; ++i) {
      const auto& step = SectionSteps()[random.Below(std::size(SectionSteps()))];
      const string &name = random.Of(names, plain ? 2 : 0),
                   &value = random.Of(values, plain ? 3 : 0);
      ASSERT_NO_FATAL_FAILURE(
          ExpectAgreement(step, file, model, step.name == "e.set" ? value : name, value));
      if (i != 25) continue;
      const string image = model.Image(), picture = model.Picture();
      ASSERT_TRUE(file.Save(random.Below(2) == 0, nullptr));
      ASSERT_EQ(TestFiles::Read(path), image);
      if (!model.Load(image)) {
        ASSERT_FALSE(plain && readsBack) << image;
        EXPECT_THROW(file.Reload(), ConfigException);
        break;
      }
      file.Reload();
      ASSERT_EQ(file.Picture(), model.Picture()) << image;
      if (plain && readsBack) {
        ASSERT_EQ(WithoutCursors(file.Picture()), WithoutCursors(picture));
      }
    }
  }
}

}  // namespace
