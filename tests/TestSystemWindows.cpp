// SPDX-License-Identifier: MIT
#include "TestSystem.h"

#define WIN32_LEAN_AND_MEAN
#include <fcntl.h>
#include <io.h>
#include <sys/locking.h>
#include <windows.h>

#include <cerrno>

namespace TestSystem {

namespace {

std::shared_ptr<void> Open(const char* path) {
  return {CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                      OPEN_EXISTING, 0, nullptr),
          CloseHandle};
}

}  // namespace

const int kDirectoryError = EACCES, kLongNameError = ENOENT, kLockedError = EACCES;

const bool kHasTextMode = true, kHasDrives = true;

int OpenFiles() {
  int count = 0;
  for (int descriptor = 0; descriptor < 512; ++descriptor) count += _get_osfhandle(descriptor) >= 0;
  return count;
}

std::vector<TakeLock> ForeignLocks() {
  return {
      [](const char* path) -> std::shared_ptr<void> {
        const std::shared_ptr<int> file(new int(_open(path, _O_RDWR | _O_BINARY)),
                                        [](int* descriptor) {
                                          _close(*descriptor);
                                          delete descriptor;
                                        });
        const long bytes = _filelength(*file);
        return bytes == 0 || _locking(*file, _LK_NBLCK, bytes) == 0 ? file : nullptr;
      },
      [](const char* path) -> std::shared_ptr<void> {  // the last byte alone
        const std::shared_ptr<void> file = Open(path);
        const DWORD size = GetFileSize(file.get(), nullptr);
        return size == 0 || LockFile(file.get(), size - 1, 0, 1, 0) != 0 ? file : nullptr;
      },
  };
}

bool CanLockByte(const char* path, long offset) {
  return LockFile(Open(path).get(), static_cast<DWORD>(offset), 0, 1, 0) != 0;
}

}  // namespace TestSystem
