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
#include <csignal>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <utility>

#include "ConfigException.h"
#include "OpenConfigFile.h"
#include "TestFiles.h"
#include "platform/Platform.h"

namespace {

using TestFiles::TemporaryDirectory;

// A process that does `work`; with `Wait`, its success.
class Child {
 public:
  explicit Child(const std::function<bool()>& work) : id_(fork()) {
    if (id_ != 0) return;
    _exit(work() && !testing::Test::HasFailure() ? 0 : 1);
  }
  ~Child() { Wait(); }
  bool Wait() {
    int status = 1;
    if (id_ != 0) waitpid(std::exchange(id_, 0), &status, 0);
    return status == 0;
  }
  void Kill() const { kill(id_, SIGKILL); }

 private:
  pid_t id_;
};

// A process that holds a lock on a file until it is told to stop: then it writes `last` over the
// file's start, while it still holds the lock.
class Holder {
 public:
  using Lock = bool (*)(const char* path);

  Holder(Lock lock, const std::string& path, unsigned milliseconds, const char* last)
      : child_([=, this] {
          const bool held = lock(path.c_str());
          if (write(pipe_[1], held ? "y" : "n", 1) != 1) return false;
          Platform::SleepMilliseconds(milliseconds);
          const int file = open(path.c_str(), O_WRONLY);
          return pwrite(file, last, std::strlen(last), 0) >= 0;  // the lock ends with the process
        }) {
    char answer = 0;
    EXPECT_EQ(read(pipe_[0], &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
  }
  ~Holder() {
    child_.Kill();
    child_.Wait();
    close(pipe_[0]);
    close(pipe_[1]);
  }
  void Kill() const { child_.Kill(); }

 private:
  struct Pipe {
    int ends[2];
    Pipe() { EXPECT_EQ(pipe(ends), 0); }
    int operator[](int i) const { return ends[i]; }
  };
  Pipe pipe_;
  Child child_;
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
  TestFiles::Write(path, "a=1\n");
  TestFiles::Write(empty, "");
  for (const auto& holder : kHolders) {
    const Holder process(holder.lock, path, 600000, "");
    const Holder other(holder.lock, empty, 600000, "");
    for (const char* mode : {"r", "r+", "a+"}) {
      SCOPED_TRACE(std::string(holder.name) + " against " + mode);
      std::FILE* stream = Platform::OpenFile(path.c_str(), mode);
      const int descriptor = Platform::Descriptor(stream);
      EXPECT_FALSE(Platform::TryLockBytes(descriptor, 4));
      EXPECT_TRUE(errno == EAGAIN || errno == EACCES) << errno;
      std::fclose(stream);
    }
    // An empty file has no bytes to lock, and neither has one that a save has cut.
    EXPECT_EQ(Reading(empty, true) + Reading(empty, false), "");
    EXPECT_EQ(Saving(path, false, "b=22\n"), "saved");
    TestFiles::Write(path, "a=1\n");
  }
}

TEST(FileLock, IsWaitedForUntilItIsGivenBack) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  bool readOnly = false;
  for (const auto& holder : kHolders) {
    readOnly = !readOnly;
    SCOPED_TRACE(std::string(holder.name) + (readOnly ? " against r" : " against r+"));
    TestFiles::Write(path, "a=1\n");
    const Holder process(holder.lock, path, 250, "a=2\n");
    EXPECT_EQ(Reading(path, readOnly), "a=2\n");
  }
  const Holder killed(kHolders[1].lock, path, 600000, "");
  killed.Kill();
  EXPECT_EQ(Reading(path, false), "a=2\n");
}

TEST(FileLock, IsGoneWhenAReadIsOver) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  TestFiles::Write(path, "a=1\n");
  OpenConfigFile file(path);
  EXPECT_TRUE(Child([&] { return OurLock(path.c_str(), "r+"); }).Wait());
  Configuration::FileLock lock;
  std::FILE* stream = std::fopen(path.c_str(), "r");
  EXPECT_TRUE(lock.Acquire(stream));
  EXPECT_TRUE(lock.Release(stream));
  EXPECT_TRUE(Child([&] { return OurLock(path.c_str(), "r"); }).Wait());
  std::fclose(stream);
}

TEST(FileLockPatience, EndsAfterTenSeconds) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  TestFiles::Write(path, "a=1\n");
  const Holder process(kHolders[0].lock, path, 600000, "");
  timespec start = {}, end = {};
  clock_gettime(CLOCK_MONOTONIC, &start);
  EXPECT_EQ(Reading(path, true), "Error locking file \"" + path + "\" : " + std::strerror(EAGAIN));
  clock_gettime(CLOCK_MONOTONIC, &end);
  EXPECT_GE(end.tv_sec - start.tv_sec, 9);
}

TEST(Save, FailsUnlessTheSystemTookEveryByte) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  const auto tooBig = [](const std::string& target) {
    return "Error saving file \"" + target + "\" : file is too big.";
  };
  for (const bool coalesced : {false, true}) {
    EXPECT_EQ(Saving("/dev/full", coalesced, "key=value\n"), tooBig("/dev/full"));
    EXPECT_TRUE(Child([&] {
                  const rlimit limit = {100000, 100000};
                  std::signal(SIGXFSZ, SIG_IGN);
                  setrlimit(RLIMIT_FSIZE, &limit);
                  std::string text;
                  while (text.size() < 100000) text += "key=value\n";
                  EXPECT_EQ(Saving(path, coalesced, text), "saved");
                  EXPECT_EQ(Saving(path, coalesced, text + "\n"), tooBig(path));
                  return true;
                }).Wait());
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
    for (const std::size_t limit : {0, 1, 4096, 20000, 150000, 199999}) {
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
  EXPECT_TRUE(Child([&] {
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
              }).Wait());
}

}  // namespace
