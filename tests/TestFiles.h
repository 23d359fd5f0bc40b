// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_TEST_FILES_H
#define ZELCONFUTILS_TESTS_TEST_FILES_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

/// Scratch files for tests, and texts to write into them.
namespace TestFiles {

/// A name that stands for a scratch file: from the first call on the process works in a directory
/// that goes with it.
inline std::string Path(const char* name) {
  namespace fs = std::filesystem;
  static const struct WorkDirectory {
    const fs::path former = fs::current_path();
    const fs::path path =
        fs::temp_directory_path() / ("zelconfutils-" + std::to_string(std::random_device()()));
    WorkDirectory() {
      fs::create_directory(path);
      fs::current_path(path);
    }
    ~WorkDirectory() {
      fs::current_path(former);
      fs::remove_all(path);
    }
  } directory;
  return name;
}

/// Removes all scratch files.
inline void Clear() {
  for (const auto& entry : std::filesystem::directory_iterator(Path("."))) {
    std::filesystem::remove_all(entry);
  }
}

/// Writes a new file: truncating one that was just written waits for the disk on some file systems.
/// In the system's text mode, as the file classes read it, or with `std::ios::binary` as it is.
inline void Write(const std::string& path, std::string_view text, std::ios::openmode mode = {}) {
  std::filesystem::remove(path);
  std::ofstream(path, mode).write(text.data(), static_cast<std::streamsize>(text.size()));
}

inline std::string Read(const std::string& path, std::ios::openmode mode = {}) {
  std::ifstream file(path, mode);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace TestFiles

#endif
