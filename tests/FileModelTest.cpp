// SPDX-License-Identifier: MIT
// Every small text and random operations, held against a plain model. Each allocation of each
// operation fails once. ZELCONFUTILS_TEST_SEED makes other walks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "AllTexts.h"
#include "FailingNew.h"
#include "FileModel.h"
#include "TestFiles.h"

namespace {

using std::size_t;
using std::string;

constexpr FileTokens kFlat[] = {{"", "", "", "=", "#", ""},    {"", "", "", ":=", "#", "\t"},
                                {"", "", "", " = ", "//", ""}, {"", "", "", "\t", "#", "  "},
                                {"", "", "", "=", "//", "a="}, {"", "", "", "=", "", "#"},
                                {"", "", "", "==", "#", " "},  {"", "", "", "", "#", ""}};
constexpr FileTokens kSectioned[] = {
    {"section", "{\n", "}\n", "=", "#", ""},
    {"section", "\n{\n", "\n}\n", "=", "#", ""},
    {"", "\nBEGIN\n", "END\n", ":=", "//", "\t"},
    {"a", "\n{", "\n}", "==", ";;", ""},
    {"section", "{{", "}}", "=", "#", ""},
    {"{\n", " {\n", "}\n", " ", "#", "\t"},  // the keyword and a separator in the start token
};

// A text in which some letters stand for tokens.
string Spelled(const string& letters, const FileTokens& t) {
  string text;
  for (const char c : letters) {
    const size_t token = string("K<>=#/").find(c);
    const char* const tokens[] = {t.keyword, t.start, t.stop, t.separator, t.comment, "\n"};
    text +=
        token != string::npos ? tokens[token] : string(c == 'L' ? 1020 : 1, c == '0' ? '\0' : c);
  }
  return text;
}

template <class F>
void AgreeOnEveryText(const FileTokens& tokens, const std::vector<string>& texts) {
  for (const string& letters : texts) {
    ASSERT_EQ(Twin<F>(tokens).Take(Spelled(letters, tokens)), "") << letters;
  }
}

TEST(FileModel, AgreesOnEverySmallText) {
  for (const auto& tokens : kFlat) AgreeOnEveryText<OpenConfigFile>(tokens, AllTexts("a=# /", 5));
  const auto texts = AllTexts("Ka=#<> /", 4);
  for (const auto& tokens : kSectioned) AgreeOnEveryText<OpenSectionFile>(tokens, texts);
}

// The call with each of its allocations failing once, on a file that stays usable, then whole.
void FailEachAllocation(const std::function<void()>& call, const std::function<void()>& behind) {
  FailingNew::ForEachAllocation([&] { return call; },
                                [&](bool failed) { failed ? behind() : void(); });
}

template <class F>
void Agree(const Step<F>& step, Twin<F>& twin, const string& a, const string& b) {
  F& file = twin.file;
  FileModel& model = twin.model;
  const string before = file.Picture() + "\n" + file.Image();
  string result;
  FailEachAllocation([&] { result = step.run(file, a.c_str(), b.c_str()); },
                     [&] { EXPECT_EQ(file.Image(), model.Image()) << step.name << before; });
  EXPECT_EQ(twin.Difference(result, step.On(model, a.c_str(), b.c_str())), "")
      << step.name << "(" << testing::PrintToString(a) << ", " << testing::PrintToString(b)
      << ") on " << before;
}

// The model's word, said once by hand.
TEST(FileModel, KnowsTheFormatAndEachStepOnIt) {
  Twin<OpenConfigFile> flat(kFlat[0]);
  EXPECT_EQ(flat.Take(" n  = v # \r\n# a=b\n # a=b=c\n =w\n=\na"), "");
  EXPECT_EQ(flat.file.Picture(), "*n[ v #]# a[b=c][w][]; $");
  static const struct {
    const FileTokens& tokens;
    const char *text, *picture;
  } rows[] = {
      {kSectioned[0],
       "#m = f\nt = 3\nsection alpha {\n\nhost = a # b\n #}\nb{\nx{\n}\n}\nsubsection {\nl = }\na "
       "= {",
       "*t[ 3]a[ {]; *alpha{^host[ a # b]}b{^}{^}"},
      {kSectioned[0], "section  a {\n#}\nk= \r\n}\n #section b {\n}\n", "$; * a{^k[]}b{^}"},
      {kSectioned[1], "section x\n{\n}\n\n{\n}\nk=1 \n{\n}\n{\n}\n", "*k[1]; *x{^}{^}k=1{^}}{^}"},
      {kSectioned[1], "{\na=1\n}\n", "$; *{^a[1]}"},
      {kSectioned[4], "k={{\n{{=1\na {{ b\n}} \na {{ b\n}}", "*k[{{]; *{{={^}a {{{^}"},
  };
  for (const auto& row : rows) {
    for (const auto& step : Steps<OpenSectionFile>()) {
      Twin<OpenSectionFile> twin(row.tokens);
      EXPECT_EQ(twin.Take(row.text), "");
      EXPECT_EQ(twin.file.Picture(), row.picture);
      Agree(step, twin, "a", "2");
    }
  }
}

struct Random : std::mt19937 {
  using std::mt19937::mt19937;
  size_t Below(size_t end) { return (*this)() % end; }
  const auto& OneOf(const auto& texts) { return texts[Below(std::size(texts))]; }
  // Up to `most` pieces, now and then a long run of one byte.
  string Pieces(size_t most, const auto& pieces, const FileTokens& tokens) {
    string text;
    for (size_t n = Below(most + 1); n > 0; --n) {
      text += Spelled(OneOf(pieces), tokens);
      const size_t run = Below(1000);
      if (run < 10) text.append(run == 0 ? 1000 + Below(40) : Below(60), " x"[Below(2)]);
    }
    return text;
  }
};

template <class F>
void AgreeOnAWalk(const FileTokens& tokens, unsigned seed, string path, string other) {
  static const char* const parts[] = {"a", "b", "key", " ", "\t", "=", "#", "\v", "v\xE4", "a="};
  static const char* const lines[] = {
      "a",        "b",  " ",   "=",  "#",   "\xA0",   "K a<", "b<",    "<",     "a/",
      ">",        ">",  " >",  "#>", " #>", "a= 1 /", "=v/",  " b=2/", "  =/",  "k=>",
      "k=<",      " /", "\r/", "/",  "/",   "0",      "0=/",  "L=>1/", "Lx==/", "\xEF\xBB\xBF#",
      "\xFF=\x85"};
  static const string names[] = {"", "a", "b", "k", "a b", string(40, 'n')};
  static const string values[] = {
      "", "1", " 2", "3", string(40, 'v'), string(1021, 'v'), string(1022, 'v')};
  Random random(seed);
  const size_t most = random.Below(2) == 0 ? 30 : 3;
  TestFiles::Write(path, random.Pieces(most, lines, tokens) + tokens.stop);
  Twin<F> twin(tokens);
  F& file = twin.file;
  FileModel& model = twin.model;
  ASSERT_TRUE(file.AttachToBuffer("", path.c_str()));
  const auto reload = [&] { return file.Reload(), "1"; };
  ASSERT_EQ(twin.Difference(Outcome(reload), model.Load(TestFiles::Read(path))), "");
  const auto step = [&] {
    const bool odd = random.Below(2) == 0;
    const string a = odd ? random.Pieces(3, parts, tokens) : random.OneOf(names);
    const string b = odd ? random.Pieces(6, parts, tokens) : random.OneOf(values);
    Agree(random.OneOf(Steps<F>()), twin, a, b);
  };
  for (int i = 0; i < 50 && file.lines != nullptr && !testing::Test::HasFailure(); ++i) {
    step();
    if (random.Below(30) != 0) continue;
    const string image = model.Image();
    std::filesystem::remove(path);  // or the save would wait for the disk
    ASSERT_TRUE(file.Save(random.Below(2) == 0, nullptr));
    ASSERT_EQ(TestFiles::Read(path), image);
    const bool attaches = random.Below(3) == 0;
    const auto attach = [&] { return Told(file.AttachToBuffer(image.c_str(), other.c_str())); };
    string result;
    FailEachAllocation(
        [&] {
          if (file.lines != nullptr) result = attaches ? Outcome(attach) : Outcome(reload);
        },
        [&] {
          if (file.lines == nullptr) return;  // it was only the message that found no memory
          ASSERT_EQ(file.path, path);
          ASSERT_EQ(twin.Difference("", ""), "");
          step();  // on what has been put back
        });
    const string expected = attaches ? model.Attach(image.c_str()) : model.Load(image);
    ASSERT_EQ(twin.Difference(result, expected), "") << image;
    if (attaches) std::swap(path, other);
  }
}

TEST(FileModel, AgreesOnRandomOperations) {
  const char* given = std::getenv("ZELCONFUTILS_TEST_SEED");
  unsigned seed = given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : 1;
  const TestFiles::TemporaryDirectory directory;
  const string path = directory.Path("file"), other = directory.Path("other");
  long blocks = 0;
  for (int round = 0; round < 100 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    if (round == 1) blocks = FailingNew::LiveBlocks();
    for (const auto& tokens : kFlat) AgreeOnAWalk<OpenConfigFile>(tokens, ++seed, path, other);
    for (const auto& tokens : kSectioned)
      AgreeOnAWalk<OpenSectionFile>(tokens, ++seed, path, other);
  }
  EXPECT_TRUE(HasFailure() || FailingNew::LiveBlocks() == blocks);
}

}  // namespace
