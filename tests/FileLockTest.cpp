// SPDX-License-Identifier: MIT
// What another program's lock does to a read and a save, and ours to others.
#include "config/files/FileLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <thread>

#include "FileFixtures.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "platform/Platform.h"

namespace Platform = zelconfutils::Platform;

namespace {

using Platform::OpenMode;

constexpr OpenMode kModes[] = {OpenMode::kRead, OpenMode::kUpdate, OpenMode::kAppend};

// Stands after the first byte: locks count from the start all the same.
struct OpenFile : Platform::File {
  OpenFile(const std::string& path, OpenMode mode)
      : Platform::File(Platform::OpenFile(path.c_str(), mode)) {
    char byte;
    Platform::ReadBytes(*this, &byte, 1);
  }
  ~OpenFile() { Platform::CloseFile(*this); }
};

TEST(FileLock, OfAnotherProgramIsWaitedFor) {
  const std::string path = TestFiles::Path("file"), empty = TestFiles::Path("empty");
  TestFiles::Write(path, "a=1\n");
  TestFiles::Write(empty, "");
  for (const TestSystem::TakeLock take : TestSystem::kForeignLocks) {
    auto lock = take(path.c_str());
    const auto ofEmpty = take(empty.c_str());
    ASSERT_TRUE(lock && ofEmpty);
    for (const OpenMode mode : kModes) {
      const OpenFile file(path, mode);
      errno = 0;
      EXPECT_FALSE(Platform::TryLockBytes(file, file.length)) << static_cast<int>(mode);
      EXPECT_EQ(errno, TestSystem::kLockedError);
    }
    // An empty file has no bytes to lock, and neither has one that a save has truncated.
    EXPECT_EQ(Reading(empty, true) + Reading(empty, false), "");
    EXPECT_EQ(Saving(path, false, "b=2\n"), "true");

    std::atomic<bool> over = false;
    std::thread holder([&] {
      Platform::SleepMilliseconds(150);
      over = true;
      lock.reset();
    });
    EXPECT_EQ(Reading(path, true) + Reading(path, false), "b=2\nb=2\n");
    EXPECT_TRUE(over);
    holder.join();
    EXPECT_TRUE(take(path.c_str()));  // a read has given its own back
  }
}

TEST(FileLock, OfOursKeepsEveryOtherOutOfTheBytesOfTheFileAndNoneAfterThem) {
  const std::string path = TestFiles::Path("file");
  TestFiles::Write(path, "a=1\n");
  for (const OpenMode mode : kModes) {
    SCOPED_TRACE("mode " + std::to_string(static_cast<int>(mode)));
    const OpenFile file(path, mode);
    const auto end = static_cast<long>(file.length);
    Configuration::FileLock ours;
    ASSERT_TRUE(ours.Acquire(file));
    for (const OpenMode other : kModes) {
      EXPECT_FALSE(Platform::TryLockBytes(OpenFile(path, other), end)) << static_cast<int>(other);
    }
    for (const TestSystem::TakeLock take : TestSystem::kForeignLocks) {
      EXPECT_TRUE(mode == OpenMode::kRead || !take(path.c_str()));
    }
    for (const long byte : {0L, end - 1, end}) {
      EXPECT_EQ(TestSystem::LockBytes(path.c_str(), byte, 1) != nullptr, byte == end) << byte;
    }
    EXPECT_TRUE(ours.Release() && Platform::TryLockBytes(OpenFile(path, mode), end));
  }
}

}  // namespace
