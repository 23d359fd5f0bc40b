// SPDX-License-Identifier: MIT
// Edits one entry of a flat file, and keeps its blanks and its trailing comment.
//
//   line_edit FILE [OPTION]... = EDIT        the first `=` parts key from value
//   line_edit FILE [OPTION]... blanks EDIT   blanks or tabs do, not the same on every line
//
// EDIT is set KEY VALUE, add KEY VALUE, rename KEY NEW or delete KEY. An option is --dry-run,
// --ignore-case, --note CHARACTERS (they begin a trailing comment; '' if there is none), or
// --before WORD: what follows the first line with that key stays out of it, as the entries after
// `Match` in an sshd_config belong to that condition.
#include "edit_program.h"

namespace {

// The length of what stands before the first line whose first word that is.
std::size_t LengthBefore(const std::string& text, const std::string& word, bool ignoreCase) {
  FlatStyle style;
  style.blanks = true;
  style.ignoreCase = ignoreCase;
  return word.empty() ? text.size() : FlatText(text, style).BeginOf(word);
}

}  // namespace

int main(int count, char** arguments) try {
  Options options = ParseOptions(count, arguments);
  const auto& words = options.words;
  if (words.size() < 4 || (words[1] != "=" && words[1] != "blanks"))
    return std::puts("usage: line_edit FILE [OPTION]... =|blanks EDIT"), 2;
  const std::string before = ReadBytes(words[0]);
  options.style.blanks = words[1] == "blanks";
  options.style.lineEnd = LineEnd(before);

  const std::size_t length = LengthBefore(before, options.before, options.style.ignoreCase);
  FlatText text(before.substr(0, length), options.style);
  if (!Edit(text, words, 2)) return std::printf("no such edit: %s\n", words[2].c_str()), 2;
  Finish(options, words[0], before, text.Text() + before.substr(length));
  return 0;
} catch (const std::exception& error) {
  std::printf("refused: %s\n", error.what());
  return 1;
}
