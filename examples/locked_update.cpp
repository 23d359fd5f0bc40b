// SPDX-License-Identifier: MIT
// locked_update FILE KEY COUNT: adds 1 to an entry, COUNT times, beside other processes that do the
// same. The library locks a file during one read or one save; what lies between them, read, edit
// and save, is one step only for those who agree on a lock of their own. It is a companion file:
// the safe save puts a new file in the place of the old one, and a lock on the old one would
// protect nobody.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <system_error>

#include "ConfigFile.h"
#include "SmartBuffer.h"
#include "safe_save.h"

namespace {

// Waits for the lock and holds it until the end of the scope; the system ends it for a process
// that dies. The file is never deleted: whoever waits has it open.
class CompanionLock {
 public:
  explicit CompanionLock(const std::string& path)
      : descriptor(::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
    while (descriptor < 0 || ::flock(descriptor, LOCK_EX) != 0) {
      if (descriptor >= 0 && errno == EINTR) continue;
      const std::system_error error(errno, std::generic_category(), path + ".lock");
      if (descriptor >= 0) ::close(descriptor);
      throw error;
    }
  }
  CompanionLock(const CompanionLock&) = delete;
  ~CompanionLock() { ::close(descriptor); }

 private:
  int descriptor;
};

void Increment(const char* path, const char* key) {
  const CompanionLock lock(path);
  Configuration::ConfigFile file(path, false, true, false, "=", "#", nullptr);
  SmartBuffer value;
  file.GetEntry(key, &value, value.size());
  file.SetEntry(key, std::to_string(std::atol(&value) + 1).c_str());
  SafeSave(path, ImageOf(file));
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 4) return std::puts("locked_update FILE KEY COUNT"), 2;
  for (long n = std::atol(arguments[3]); n > 0; --n) Increment(arguments[1], arguments[2]);
  return 0;
} catch (const std::exception& error) {
  std::printf("%s\n", error.what());
  return 1;
}
