// SPDX-License-Identifier: MIT
// Every operation from every state, and random operations, held against a plain model.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <string>

#include "ConfigException.h"
#include "SectionModel.h"
#include "TestFiles.h"

namespace {

using std::size_t;
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

// To element `n` in both, unset below 0, end at its count.
template <class List, class Position>
void Put(List& list, Position& cursor, SectionModel::Walk& walk, int n) {
  cursor = {};
  walk.at = SectionModel::kUnset;
  for (int i = -1; i < n && walk.at != SectionModel::kEnd; ++i) {
    if (cursor.IsUnset())
      cursor = list.First();
    else
      cursor.StepForward();
    walk.at = i < 0 ? walk.First() : walk.Behind(walk.at);
  }
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
        Put(*file.sections, *file.sectionCursor, model.sections, state % 6 - 1);
        Put(*file.entries, *file.entryCursor, model.top, entry);
        auto id = model.sections.ids.begin();
        for (auto& section : *file.sections) {
          Put(section.entries, section.entryCursor, model.items[*id++].entries, entry);
        }
        file.afterDelete = model.stay = state / 24 % 2 == 1;
        const char* const a[] = {"a", "q", ""};
        ASSERT_NO_FATAL_FAILURE(ExpectAgreement(step, file, model, a[state / 48], "2"));
      }
    }
  }
}

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
  std::mt19937 random(seed);
  const auto oneOf = [&random](const auto& texts, size_t lessAtEnd) -> const string& {
    return texts[random() % (std::size(texts) - lessAtEnd)];
  };
  TestFiles::TemporaryDirectory directory;
  const string path = directory.Path("file");
  // Made into lines of a file by putting in the tokens.
  static const string lines[] = {"K a<",
                                 "b<",
                                 "<",
                                 "a/",
                                 ">",
                                 ">",
                                 " >",
                                 "#>",
                                 " #>",
                                 "a= 1 /",
                                 " b=2/",
                                 "=v/",
                                 "  =/",
                                 "k=>",
                                 "k=<",
                                 " /",
                                 "\r/",
                                 string("\0=/", 3),
                                 string(1020, 'x') + "=>1/"};
  static const string values[] = {
      "", "1", " 2", "3", string(40, 'v'), "4", "}\n", "5 \n", string(1100, 'v')};
  for (int round = 0; round < 700; ++round) {
    const auto& [t, readsBack] = sets[random() % std::size(sets)];
    const bool plain = random() % 2 == 0;  // texts that read back as what they were
    const string names[] = {"",
                            "a",
                            "b",
                            "k",
                            "a b",
                            string(40, 'n'),
                            string("a") + t.separator + "b",
                            string(70, 'n')};
    const std::map<char, string> tokens = {{'K', t.keyword},   {'<', t.start},   {'>', t.stop},
                                           {'=', t.separator}, {'#', t.comment}, {'/', "\n"}};
    string text;
    for (size_t n = plain ? 0 : random() % 20; n > 0; --n) {
      for (const char c : oneOf(lines, 0)) text += tokens.count(c) ? tokens.at(c) : string(1, c);
    }
    text += plain ? "" : t.stop;
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
      const auto& step = SectionSteps()[random() % std::size(SectionSteps())];
      const string &name = oneOf(names, plain ? 2 : 0), &value = oneOf(values, plain ? 3 : 0);
      ASSERT_NO_FATAL_FAILURE(
          ExpectAgreement(step, file, model, step.name == "e.set" ? value : name, value));
      if (i != 25) continue;
      const string image = model.Image(), picture = model.Picture();
      std::filesystem::remove(path);  // or the save would wait for the disk
      ASSERT_TRUE(file.Save(random() % 2 == 0, nullptr));
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
