// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_FILES_FILE_LOCK_H
#define ZELCONFUTILS_FILES_FILE_LOCK_H

#include <cstdint>

#include "platform/Platform.h"

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
  bool Acquire(const zelconfutils::Platform::File& file);

  /// Gives the lock back. True when nothing is held any more.
  bool Release();

  /// The file has been closed, and with it its lock.
  void FileClosed() { held_ = false; }

  /// The bytes that the file had when it was locked.
  std::int64_t Bytes() const { return bytes_; }

 private:
  bool Try(std::int64_t bytes);

  zelconfutils::Platform::File file_;
  std::int64_t bytes_ = 0;  // that are locked: the length may have changed since
  bool held_ = false;
};

}  // namespace Configuration

#endif
