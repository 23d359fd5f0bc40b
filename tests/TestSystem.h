// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_TEST_SYSTEM_H
#define ZELCONFUTILS_TESTS_TEST_SYSTEM_H

#include <string>
#include <vector>

/// Where the systems differ by design, and what only a system can do for a test. One source file
/// per system implements it.
namespace TestSystem {

/// The reasons in `errno`: for a directory opened as a file, for a name of 300 bytes, and for a
/// range that another process has locked.
extern const int kDirectoryError, kLongNameError, kLockedError;

/// Whether text mode is a mode of its own: CR LF is read as LF, LF written as CR LF, and 0x1A ends
/// the input.
extern const bool kHasTextMode;

/// Whether a path may start with a drive; there is one named C.
extern const bool kHasDrives;

/// Files that this process has open.
int OpenFiles();

/// Keeps a file from being opened: by anyone, or for writing only. This process may open nothing
/// else of its own in the meantime.
class Refusal {
 public:
  Refusal(const std::string& path, bool forReadingToo);
  Refusal(const Refusal&) = delete;
  Refusal& operator=(const Refusal&) = delete;
  ~Refusal();

 private:
  [[maybe_unused]] void* file_ = nullptr;  // of the system that needs one
};

/// A lock as other programs take it: it lasts until the process ends.
struct ForeignLock {
  const char* name;
  bool (*take)(const char* path);
};
const std::vector<ForeignLock>& ForeignLocks();

/// This test program once more, with other arguments, in a process that ends with the object.
class Process {
 public:
  explicit Process(const std::vector<std::string>& arguments);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  /// Waits for its end. Whether it ended with 0.
  bool Succeeds();
  void Kill();

 private:
  void* process_ = nullptr;
};

}  // namespace TestSystem

#endif
