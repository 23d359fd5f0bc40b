// SPDX-License-Identifier: MIT
#include "TestSystem.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <filesystem>
#include <iterator>

namespace TestSystem {

namespace {

bool LockRange(const char* path, short type) {
  struct flock range = {};
  range.l_type = type;
  return fcntl(open(path, O_RDWR), F_SETLK, &range) == 0;
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
      [](const char* path) { return flock(open(path, O_RDWR), LOCK_EX) == 0; },
      [](const char* path) { return flock(open(path, O_RDONLY), LOCK_SH) == 0; },
      [](const char* path) { return LockRange(path, F_WRLCK); },
      [](const char* path) { return LockRange(path, F_RDLCK); },
  };
}

}  // namespace TestSystem
