// SPDX-License-Identifier: MIT
// What loads and saves ask of the system, and what becomes of a file when a call to it is
// interrupted, refused or does half of its work.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/file.h>

#include <cerrno>
#include <cstring>
#include <numeric>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "CsvDocument.h"
#include "FileFixtures.h"
#include "StreamIterator.h"
#include "SystemCallsPosix.h"
#include "TestFiles.h"
#include "TestSystem.h"

namespace {

/// The ways to read a file of whole lines: what was read, byte for byte.
const struct Reader {
  const char* name;
  std::string (*read)(const std::string& path);
} kReaders[] = {
    {"ConfigFile, read only", [](const std::string& path) { return Reading(path, true); }},
    {"ConfigFile", [](const std::string& path) { return Reading(path, false); }},
    {"CsvDocument",
     [](const std::string& path) {
       std::string all;
       CsvDocument document;
       CsvDocumentRow row;
       document.Load(path.c_str());
       while (document.GetRow(row)) all += row.GetField(0) + "\n";
       return all;
     }},
    {"FileIterator",
     [](const std::string& path) {
       std::string all;
       FileIterator lines(path.c_str());
       while (lines.HasMoreLines()) all += lines.GetLine();
       return all;
     }},
};

std::string FaultText(const SystemFault& fault) {
  return fault.name + " " + std::to_string(fault.first) + ": " + std::strerror(fault.reason);
}

class FileAccess : public testing::Test {
 protected:
  FileAccess() {
    for (int i = 0; i < 200; ++i) {
      text += "key=" + std::string(995, static_cast<char>('a' + i % 26)) + "\n";
    }
    TestFiles::Write(path, text);
    openFiles = TestSystem::OpenFiles();
  }
  void TearDown() override { EXPECT_EQ(TestSystem::OpenFiles(), openFiles) << "left open"; }

  std::string LockMessage(int reason) const {
    return "Error locking file \"" + path + "\" : " + std::strerror(reason);
  }

  const std::string path = TestFiles::Path("file");
  std::string text;  // lines of 1000 bytes, more than any block holds
  int openFiles;
};
class FileAccessLock : public FileAccess {};

// The lock is given back by calls: with a copy of the descriptor in a child that was forked
// meanwhile it would outlive the close.
TEST_F(FileAccess, ALoadMakesTenSystemCallsAndASaveFour) {
  TestFiles::Write(path, text.substr(0, 2000));
  for (const bool readOnly : {true, false}) {
    const SystemCalls calls;
    Reading(path, readOnly);
    EXPECT_EQ(calls.names, readOnly ? "stat open fstat flock fcntl fcntl read fcntl flock close "
                                    : "stat open fstat flock fcntl read fcntl flock close ");
  }
  for (const bool coalesced : {false, true}) {
    const SystemCalls calls;
    Saving(path, coalesced, "key=value\n");
    EXPECT_EQ(calls.names, "open fstat write close ");
  }
}

TEST_F(FileAccess, NoOpenFileIsInheritedByAProgramStartedMeanwhile) {
  SystemCalls calls;
  for (const Reader& reader : kReaders) reader.read(path);
  Saving(path, false, "");
  EXPECT_EQ(calls.arguments["open"].size(), 5u);
  for (const long flags : calls.arguments["open"]) EXPECT_NE(flags & O_CLOEXEC, 0);
}

TEST_F(FileAccess, AnInterruptedReadGoesOnAndAFailedOneEndsTheContent) {
  const struct {
    SystemFault fault;
    std::size_t contentBytes;
  } rows[] = {{{"open", EINTR, 1, 2}, text.size()},
              {{"read", EINTR, 1, 3}, text.size()},
              {{"read", EIO, 11}, 10 * SystemCalls::kPartBytes}};
  for (const auto& row : rows) {
    for (const Reader& reader : kReaders) {
      SCOPED_TRACE(FaultText(row.fault) + ", " + reader.name);
      SystemCalls calls(row.fault);
      const std::string content = reader.read(path);
      if (calls.arguments[row.fault.name].empty())
        continue;  // a C++ library that reads by the C library's streams
      EXPECT_EQ(Quoted(content), Quoted(text.substr(0, row.contentBytes)));
    }
  }
}

TEST_F(FileAccess, AnInterruptedSaveGoesOnAndFailsUnlessTheSystemTakesEveryByte) {
  static const struct {
    SystemFault fault;
    bool isSaved;
  } rows[] = {{{"write", EINTR, 1, 3}, true},
              {{"write", ENOSPC}, false},
              {{"write", EIO, 5}, false},
              {{"write", 0, 4, 2}, false},
              {{"close", EIO}, false}};
  for (const auto& row : rows) {
    for (const bool coalesced : {false, true}) {
      SCOPED_TRACE(FaultText(row.fault) + (coalesced ? ", coalesced" : ""));
      const SystemCalls calls(row.fault);
      EXPECT_EQ(Saving(path, coalesced, text.c_str()),
                row.isSaved ? "true" : "Error saving file \"" + path + "\" : file is too big.");
      if (row.isSaved) {
        EXPECT_EQ(Quoted(TestFiles::Read(path)), Quoted(text));
      }
    }
  }
}

TEST_F(FileAccess, ASaveRunsOnAThreadWithAStackOf32KiB) {
  pthread_attr_t usual, small;
  pthread_getattr_default_np(&usual);
  pthread_attr_init(&small);
  pthread_attr_setstacksize(&small, 32768);
  pthread_setattr_default_np(&small);
  for (const bool coalesced : {false, true}) {
    FlatFile file(kFlatTokens, path.c_str());
    std::thread([&] { file.Save(coalesced, nullptr); }).join();
  }
  pthread_setattr_default_np(&usual);
}

TEST_F(FileAccessLock, IsSharedWhereAnExclusiveOneTakesAWritableDescriptor) {
  SystemCalls asOverNfs({"flock", EBADF, 1, 1, LOCK_EX});
  EXPECT_EQ(Reading(path, false), LockMessage(EBADF));
  asOverNfs.arguments.clear();
  EXPECT_EQ(Quoted(Reading(path, true)), Quoted(text));
  EXPECT_EQ(asOverNfs.arguments["flock"],
            (std::vector<long>{LOCK_EX | LOCK_NB, LOCK_SH | LOCK_NB, LOCK_UN}));
}

TEST_F(FileAccessLock, RefusedQuotesTheReasonButRangeLocksMayBeUnknown) {
  static const struct {
    SystemFault fault;
    bool isRefused;
  } rows[] = {{{"flock", ENOLCK}, true},   {{"flock", EBADF}, true},
              {{"fstat", ESTALE}, true},   {{"fcntl", EDEADLK}, true},
              {{"fcntl", EINVAL}, false},  {{"fcntl", ENOLCK}, false},
              {{"fcntl", ENOTSUP}, false}, {{"fcntl", EOPNOTSUPP}, false}};
  for (const auto& row : rows) {
    for (const bool readOnly : {false, true}) {
      SCOPED_TRACE(FaultText(row.fault) + (readOnly ? ", read only" : ""));
      const SystemCalls calls(row.fault);
      EXPECT_EQ(Quoted(Reading(path, readOnly)),
                Quoted(row.isRefused ? LockMessage(row.fault.reason) : text));
    }
  }
}

TEST_F(FileAccessLock, IsTried101TimesInTenSecondsAndNotInStep) {
  SystemCalls calls({"fcntl", EAGAIN});
  EXPECT_EQ(Reading(path, true), LockMessage(EAGAIN));
  EXPECT_EQ(calls.arguments["fstat"].size(), 101u) << "the length may have changed";
  EXPECT_EQ(calls.arguments["fcntl"].size(), 101u);
  EXPECT_EQ(calls.arguments["flock"].size(), 202u) << "given back each time";
  const std::vector<long>& rests = calls.arguments["nanosleep"];
  EXPECT_EQ(rests.size(), 100u);
  EXPECT_EQ(std::accumulate(rests.begin(), rests.end(), 0L), 10000);
  EXPECT_GT(std::set<long>(rests.begin(), rests.end()).size(), 10u);
}

}  // namespace
