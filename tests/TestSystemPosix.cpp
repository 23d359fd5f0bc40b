// SPDX-License-Identifier: MIT
#include "TestSystem.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iterator>

namespace TestSystem {

namespace {

std::shared_ptr<void> LockWhole(const char* path, int flags, int operation) {
  const std::shared_ptr<int> file(new int(open(path, flags)), [](int* descriptor) {
    flock(*descriptor, LOCK_UN);
    close(*descriptor);
    delete descriptor;
  });
  return flock(*file, operation | LOCK_NB) == 0 ? file : nullptr;
}

// The lock of a process, so another one takes it. That ends with the connection.
std::shared_ptr<void> LockRange(const char* path, short type, long offset = 0, long bytes = 0) {
  int ends[2];
  char taken = 0;
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return nullptr;
  if (fork() == 0) {
    close(ends[0]);
    struct flock range = {};
    range.l_type = type;
    range.l_start = offset;
    range.l_len = bytes;  // 0: to the end
    taken = fcntl(open(path, O_RDWR), F_SETLK, &range) == 0;
    _exit(send(ends[1], &taken, 1, 0) == 1 && recv(ends[1], &taken, 1, 0) == 0 ? 0 : 1);
  }
  close(ends[1]);
  const std::shared_ptr<int> connection(new int(ends[0]), [](int* end) {
    shutdown(*end, SHUT_RDWR);  // another child may have a copy
    close(*end);
    delete end;
    wait(nullptr);
  });
  return recv(ends[0], &taken, 1, 0) == 1 && taken ? connection : nullptr;
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
