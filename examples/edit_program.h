// SPDX-License-Identifier: MIT
// What the programs have in common that edit one entry of a file: options, the verbs, the save.
#ifndef ZELCONFUTILS_EXAMPLES_EDIT_PROGRAM_H
#define ZELCONFUTILS_EXAMPLES_EDIT_PROGRAM_H

#include <cstdio>
#include <string>
#include <vector>

#include "flat_text.h"
#include "safe_save.h"

struct Options {
  bool dryRun = false;  // --dry-run: show the change, save nothing
  std::string before;   // --before WORD: edit only what stands before the first line with that key
  FlatStyle style;      // --ignore-case; --note CHARACTERS
  std::vector<std::string> words;
};

inline Options ParseOptions(int count, char** arguments) {
  Options options;
  for (int i = 1; i < count; ++i) {
    const std::string word = arguments[i];
    const bool option = options.words.size() <= 1;  // they stand before or after the file
    if (option && word == "--dry-run") {
      options.dryRun = true;
    } else if (option && word == "--ignore-case") {
      options.style.ignoreCase = true;
    } else if (option && word == "--note" && i + 1 < count) {
      options.style.note = arguments[++i];
    } else if (option && word == "--before" && i + 1 < count) {
      options.before = arguments[++i];
    } else {
      options.words.push_back(word);
    }
  }
  return options;
}

/// Runs `VERB KEY [TEXT]`, which begins at `words[at]`. False where that is no edit.
inline bool Edit(FlatText& text, const std::vector<std::string>& words, std::size_t at) {
  const std::size_t left = words.size() < at ? 0 : words.size() - at;
  if (left == 2 && words[at] == "delete") return text.Delete(words[at + 1]), true;
  if (left != 3) return false;
  const std::string &verb = words[at], &key = words[at + 1], &to = words[at + 2];
  if (verb == "set") return text.Set(key, to), true;
  if (verb == "add") return text.Add(key, to), true;
  if (verb == "rename") return text.Rename(key, to), true;
  return false;
}

/// Prints the lines that the edit has changed, and puts `after` in the place of the file.
inline void Finish(const Options& options, const std::string& path, const std::string& before,
                   const std::string& after) {
  std::size_t head = 0;
  for (std::size_t at = 0; at < before.size() && at < after.size() && before[at] == after[at]; ++at)
    if (before[at] == '\n') head = at + 1;
  std::size_t tail = 0;  // the length of the lines at the end that are the same
  for (std::size_t n = 0; n + head < before.size() && n + head < after.size(); ++n) {
    if (before[before.size() - 1 - n] != after[after.size() - 1 - n]) break;
    const std::size_t at = before.size() - 1 - n, same = after.size() - 1 - n;
    if ((at == head || before[at - 1] == '\n') && (same == head || after[same - 1] == '\n'))
      tail = n + 1;
  }
  const auto print = [head, tail](char mark, const std::string& text) {
    for (std::size_t at = head; at < text.size() - tail;) {
      const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
      std::string line = text.substr(at, end - at);
      while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
      std::printf("%c %s\n", mark, line.c_str());
      at = end;
    }
  };
  print('-', before);
  print('+', after);
  if (options.dryRun || before == after) return;
  RequireHolds(path, before);
  SafeSave(path, after);
}

#endif
