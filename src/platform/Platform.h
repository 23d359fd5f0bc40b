// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_PLATFORM_PLATFORM_H
#define ZELCONFUTILS_PLATFORM_PLATFORM_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iosfwd>

/// All that the library asks of the system. One source file per system implements it; CMake
/// chooses which. No function throws unless it says so, and none keeps state.
///
/// Files are read and written without a buffer in between: the callers work in blocks of their
/// own, and what stands in no buffer cannot be written a second time by the exit of a child that
/// was forked meanwhile.
namespace zelconfutils::Platform {

/// How a file is opened: as `fopen` does in the mode quoted. Reading starts at the first byte.
enum class OpenMode {
  kRead,        ///< "r"
  kReadBinary,  ///< "rb"
  kUpdate,      ///< "r+"
  kAppend,      ///< "a+"
  kReplace,     ///< "w+"
};

/// An open file. It owns nothing: whoever opened it closes it, once.
struct File {
  bool IsOpen() const { return descriptor >= 0; }

  int descriptor = -1;
  bool isWritable = false;
  std::int64_t length = -1;  ///< what `FileLength` said when the file was opened
};

/// Opens a file; a directory is refused on every system. Programs that the process starts do not
/// get it. Not open on failure, with the reason in `errno`.
File OpenFile(const char* path, OpenMode mode);

/// Opens a file for reading in binary mode, as `OpenFile` does where the standard library can be
/// given an open file. `buffer` must be closed. False on failure. Throws `std::bad_alloc`.
bool OpenFile(std::filebuf& buffer, const char* path);

/// A stream that owns `file` from now on. Null on failure, and then `file` is closed.
std::FILE* MakeStream(const File& file);

/// The length of the open file in bytes; 0 for what has none (a pipe, a device). Below 0 on
/// failure, with the reason in `errno`.
std::int64_t FileLength(const File& file);

/// Reads at most `bytes` bytes, at least 1 of them unless the file has ended: an interruption is
/// no end. 0 at the end, and where the file cannot be read.
std::size_t ReadBytes(const File& file, char* buffer, std::size_t bytes);

/// Writes all `bytes` bytes. False when the system does not take them.
bool WriteBytes(const File& file, const char* text, std::size_t bytes);

/// Closes the file. False when the system refuses at the last what it has taken before.
bool CloseFile(const File& file);

/// Tries to take an exclusive lock on the first `bytes` bytes of the file, at once and without
/// waiting. The lock excludes other processes and other open files of this one, whatever mode the
/// file was opened in, and ends at the latest when the file is closed.
///
/// `bytes` 0 is no range: granted, and nothing is asked of the system. False on failure, with
/// the reason in `errno` (never 0).
bool TryLockBytes(const File& file, std::int64_t bytes);

/// Gives back what `TryLockBytes` took with the same `bytes`. False on failure.
bool UnlockBytes(const File& file, std::int64_t bytes);

/// Blocks the calling thread for that long.
void SleepMilliseconds(unsigned milliseconds);

/// Makes one directory; its parent must exist. False on failure, with the reason in `errno`.
bool MakeDirectory(const char* path);

/// Whether `path` names an existing directory.
bool IsDirectory(const char* path);

constexpr std::size_t kLargePageBytes = std::size_t{1} << 21;  // on x86-64 and most ARM

/// Has the system provide the memory of a block that is about to be written as a whole: one call
/// instead of a fault at the first touch of each page. In large pages if `large` is true, but no
/// longer than these come fast. The result: whether the next block should ask for them. A hint,
/// with no effect where the system has none.
bool ProvidePages(void* block, std::size_t bytes, bool large);

}  // namespace zelconfutils::Platform

#endif
