// SPDX-License-Identifier: MIT
// Lists the blocks of a logrotate file, edits a copy of it and shows which lines have changed.
//
//   logrotate_blocks FILE
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "MultiSectionFile.h"
#include "SmartBuffer.h"

namespace {

std::vector<std::string> ReadLines(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

void PrintMissing(char mark, const std::vector<std::string>& lines,
                  const std::vector<std::string>& from) {
  std::multiset<std::string> others(from.begin(), from.end());
  for (const std::string& line : lines) {
    const auto other = others.find(line);
    if (other == others.end()) {
      std::cout << mark << " " << line << "\n";
    } else {
      others.erase(other);
    }
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) return std::cerr << "usage: logrotate_blocks FILE\n", 2;
  const auto copy = std::filesystem::temp_directory_path() /
                    ("logrotate_blocks-" + std::to_string(std::random_device()()));
  std::filesystem::copy_file(argv[1], copy);
  // The blank belongs to the start token: else the separator in front of the brace would make each
  // header an entry. (So an added header has two blanks; logrotate does not mind, but this program
  // would not take it for a header again.)
  Configuration::MultiSectionFile file(copy.string().c_str(), false, false, false, "", " {\n",
                                       "}\n", " ", "#", "\t");
  SmartBuffer name, key, value;
  file.Restart();
  while (file.GotoNextSection()) {
    file.GetSectionName(&name, name.size());
    std::cout << name() << ": " << file.GetSecEntryCount() << " entries\n";
    while (file.GotoSecNextEntry()) {
      file.GetSecCurrentEntry(&key, key.size(), &value, value.size());
      std::cout << "  " << key() << " is " << value() << "\n";
      if (key() == std::string_view("create")) file.DeleteSectionEntry();
    }
  }
  if (file.GotoFirstSection()) file.SetSectionEntry("rotate", "4");
  file.AddSection("/var/log/example.log", false);
  file.AddSectionEntry("rotate", "2");
  file.Save(true, nullptr);
  const auto before = ReadLines(argv[1]), after = ReadLines(copy);
  PrintMissing('-', before, after);
  PrintMissing('+', after, before);
  std::filesystem::remove(copy);
} catch (const std::exception& error) {
  return std::cerr << error.what() << "\n", 1;
}
