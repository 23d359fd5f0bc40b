// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_TEST_FILES_H
#define ZELCONFUTILS_TESTS_TEST_FILES_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

/// Scratch files for tests.
namespace TestFiles {

/// A directory that goes with the object, with all that is in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    const std::string name = "zelconfutils-" + std::to_string(std::random_device()());
    path_ = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directory(path_);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string Path() const { return path_.string(); }
  std::string Path(const char* name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

/// Writes a new file: cutting one that was just written waits for the disk on some file systems.
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
