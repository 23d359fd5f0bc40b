// SPDX-License-Identifier: MIT
#include "TestSystem.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iterator>

namespace TestSystem {

namespace {

std::shared_ptr<int> Open(const char* path, int flags) {
  return {new int(open(path, flags | O_CLOEXEC)), [](int* descriptor) {
            close(*descriptor);
            delete descriptor;
          }};
}

std::shared_ptr<void> LockWhole(const char* path, int flags, int operation) {
  const auto file = Open(path, flags);
  return flock(*file, operation | LOCK_NB) == 0 ? file : nullptr;
}

// A lock of the open file, which keeps out another open file of this process as it would another
// process.
std::shared_ptr<void> LockRange(const char* path, short type, long offset = 0, long bytes = 0) {
  const auto file = Open(path, O_RDWR);
  struct flock range = {};
  range.l_type = type;
  range.l_start = offset;
  range.l_len = bytes;  // 0: to the end
  return fcntl(*file, F_OFD_SETLK, &range) == 0 ? file : nullptr;
}

}  // namespace

const int kDirectoryError = EISDIR, kLongNameError = ENAMETOOLONG, kLockedError = EAGAIN;

const bool kHasTextMode = false, kHasDrives = false;

int OpenFiles() {
  std::error_code error;
  return static_cast<int>(
      std::distance(std::filesystem::directory_iterator("/proc/self/fd", error), {}));
}

std::vector<TakeLock> ForeignLocks() {
  return {
      [](const char* path) { return LockWhole(path, O_RDWR, LOCK_EX); },
      [](const char* path) { return LockWhole(path, O_RDONLY, LOCK_SH); },
      [](const char* path) { return LockRange(path, F_WRLCK); },
      [](const char* path) { return LockRange(path, F_RDLCK); },
  };
}

bool CanLockByte(const char* path, long offset) {
  return LockRange(path, F_WRLCK, offset, 1) != nullptr;
}

}  // namespace TestSystem
