// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_FILES_PATH_CHECK_H
#define ZELCONFUTILS_FILES_PATH_CHECK_H

#include <cstddef>
#include <memory>

namespace Configuration {

/// The test that the directory of a file's path exists. Both kinds of slash count on every
/// system.
class PathCheck {
 public:
  /// Tests the directory of `path`; with `create` true, makes what is missing of it.
  PathCheck(const char* path, bool create);

  bool Exists() const { return exists_; }

  /// After the test: the directory that was asked for, or the whole path if it names none.
  const char* Text() const { return text_.get(); }

 private:
  bool Check(bool create);
  static bool MakeDirectory(const char* directory);
  void MakeDirectories(char* slash);

  std::size_t length_;
  std::unique_ptr<char[]> text_;
  bool exists_;
};

}  // namespace Configuration

#endif
