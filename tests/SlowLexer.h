// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_SLOW_LEXER_H
#define ZELCONFUTILS_TESTS_SLOW_LEXER_H

#include <cstddef>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "ZelLex.h"

/// The lexer once more, over a whole text, and a check of the lexer against it.
namespace SlowLexer {

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

/// A caller's own source: hands out any lines, may fail once for each, and sees to it that it is
/// asked as promised.
struct ListSource : StreamIterator {
  ListSource(const Lines& given, bool fails) : lines(given), failsOnce(fails) {}
  bool HasMoreLines() override {
    if (over) throw std::logic_error("asked behind an empty line");
    return asked = next < lines.size();
  }
  std::string GetLine() override {
    if (!std::exchange(asked, false)) throw std::logic_error("a line that was not asked for");
    if (failsOnce && (failed = !failed)) throw std::runtime_error("line");
    std::string line = lines[next];
    ++next;  // behind the copy, which may throw
    over = line.empty();
    return line;
  }

  const Lines& lines;
  std::size_t next = 0;
  bool failsOnce, failed = false, asked = false, over = false;
};

inline int KindOf(char c) {
  if (std::strchr("!%^&*()-+={}|~[]\\;':\\\"<>?,./#_", c) != nullptr) return 1;
  if (c == 10) return 5;
  if (c == 32 || c == 9 || c == 11) return 4;
  return (c | 32) >= 'a' && (c | 32) <= 'z' ? 2 : c >= '0' && c <= '9' ? 3 : 0;
}

/// Each token as its kind and its text, and at the end what the record shows then, several times.
inline Lines Tokens(const Lines& lines, bool ignore) {
  std::string text;
  for (std::size_t i = 0; i < lines.size() && !lines[i].empty(); ++i) text += lines[i];
  Lines tokens;
  for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
    const int kind = KindOf(text[at]);
    const bool isRun = kind == 2 || kind == 3 || (kind == 4 && ignore);
    for (end = at + 1; isRun && end < text.size() && KindOf(text[end]) == kind;) ++end;
    const bool shows = kind != 4 || !ignore;
    tokens.push_back(std::to_string(shows ? kind : 0).append(text, at, shows ? end - at : 0));
    if (text[isRun ? end : at] == '\xFF') break;
  }
  tokens.insert(tokens.end(), 4, "end0");
  return tokens;
}

/// Throws where the lexer differs over lines that 0x01 cuts, and over those that end in LF, there
/// with each allocation of each call failing once: a run that crosses a cut could lose its start.
inline void Check(const std::string& text) {
  for (const int mode : {0, 1, 2, 3, 4, 5, 6, 7}) {
    const bool fails = mode / 4 != 0;
    const Lines lines = Split(text, fails ? '\n' : '\x01', fails);
    const auto run = [&](const std::function<void()>& step) {
      fails ? (void)FailingNew::ForEachAllocation(step, [](bool) {}) : step();
    };
    ListSource source(lines, mode / 2 % 2 != 0);
    ZelLex lexers[] = {{&source, mode % 2 != 0}, {nullptr, mode % 2 == 0}};
    const ZelLexToken none, *records[] = {&none, &none}, *token = nullptr;
    const Lines tokens = Tokens(lines, mode % 2 != 0);
    for (std::size_t i = 0; i < tokens.size();) {
      ZelLex& lexer = lexers[i % 2];
      try {
        run([&] { token = lexer.GetToken(); });
      } catch (const std::runtime_error&) {
        continue;
      }
      const ZelLexToken*& record = records[i % 2];
      const bool moved = token != nullptr && record != &none && token != record;
      if (token != nullptr) record = token;
      const std::string end = token == nullptr ? "end" : "";
      if (moved || end + std::to_string(record->kind) + record->text != tokens[i]) {
        throw std::logic_error("differs at " + tokens[i]);
      }
      ++i;
      run([&] { lexers[i % 2] = ZelLex(lexer); });
    }
  }
}

}  // namespace SlowLexer

#endif
