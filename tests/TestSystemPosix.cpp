// SPDX-License-Identifier: MIT
#include "TestSystem.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <iterator>

namespace TestSystem {

namespace {

std::shared_ptr<std::FILE> Open(const char* path) { return {std::fopen(path, "r+e"), std::fclose}; }

std::shared_ptr<void> LockWhole(const char* path, int operation) {
  const auto file = Open(path);
  return flock(fileno(file.get()), operation | LOCK_NB) == 0 ? file : nullptr;
}

// A lock of the open file, which keeps out another open file of this process as it would another
// process.
std::shared_ptr<void> LockRange(const char* path, short type, long offset, long bytes) {
  const auto file = Open(path);
  struct flock range = {};
  range.l_type = type;
  range.l_start = offset;
  range.l_len = bytes;
  return fcntl(fileno(file.get()), F_OFD_SETLK, &range) == 0 ? file : nullptr;
}

}  // namespace

const int kLockedError = EAGAIN;

const bool kHasTextMode = false;

int OpenFiles() {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

std::shared_ptr<void> LockBytes(const char* path, long offset, long bytes) {
  return LockRange(path, F_WRLCK, offset, bytes);
}

const std::vector<TakeLock> kForeignLocks = {
    [](const char* path) { return LockBytes(path, 0, 0); },  // to the end
    [](const char* path) { return LockBytes(path, 3, 1); },
    [](const char* path) { return LockWhole(path, LOCK_EX); },
    [](const char* path) { return LockWhole(path, LOCK_SH); },
    [](const char* path) { return LockRange(path, F_RDLCK, 0, 0); },
};

}  // namespace TestSystem
