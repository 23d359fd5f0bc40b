// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "AllTexts.h"
#include "FailingNew.h"
#include "SlowLexer.h"
#include "TestFiles.h"
#include "ZelParser.h"

namespace {

using Lines = std::vector<std::string>;

// Each line with the mark that ends it; last what follows the last mark, perhaps nothing.
Lines Split(const std::string& text, char mark, bool keepMark) {
  Lines lines(1);
  for (const char c : text) {
    if (c != mark || keepMark) lines.back() += c;
    if (c == mark) lines.emplace_back();
  }
  return lines;
}

Lines AllLines(StreamIterator&& source) {
  Lines lines;
  while (source.HasMoreLines()) lines.push_back(source.GetLine());
  return lines;
}

class Parsing : public testing::Test {
 protected:
  std::string Write(const char* name, const std::string& text) const {
    TestFiles::Write(directory.Path(name), text, std::ios::binary);
    return directory.Path(name);
  }

  const TestFiles::TemporaryDirectory directory;
};

TEST_F(Parsing, LineSourcesHandOutLines) {
  // The runtimes read files by 511, 4096 or 8191 bytes.
  for (const std::size_t bytes : {0u, 509u, 4094u, 8189u}) {
    for (const std::string& tail : AllTexts(std::string("a\r\n\0", 4), 4)) {
      const std::string text = std::string(bytes, 'x') + tail;
      Lines inBuffer = Split(text.c_str(), '\n', true);
      if (inBuffer.back().empty()) inBuffer.pop_back();
      Lines inFile = Split(text, '\n', true);
      for (std::string& line : inFile) {
        if (line.size() > 1 && line.substr(line.size() - 2) == "\r\n")
          line.erase(line.size() - 2, 1);
      }
      ASSERT_EQ(AllLines(BufferIterator(text.c_str())), inBuffer);
      ASSERT_EQ(AllLines(FileIterator(Write("a", text).c_str())), inFile);
    }
  }
}

TEST_F(Parsing, AFileThatCannotBeReadHasNoLines) {
  for (const char* path : {"/nowhere/at/all", "."}) {
    try {
      FileIterator source(path);
      ADD_FAILURE() << path;
    } catch (const std::exception& failure) {
      EXPECT_EQ(typeid(failure), typeid(std::exception)) << path;
    }
  }
  FileIterator source(Write("a", "a\nb\n").c_str());
  EXPECT_EQ(source.GetLine(), "a\n");
  source.CloseFile();
  source.CloseFile();
  EXPECT_FALSE(source.HasMoreLines());
  EXPECT_EQ(source.GetLine(), "");
  const char* unreadable = "/proc/self/mem";  // opens, and its first byte is never mapped
  if (!std::filesystem::exists(unreadable)) GTEST_SKIP();
  EXPECT_EQ(AllLines(FileIterator(unreadable)), Lines{""});
}

TEST(Lexer, EqualsTheSlowOne) {
  const char kCut = '\x01';  // the source's next line starts here
  EXPECT_EQ(ZelLex(nullptr, false).GetToken(), nullptr);
  for (const std::string& text : AllTexts(std::string("a1 \n;\xFF\0\r\x01", 9), 5)) {
    SlowLexer::Check(Split(text, kCut, false));
  }
  for (int pair = 0; pair < 0x10000; ++pair) {
    const std::string text = {static_cast<char>(pair >> 8), static_cast<char>(pair)};
    SlowLexer::Check({text + "a1 ;a1 ;", text});
  }
  const char bytes[] = "aaaaaaaabZz0000009   \t\v\n\n;_\"$\r\x01\x01";
  std::mt19937 random(1);
  for (std::string text; text.size() < 60000;) {
    for (int i = 0; i < 50; ++i) text.append(1 + random() % 30, bytes[random() % 33]);
    SlowLexer::Check(Split(text.substr(text.size() / 2), kCut, false));
  }
}

TEST(Lexer, CopiesKeepARecordOfTheirOwn) {
  BufferIterator source("one "), otherSource("three");
  ZelLex lexer(&source, false), other(&otherSource, true);
  const ZelLexToken *record = lexer.GetToken(), *otherRecord = other.GetToken();
  ZelLex copy(lexer);
  other = lexer;
  other = *&other;
  EXPECT_EQ(otherRecord->text, "one");
  EXPECT_EQ(SlowLexer::GetToken(copy), "4:1  ");
  EXPECT_EQ(record->text, "one");
  EXPECT_EQ(other.GetToken(), otherRecord);
}

TEST(Lexer, ARunOutlivesASourceThatThrows) {
  ListSource source({"ab", "c ", " \n"});
  ZelLex lexer(&source, true);
  source.throwAt = 1;
  EXPECT_THROW(lexer.GetToken(), std::runtime_error);
  EXPECT_EQ(SlowLexer::GetToken(lexer), "2:3abc ");
  source.throwAt = 2;
  EXPECT_THROW(lexer.GetToken(), std::runtime_error);
  for (const char* token : {"0:0 ", "5:1\n ", "end"}) EXPECT_EQ(SlowLexer::GetToken(lexer), token);
}

// Reads `limit` tokens at most and then does as told.
struct Reader : ZelParser {
  bool Parse(void* context) override {
    seenContext = context;
    const ZelLexToken* token = nullptr;
    for (int i = 0; i < limit && (token = GetToken()) != nullptr; ++i) text += token->text;
    if (throws) throw std::runtime_error("hook");
    return result;
  }

  std::string text;
  void* seenContext = nullptr;
  int limit = 1;
  bool result = true, throws = false;
};

TEST_F(Parsing, ASecondCallGoesOnWithTheFirstSource) {
  const std::string file = Write("a", "a b\nc d\n"), other = Write("b", "x\n");
  const struct {
    bool fromFile;
    const char* second;  // null: a text
    int limit;
    const char* rest;
  } rows[] = {
      {true, "/nowhere/at/all", 1, " b\n"}, {true, other.c_str(), 9, ""},
      {true, nullptr, 1, " b\n"},           {false, nullptr, 1, " 2\n3"},
      {false, other.c_str(), 1, " 2\n3"},
  };
  for (const auto& row : rows) {
    Reader parser;
    parser.limit = row.limit;
    parser.result = row.limit == 1;
    EXPECT_EQ(row.fromFile ? parser.ParseFile(file.c_str(), &parser)
                           : parser.ParseBuffer("1 2\n3", &parser),
              parser.result);
    EXPECT_EQ(parser.seenContext, &parser);
    parser.text.clear();
    parser.limit = 9;
    row.second != nullptr ? parser.ParseFile(row.second, nullptr)
                          : parser.ParseBuffer("y", nullptr);
    EXPECT_EQ(parser.text, row.rest) << &row - rows;
  }
}

TEST_F(Parsing, AFailedOpenAndAThrowingHookLeaveAUsableParser) {
  Reader parser;
  EXPECT_THROW(parser.ParseFile("/nowhere/at/all", &parser), std::exception);
  EXPECT_EQ(parser.seenContext, nullptr);
  parser.throws = true;
  EXPECT_THROW(parser.ParseFile(Write("a", "a\nb\n").c_str(), nullptr), std::runtime_error);
  EXPECT_EQ(parser.GetToken()->text, "\n");
  EXPECT_EQ(parser.GetToken()->text, "b");  // the file is still open
}

TEST_F(Parsing, AFailedAllocationLosesNothingThatTheRepeatedCallNeeds) {
  const std::string wide(50, 'w'), text = std::string(9000, 'w') + " 1\n" + wide + '7' + ";\nend";
  const std::string file = Write("a", text), wideText = wide + " 1";
  std::unique_ptr<Reader> parser;
  std::unique_ptr<ZelLex> target;
  BufferIterator source(wideText.c_str()), otherSource("");
  ZelLex lexer(&source, false);
  lexer.GetToken();
  const struct {
    std::function<void()> run;
    bool parses;
    int failures;  // at least
  } rows[] = {
      {[&] { parser->ParseFile(file.c_str(), nullptr); }, true, 6},
      {[&] { parser->ParseBuffer(text.c_str(), nullptr); }, true, 6},
      {[&] { *target = ZelLex(lexer); }, false, 5},
  };
  for (const auto& row : rows) {
    long live = 0;
    const auto setUp = [&] {
      live = FailingNew::LiveBlocks();
      parser = std::make_unique<Reader>();
      parser->text.reserve(text.size());
      parser->limit = 100;
      otherSource = BufferIterator("a b");
      target = std::make_unique<ZelLex>(&otherSource, false);
      target->GetToken();
      return [&row] { row.run(); };
    };
    const int failures = FailingNew::ForEachAllocation(setUp, [&](bool failed) {
      if (row.parses && failed) row.run();
      EXPECT_EQ(parser->text, row.parses ? text : "");
      EXPECT_EQ(SlowLexer::GetToken(*target), "4:1  ");
      EXPECT_EQ(SlowLexer::GetToken(*target), failed || row.parses ? "2:1b " : "3:11 ");
      parser.reset();
      target.reset();
      EXPECT_EQ(FailingNew::LiveBlocks(), live);
    });
    EXPECT_GE(failures, row.failures);
  }
}

}  // namespace
