// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "LexerReference.h"
#include "TestFiles.h"
#include "ZelLex.h"

namespace {

using LexerReference::AllTokens;
using LexerReference::Lines;
using LexerReference::ListSource;
using LexerReference::TokenText;

Lines AllLines(StreamIterator&& source) {
  Lines lines;
  while (source.HasMoreLines()) lines.push_back(source.GetLine());
  return lines;
}

std::string Write(const std::string& text) {
  TestFiles::Write(TestFiles::Path("a"), text, std::ios::binary);
  return TestFiles::Path("a");
}

TEST(LineSources, LinesOfAFileAndOfAText) {
  static const struct {
    const char* rule;
    std::string text;
    Lines ofFile, ofText;
  } rows[] = {
      {"only reading finds the end of a file", "", {""}, {}},
      {"also at a last line feed", "a\n", {"a\n", ""}, {"a\n"}},
      {"not at a line without one", "a\nb", {"a\n", "b"}, {"a\n", "b"}},
      {"a blank line is no empty string", "\n\nb", {"\n", "\n", "b"}, {"\n", "\n", "b"}},
      {"CR LF is folded in a file alone", "a\r\n\r\n", {"a\n", "\n", ""}, {"a\r\n", "\r\n"}},
      {"a CR without LF is a byte", "a\rb\r\r\n\r", {"a\rb\r\n", "\r"}, {"a\rb\r\r\n", "\r"}},
      {"a NUL ends a text, not a file", {"a\0b\nc", 5}, {{"a\0b\n", 4}, "c"}, {"a"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rule);
    EXPECT_EQ(AllLines(FileIterator(Write(row.text).c_str())), row.ofFile);
    EXPECT_EQ(AllLines(BufferIterator(row.text.c_str())), row.ofText);
  }
}

// The runtimes read files by 511, 4096 or 8191 bytes.
TEST(LineSources, LinesOverTheEndOfABlockAreWhole) {
  for (const std::size_t bytes : {509u, 4094u, 8189u}) {
    for (const std::string& tail : TestFiles::AllTexts("a\r\n", 4)) {
      const std::string text = std::string(bytes, 'x') + tail;
      std::string folded;
      for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, "\r\n") != 0) folded += text[i];
      }
      Lines expected = AllLines(BufferIterator(folded.c_str()));
      if (folded.back() == '\n') expected.push_back("");
      ASSERT_EQ(AllLines(FileIterator(Write(text).c_str())), expected);
    }
  }
}

TEST(LineSources, AClosedFileHasNoLines) {
  FileIterator source(Write("a\nb\n").c_str());
  EXPECT_EQ(source.GetLine(), "a\n");
  source.CloseFile();
  EXPECT_FALSE(source.HasMoreLines());
  EXPECT_EQ(source.GetLine(), "");
}

TEST(LineSources, ACopyOfABufferIteratorReadsOnByItself) {
  BufferIterator source("a\nb");
  source.GetLine();
  BufferIterator copy(source);
  EXPECT_EQ(source.GetLine(), "b");
  EXPECT_EQ(source.GetLine(), "") << "at the end";
  EXPECT_EQ(copy.GetLine(), "b");
}

TEST(Lexer, TokensOfLines) {
  static const struct {
    const char* rule;
    Lines lines;  // as a source hands them out
    const char* tokens;
    bool ignoreWhiteSpaces = false;
  } rows[] = {
      {"words and digits are runs", {"ab12"}, R"(word "ab" digits "12" )"},
      {"a run has no neighbours of its bytes",
       {"azAZ\xE1{09:       "},
       R"(word "azAZ" unknown "\341" mark "{" digits "09" mark ":" unknown "" )",
       true},
      {"point and underscore are marks", {"1._"}, R"(digits "1" mark "." mark "_" )"},
      {"what has no class is unknown", {"$\r"}, R"(unknown "$" unknown "\015" )"},
      {"a NUL is punctuation", {std::string("\0", 1)}, R"(mark "\000" )"},
      {"each blank is a token", {" \t\v"}, R"(blank " " blank "\011" blank "\013" )"},
      {"skipped blanks are one empty token", {" \t\v\n"}, R"(unknown "" newline "\n" )", true},
      {"skipped blanks may meet the end", {"a  "}, R"(word "a" unknown "" )", true},
      {"a line feed ends a run", {"a\n", "b"}, R"(word "a" newline "\n" word "b" )"},
      {"a line without a line feed does not", {"a", "b1", "2"}, R"(word "ab" digits "12" )"},
      {"an empty line is the end", {"a", "", "b"}, R"(word "a" )"},
      {"0xFF as a token is the last", {";\xFF", "b"}, R"(mark ";" unknown "\377" )"},
      {"0xFF after a run is not delivered", {"a\xFF 234567", "b"}, R"(word "a" )"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rule);
    ListSource source(row.lines);
    ZelLex lexer(&source, row.ignoreWhiteSpaces);
    EXPECT_EQ(AllTokens(lexer), row.tokens);
    EXPECT_EQ(AllTokens(lexer), "") << "once more at the end";
  }
}

TEST(Lexer, HasNoTokensWithoutASource) { EXPECT_EQ(ZelLex(nullptr, false).GetToken(), nullptr); }

TEST(Lexer, FillsOneRecordOfItsOwn) {
  ListSource source({"a b\xFF", "c"});
  ZelLex lexer(&source, false);
  const ZelLexToken* record = lexer.GetToken();
  ZelLex copy(lexer);
  EXPECT_EQ(lexer.GetToken(), record);
  EXPECT_EQ(AllTokens(copy), R"(blank " " word "b" )") << "the copy goes on where it was made";
  EXPECT_EQ(TokenText(*record), R"(blank " ")");
  lexer.GetToken();
  EXPECT_EQ(ZelLex(lexer).GetToken(), nullptr) << "nor does a copy read over the 0xFF";
  EXPECT_EQ(lexer.GetToken(), nullptr);
  EXPECT_EQ(TokenText(*record), R"(unknown "")") << "at the end";
}

TEST(Lexer, AnAssignmentIsWholeOrChangesNothing) {
  const std::string wide(50, 'w');
  const std::string text = wide + " 1";
  BufferIterator source(text.c_str()), other("a");
  ZelLex lexer(&source, true), target(&other, false);
  lexer.GetToken();
  const ZelLexToken* record = target.GetToken();
  target.GetToken();  // the end
  FailingNew::ForEachAllocation([&] { target = lexer; },
                                [&](bool failed) {
                                  EXPECT_EQ(record->text, failed ? "" : wide);
                                  EXPECT_EQ(AllTokens(target),
                                            failed ? "" : R"(unknown "" digits "1" )");
                                });
}

// A run over two lines could lose its start.
TEST(Lexer, ReadsOnAfterItsSourceHasThrown) {
  struct Source : ListSource {
    using ListSource::ListSource;
    std::string GetLine() override {
      if (throws = !throws; throws) throw std::runtime_error("line");
      return ListSource::GetLine();
    }
    bool throws = false;
  } source({"a", "b1", "2\n"});
  ZelLex lexer(&source, false);
  EXPECT_THROW(lexer.GetToken(), std::runtime_error);
  EXPECT_THROW(lexer.GetToken(), std::runtime_error) << "in the word";
  EXPECT_EQ(TokenText(*lexer.GetToken()), R"(word "ab")");
  EXPECT_THROW(lexer.GetToken(), std::runtime_error) << "in the number";
  EXPECT_EQ(AllTokens(lexer), R"(digits "12" newline "\n" )");
}

}  // namespace
