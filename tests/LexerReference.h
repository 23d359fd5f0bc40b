// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_LEXER_REFERENCE_H
#define ZELCONFUTILS_TESTS_LEXER_REFERENCE_H

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Quoted.h"
#include "ZelLex.h"

/// Tokens as texts, the lexer once more, plainly, and a check of the one by the other.
namespace LexerReference {

using Lines = std::vector<std::string>;

/// A caller's own source: hands out any lines, and no more after the last. Throws before each. An
/// empty line is the end: no other may be asked for.
struct ListSource : StreamIterator {
  explicit ListSource(Lines given) : lines(std::move(given)) {}
  bool HasMoreLines() override { return next < lines.size(); }
  std::string GetLine() override {
    if (throws = !throws; throws) throw std::runtime_error("a line");
    if (next > 0 && lines[next - 1].empty()) throw std::logic_error("asked after an empty line");
    return lines.at(next++);
  }

  const Lines lines;
  std::size_t next = 0;
  bool throws = false;
};

inline ZelLexTokenKind KindOf(char c) {
  if (std::strchr("!%^&*()-+={}|~[]\\;':\\\"<>?,./#_", c) != nullptr) return PunctuationToken;
  if (c == '\n') return NewLineToken;
  if (c == ' ' || c == '\t' || c == '\v') return WhiteSpaceToken;
  if ((c | 32) >= 'a' && (c | 32) <= 'z') return StringConstantToken;
  return c >= '0' && c <= '9' ? DigitConstantToken : UnknownToken;
}

/// `word "abc"`
inline std::string TokenText(const ZelLexToken& token) {
  static const char* const kNames[] = {"unknown", "mark", "word", "digits", "blank", "newline"};
  return kNames[token.kind] + (' ' + Quoted(token.text));
}

/// The next token, however often the source throws.
inline const ZelLexToken* NextToken(ZelLex& lexer) {
  for (;;) {
    try {
      return lexer.GetToken();
    } catch (const std::runtime_error&) {  // the call can be repeated
    }
  }
}

/// The tokens up to the end; only the first ones of a lexer that finds no end. After each token
/// another lexer goes on, which is made equal to the one before.
inline std::string AllTokens(ZelLex& lexer) {
  std::string text;
  ZelLex other(nullptr, false);
  ZelLex *now = &lexer, *next = &other;
  while (text.size() < 100000) {
    const ZelLexToken* const token = NextToken(*now);
    if (token != nullptr) text += ' ' + TokenText(*token);
    *next = *now;
    if (token == nullptr) break;
    std::swap(now, next);
  }
  return text.erase(0, 1);
}

/// What `AllTokens` tells of a lexer over the lines.
inline std::string AllTokens(const Lines& lines, bool ignoreWhiteSpaces) {
  std::string text, tokens;
  for (std::size_t i = 0; i < lines.size() && !lines[i].empty(); ++i) text += lines[i];
  for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
    const ZelLexTokenKind kind = KindOf(text[at]);
    const bool isSkipped = kind == WhiteSpaceToken && ignoreWhiteSpaces;
    const bool isRun = kind == StringConstantToken || kind == DigitConstantToken || isSkipped;
    for (end = at + 1; isRun && end < text.size() && KindOf(text[end]) == kind;) ++end;
    ZelLexToken token;
    if (!isSkipped) token = {kind, text.substr(at, end - at)};
    tokens += ' ' + TokenText(token);
    if (text[isRun ? end : at] == '\xFF') break;  // past the last byte there is a NUL
  }
  return tokens.erase(0, 1);
}

/// Throws where the lexer gives other tokens of the lines that 0x01 parts.
inline void Check(const std::string& text, bool ignoreWhiteSpaces) {
  Lines lines(1);
  for (const char c : text) c == '\x01' ? lines.emplace_back() : lines.back() += c;
  ListSource source(lines);
  ZelLex lexer(&source, ignoreWhiteSpaces);
  const std::string step = ignoreWhiteSpaces ? ", white space skipped" : "";
  Compare("the tokens of " + Quoted(text) + step, AllTokens(lines, ignoreWhiteSpaces),
          AllTokens(lexer));
}

}  // namespace LexerReference

#endif
