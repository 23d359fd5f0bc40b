// SPDX-License-Identifier: MIT
// What another process, a full disk or a closed file do to a read and a save.
#include "config/FileLock.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "ReadAndSave.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "platform/Platform.h"

namespace {

bool OurLock(const char* path, const char* mode) {
  static Configuration::FileLock lock;  // for the rest of the process
  return lock.Acquire(std::fopen(path, mode));
}

std::vector<TestSystem::TakeLock> Locks() {
  std::vector<TestSystem::TakeLock> locks = TestSystem::ForeignLocks();
  locks.push_back([](const char* path) { return OurLock(path, "r"); });
  locks.push_back([](const char* path) { return OurLock(path, "r+"); });
  return locks;
}

std::string OverMark(const std::string& path) { return path + ".over"; }

// The second process: holds the lock until nobody reads what it says or the time is over, and
// marks that while the lock is still held.
int Hold(std::size_t lock, int milliseconds, const char* path) {
  if (!Locks()[lock](path)) return 1;
  for (; milliseconds > 0 && std::putchar('.') != EOF && std::fflush(stdout) == 0;
       milliseconds -= 10) {
    Platform::SleepMilliseconds(10);
  }
  TestFiles::Write(OverMark(path), "");
  return 0;
}

std::string program;

std::shared_ptr<std::FILE> Holder(std::size_t lock, const std::string& path,
                                  int milliseconds = 60000) {
  const std::string command = program + " hold " + std::to_string(lock) + " " +
                              std::to_string(milliseconds) + " \"" + path + "\"";
  std::shared_ptr<std::FILE> output(popen(command.c_str(), "r"), pclose);
  EXPECT_EQ(std::fgetc(output.get()), '.') << command;
  return output;
}

class FileLock : public testing::Test {
 protected:
  FileLock() { TestFiles::Write(path, "a=1\n"); }
  const TestFiles::TemporaryDirectory directory;
  const std::string path = directory.Path("file");
};
class FileLockPatience : public FileLock {};

TEST_F(FileLock, KeepsEveryOtherProcessOut) {
  const std::string empty = directory.Path("empty");
  TestFiles::Write(empty, "");
  for (std::size_t lock = 0; lock < Locks().size(); ++lock) {
    TestFiles::Write(path, "a=1\n");
    const auto bytes = static_cast<std::int64_t>(std::filesystem::file_size(path));
    const auto holder = Holder(lock, path), ofEmpty = Holder(lock, empty);
    for (const char* mode : {"r", "r+", "a+"}) {
      std::FILE* stream = Platform::OpenFile(path.c_str(), mode);
      errno = 0;
      EXPECT_FALSE(Platform::TryLockBytes(Platform::Descriptor(stream), bytes)) << lock << mode;
      EXPECT_EQ(errno, TestSystem::kLockedError);
      std::fclose(stream);
    }
    // An empty file has no bytes to lock, and neither has one that a save has cut.
    EXPECT_EQ(Reading(empty, true) + Reading(empty, false), "");
    EXPECT_EQ(Saving(path, false, "b=22\n"), "saved");
  }
}

TEST_F(FileLock, KeepsEveryOtherStreamOfItsProcessOut) {
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

TEST_F(FileLock, IsWaitedForAndGivenBack) {
  for (std::size_t lock = 0; lock < Locks().size(); ++lock) {
    std::filesystem::remove(OverMark(path));
    const auto holder = Holder(lock, path, 250);
    const OpenConfigFile file(path.c_str(), false, lock % 2 == 0, false, "=", "#", "");
    EXPECT_TRUE(std::filesystem::exists(OverMark(path))) << lock;
    Holder(lock, path);  // it is free again
  }
  std::FILE* stream = std::fopen(path.c_str(), "r+");
  Configuration::FileLock released;
  EXPECT_TRUE(released.Acquire(stream) && released.Release());
  Holder(0, path);
  std::fclose(stream);
}

TEST_F(FileLockPatience, EndsAfterTenSeconds) {
  const auto holder = Holder(0, path);
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

// Most systems let nobody write to a program that runs, such as this one.
TEST_F(FileLock, OfAReadOnlyFileNeedsNoWriting) {
  const auto running = Holder(0, path);
  if (std::FILE* stream = std::fopen(program.c_str(), "r+")) {
    std::fclose(stream);
    GTEST_SKIP();
  }
  EXPECT_EQ(Reading(program, false).substr(0, 13), "Error opening");
  EXPECT_NE(Reading(program, true).substr(0, 5), "Error");
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (argc == 5) return Hold(std::strtoul(argv[2], nullptr, 10), std::atoi(argv[3]), argv[4]);
  // By a name without folders, which a command needs no quotes for.
  const std::filesystem::path whole = std::filesystem::absolute(argv[0]), here = ".";
  std::filesystem::current_path(whole.parent_path());
  program = (here / whole.filename()).make_preferred().string();
  return RUN_ALL_TESTS();
}
