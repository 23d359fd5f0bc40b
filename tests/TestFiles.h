// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_TEST_FILES_H
#define ZELCONFUTILS_TESTS_TEST_FILES_H

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// Scratch files for tests, and texts to write into them.
namespace TestFiles {

/// The path of `name` in a directory that goes with the process.
inline std::string Path(const char* name) {
  static const struct Directory {
    std::filesystem::path path = std::filesystem::temp_directory_path() /
                                 ("zelconfutils-" + std::to_string(std::random_device()()));
    Directory() { std::filesystem::create_directory(path); }
    ~Directory() { std::filesystem::remove_all(path); }
  } directory;
  return (directory.path / name).string();
}

/// Writes a new file: truncating one that was just written waits for the disk on some file systems.
/// In the system's text mode, as the file classes read it, or with `std::ios::binary` as it is.
inline void Write(const std::string& path, std::string_view text, std::ios::openmode mode = {}) {
  std::filesystem::remove(path);
  std::ofstream(path, mode).write(text.data(), static_cast<std::streamsize>(text.size()));
}

/// A file with that text, always the same one; its path.
inline std::string Written(std::string_view text) {
  Write(Path("file"), text);
  return Path("file");
}

inline std::string Read(const std::string& path, std::ios::openmode mode = {}) {
  std::ifstream file(path, mode);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// All texts of up to `maxLength` bytes that can be made of the bytes given.
inline std::vector<std::string> AllTexts(const std::string& bytes, std::size_t maxLength) {
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (texts[i].size() == maxLength) break;
    for (const char byte : bytes) texts.push_back(texts[i] + byte);
  }
  return texts;
}

}  // namespace TestFiles

#endif
