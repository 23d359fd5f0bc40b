// SPDX-License-Identifier: MIT
// Reads a key/value file such as /etc/os-release: all entries, one by its key, and a number.
//
//   read_values FILE KEY DEFAULT
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include "ConfigFile.h"
#include "SmartBuffer.h"

namespace {

constexpr std::size_t kTooSmall = 0xFFFFFFFF;  // 32 bits set, not the largest size_t

// Quotes have no meaning in the file format: whoever uses them takes them off.
std::string Unquoted(std::string text) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') return text;
  return text.substr(1, text.size() - 2);
}

long NumberOr(Configuration::ConfigFile& file, const char* key, long otherwise) {
  char digits[24];
  const std::size_t length = file.GetEntry(key, digits, sizeof digits);
  if (length == 0 || length == kTooSmall) return otherwise;
  const std::string text = Unquoted(digits);
  char* end = nullptr;
  const long number = std::strtol(text.c_str(), &end, 10);
  return *end == '\0' && !text.empty() ? number : otherwise;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 4) return std::cerr << "usage: read_values FILE KEY DEFAULT\n", 2;
  Configuration::ConfigFile file(argv[1], false, true, false, "=", "#", nullptr);

  std::cout << file.GetEntryCount() << " entries\n";
  SmartBuffer key, value;
  file.Restart();
  while (file.GotoNextEntry()) {
    if (file.GetCurrentEntry(&key, key.size(), &value, value.size()) == kTooSmall) continue;
    std::cout << "  " << key() << " is " << Unquoted(value()) << "\n";
  }

  char small[4];
  const std::size_t length = file.GetEntry(argv[2], small, sizeof small);
  if (length == kTooSmall) {
    std::cout << argv[2] << " does not fit " << sizeof small << " bytes: nothing is copied\n";
  } else if (length == 0 && !file.GotoEntry(argv[2])) {
    std::cout << argv[2] << " is missing\n";
  } else {
    std::cout << argv[2] << " is '" << small << "', " << length << " bytes\n";
  }
  std::cout << argv[2] << " as a number: " << NumberOr(file, argv[2], std::atol(argv[3])) << "\n";
} catch (const std::exception& error) {
  return std::cerr << error.what() << "\n", 1;
}
