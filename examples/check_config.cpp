// SPDX-License-Identifier: MIT
// Names what surprises people in configuration files, with line numbers.
//
//   check_config FILE...
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "ConfigException.h"
#include "ConfigFile.h"
#include "MultiSectionFile.h"
#include "SmartBuffer.h"

namespace {

bool Holds(const std::string& text, const char* part) { return text.find(part) != text.npos; }

// The key of the line, as the library reads it; none where the line is no entry.
std::optional<std::string> KeyOf(const std::string& line) {
  Configuration::ConfigFile file(line.c_str(), false, true, true, "=", "#", nullptr);
  SmartBuffer key;
  file.GetCurrentEntry(&key, key.size(), nullptr, 0);
  if (file.GetEntryCount() == 0) return std::nullopt;
  return key();
}

int Check(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), {});
  int findings = 0, number = 1, header = 0;
  const auto tell = [&](const std::string& finding, int line) {
    std::cout << path << ":" << line << ": " << finding << "\n";
    ++findings;
  };
  std::map<std::pair<int, std::string>, int> keys;  // of a section, 0 for the top level: the line
  if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) tell("a byte order mark is part of the first key", 1);
  for (std::size_t at = 0, end = 0; at < bytes.size(); at = end, ++number) {
    end = bytes.find('\n', at);
    if (end == std::string::npos) tell("no line feed at the end: an added line runs on", number);
    end = end == std::string::npos ? bytes.size() : end + 1;
    const std::string line = bytes.substr(at, end - at);
    if (Holds(line, "\r\n")) tell("CR LF: the CR hides the brace of a section", number);
    if (line.size() > 1023) tell("longer than 1023 bytes: read as several lines", number);
    const std::optional<std::string> key = KeyOf(line);
    if (line[0] == '#') continue;
    if (header == 0 && !key && Holds(line, "{\n")) {
      header = number;
    } else if (header != 0 && Holds(line, "}\n")) {
      if (key) tell("the value ends in a brace, which closes the section", number);
      header = 0;
    } else if (key) {
      const int first = keys.emplace(std::pair(header, *key), number).first->second;
      if (first != number)
        tell("duplicate of " + *key + " in line " + std::to_string(first), number);
    }
  }
  if (header != 0) tell("this section has no stop line", header);
  return findings;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return std::cerr << "usage: check_config FILE...\n", 2;
  int findings = 0;
  for (int i = 1; i < argc; ++i) {
    findings += Check(argv[i]);
    try {
      Configuration::MultiSectionConfigFile file(argv[i], false, false, true, false);
      std::cout << argv[i] << ": " << file.GetSectionCount() << " sections\n";
    } catch (const ConfigException& error) {
      std::cout << error.what() << "\n";
      ++findings;
    }
  }
  return findings == 0 ? 0 : 1;
}
