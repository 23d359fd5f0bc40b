// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_QUOTED_H
#define ZELCONFUTILS_TESTS_QUOTED_H

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>

/// The text with special bytes escaped, and a long run of one byte told by its length.
inline std::string Escaped(const std::string& text, bool quoted) {
  std::string all;
  for (std::size_t at = 0, run; at < text.size(); at += run) {
    const unsigned char c = static_cast<unsigned char>(text[at]);
    std::string shown(1, text[at]);
    if (c == '"' || c == '\\') shown.insert(0, 1, '\\');
    if (c < ' ' || c > '~') {
      shown = {'\\', char('0' + c / 64), char('0' + c / 8 % 8), char('0' + c % 8)};
    }
    if (c == '\n') shown = "\\n";
    run = std::min(text.find_first_not_of(text[at], at), text.size()) - at;
    const std::string times = std::to_string(run) + "*";
    if (run >= 20)
      shown = quoted ? "\" + " + times + '"' + shown + "\" + \"" : "{" + times + shown + "}";
    if (run < 20) run = 1;
    all += shown;
  }
  return all;
}
/// As scenario files write it: `"a=" + 1020*"v" + "\n"`. In lists bare: `a[{1020*v}]`.
inline std::string Quoted(const std::string& text) {
  std::string all = '"' + Escaped(text, true) + '"';
  if (all.starts_with("\"\" + ")) all.erase(0, 5);
  if (all.ends_with(" + \"\"")) all.resize(all.size() - 5);
  return all;
}
inline std::string Bare(const std::string& text) { return Escaped(text, false); }

/// Throws where the two texts differ: what tells the step, and both, one below the other. After " :
/// " at the end of the expected one a `*` stands for the system's reason.
inline void Compare(const std::string& step, const std::string& expected,
                    const std::string& actual) {
  const bool isOpen = expected.ends_with(" : *");
  if (isOpen ? actual.starts_with(expected.substr(0, expected.size() - 1)) : expected == actual)
    return;
  throw std::logic_error(step + "\n  expected: " + expected + "\n  actual:   " + actual);
}

#endif
