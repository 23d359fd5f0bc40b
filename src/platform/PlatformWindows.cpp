// SPDX-License-Identifier: MIT
#include "platform/Platform.h"

#define WIN32_LEAN_AND_MEAN
#include <direct.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>

namespace zelconfutils::Platform {

namespace {

// The first bytes of the file behind a descriptor, as the system's lock calls want them.
struct Range {
  Range(int descriptor, std::int64_t bytes)
      : file(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor))),
        low(static_cast<DWORD>(bytes & 0xFFFFFFFF)),
        high(static_cast<DWORD>(bytes >> 32)) {}

  HANDLE file;
  DWORD low, high;
};

}  // namespace

// The runtime refuses a directory in every mode by itself.
std::FILE* OpenFile(const char* path, const char* mode) { return std::fopen(path, mode); }

int Descriptor(std::FILE* stream) { return _fileno(stream); }

std::int64_t FileLength(int descriptor) {
  return std::max<std::int64_t>(_filelengthi64(descriptor), 0);
}

// The runtime's own call counts from the position of the descriptor, which buffering moves, and
// in 32 bits. Both make the same lock: it is exclusive in every mode and belongs to the handle.
bool TryLockBytes(int descriptor, std::int64_t bytes) {
  if (bytes == 0) return true;
  const Range range(descriptor, bytes);
  if (LockFile(range.file, 0, 0, range.low, range.high)) return true;
  errno = EACCES;
  return false;
}

bool UnlockBytes(int descriptor, std::int64_t bytes) {
  if (bytes == 0) return true;
  const Range range(descriptor, bytes);
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
void PreferLargePages(void*, std::size_t) {}

}  // namespace zelconfutils::Platform
