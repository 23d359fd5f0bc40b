// SPDX-License-Identifier: MIT
#include "platform/Platform.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>

namespace zelconfutils::Platform {

std::FILE* OpenFile(const char* path, const char* mode) {
  std::FILE* stream = std::fopen(path, mode);
  // For reading alone a directory opens, and only the reading fails.
  if (stream == nullptr || std::strchr(mode, '+') != nullptr) return stream;
  struct stat status = {};
  if (fstat(fileno(stream), &status) == 0 && S_ISDIR(status.st_mode)) {
    std::fclose(stream);
    errno = EISDIR;
    return nullptr;
  }
  return stream;
}

int Descriptor(std::FILE* stream) { return fileno(stream); }

std::int64_t FileLength(int descriptor) {
  struct stat status = {};
  return fstat(descriptor, &status) == 0 ? status.st_size : 0;
}

// flock and fcntl locks do not see each other, and other programs use either. Both together keep
// all of them out. The fcntl lock belongs to the open file description: the classic kind would
// be lost when any other descriptor of the file is closed. A write lock needs a writable
// descriptor; a stream opened "r" takes a read lock, which still keeps every writer out, and asks
// for foreign read locks, which would let it in.
bool TryLockBytes(int descriptor, std::int64_t bytes) {
  if (bytes == 0) return true;  // l_len 0 would mean "to the end, wherever that comes to be"
  if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) return false;
  struct flock range = {};
  range.l_type = F_WRLCK;
  range.l_whence = SEEK_SET;
  range.l_len = bytes;
  struct flock foreign = range;
  const bool readOnly = (fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDONLY;
  if (readOnly) range.l_type = F_RDLCK;
  const bool isFree = fcntl(descriptor, F_OFD_GETLK, &foreign) == 0 && foreign.l_type == F_UNLCK;
  if (isFree && fcntl(descriptor, F_OFD_SETLK, &range) == 0) return true;
  const int reason = isFree ? errno : EAGAIN;
  flock(descriptor, LOCK_UN);
  errno = reason;
  return false;
}

bool UnlockBytes(int descriptor, std::int64_t bytes) {
  if (bytes == 0) return true;
  struct flock range = {};
  range.l_type = F_UNLCK;
  range.l_whence = SEEK_SET;
  const bool rangeFreed = fcntl(descriptor, F_OFD_SETLK, &range) == 0;
  return flock(descriptor, LOCK_UN) == 0 && rangeFreed;
}

void SleepMilliseconds(unsigned milliseconds) {
  timespec rest = {static_cast<std::time_t>(milliseconds / 1000),
                   static_cast<long>(milliseconds % 1000) * 1000000};
  while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
  }
}

bool MakeDirectory(const char* path) { return mkdir(path, 0777) == 0; }

bool IsDirectory(const char* path) {
  struct stat status = {};
  return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

void PreferLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  void* pages = block;
  if (std::align(kLargePageBytes, kLargePageBytes, pages, bytes) != nullptr) {
    madvise(pages, bytes, MADV_HUGEPAGE);
  }
#endif
}

}  // namespace zelconfutils::Platform
