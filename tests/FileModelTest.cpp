// SPDX-License-Identifier: MIT
// Every operation from every state, and random operations, held against a plain model.
// ZELCONFUTILS_TEST_SEED repeats a run.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <string>

#include "FileModel.h"
#include "TestFiles.h"

namespace {

using std::size_t;
using std::string;

constexpr FileTokens kFlat = {"", "", "", "=", "#", ""};
constexpr FileTokens kPreset = {"section", "{\n", "}\n", "=", "#", ""};
constexpr FileTokens kTwoLines = {"section", "\n{\n", "\n}\n", "=", "#", ""};

template <class F>
void ExpectAgreement(const Step<F>& step, F& file, FileModel& model, const string& a,
                     const string& b) {
  const string before = file.Picture(true) + "\n" + file.Image();
  const string result = step.run(file, a.c_str(), b.c_str()), expected = step.On(model, a, b);
  ASSERT_EQ(Difference(file, model, result, expected), "")
      << step.name << "(" << testing::PrintToString(a) << ", " << testing::PrintToString(b)
      << ") on " << before;
}

// To element `n` in both, unset below 0, end at its count.
template <class List, class Position>
void Put(List& list, Position& cursor, FileModel::Walk& walk, int n) {
  cursor = {};
  walk.at = FileModel::kUnset;
  for (int i = -1; i < n && walk.at != FileModel::kEnd; ++i) {
    if (cursor.IsUnset())
      cursor = list.First();
    else
      cursor.StepForward();
    walk.at = i < 0 ? walk.First() : walk.Behind(walk.at);
  }
}

void PutCursors(OpenConfigFile& file, FileModel& model, int, int entry) {
  Put(*file.entries, *file.cursor, model.top, entry);
}
void PutCursors(OpenSectionFile& file, FileModel& model, int section, int entry) {
  Put(*file.sections, *file.sectionCursor, model.sections, section);
  Put(*file.entries, *file.entryCursor, model.top, entry);
  auto id = model.sections.ids.begin();
  for (auto& each : *file.sections) {
    Put(each.entries, each.entryCursor, model.items[*id++].entries, entry);
  }
}

template <class F>
void AgreeOnEveryStep(const FileTokens& tokens, const char* text) {
  for (const auto& step : Steps<F>()) {
    for (int state = 0; state < 6 * 4 * 2 * 3; ++state) {
      F file(tokens);
      FileModel model(tokens);
      file.Take(text);
      ASSERT_TRUE(model.Load(text));
      PutCursors(file, model, state % 6 - 1, state / 6 % 4 - 1);
      file.afterDelete = model.stay = state / 24 % 2 == 1;
      const char* const a[] = {"a", "q", ""};
      ASSERT_NO_FATAL_FAILURE(ExpectAgreement(step, file, model, a[state / 48], "2"));
    }
  }
}

TEST(FileModel, AgreesOnEveryStepFromEveryState) {
  for (const char* text : {"", "#\n", "a=1\n", "#\na=1\n#\nq=q\n b = 6 \n"}) {
    AgreeOnEveryStep<OpenConfigFile>(kFlat, text);
  }
  static const struct {
    FileTokens tokens;
    const char* text;
  } rows[] = {
      {kPreset, ""},
      {kPreset, "a=1\n"},
      {kPreset, "section {\n}\n"},
      {kPreset, "#\na=1\nsection b {\na=2\nb=3\n}\nz=4\nsection a {\n#\nb=5\n}\n b = 6 \n"},
      // Frozen: a name line that is an entry, one that is the former section's last.
      {kTwoLines, "{\na=1\n}\nb=2\n{\n}\na\n{\nb=3\n}\n{\na=4\n}\n"},
  };
  for (const auto& row : rows) AgreeOnEveryStep<OpenSectionFile>(row.tokens, row.text);
}

class Random {
 public:
  Random(unsigned seed, const FileTokens& t)
      : generator_(seed), tokens_{{'K', t.keyword},   {'<', t.start},   {'>', t.stop},
                                  {'=', t.separator}, {'#', t.comment}, {'/', "\n"}} {}

  size_t Below(size_t end) { return generator_() % end; }
  template <class Texts>
  const auto& OneOf(const Texts& texts) {
    return texts[Below(std::size(texts))];
  }

  // Up to `most` pieces: letters, white space, tokens, now and then a long run of one byte; of a
  // file whole lines too.
  string Pieces(size_t most, bool isFile) {
    static const string pieces[] = {"a",
                                    "b",
                                    "key",
                                    " ",
                                    "\t",
                                    "=",
                                    "#",
                                    "\v",
                                    "v\xE4",
                                    "a=",
                                    "K a<",
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
                                    "/",
                                    "/",
                                    string("\0", 1),
                                    string("\0=/", 3),
                                    string(1020, 'x') + "=>1/"};
    string text;
    for (size_t n = Below(most + 1); n > 0; --n) {
      for (const char c : pieces[Below(isFile ? std::size(pieces) : 10)]) {
        text += tokens_.count(c) ? tokens_.at(c) : string(1, c);
      }
      if (Below(40) == 0) text.append(Below(isFile ? 1500 : 60), " x"[Below(2)]);
      if (Below(500) == 0) text.append(1000 + Below(40), " x"[Below(2)]);
    }
    return text;
  }

 private:
  std::mt19937 generator_;
  std::map<char, string> tokens_;
};

string WithoutCursors(string picture) {
  const auto isMark = [](char c) { return string("*^$+").find(c) != string::npos; };
  picture.erase(std::remove_if(picture.begin(), picture.end(), isMark), picture.end());
  return picture;
}

template <class F>
void AgreeOnRandomSteps(const FileTokens& tokens, bool readsBack, unsigned seed, const char* path) {
  static const string names[] = {"", "a", "b", "k", "a b", string(40, 'n')};
  static const string values[] = {"", "1", " 2", "3", "4", string(40, 'v')};
  Random random(seed, tokens);
  const bool plain = random.Below(2) == 0;  // texts that read back as what they were
  const string text = plain ? "" : random.Pieces(30, true) + tokens.stop;
  FileModel model(tokens);
  F file(tokens);
  ASSERT_TRUE(file.AttachToBuffer("", path));
  if (!model.Load(text)) {
    EXPECT_THROW(file.Take(text), ConfigException) << text;
    return;
  }
  file.Take(text);
  ASSERT_EQ(Difference(file, model, "", ""), "") << text;
  for (int i = 0; i < 50; ++i) {
    const auto& step = random.OneOf(Steps<F>());
    const bool known = plain || random.Below(2) == 0;
    const string name = known ? random.OneOf(names) : random.Pieces(3, false);
    const string value = known ? random.OneOf(values) : random.Pieces(6, false);
    const bool sets = step.name.find(".set") != string::npos;
    ASSERT_NO_FATAL_FAILURE(ExpectAgreement(step, file, model, sets ? value : name, value));
    if (random.Below(30) != 0) continue;
    const string image = model.Image(), picture = file.Picture();
    std::filesystem::remove(path);  // or the save would wait for the disk
    ASSERT_TRUE(file.Save(random.Below(2) == 0, nullptr));
    ASSERT_EQ(TestFiles::Read(path), image);
    if (random.Below(3) == 0) {
      ASSERT_EQ(Attach(file, model, image, path), "") << image;
      if (file.lines == nullptr) return;
    }
    if (!model.Load(image)) {
      ASSERT_FALSE(plain && readsBack) << image;
      EXPECT_THROW(file.Reload(), ConfigException);
      return;
    }
    file.Reload();
    ASSERT_EQ(Difference(file, model, "", ""), "") << image;
    if (plain && readsBack) {
      ASSERT_EQ(WithoutCursors(file.Picture()), WithoutCursors(picture));
    }
  }
}

TEST(FileModel, AgreesOnRandomOperations) {
  static const FileTokens flat[] = {kFlat,
                                    {"", "", "", ":=", "#", "\t"},
                                    {"", "", "", " = ", "//", "  "},
                                    {"", "", "", "\t", "#", ""},
                                    {"", "", "", "=", "//", "a="},
                                    {"", "", "", "=", "", "#"},
                                    {"", "", "", "==", "#", " = "},
                                    {"", "", "", "", "#", ""}};
  static const struct {
    FileTokens tokens;
    bool readsBack;  // what it composes
  } sectioned[] = {
      {kPreset, true},
      {kTwoLines, true},
      {{"", "\nBEGIN\n", "END\n", ":=", "//", "\t"}, true},
      {{"", " <\n", "\n>\n", "::", "#", "\t"}, true},
      {{"section", "{{", "}}", "=", "#", ""}, false},
      {{"s", "\n{", "\n}", "==", ";;", ""}, false},
      {{"", " {\n", "}\n", " ", "#", "\t"}, false},  // a separator in the start token
  };
  const char* given = std::getenv("ZELCONFUTILS_TEST_SEED");
  unsigned seed = given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                                   : std::random_device()();
  std::cout << "ZELCONFUTILS_TEST_SEED=" << seed << "\n";
  TestFiles::TemporaryDirectory directory;
  const string path = directory.Path("file");
  for (int round = 0; round < 100 && !HasFatalFailure(); ++round) {
    SCOPED_TRACE(round);
    for (const FileTokens& tokens : flat) {
      AgreeOnRandomSteps<OpenConfigFile>(tokens, false, ++seed, path.c_str());
    }
    for (const auto& [tokens, readsBack] : sectioned) {
      AgreeOnRandomSteps<OpenSectionFile>(tokens, readsBack, ++seed, path.c_str());
    }
  }
}

}  // namespace
