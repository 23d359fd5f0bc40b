// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_PLATFORM_PLATFORM_H
#define ZELCONFUTILS_PLATFORM_PLATFORM_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

/// All that the library asks of the system. One source file per system implements it; CMake
/// chooses which. No function throws, and none keeps state.
namespace zelconfutils::Platform {

/// `fopen`, but a directory is refused on every system. Null on failure, with the reason in
/// `errno`.
std::FILE* OpenFile(const char* path, const char* mode);

/// The descriptor of an open stream.
int Descriptor(std::FILE* stream);

/// The length of the open file in bytes; 0 for what has none (a pipe, a device) or on failure.
std::int64_t FileLength(int descriptor);

/// Tries to take an exclusive lock on the first `bytes` bytes of the file, at once and without
/// waiting. The lock excludes other processes and other streams of this one, whatever mode the
/// stream was opened in, and ends at the latest when the stream is closed.
///
/// `bytes` 0 is no range: granted, and nothing is asked of the system. False on failure, with
/// the reason in `errno` (never 0).
bool TryLockBytes(int descriptor, std::int64_t bytes);

/// Gives back what `TryLockBytes` took with the same `bytes`. False on failure.
bool UnlockBytes(int descriptor, std::int64_t bytes);

/// Blocks the calling thread for that long.
void SleepMilliseconds(unsigned milliseconds);

/// Makes one directory; its parent must exist. False on failure, with the reason in `errno`.
bool MakeDirectory(const char* path);

/// Whether `path` names an existing directory.
bool IsDirectory(const char* path);

constexpr std::size_t kLargePageBytes = std::size_t{1} << 21;  // on x86-64 and most ARM

/// Asks the system to back what lies in whole large pages of a block of memory with such pages. A
/// hint, with no effect where the system has none.
void PreferLargePages(void* block, std::size_t bytes);

}  // namespace zelconfutils::Platform

#endif
