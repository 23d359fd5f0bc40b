// SPDX-License-Identifier: MIT
// What another process, a full disk or a closed file do to a read and a save.
#include "config/FileLock.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "ReadAndSave.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "platform/Platform.h"

namespace {

namespace fs = std::filesystem;

using TestFiles::TemporaryDirectory;

bool OurLock(const char* path, const char* mode) {
  static Configuration::FileLock lock;  // for the rest of the process
  return lock.Acquire(std::fopen(path, mode));
}

const std::vector<TestSystem::ForeignLock>& Locks() {
  static const std::vector<TestSystem::ForeignLock> all = [] {
    std::vector<TestSystem::ForeignLock> made = TestSystem::ForeignLocks();
    made.push_back({"ours, reading", [](const char* path) { return OurLock(path, "r"); }});
    made.push_back({"ours, writing", [](const char* path) { return OurLock(path, "r+"); }});
    return made;
  }();
  return all;
}

std::string HeldMark(const std::string& path) { return path + ".held"; }
std::string GoOnMark(const std::string& path) { return path + ".go"; }

// The second process: takes the lock named on the file at `path`, marks that, and waits to be told
// to go on; then it waits a little and takes the mark away, the lock still held.
int Hold(const std::string& name, const std::string& path) {
  for (const TestSystem::ForeignLock& lock : Locks()) {
    if (lock.name != name) continue;
    if (!lock.take(path.c_str())) return 1;
    TestFiles::Write(HeldMark(path), "");
    for (int i = 0; i < 6000 && !fs::exists(GoOnMark(path)); ++i) Platform::SleepMilliseconds(10);
    Platform::SleepMilliseconds(250);
    return fs::remove(HeldMark(path)) ? 0 : 1;
  }
  return 1;
}

class Holder {
 public:
  Holder(const char* lock, const std::string& path) : path_(path), process_({"hold", lock, path}) {
    fs::remove(GoOnMark(path));
    for (int i = 0; i < 1000 && !Holds(); ++i) Platform::SleepMilliseconds(10);
    EXPECT_TRUE(Holds());
  }
  ~Holder() {
    process_.Kill();
    process_.Succeeds();
    fs::remove(HeldMark(path_));
  }
  bool Holds() const { return fs::exists(HeldMark(path_)); }
  void GoOn() { TestFiles::Write(GoOnMark(path_), ""); }
  void Kill() { process_.Kill(); }

 private:
  std::string path_;
  TestSystem::Process process_;
};

TEST(FileLock, KeepsEveryOtherProcessOut) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file"), empty = directory.Path("empty");
  TestFiles::Write(empty, "");
  for (const auto& row : Locks()) {
    TestFiles::Write(path, "a=1\n");
    const long long bytes = static_cast<long long>(fs::file_size(path));
    const Holder holder(row.name, path), ofEmpty(row.name, empty);
    for (const char* mode : {"r", "r+", "a+"}) {
      std::FILE* stream = Platform::OpenFile(path.c_str(), mode);
      errno = 0;
      EXPECT_FALSE(Platform::TryLockBytes(Platform::Descriptor(stream), bytes)) << row.name << mode;
      EXPECT_EQ(errno, TestSystem::kLockedError);
      std::fclose(stream);
    }
    // An empty file has no bytes to lock, and neither has one that a save has cut.
    EXPECT_EQ(Reading(empty, true) + Reading(empty, false), "");
    EXPECT_EQ(Saving(path, false, "b=22\n"), "saved");
  }
}

TEST(FileLock, KeepsEveryOtherStreamOfItsProcessOut) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  TestFiles::Write(path, "a=1\n");
  for (const char* mode : {"r", "r+", "a+"}) {
    for (const char* otherMode : {"r", "r+", "a+"}) {
      SCOPED_TRACE(std::string(mode) + " " + otherMode);
      std::FILE *stream = std::fopen(path.c_str(), mode),
                *other = std::fopen(path.c_str(), otherMode);
      std::fgetc(stream);  // a lock counts from the start, wherever the stream stands
      const int descriptor = Platform::Descriptor(stream), second = Platform::Descriptor(other);
      EXPECT_TRUE(Platform::TryLockBytes(descriptor, 4));
      EXPECT_FALSE(Platform::TryLockBytes(second, 4));
      EXPECT_TRUE(Platform::TryLockBytes(second, 0));
      EXPECT_TRUE(Platform::UnlockBytes(descriptor, 4));
      EXPECT_TRUE(Platform::TryLockBytes(second, 4));
      EXPECT_FALSE(Platform::TryLockBytes(descriptor, 1));
      std::fclose(other);
      EXPECT_TRUE(Platform::TryLockBytes(descriptor, 4));
      std::fclose(stream);
    }
  }
}

TEST(FileLock, IsWaitedForUntilItIsGivenBack) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  TestFiles::Write(path, "a=1\n");
  bool readOnly = false;
  for (const auto& row : Locks()) {
    readOnly = !readOnly;
    Holder holder(row.name, path);
    holder.GoOn();
    EXPECT_EQ(Reading(path, readOnly), "a=1\n") << row.name << readOnly;
    EXPECT_FALSE(holder.Holds()) << row.name << readOnly;
  }
  Holder killed(Locks().back().name, path);
  killed.Kill();
  EXPECT_EQ(Reading(path, false), "a=1\n");
}

TEST(FileLock, IsGoneWhenAReadIsOver) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  TestFiles::Write(path, "a=1\n");
  const OpenConfigFile file(path);
  const Holder afterRead("ours, writing", path);
  Configuration::FileLock lock;
  std::FILE* stream = std::fopen(directory.Path("other").c_str(), "w+");
  std::fputs("a=1\n", stream);
  std::rewind(stream);
  EXPECT_TRUE(lock.Acquire(stream) && lock.Release());
  const Holder afterRelease("ours, reading", directory.Path("other"));
  std::fclose(stream);
}

TEST(FileLockPatience, EndsAfterTenSeconds) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  TestFiles::Write(path, "a=1\n");
  const Holder holder("ours, reading", path);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Reading(path, true),
            "Error locking file \"" + path + "\" : " + std::strerror(TestSystem::kLockedError));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(9900));
}

TEST(Save, FailsOnAFullDisk) {
  for (const bool coalesced : {false, true}) {
    EXPECT_EQ(Saving("/dev/full", coalesced, "key=value\n"),
              "Error saving file \"/dev/full\" : file is too big.");
  }
}

TEST(Read, AFileThatIsNotOursToOpen) {
  TemporaryDirectory directory;
  const std::string closed = directory.Path("closed"), kept = directory.Path("kept");
  const auto refused = [](const char* action, const std::string& path) {
    return std::string("Error ") + action + " file \"" + path + "\" : " + std::strerror(EACCES);
  };
  TestFiles::Write(closed, "a=1\n");
  TestFiles::Write(kept, "a=1\n");
  {
    const TestSystem::Refusal refusal(closed, true);
    EXPECT_EQ(Reading(closed, true), refused("opening", closed));
  }
  const TestSystem::Refusal refusal(kept, false);
  EXPECT_EQ(Reading(kept, false), refused("opening", kept));
  EXPECT_EQ(Reading(kept, true), "a=1\n");
  EXPECT_EQ(Saving(kept, false, "b=2\n"), refused("saving", kept));
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (argc == 4) return Hold(argv[2], argv[3]);
  return RUN_ALL_TESTS();
}
