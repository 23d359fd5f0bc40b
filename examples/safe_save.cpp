// SPDX-License-Identifier: MIT
// A save that survives a crash, a kill, a full disk and a power cut: the side of POSIX. The new
// bytes go to a sibling file and to the disk; then the sibling takes the old file's name in one
// step.
#include "safe_save.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __linux__  // elsewhere the calls differ: access control lists are not kept there
#include <sys/xattr.h>
#endif

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace {

void Check(bool good, const std::string& what) {
  if (!good) throw std::system_error(errno, std::generic_category(), what);
}

struct Descriptor {
  int number;
  explicit Descriptor(int opened) : number(opened) {}
  Descriptor(const Descriptor&) = delete;
  ~Descriptor() {
    if (number >= 0) ::close(number);
  }
};

// A new, empty file beside the target that nobody else can open. It goes with this object.
struct Sibling {
  std::string name;
  Descriptor file;

  explicit Sibling(const std::string& target)
      : name((FolderOf(target) / ("." + std::filesystem::path(target).filename().string() +
                                  ".XXXXXX" + kSiblingSuffix))
                 .string()),
        file(::mkostemps(name.data(), static_cast<int>(std::string_view(kSiblingSuffix).size()),
                         O_CLOEXEC)) {
    Check(file.number >= 0, name);
  }
  ~Sibling() {
    if (!name.empty()) ::unlink(name.c_str());
  }

  void TakeName(const std::string& target) {
    Check(::rename(name.c_str(), target.c_str()) == 0, target);
    name.clear();
  }
};

void WriteAll(int descriptor, const std::string& bytes, const std::string& name) {
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t n = ::write(descriptor, bytes.data() + done, bytes.size() - done);
    Check(n > 0 || errno == EINTR, name);
    if (n > 0) done += static_cast<size_t>(n);
  }
}

#ifdef __linux__
// What a call gives that takes a buffer and its size, and tells the size for an empty buffer. An
// empty text where the file system knows no such thing.
template <class Call>
std::string Whole(Call call, const std::string& what) {
  for (;;) {
    const ssize_t size = call(nullptr, 0);
    if (size < 0 && errno == ENOTSUP) return "";
    Check(size >= 0, what);
    std::string bytes(static_cast<size_t>(size) + 1, '\0');  // never a size of 0: it only asks
    const ssize_t got = call(bytes.data(), bytes.size());
    if (got >= 0) return bytes.substr(0, static_cast<size_t>(got));
    Check(errno == ERANGE, what);  // it has grown meanwhile
  }
}

// The access control list is one of the attributes. What the new file has got from its folder's
// default list goes, or the mode that is set afterwards would open the file to those named there.
void CopyExtendedAttributes(const std::string& from, int to) {
  const std::string old =
      Whole([&](char* room, size_t size) { return ::listxattr(from.c_str(), room, size); }, from);
  const std::string inherited =
      Whole([&](char* room, size_t size) { return ::flistxattr(to, room, size); }, from);
  for (size_t at = 0; at < inherited.size(); at += std::string_view(&inherited[at]).size() + 1) {
    const std::string name(&inherited[at]);
    if (('\0' + old).find('\0' + name + '\0') == std::string::npos)
      Check(::fremovexattr(to, name.c_str()) == 0, from + ": " + name);
  }
  for (size_t at = 0; at < old.size(); at += std::string_view(&old[at]).size() + 1) {
    const char* name = &old[at];
    const std::string what = from + ": " + name;
    const std::string value = Whole(
        [&](char* room, size_t size) { return ::getxattr(from.c_str(), name, room, size); }, what);
    Check(::fsetxattr(to, name, value.data(), value.size(), 0) == 0, what);
  }
}
#else
void CopyExtendedAttributes(const std::string&, int) {}
#endif

// False where there is no such file.
bool StatRegularFile(const std::string& target, struct stat& file) {
  if (::lstat(target.c_str(), &file) != 0) {
    Check(errno == ENOENT, target);
    return false;
  }
  if (!S_ISREG(file.st_mode)) throw Refused(target + ": not a regular file");
  return true;
}

// Owner and group, attributes, mode: in this order, as a change of owner drops bits of the mode,
// and the list decides who the bits of the group are for. Until then nobody else can open the file.
void TakeAttributes(const std::string& target, const struct stat& old, mode_t mode, int to) {
  struct stat now;
  Check(::fstat(to, &now) == 0, target);
  if (now.st_uid != old.st_uid || now.st_gid != old.st_gid)
    Check(::fchown(to, old.st_uid, old.st_gid) == 0, target + ": its owner and group");
  CopyExtendedAttributes(target, to);
  Check(::fchmod(to, mode) == 0, target + ": its mode");
  Check(::fstat(to, &now) == 0, target);
  if (now.st_uid != old.st_uid || now.st_gid != old.st_gid || (now.st_mode & 07777) != mode)
    throw Refused(target + ": its owner, group or mode cannot be kept");
}

}  // namespace

std::string ResolvedPath(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
  if (real) return real.get();
  const int reason = errno;
  struct stat link;
  if (reason == ENOENT && ::lstat(path.c_str(), &link) != 0 && errno == ENOENT) return path;
  throw std::system_error(reason, std::generic_category(), path);
}

void SafeSave(const std::string& path, const std::string& image) {
  const std::string target = ResolvedPath(path);
  struct stat old;
  const bool exists = StatRegularFile(target, old);
  if (exists && old.st_nlink > 1) {
    throw Refused(target + ": it has " + std::to_string(old.st_nlink) +
                  " names (hard links), and only one of them would get the new bytes");
  }
  Check(!exists || ::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) == 0, target);

  Sibling sibling(target);
  WriteAll(sibling.file.number, image, sibling.name);
  if (exists) TakeAttributes(target, old, old.st_mode & 07777, sibling.file.number);
  Check(::fsync(sibling.file.number) == 0, sibling.name);
  sibling.TakeName(target);

  const std::string folder = FolderOf(target).string();
  const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  Check(opened.number >= 0 && ::fsync(opened.number) == 0, folder);  // the new name, on the disk
}

CompanionLock::CompanionLock(const std::string& path) : handle_(-1) {
  const std::string target = ResolvedPath(path);
  const std::string companion = target + ".lock";
  const auto open = [&companion] {
    return ::open(companion.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
  };
  int descriptor = open();
  if (descriptor < 0 && errno == ENOENT) {
    // It appears with its owner and permissions or not at all: link fails where another was faster.
    const Sibling made(companion);
    struct stat file;
    if (!StatRegularFile(target, file)) throw Refused(target + ": no such file to lock");
    TakeAttributes(target, file, file.st_mode & 0666, made.file.number);
    Check(::link(made.name.c_str(), companion.c_str()) == 0 || errno == EEXIST, companion);
    descriptor = open();
  }
  Check(descriptor >= 0, companion);
  while (::flock(descriptor, LOCK_EX) != 0) {
    if (errno == EINTR) continue;
    const std::system_error error(errno, std::generic_category(), companion);
    ::close(descriptor);
    throw error;
  }
  handle_ = descriptor;
}

CompanionLock::~CompanionLock() { ::close(static_cast<int>(handle_)); }
