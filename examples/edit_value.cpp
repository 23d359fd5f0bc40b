// SPDX-License-Identifier: MIT
// Edits a copy of a key/value file, saves it, and shows what has changed. FILE stays as it is.
//
//   edit_value FILE SEPARATOR [set KEY VALUE | rename KEY NEW | add KEY VALUE | delete KEY]...
#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "ConfigFile.h"

namespace {

std::vector<std::string> ReadLines(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    lines.push_back(line + (file.eof() ? "" : "\n"));
  }
  return lines;
}

// Prints what is not in the longest common run of lines; returns the length of that run.
std::size_t PrintDiff(const std::vector<std::string>& before,
                      const std::vector<std::string>& after) {
  const std::size_t n = before.size(), m = after.size();
  std::vector<std::vector<std::size_t>> common(n + 1, std::vector<std::size_t>(m + 1));
  for (std::size_t i = n; i-- > 0;) {
    for (std::size_t j = m; j-- > 0;) {
      common[i][j] = before[i] == after[j] ? common[i + 1][j + 1] + 1
                                           : std::max(common[i + 1][j], common[i][j + 1]);
    }
  }
  for (std::size_t i = 0, j = 0; i < n || j < m;) {
    if (i < n && j < m && before[i] == after[j]) {
      ++i, ++j;
    } else if (j == m || (i < n && common[i + 1][j] >= common[i][j + 1])) {
      std::cout << "- " << before[i++];
    } else {
      std::cout << "+ " << after[j++];
    }
  }
  return common[0][0];
}

bool Edit(Configuration::ConfigFile& file, std::string_view verb, const char* key,
          const char* text) {
  if (verb == "set") return file.SetEntry(key, text) != 0;
  if (verb == "rename") return file.GotoEntry(key) && file.RenameEntry(text);
  if (verb == "add") return file.AddEntry(key, text, false);
  return verb == "delete" && file.DeleteEntry(key);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 3) return std::cerr << "usage: edit_value FILE SEPARATOR [EDIT]...\n", 2;
  const auto scratch = std::filesystem::temp_directory_path() /
                       ("edit_value-" + std::to_string(std::random_device()()));
  std::filesystem::copy_file(argv[1], scratch);
  Configuration::ConfigFile file(scratch.string().c_str(), false, false, false, argv[2], "#", "");
  for (int at = 3; at < argc;) {
    const int words = argv[at] == std::string_view("delete") ? 2 : 3;
    if (argc - at < words) {
      std::cout << "not done: " << argv[at] << " needs more\n";
      break;
    }
    if (!Edit(file, argv[at], argv[at + 1], argv[at + 2]))
      std::cout << "not done: " << argv[at] << " " << argv[at + 1] << "\n";
    at += words;
  }
  file.Save(true, nullptr);
  const auto before = ReadLines(argv[1]);
  const std::size_t kept = PrintDiff(before, ReadLines(scratch.string()));
  std::cout << kept << " of " << before.size() << " lines came back byte for byte\n";
  std::filesystem::remove(scratch);
} catch (const std::exception& error) {
  return std::cerr << error.what() << "\n", 1;
}
