// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_TEST_FILES_H
#define ZELCONFUTILS_TESTS_TEST_FILES_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

/// Scratch files for tests, byte for byte.
namespace TestFiles {

/// A directory that goes with the object, with all that is in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() / ("zelconfutils-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  /// The path of `name` in the directory; without a name that of the directory.
  std::string Path(const std::string& name = "") const {
    return name.empty() ? path_.string() : (path_ / name).string();
  }

 private:
  std::filesystem::path path_;
};

inline void Write(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string Read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace TestFiles

#endif
