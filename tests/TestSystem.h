// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_TEST_SYSTEM_H
#define ZELCONFUTILS_TESTS_TEST_SYSTEM_H

#include <memory>
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

/// Ways in which other programs lock the file at `path`. A lock lasts as long as what is returned,
/// which is null when it could not be had.
using TakeLock = std::shared_ptr<void> (*)(const char* path);
std::vector<TakeLock> ForeignLocks();

/// Whether another program can lock the one byte at `offset` of the file at `path` now.
bool CanLockByte(const char* path, long offset);

}  // namespace TestSystem

#endif
