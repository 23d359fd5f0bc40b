// SPDX-License-Identifier: MIT
#include "platform/Platform.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <initializer_list>

namespace zelconfutils::Platform {

namespace {

// Runs a system call until no signal interrupts it.
template <class Call>
auto Uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

int OpenFlags(OpenMode mode) {
  switch (mode) {
    case OpenMode::kUpdate:
      return O_RDWR;
    case OpenMode::kAppend:
      return O_RDWR | O_APPEND | O_CREAT;
    case OpenMode::kReplace:
      return O_RDWR | O_CREAT | O_TRUNC;
    default:
      return O_RDONLY;
  }
}

}  // namespace

File OpenFile(const char* path, OpenMode mode) {
  const int flags = OpenFlags(mode);
  File file;
  file.descriptor = Uninterrupted([&] { return open(path, flags | O_CLOEXEC, 0666); });
  if (!file.IsOpen()) return file;
  file.isWritable = flags != O_RDONLY;
  struct stat status = {};
  if (fstat(file.descriptor, &status) != 0) return file;  // whoever needs the length asks again
  file.length = status.st_size;
  if (!S_ISDIR(status.st_mode)) return file;
  // For reading alone a directory opens, and only the reading fails.
  CloseFile(file);
  errno = EISDIR;
  return {};
}

std::FILE* MakeStream(const File& file) {
  std::FILE* stream = fdopen(file.descriptor, file.isWritable ? "r+" : "r");
  if (stream == nullptr) CloseFile(file);
  return stream;
}

std::int64_t FileLength(const File& file) {
  struct stat status = {};
  return fstat(file.descriptor, &status) == 0 ? status.st_size : -1;
}

std::size_t ReadBytes(const File& file, char* buffer, std::size_t bytes) {
  const auto got = Uninterrupted([&] { return read(file.descriptor, buffer, bytes); });
  return got > 0 ? static_cast<std::size_t>(got) : 0;
}

bool WriteBytes(const File& file, const char* text, std::size_t bytes) {
  while (bytes > 0) {
    const auto taken = Uninterrupted([&] { return write(file.descriptor, text, bytes); });
    if (taken <= 0) return false;
    text += taken;
    bytes -= static_cast<std::size_t>(taken);
  }
  return true;
}

bool CloseFile(const File& file) { return close(file.descriptor) == 0; }

namespace {

// Where flock is made of range locks, as over NFS, an exclusive one takes a writable descriptor.
// A shared one keeps every writer out, if not every other reader.
bool LockWhole(const File& file) {
  if (flock(file.descriptor, LOCK_EX | LOCK_NB) == 0) return true;
  return errno == EBADF && !file.isWritable && flock(file.descriptor, LOCK_SH | LOCK_NB) == 0;
}

bool Range(const File& file, int command, short type, std::int64_t bytes, struct flock& range) {
  range = {};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  range.l_len = bytes;
  return fcntl(file.descriptor, command, &range) == 0;
}

// Some systems, and some file systems, know no locks of open file descriptions.
bool RangeLocksAreUnknown() {
  const auto unknown = {EINVAL, ENOLCK, ENOTSUP, EOPNOTSUPP};
  return std::find(unknown.begin(), unknown.end(), errno) != unknown.end();
}

// The lock belongs to the open file description: the classic kind would be lost when any other
// descriptor of the file is closed. A write lock needs a writable descriptor; a file opened for
// reading takes a read lock, which still keeps every writer out, and asks for foreign read locks,
// which would let it in.
bool LockRange(const File& file, std::int64_t bytes) {
  struct flock range;
  if (!file.isWritable) {
    if (!Range(file, F_OFD_GETLK, F_WRLCK, bytes, range)) return RangeLocksAreUnknown();
    if (range.l_type != F_UNLCK) {
      errno = EAGAIN;
      return false;
    }
  }
  return Range(file, F_OFD_SETLK, file.isWritable ? F_WRLCK : F_RDLCK, bytes, range) ||
         RangeLocksAreUnknown();
}

}  // namespace

// flock and fcntl locks do not see each other, and other programs use either. Both together keep
// all of them out; flock alone where it is all that there is.
bool TryLockBytes(const File& file, std::int64_t bytes) {
  if (bytes == 0) return true;  // l_len 0 would mean "to the end, wherever that comes to be"
  if (!LockWhole(file)) return false;
  if (LockRange(file, bytes)) return true;
  const int reason = errno;
  flock(file.descriptor, LOCK_UN);
  errno = reason;
  return false;
}

bool UnlockBytes(const File& file, std::int64_t bytes) {
  if (bytes == 0) return true;
  struct flock range;
  const bool rangeFreed = Range(file, F_OFD_SETLK, F_UNLCK, 0, range) || RangeLocksAreUnknown();
  return flock(file.descriptor, LOCK_UN) == 0 && rangeFreed;
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

#if defined(MADV_HUGEPAGE) && defined(MADV_POPULATE_WRITE)

namespace {

std::int64_t ThreadNanoseconds() {
  timespec now = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return now.tv_sec * std::int64_t{1000000000} + now.tv_nsec;
}

}  // namespace

// A large page costs a third of what the small ones do, as long as the system has it at hand (a
// quarter of a millisecond). A virtual machine that has given its free memory back must ask the
// host for it first, which takes five to twenty times as long; the small pages are mostly made of
// pieces that it has kept. So the first slow one ends the asking.
bool ProvidePages(void* block, std::size_t bytes, bool large) {
  constexpr std::int64_t kSlowNanoseconds = 600000;
  const auto pageBytes = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto start = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t end = (start + bytes) / pageBytes * pageBytes;
  std::uintptr_t at = (start + pageBytes - 1) / pageBytes * pageBytes;
  while (at < end) {
    const std::uintptr_t pieceEnd =
        std::min<std::uintptr_t>((at / kLargePageBytes + 1) * kLargePageBytes, end);
    const std::size_t pieceBytes = pieceEnd - at;
    void* const piece = static_cast<char*>(block) + (at - start);
    at = pieceEnd;
    const bool asked = large && pieceBytes == kLargePageBytes;
    if (asked) madvise(piece, pieceBytes, MADV_HUGEPAGE);
    const std::int64_t before = ThreadNanoseconds();
    madvise(piece, pieceBytes, MADV_POPULATE_WRITE);
    if (asked) large = ThreadNanoseconds() - before < kSlowNanoseconds;
  }
  return large;
}

#else

bool ProvidePages(void*, std::size_t, bool large) { return large; }

#endif

}  // namespace zelconfutils::Platform
