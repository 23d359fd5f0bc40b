// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_LEXER_REFERENCE_H
#define ZELCONFUTILS_TESTS_LEXER_REFERENCE_H

#include <cstddef>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "Quoted.h"
#include "ZelLex.h"

/// The lexer once more, plainly, over a whole text, and a check of the lexer against it.
namespace LexerReference {

using Lines = std::vector<std::string>;

/// Each line with the mark that ends it; last what follows the last mark, perhaps nothing.
inline Lines Split(const std::string& text, char mark, bool keepMark) {
  Lines lines(1);
  for (const char c : text) {
    if (c != mark || keepMark) lines.back() += c;
    if (c == mark) lines.emplace_back();
  }
  return lines;
}

/// A caller's own source: hands out any lines, may fail once for each, and ensures that it is
/// asked as promised.
struct ListSource : StreamIterator {
  explicit ListSource(Lines given, bool fails = false)
      : lines(std::move(given)), failsOnce(fails) {}
  bool HasMoreLines() override {
    if (over) throw std::logic_error("the source was asked again after an empty line");
    return asked = next < lines.size();
  }
  std::string GetLine() override {
    if (!std::exchange(asked, false)) throw std::logic_error("a line that was not asked for");
    if (failsOnce && (failed = !failed)) throw std::runtime_error("line");
    std::string line = lines[next];
    ++next;  // after the copy, which may throw
    over = line.empty();
    return line;
  }

  const Lines lines;
  std::size_t next = 0;
  bool failsOnce, failed = false, asked = false, over = false;
};

inline ZelLexTokenKind KindOf(char c) {
  if (std::strchr("!%^&*()-+={}|~[]\\;':\\\"<>?,./#_", c) != nullptr) return PunctuationToken;
  if (c == '\n') return NewLineToken;
  if (c == ' ' || c == '\t' || c == '\v') return WhiteSpaceToken;
  if ((c | 32) >= 'a' && (c | 32) <= 'z') return StringConstantToken;
  return c >= '0' && c <= '9' ? DigitConstantToken : UnknownToken;
}

/// `word "abc"`; `end` for null.
inline std::string TokenText(const ZelLexToken* token) {
  static const char* const kNames[] = {"unknown", "mark", "word", "digits", "blank", "newline"};
  return token == nullptr ? "end" : kNames[token->kind] + (' ' + Quoted(token->text));
}

/// The tokens of the lines, without the end.
inline Lines Tokens(const Lines& lines, bool ignoreWhiteSpaces) {
  std::string text;
  for (std::size_t i = 0; i < lines.size() && !lines[i].empty(); ++i) text += lines[i];
  Lines tokens;
  for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
    const ZelLexTokenKind kind = KindOf(text[at]);
    const bool isSkipped = kind == WhiteSpaceToken && ignoreWhiteSpaces;
    const bool isRun = kind == StringConstantToken || kind == DigitConstantToken || isSkipped;
    for (end = at + 1; isRun && end < text.size() && KindOf(text[end]) == kind;) ++end;
    ZelLexToken token;
    if (!isSkipped) token = {kind, text.substr(at, end - at)};
    tokens.push_back(TokenText(&token));
    if (text[isRun ? end : at] == '\xFF') break;  // past the last byte there is a NUL
  }
  return tokens;
}

/// Reads the lines by two lexers in turn, of which each is a copy of the other, and past the end.
inline void CheckLines(const Lines& lines, bool ignore, bool sourceFails, bool memoryFails) {
  const auto run = [&](const std::function<void()>& step) {
    memoryFails ? (void)FailingNew::ForEachAllocation(step, [](bool) {}) : step();
  };
  ListSource source(lines, sourceFails);
  ZelLex lexers[] = {{&source, ignore}, {nullptr, !ignore}};
  const ZelLexToken none, *records[] = {&none, &none}, *token = nullptr;
  Lines tokens = Tokens(lines, ignore);
  tokens.insert(tokens.end(), 4, "end");
  for (std::size_t i = 0; i < tokens.size();) {
    ZelLex& lexer = lexers[i % 2];
    const ZelLexToken*& record = records[i % 2];
    try {
      run([&] { token = lexer.GetToken(); });
    } catch (const std::runtime_error&) {
      continue;  // once for each line; the call can be repeated
    }
    std::string step = "token " + std::to_string(i) + " of the lines";
    for (const std::string& line : lines) step += ' ' + Quoted(line);
    if (ignore) step += ", white space skipped";
    Compare(step, tokens[i], TokenText(token));
    if (token == nullptr) Compare(step + ", the record", TokenText(&none), TokenText(record));
    const bool isFirst = record == &none;
    if (token != nullptr && std::exchange(record, token) != token && !isFirst) {
      throw std::logic_error(step + ": not the lexer's one record");
    }
    ++i;
    run([&] { lexers[i % 2] = ZelLex(lexer); });
  }
}

/// Throws where the lexer differs over lines that 0x01 parts, and over those that end in LF, there
/// with each allocation failing once: a run over two lines could lose its start.
inline void Check(const std::string& text) {
  for (const int mode : {0, 1, 2, 3}) {
    CheckLines(Split(text, '\x01', false), mode % 2 != 0, mode / 2 != 0, false);
    CheckLines(Split(text, '\n', true), mode % 2 != 0, mode / 2 != 0, true);
  }
}

}  // namespace LexerReference

#endif
