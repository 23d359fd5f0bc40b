// SPDX-License-Identifier: MIT
// What another program's lock or a full disk do to a read and a save.
#include "config/files/FileLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "FileFixtures.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "platform/Platform.h"

namespace Platform = zelconfutils::Platform;

namespace {

using Platform::OpenMode;

// Stands after the first byte: locks count from the start all the same.
std::shared_ptr<Platform::File> Open(const char* path, OpenMode mode) {
  const std::shared_ptr<Platform::File> file(new Platform::File(Platform::OpenFile(path, mode)),
                                             [](Platform::File* opened) {
                                               Platform::CloseFile(*opened);
                                               delete opened;
                                             });
  char byte;
  Platform::ReadBytes(*file, &byte, 1);
  return file;
}

std::shared_ptr<void> TakeOurs(const char* path, OpenMode mode) {
  const auto file = Open(path, mode);
  errno = 0;
  return Platform::TryLockBytes(*file, file->length) ? file : nullptr;
}

std::vector<TestSystem::TakeLock> Locks() {
  std::vector<TestSystem::TakeLock> locks = TestSystem::ForeignLocks();
  locks.push_back([](const char* path) { return TakeOurs(path, OpenMode::kRead); });
  locks.push_back([](const char* path) { return TakeOurs(path, OpenMode::kUpdate); });
  locks.push_back([](const char* path) { return TakeOurs(path, OpenMode::kAppend); });
  return locks;
}

class FileLock : public testing::Test {
 protected:
  FileLock() {
    TestFiles::Write(path, "a=1\n");
    TestFiles::Write(empty, "");
  }
  const std::string path = TestFiles::Path("file"), empty = TestFiles::Path("empty");
};

TEST_F(FileLock, KeepsEveryOtherLockOutAndWaitsForIt) {
  for (const TestSystem::TakeLock take : Locks()) {
    auto lock = take(path.c_str());
    const auto ofEmpty = take(empty.c_str());
    ASSERT_TRUE(lock && ofEmpty);
    for (const OpenMode mode : {OpenMode::kRead, OpenMode::kUpdate, OpenMode::kAppend}) {
      EXPECT_FALSE(TakeOurs(path.c_str(), mode)) << "mode " << static_cast<int>(mode);
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
    const auto file = Open(path.c_str(), OpenMode::kUpdate);
    Configuration::FileLock ours;
    EXPECT_TRUE(ours.Acquire(*file) && !take(path.c_str()));
    EXPECT_TRUE(ours.Release() && take(path.c_str()));
  }
}

TEST_F(FileLock, CoversTheBytesOfTheFileAndNoneAfterThem) {
  TestFiles::Write(path, "0123456789", std::ios::binary);
  for (const OpenMode mode : {OpenMode::kRead, OpenMode::kUpdate, OpenMode::kAppend}) {
    SCOPED_TRACE("mode " + std::to_string(static_cast<int>(mode)));
    const auto file = Open(path.c_str(), mode);
    Configuration::FileLock ours;
    ASSERT_TRUE(ours.Acquire(*file));
    EXPECT_FALSE(TestSystem::CanLockByte(path.c_str(), 0));
    EXPECT_FALSE(TestSystem::CanLockByte(path.c_str(), 9));
    EXPECT_TRUE(TestSystem::CanLockByte(path.c_str(), 10));
    EXPECT_TRUE(ours.Release());
    EXPECT_TRUE(TestSystem::CanLockByte(path.c_str(), 9));
  }
}

TEST(Save, FailsOnAFullDisk) {
  for (const bool coalesced : {false, true}) {
    EXPECT_EQ(Saving("/dev/full", coalesced, "key=value\n"),
              "Error saving file \"/dev/full\" : file is too big.");
  }
}

}  // namespace
