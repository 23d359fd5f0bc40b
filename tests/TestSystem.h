// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_TEST_SYSTEM_H
#define ZELCONFUTILS_TESTS_TEST_SYSTEM_H

#include <memory>
#include <vector>

/// Where the systems differ by design, and what only a system can do for a test. One source file
/// per system implements it.
namespace TestSystem {

/// The reason in `errno` for a range that another process has locked.
extern const int kLockedError;

/// Whether text mode is a mode of its own: CR LF is read as LF, LF written as CR LF, and 0x1A ends
/// the input.
extern const bool kHasTextMode;

/// Files that this process has open.
int OpenFiles();

/// Locks bytes of a file as another program does. The lock lasts as long as what is returned, which
/// is null when it could not be had.
std::shared_ptr<void> LockBytes(const char* path, long offset, long bytes);

/// The ways in which programs lock a file of four or five bytes.
using TakeLock = std::shared_ptr<void> (*)(const char* path);
extern const std::vector<TakeLock> kForeignLocks;

}  // namespace TestSystem

#endif
