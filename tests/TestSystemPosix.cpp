// SPDX-License-Identifier: MIT
#include "TestSystem.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <iterator>

namespace TestSystem {

namespace {

constexpr uid_t kNobody = 65534;

bool LockRange(const char* path, short type) {
  struct flock range = {};
  range.l_type = type;
  return fcntl(open(path, O_RDWR), F_SETLK, &range) == 0;
}

}  // namespace

const int kDirectoryError = EISDIR, kLongNameError = ENAMETOOLONG, kLockedError = EAGAIN;

const bool kHasTextMode = false, kHasDrives = false;

int OpenFiles() {
  std::error_code error;
  return static_cast<int>(
      std::distance(std::filesystem::directory_iterator("/proc/self/fd", error), {}));
}

Refusal::Refusal(const std::string& path, bool forReadingToo) {
  chmod(path.c_str(), forReadingToo ? 0 : 0444);
  if (geteuid() == 0 && seteuid(kNobody) != 0) _exit(1);  // root may open anything
}

Refusal::~Refusal() {
  if (getuid() == 0 && seteuid(0) != 0) _exit(1);
}

const std::vector<ForeignLock>& ForeignLocks() {
  static const std::vector<ForeignLock> locks = {
      {"flock", [](const char* path) { return flock(open(path, O_RDWR), LOCK_EX) == 0; }},
      {"flock, shared", [](const char* path) { return flock(open(path, O_RDONLY), LOCK_SH) == 0; }},
      {"fcntl", [](const char* path) { return LockRange(path, F_WRLCK); }},
      {"fcntl, shared", [](const char* path) { return LockRange(path, F_RDLCK); }},
  };
  return locks;
}

Process::Process(const std::vector<std::string>& arguments) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  std::vector<const char*> texts = {program.c_str()};
  for (const std::string& argument : arguments) texts.push_back(argument.c_str());
  texts.push_back(nullptr);
  const pid_t id = fork();
  if (id == 0) {
    execv(program.c_str(), const_cast<char* const*>(texts.data()));
    _exit(1);
  }
  process_ = reinterpret_cast<void*>(static_cast<std::intptr_t>(id));
}

Process::~Process() {
  Kill();
  Succeeds();
}

bool Process::Succeeds() {
  int status = -1;
  if (process_ == nullptr) return false;
  waitpid(static_cast<pid_t>(reinterpret_cast<std::intptr_t>(process_)), &status, 0);
  process_ = nullptr;
  return status == 0;
}

void Process::Kill() {
  if (process_ != nullptr) {
    kill(static_cast<pid_t>(reinterpret_cast<std::intptr_t>(process_)), SIGKILL);
  }
}

}  // namespace TestSystem
