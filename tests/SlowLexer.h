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

#include "ZelLex.h"

/// The lexer once more, over a whole text, and a check of the lexer against it.
namespace SlowLexer {

/// A caller's own source: hands out any lines, may fail once for each, and sees to it that it is
/// asked as promised.
struct ListSource : StreamIterator {
  ListSource(const std::vector<std::string>& given, bool fails) : lines(given), failsOnce(fails) {}
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

  const std::vector<std::string>& lines;
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
inline std::vector<std::string> Tokens(const std::vector<std::string>& lines, bool ignore) {
  std::string text;
  for (std::size_t i = 0; i < lines.size() && !lines[i].empty(); ++i) text += lines[i];
  std::vector<std::string> tokens;
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

/// Throws where the lexer differs, of which each call goes to a copy. `run` runs a step, before
/// that perhaps with an allocation that fails.
inline void Check(
    const std::vector<std::string>& lines,
    const std::function<void(const std::function<void()>&)>& run = [](const auto& f) { f(); }) {
  for (const int mode : {0, 1, 2, 3}) {
    ListSource source(lines, mode / 2 != 0);
    ZelLex lexers[] = {{&source, mode % 2 != 0}, {nullptr, mode % 2 == 0}};
    const ZelLexToken none, *records[] = {&none, &none}, *token = nullptr;
    const std::vector<std::string> tokens = Tokens(lines, mode % 2 != 0);
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
