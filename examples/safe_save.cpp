// SPDX-License-Identifier: MIT
// A save that survives a crash, a kill, a full disk and a power cut. The new bytes go to a sibling
// file and to the disk; then the sibling takes the old file's name in one step.
#include "safe_save.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

namespace {

void Check(bool good, const std::string& what) {
  if (!good) throw std::system_error(errno, std::generic_category(), what);
}

struct Descriptor {
  int number;
  ~Descriptor() { ::close(number); }
};

struct TemporaryFile {
  std::string name;  // empty: it has taken the target's name
  ~TemporaryFile() {
    if (!name.empty()) ::unlink(name.c_str());
  }
};

// The file itself where `path` is a symbolic link; `path` where there is no file yet.
std::string Resolved(const std::string& path) {
  std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
  if (real) return real.get();
  struct stat link;
  Check(errno == ENOENT && ::lstat(path.c_str(), &link) != 0, path);  // a link to nowhere
  return path;
}

void WriteAll(int descriptor, const std::string& bytes, const std::string& name) {
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t n = ::write(descriptor, bytes.data() + done, bytes.size() - done);
    Check(n > 0 || errno == EINTR, name);
    if (n > 0) done += static_cast<size_t>(n);
  }
}

}  // namespace

void SafeSave(const std::string& path, const std::string& image) {
  const std::string target = Resolved(path);
  TemporaryFile temporary;
  {
    std::string name = target + ".XXXXXX";  // in the same folder: rename stays on one disk
    const Descriptor file{::mkstemp(name.data())};
    Check(file.number >= 0, name);
    temporary.name = name;
    WriteAll(file.number, image, name);
    struct stat old;
    if (::stat(target.c_str(), &old) == 0) {  // the owner first: a change of owner drops mode bits
      Check(::fchown(file.number, old.st_uid, old.st_gid) == 0, name);
      Check(::fchmod(file.number, old.st_mode & 07777) == 0, name);
    }
    Check(::fsync(file.number) == 0, name);
  }
  Check(::rename(temporary.name.c_str(), target.c_str()) == 0, target);
  temporary.name.clear();

  const size_t slash = target.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : target.substr(0, slash + 1);
  const Descriptor opened{::open(folder.c_str(), O_RDONLY | O_DIRECTORY)};
  Check(opened.number >= 0 && ::fsync(opened.number) == 0, folder);  // the new name, on the disk
}
