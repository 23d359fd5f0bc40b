// SPDX-License-Identifier: MIT
// What another program's lock, a full disk or a file that may not be written do to a read and a
// save.
#include "config/files/FileLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
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

/// What a read of the file at `path` says: its image, or its message.
std::string Reading(const std::string& path, bool readOnly) {
  return Outcome([&] { return FlatFile(kFlatTokens, path.c_str(), false, readOnly).Image(); });
}

/// What a save of `text` to `path` says.
std::string Saving(const std::string& path, bool coalesced, const char* text) {
  FlatFile file(kFlatTokens, nullptr);
  file.AttachToBuffer(text, path.c_str());
  return Outcome([&] { return file.Save(coalesced, nullptr); });
}

std::shared_ptr<Platform::File> Open(const char* path, OpenMode mode) {
  const auto close = [](Platform::File* file) {
    Platform::CloseFile(*file);
    delete file;
  };
  return {new Platform::File(Platform::OpenFile(path, mode)), close};
}

std::shared_ptr<void> TakeOurs(const char* path, OpenMode mode) {
  const auto file = Open(path, mode);
  char byte;
  Platform::ReadBytes(*file, &byte, 1);  // a lock counts from the start, wherever the file stands
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
class FileLockPatience : public FileLock {};

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

TEST_F(FileLockPatience, EndsAfterTenSeconds) {
  const auto lock = Locks()[0](path.c_str());
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
TEST(Read, OfAReadOnlyFileNeedsNoWriting) {
  const std::string program = testing::internal::GetArgvs()[0];
  if (std::FILE* stream = std::fopen(program.c_str(), "r+")) {
    std::fclose(stream);
    GTEST_SKIP();
  }
  EXPECT_EQ(Reading(program, false).substr(0, 13), "Error opening");
  EXPECT_NE(Reading(program, true).substr(0, 5), "Error");
}

}  // namespace
