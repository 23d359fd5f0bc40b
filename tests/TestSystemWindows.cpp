// SPDX-License-Identifier: MIT
#include "TestSystem.h"

#define WIN32_LEAN_AND_MEAN
#include <io.h>
#include <windows.h>

#include <cerrno>

namespace TestSystem {

const int kLockedError = EACCES;

const bool kHasTextMode = true;

int OpenFiles() {
  int count = 0;
  for (int descriptor = 0; descriptor < 512; ++descriptor) count += _get_osfhandle(descriptor) >= 0;
  return count;
}

std::shared_ptr<void> LockBytes(const char* path, long offset, long bytes) {
  const std::shared_ptr<void> file(
      CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                  nullptr),
      CloseHandle);
  const auto first = static_cast<DWORD>(offset), count = static_cast<DWORD>(bytes);
  return LockFile(file.get(), first, 0, count, 0) != 0 ? file : nullptr;
}

const std::vector<TakeLock> kForeignLocks = {
    [](const char* path) { return LockBytes(path, 0, 4); },
    [](const char* path) { return LockBytes(path, 3, 1); },
};

}  // namespace TestSystem
