// SPDX-License-Identifier: MIT
#include "TestSystem.h"

#define WIN32_LEAN_AND_MEAN
#include <fcntl.h>
#include <io.h>
#include <sys/locking.h>
#include <windows.h>

#include <cerrno>

namespace TestSystem {

const int kDirectoryError = EACCES, kLongNameError = ENOENT, kLockedError = EACCES;

const bool kHasTextMode = true, kHasDrives = true;

int OpenFiles() {
  int count = 0;
  for (int descriptor = 0; descriptor < 512; ++descriptor) count += _get_osfhandle(descriptor) >= 0;
  return count;
}

std::vector<TakeLock> ForeignLocks() {
  return {
      [](const char* path) {
        const int file = _open(path, _O_RDWR | _O_BINARY);
        return _locking(file, _LK_NBLCK, _filelength(file)) == 0 || _filelength(file) == 0;
      },
      [](const char* path) {  // the last byte alone
        HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
        const DWORD size = GetFileSize(file, nullptr);
        return size == 0 || LockFile(file, size - 1, 0, 1, 0) != 0;
      },
  };
}

}  // namespace TestSystem
