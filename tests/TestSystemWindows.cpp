// SPDX-License-Identifier: MIT
#include "TestSystem.h"

#define WIN32_LEAN_AND_MEAN
#include <io.h>
#include <windows.h>

#include <cerrno>

namespace TestSystem {

namespace {

std::shared_ptr<void> Open(const char* path) {
  return {CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                      OPEN_EXISTING, 0, nullptr),
          CloseHandle};
}

// Null when the bytes are locked already. No bytes are no lock.
std::shared_ptr<void> LockBytes(const char* path, DWORD offset, DWORD bytes) {
  const std::shared_ptr<void> file = Open(path);
  return bytes == 0 || LockFile(file.get(), offset, 0, bytes, 0) != 0 ? file : nullptr;
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
      [](const char* path) { return LockBytes(path, 0, GetFileSize(Open(path).get(), nullptr)); },
      [](const char* path) {  // the last byte alone
        const DWORD size = GetFileSize(Open(path).get(), nullptr);
        return LockBytes(path, size - 1, size > 0);
      },
  };
}

bool CanLockByte(const char* path, long offset) {
  return LockBytes(path, static_cast<DWORD>(offset), 1) != nullptr;
}

}  // namespace TestSystem
