// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "LexerReference.h"
#include "TestFiles.h"
#include "ZelLex.h"

namespace {

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
    for (const std::string& tail : TestFiles::AllTexts(std::string("a\r\n\0", 4), 4)) {
      const std::string text = std::string(bytes, 'x') + tail;
      std::string folded;
      for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, "\r\n") != 0) folded += text[i];
      }
      ASSERT_EQ(AllLines(FileIterator(Write(text).c_str())),
                LexerReference::Split(folded, '\n', true));
    }
  }
}

TEST(LineSources, AClosedFileHasNoLines) {
  FileIterator source(Write("a\nb\n").c_str());
  EXPECT_EQ(source.GetLine(), "a\n");
  source.CloseFile();
  source.CloseFile();
  EXPECT_FALSE(source.HasMoreLines());
  EXPECT_EQ(source.GetLine(), "");
}

TEST(LineSources, CopiesOfABufferIteratorReadOnByThemselves) {
  BufferIterator source("a\nb\nc"), assigned("x");
  source.GetLine();
  BufferIterator copy(source);
  EXPECT_EQ(source.GetLine(), "b\n");
  EXPECT_EQ(AllLines(std::move(assigned = copy)), (Lines{"b\n", "c"}));
  EXPECT_EQ(copy.GetLine(), "b\n");
  source.GetLine();
  EXPECT_EQ(source.GetLine(), "") << "at the end";
}

std::string AllTokens(ZelLex& lexer) {
  std::string text;
  for (std::string token; token != "end";) {
    token = TokenText(lexer.GetToken());
    text += token + (token == "end" ? "" : " ");
  }
  return text;
}

TEST(Lexer, TokensOfLines) {
  static const struct {
    const char* rule;
    Lines lines;  // as a source hands them out
    const char* tokens;
    bool ignoreWhiteSpaces = false;
  } rows[] = {
      {"words and digits are runs",
       {"ab1c 22"},
       R"(word "ab" digits "1" word "c" blank " " digits "22" end)"},
      {"an underscore is punctuation", {"a_b"}, R"(word "a" mark "_" word "b" end)"},
      {"point and sign are punctuation",
       {"-1.5"},
       R"(mark "-" digits "1" mark "." digits "5" end)"},
      {"a quote is a mark like any other", {"\"a\""}, R"(mark "\"" word "a" mark "\"" end)"},
      {"what fits no class is unknown",
       {"$\r\f\x80"},
       R"(unknown "$" unknown "\015" unknown "\014" unknown "\200" end)"},
      {"a NUL is punctuation", {std::string("\0", 1)}, R"(mark "\000" end)"},
      {"each byte of white space is a token",
       {" \t\v\n"},
       R"(blank " " blank "\011" blank "\013" newline "\n" end)"},
      {"skipped white space is one empty token",
       {" \t\va \n"},
       R"(unknown "" word "a" unknown "" newline "\n" end)",
       true},
      {"skipped white space may meet the end", {"a  "}, R"(word "a" unknown "" end)", true},
      {"a line feed ends a run", {"a\n", "b"}, R"(word "a" newline "\n" word "b" end)"},
      {"a line without a line feed does not", {"a", "b1", "2"}, R"(word "ab" digits "12" end)"},
      {"an empty line is the end", {"a", "", "b"}, R"(word "a" end)"},
      {"0xFF as a token is the last",
       {"a \xFF"
        "b"},
       R"(word "a" blank " " unknown "\377" end)"},
      {"0xFF after a run is not delivered",
       {"a\xFF"
        "b"},
       R"(word "a" end)"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rule);
    ListSource source(row.lines);
    ZelLex lexer(&source, row.ignoreWhiteSpaces);
    EXPECT_EQ(AllTokens(lexer), row.tokens);
    EXPECT_EQ(lexer.GetToken(), nullptr) << "once more at the end";
  }
}

TEST(Lexer, HasNoTokensWithoutASource) { EXPECT_EQ(ZelLex(nullptr, false).GetToken(), nullptr); }

TEST(Lexer, FillsOneRecordOfItsOwn) {
  ListSource source({"a b"});
  ZelLex lexer(&source, false);
  const ZelLexToken* record = lexer.GetToken();
  ZelLex copy(lexer);
  EXPECT_EQ(lexer.GetToken(), record);
  EXPECT_EQ(TokenText(record), R"(blank " ")");
  EXPECT_EQ(AllTokens(copy), R"(blank " " word "b" end)") << "the copy goes on where it was made";
  EXPECT_EQ(TokenText(record), R"(blank " ")");
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

TEST(LexerReference, GivesTheSameTokens) {
  std::vector<std::string> texts = TestFiles::AllTexts("a1 ;\xFF\x01", 4);
  for (std::size_t run = 1; run < 20; ++run) {
    for (const char c : {'a', '1', ' '}) {
      texts.push_back(std::string(run, c) + '\x01' + c + ';' + std::string(run, c));
    }
  }
  for (int code = 0; code < 0x100; ++code) {
    const char c = static_cast<char>(code);
    for (const char before : {'a', '9', ' '}) {
      texts.push_back({before, c, 'a', '1', ' ', ';', before, '\x01', c, 'a'});
    }
  }
  for (const auto& kept : std::filesystem::directory_iterator(ZELCONFUTILS_LEXER_CORPUS)) {
    texts.push_back(TestFiles::Read(kept.path().string(), std::ios::binary));
  }
  for (const std::string& text : texts) LexerReference::Check(text);
}

}  // namespace
