// SPDX-License-Identifier: MIT
// What another process, a full disk or a refused write do to a read and a save, as POSIX and Linux
// have them: fork, flock and fcntl locks, /dev/full, RLIMIT_FSIZE, fopencookie, other users.
#include "config/FileLock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <functional>
#include <string>

#include "ConfigException.h"
#include "OpenConfigFile.h"
#include "TestFiles.h"
#include "platform/Platform.h"

namespace {

using TestFiles::TemporaryDirectory;

int Status(pid_t process, int options = 0) {
  int status = -1;
  waitpid(process, &status, options);
  return status;
}

bool SucceedsInChild(const std::function<bool()>& work) {
  const pid_t child = fork();
  if (child == 0) _exit(work() && !testing::Test::HasFailure() ? 0 : 1);
  return Status(child) == 0;
}

// A process that stands still with a lock on a file. Told to go on, it writes "a=2" to the file
// after 250 milliseconds and ends.
class Holder {
 public:
  using Lock = bool (*)(const char* path);

  Holder(Lock lock, const std::string& path) : id_(fork()) {
    if (id_ == 0) {
      if (!lock(path.c_str())) _exit(1);
      raise(SIGSTOP);
      Platform::SleepMilliseconds(250);
      _exit(pwrite(open(path.c_str(), O_WRONLY), "a=2", 3, 0) == 3 ? 0 : 1);
    }
    EXPECT_TRUE(WIFSTOPPED(Status(id_, WUNTRACED)));
  }
  ~Holder() {
    Kill();
    Status(id_);
  }
  void GoOn() const { kill(id_, SIGCONT); }
  void Kill() const { kill(id_, SIGKILL); }

 private:
  pid_t id_;
};

bool OurLock(const char* path, const char* mode) {
  static Configuration::FileLock lock;  // for the rest of the process
  return lock.Acquire(std::fopen(path, mode));
}
bool ForeignRange(const char* path, short type) {
  struct flock range = {};
  range.l_type = type;
  return fcntl(open(path, O_RDWR), F_SETLK, &range) == 0;
}

const struct {
  const char* name;
  Holder::Lock lock;
} kHolders[] = {
    {"our own, reading", [](const char* path) { return OurLock(path, "r"); }},
    {"our own, writing", [](const char* path) { return OurLock(path, "r+"); }},
    {"flock", [](const char* path) { return flock(open(path, O_RDWR), LOCK_EX) == 0; }},
    {"flock, shared", [](const char* path) { return flock(open(path, O_RDONLY), LOCK_SH) == 0; }},
    {"fcntl", [](const char* path) { return ForeignRange(path, F_WRLCK); }},
    {"fcntl, shared", [](const char* path) { return ForeignRange(path, F_RDLCK); }},
};

// What a read of the file at `path` says: its image, or its message.
std::string Reading(const std::string& path, bool readOnly) {
  try {
    return OpenConfigFile(path.c_str(), false, readOnly, false, "=", "#", "").Image();
  } catch (const ConfigException& failure) {
    return failure.what();
  }
}
std::string Saving(const std::string& path, bool coalesced, const std::string& text) {
  OpenConfigFile file(nullptr, false, false, false, "=", "#", "");
  file.AttachToBuffer(text.c_str(), path.c_str());
  try {
    return file.Save(coalesced, nullptr) ? "saved" : "not saved";
  } catch (const ConfigException& failure) {
    return failure.what();
  }
}

TEST(FileLock, KeepsEveryOtherProcessOut) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file"), empty = directory.Path("empty");
  TestFiles::Write(empty, "");
  for (const auto& row : kHolders) {
    TestFiles::Write(path, "a=1\n");
    const Holder holder(row.lock, path), ofEmpty(row.lock, empty);
    for (const char* mode : {"r", "r+", "a+"}) {
      std::FILE* stream = Platform::OpenFile(path.c_str(), mode);
      EXPECT_FALSE(Platform::TryLockBytes(Platform::Descriptor(stream), 4)) << row.name << mode;
      EXPECT_TRUE(errno == EAGAIN || errno == EACCES) << errno;
      std::fclose(stream);
    }
    // An empty file has no bytes to lock, and neither has one that a save has cut.
    EXPECT_EQ(Reading(empty, true) + Reading(empty, false), "");
    EXPECT_EQ(Saving(path, false, "b=22\n"), "saved");
  }
}

TEST(FileLock, IsWaitedForUntilItIsGivenBack) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  bool readOnly = false;
  for (const auto& row : kHolders) {
    readOnly = !readOnly;
    TestFiles::Write(path, "a=1\n");
    const Holder holder(row.lock, path);
    holder.GoOn();
    EXPECT_EQ(Reading(path, readOnly), "a=2\n") << row.name << readOnly;
  }
  const Holder killed(kHolders[1].lock, path);
  killed.Kill();
  EXPECT_EQ(Reading(path, false), "a=2\n");
}

TEST(FileLock, IsGoneWhenAReadIsOver) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  TestFiles::Write(path, "a=1\n");
  const OpenConfigFile file(path);
  EXPECT_TRUE(SucceedsInChild([&] { return OurLock(path.c_str(), "r+"); }));
  Configuration::FileLock lock;
  std::FILE* stream = std::fopen(path.c_str(), "r");
  EXPECT_TRUE(lock.Acquire(stream) && lock.Release(stream));
  EXPECT_TRUE(SucceedsInChild([&] { return OurLock(path.c_str(), "r"); }));
  std::fclose(stream);
}

TEST(FileLockPatience, EndsAfterTenSeconds) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  TestFiles::Write(path, "a=1\n");
  const Holder holder(kHolders[0].lock, path);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Reading(path, true), "Error locking file \"" + path + "\" : " + std::strerror(EAGAIN));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(9900));
}

TEST(Save, FailsUnlessTheSystemTookEveryByte) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  const auto tooBig = [](const std::string& target) {
    return "Error saving file \"" + target + "\" : file is too big.";
  };
  for (const bool coalesced : {false, true}) {
    EXPECT_EQ(Saving("/dev/full", coalesced, "key=value\n"), tooBig("/dev/full"));
    EXPECT_TRUE(SucceedsInChild([&] {
      const rlimit limit = {100000, 100000};
      std::signal(SIGXFSZ, SIG_IGN);
      setrlimit(RLIMIT_FSIZE, &limit);
      std::string text;
      while (text.size() < 100000) text += "key=value\n";
      EXPECT_EQ(Saving(path, coalesced, text), "saved");
      EXPECT_EQ(Saving(path, coalesced, text + "\n"), tooBig(path));
      return true;
    }));
  }
}

// The writer of a stream that takes 20000 bytes and then refuses one write, the first or a later
// one, and takes all others.
ssize_t TakeSome(void* cookie, const char*, size_t count) {
  size_t& left = *static_cast<size_t*>(cookie);
  if (left == 0) {
    left = 1 << 30;
    errno = ENOSPC;
    return 0;
  }
  const size_t taken = std::min(left, count);
  left -= taken;
  return static_cast<ssize_t>(taken);
}

TEST(Save, OneRefusedWriteInTheMiddleIsEnough) {
  Configuration::ConfigLineList lines;
  for (int i = 0; i < 20000; ++i) lines.AddLine("key=value\n", true);
  for (const bool coalesced : {false, true}) {
    for (const std::size_t limit : {0u, 1u, 4096u, 20000u, 150000u, 199999u}) {
      std::size_t left = limit;
      std::FILE* stream = fopencookie(&left, "w", {nullptr, TakeSome, nullptr, nullptr});
      EXPECT_FALSE(lines.WriteAll(stream, coalesced) && std::fflush(stream) == 0) << limit;
      std::fclose(stream);
    }
  }
}

TEST(Read, AFileThatIsNotOursToOpen) {
  TemporaryDirectory directory;
  const std::string closed = directory.Path("closed"), kept = directory.Path("kept");
  TestFiles::Write(closed, "a=1\n");
  TestFiles::Write(kept, "a=1\n");
  chmod(closed.c_str(), 0);
  chmod(kept.c_str(), 0444);
  chmod(directory.Path().c_str(), 0755);
  EXPECT_TRUE(SucceedsInChild([&] {
    if (geteuid() == 0 && setuid(65534) != 0) return false;  // root may open anything
    const auto refused = [](const std::string& path) {
      return "Error opening file \"" + path + "\" : " + std::strerror(EACCES);
    };
    EXPECT_EQ(Reading(closed, true), refused(closed));
    EXPECT_EQ(Reading(kept, false), refused(kept));
    EXPECT_EQ(Reading(kept, true), "a=1\n");
    EXPECT_EQ(Saving(kept, false, "b=2\n"),
              "Error saving file \"" + kept + "\" : " + std::strerror(EACCES));
    return true;
  }));
}

}  // namespace
