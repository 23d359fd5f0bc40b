// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_FILES_FILE_LOCK_H
#define ZELCONFUTILS_FILES_FILE_LOCK_H

#include <cstdint>
#include <cstdio>

namespace Configuration {

/// The exclusive lock on a file for the span of one read or one save, between processes.
class FileLock {
 public:
  FileLock() = default;
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();

  /// Locks all the bytes that the file has now; a file without bytes is granted at once. A lock
  /// that another holds is waited for, about ten seconds at most. False on failure, with the
  /// reason in `errno`.
  bool Acquire(std::FILE* stream);

  /// Gives the lock back. True when nothing is held any more.
  bool Release();

  /// The stream has been closed, and with it its lock.
  void StreamClosed() { held_ = false; }

 private:
  bool Try();

  int descriptor_ = 0;
  std::int64_t bytes_ = 0;  // that are locked: the length may have changed since
  bool held_ = false;
};

}  // namespace Configuration

#endif
