// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include "FailingNew.h"
#include "SlowLexer.h"
#include "TestFiles.h"
#include "ZelParser.h"

namespace {

using SlowLexer::Lines;
using SlowLexer::Split;
using TestFiles::Path;

Lines AllLines(StreamIterator&& source) {
  Lines lines;
  while (source.HasMoreLines()) lines.push_back(source.GetLine());
  return lines;
}

std::string Write(const char* name, const std::string& text) {
  TestFiles::Write(Path(name), text, std::ios::binary);
  return Path(name);
}

TEST(LineSources, HandOutLines) {
  // The runtimes read files by 511, 4096 or 8191 bytes.
  for (const std::size_t bytes : {0u, 509u, 4094u, 8189u}) {
    for (const std::string& tail : TestFiles::AllTexts(std::string("a\r\n\0", 4), 4)) {
      const std::string text = std::string(bytes, 'x') + tail;
      Lines inBuffer = Split(text.c_str(), '\n', true);
      if (inBuffer.back().empty()) inBuffer.pop_back();
      ASSERT_EQ(AllLines(BufferIterator(text.c_str())), inBuffer);
      std::string folded;
      for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, "\r\n") != 0) folded += text[i];
      }
      ASSERT_EQ(AllLines(FileIterator(Write("a", text).c_str())), Split(folded, '\n', true));
    }
  }
}

TEST(LineSources, AFileThatCannotBeReadHasNoLines) {
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
  EXPECT_EQ(ZelLex(nullptr, false).GetToken(), nullptr);
  for (const std::string& text : TestFiles::AllTexts("a1 ;\xFF\x01", 4)) SlowLexer::Check(text);
  for (int code = 0; code < 0x100; ++code) {
    const char c = static_cast<char>(code);
    for (const char before : {'a', '9', ' '}) {
      SlowLexer::Check({before, c, 'a', '1', ' ', ';', before, '\x01', c, 'a'});
    }
  }
}

TEST(Lexer, AnAssignmentIsWholeOrChangesNothing) {
  const std::string wide(50, 'w');
  const std::string text = wide + "1";
  BufferIterator source(text.c_str()), other("a 1");
  ZelLex lexer(&source, false), target(&other, false);
  lexer.GetToken();
  const ZelLexToken* record = target.GetToken();
  FailingNew::ForEachAllocation([&] { target = lexer; },
                                [&](bool failed) {
                                  EXPECT_EQ(record->text, failed ? "a" : wide);
                                  EXPECT_EQ(ZelLex(target).GetToken()->text, failed ? " " : "1");
                                });
}

// Its hook reads `limit` tokens at most, and then does as told.
struct Reader : ZelParser {
  Reader() { text.reserve(10000); }
  bool Parse(void* context) override {
    if (context != this) throw std::logic_error("context");
    const ZelLexToken* token = nullptr;
    for (int i = 0; i < limit && (token = GetToken()) != nullptr; ++i) text += token->text;
    if (ending == '?') throw std::runtime_error("hook");
    return ending == '1';
  }
  // `%name` is a file, all else a text.
  bool Run(const char* source) {
    const std::string path = Path(source);
    return *source == '%' ? ParseFile(path.c_str(), this) : ParseBuffer(source, this);
  }

  std::string text;
  int limit = 100;
  char ending = '1';
};

TEST(Parser, ASecondCallGoesOnWithTheFirstSource) {
  Write("%a", "a b\nc d\n");
  std::filesystem::create_directory(Path("%folder"));
  static const struct {
    const char *first, *told, *second, *rest;
  } rows[] = {{"%a", "1a", "%none", " b\n"},      {"%a", "0a", "y", " b\n"},
              {"1 2\n3", "11", "y", " 2\n3"},     {"1 2\n3", "01", "%a", " 2\n3"},
              {"%none", "!", "%a", "a b\nc d\n"}, {"%folder", "!", "%a", "a b\nc d\n"},
              {"%a", "?a", "%a", " b\nc d\n"}};  // the file is still open
  for (const auto& row : rows) {
    Reader parser;
    parser.limit = 1;
    parser.ending = *row.told;
    char told = '!';
    try {
      told = parser.Run(row.first) ? '1' : '0';
    } catch (const std::runtime_error&) {
      told = '?';
    } catch (const std::exception& failure) {
      EXPECT_EQ(typeid(failure), typeid(std::exception));
    }
    EXPECT_EQ(told + parser.text, row.told);
    parser.text.clear();
    parser.limit = 100;
    parser.ending = '1';
    parser.Run(row.second);
    EXPECT_EQ(parser.text, row.rest) << row.first << row.second;
  }
}

TEST(Parser, AFailedAllocationLosesNothingThatTheRepeatedCallNeeds) {
  const std::string text = std::string(9000, 'w') + " 1\n" + std::string(50, 'w') + "7;\nend";
  Write("%a", text);
  for (const char* source : {"%a", text.c_str()}) {
    const auto run = [source](Reader& parser) { parser.Run(source); };
    FailingNew::ForEachAllocationOn<Reader>(run, [&](Reader& parser, bool failed) {
      if (failed) run(parser);
      EXPECT_EQ(parser.text, text);
    });
  }
}

}  // namespace
