// SPDX-License-Identifier: MIT
#include "platform/Platform.h"

#define WIN32_LEAN_AND_MEAN
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>

namespace zelconfutils::Platform {

namespace {

// The first bytes of an open file, as the system's lock calls want them.
struct Range {
  Range(const File& locked, std::int64_t bytes)
      : file(reinterpret_cast<HANDLE>(_get_osfhandle(locked.descriptor))),
        low(static_cast<DWORD>(bytes & 0xFFFFFFFF)),
        high(static_cast<DWORD>(bytes >> 32)) {}

  HANDLE file;
  DWORD low, high;
};

// Without a flag for either, the mode is the runtime's preset: text, unless the host says
// otherwise.
int OpenFlags(OpenMode mode) {
  switch (mode) {
    case OpenMode::kReadBinary:
      return _O_RDONLY | _O_BINARY;
    case OpenMode::kUpdate:
      return _O_RDWR;
    case OpenMode::kAppend:
      return _O_RDWR | _O_APPEND | _O_CREAT;
    case OpenMode::kReplace:
      return _O_RDWR | _O_CREAT | _O_TRUNC;
    default:
      return _O_RDONLY;
  }
}

// As many bytes as one call takes.
unsigned CallBytes(std::size_t bytes) {
  constexpr std::size_t kMostBytes = std::size_t{1} << 30;
  return static_cast<unsigned>(std::min(bytes, kMostBytes));
}

}  // namespace

// The runtime refuses a directory in every mode by itself.
File OpenFile(const char* path, OpenMode mode) {
  const int flags = OpenFlags(mode);
  File file;
  file.descriptor = _open(path, flags | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
  if (!file.IsOpen()) return file;
  file.isWritable = (flags & _O_RDWR) != 0;
  file.length = FileLength(file);
  return file;
}

std::FILE* MakeStream(const File& file) {
  std::FILE* stream = _fdopen(file.descriptor, file.isWritable ? "r+" : "r");
  if (stream == nullptr) CloseFile(file);
  return stream;
}

std::int64_t FileLength(const File& file) {
  return std::max<std::int64_t>(_filelengthi64(file.descriptor), 0);
}

std::size_t ReadBytes(const File& file, char* buffer, std::size_t bytes) {
  const int got = _read(file.descriptor, buffer, CallBytes(bytes));
  // The runtime keeps the end in mind until a seek: what is appended later is to be read.
  if (got == 0) _lseeki64(file.descriptor, 0, SEEK_CUR);
  return got > 0 ? static_cast<std::size_t>(got) : 0;
}

bool WriteBytes(const File& file, const char* text, std::size_t bytes) {
  while (bytes > 0) {
    // Of a short count nobody knows how many CR it counts.
    const unsigned count = CallBytes(bytes);
    if (_write(file.descriptor, text, count) != static_cast<int>(count)) return false;
    text += count;
    bytes -= count;
  }
  return true;
}

bool CloseFile(const File& file) { return _close(file.descriptor) == 0; }

// The runtime's own call counts from the position of the descriptor, which buffering moves, and
// in 32 bits. Both make the same lock: it is exclusive in every mode and belongs to the handle.
bool TryLockBytes(const File& file, std::int64_t bytes) {
  if (bytes == 0) return true;
  const Range range(file, bytes);
  if (LockFile(range.file, 0, 0, range.low, range.high)) return true;
  errno = EACCES;
  return false;
}

bool UnlockBytes(const File& file, std::int64_t bytes) {
  if (bytes == 0) return true;
  const Range range(file, bytes);
  return UnlockFile(range.file, 0, 0, range.low, range.high) != 0;
}

void SleepMilliseconds(unsigned milliseconds) { Sleep(milliseconds); }

bool MakeDirectory(const char* path) { return _mkdir(path) == 0; }

bool IsDirectory(const char* path) {
  struct _stat64 status = {};
  if (_stat64(path, &status) == 0) return (status.st_mode & _S_IFDIR) != 0;
  // The older of the runtimes finds no directory by a name with a slash at its end.
  const DWORD attributes = GetFileAttributesA(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Large pages take a right here that few users have.
bool ProvidePages(void*, std::size_t, bool large) { return large; }

}  // namespace zelconfutils::Platform
