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

const std::string kPath = TestFiles::Path("./file");  // a load looks at the directory
const std::string kText = [] {  // of lines of 1000 bytes, more than any block holds
  std::string text;
  for (int i = 0; i < 200; ++i) text += "k=" + std::string(997, char('a' + i % 26)) + "\n";
  return text;
}();

/// What was read or written, byte for byte, or the message.
struct Call {
  const char* name;
  std::string (*run)();
};
const Call kReadOnly = {"load, read only", [] { return Reading(kPath, true); }};
const Call kUpdate = {"load", [] { return Reading(kPath, false); }};
const Call kCsv = {"CsvDocument", [] {
                     std::string all;
                     CsvDocument document;
                     CsvDocumentRow row;
                     document.Load(kPath.c_str());
                     while (document.GetRow(row)) all += row.GetField(0) + "\n";
                     return all;
                   }};
const Call kLines = {"FileIterator", [] {
                       std::string all;
                       FileIterator lines(kPath.c_str());
                       while (lines.HasMoreLines()) all += lines.GetLine();
                       return all;
                     }};
std::string Saved(bool coalesced) {
  const std::string said = Saving(kPath, coalesced, kText.c_str());
  return said == "true" ? TestFiles::Read(kPath) : said;
}
const std::vector<Call> kLoads = {kReadOnly, kUpdate};
const std::vector<Call> kReads = {kReadOnly, kUpdate, kCsv, kLines};
const std::vector<Call> kSaves = {{"save", [] { return Saved(false); }},
                                  {"coalesced save", [] { return Saved(true); }}};

std::string LockMessage(int reason) {
  return "Error locking file \"" + kPath + "\" : " + std::strerror(reason);
}

void Expect(const std::string& told, const std::vector<Call>& calls, const SystemFault& fault) {
  for (const Call& call : calls) {
    SCOPED_TRACE(call.name + (": " + fault.name) + ", " + std::strerror(fault.reason));
    TestFiles::Write(kPath, kText);
    const int openFiles = TestSystem::OpenFiles();
    SystemCalls made(fault);
    const std::string actual = call.run();
    // Some C++ libraries read by the C library's streams, whose calls are not shown.
    if (!made.arguments[fault.name].empty()) {
      EXPECT_EQ(Quoted(told), Quoted(actual));
    }
    EXPECT_EQ(TestSystem::OpenFiles(), openFiles) << "left open";
  }
}

// The lock is given back by calls: with a copy of the descriptor in a child that was forked
// meanwhile it would outlive the close.
TEST(FileAccess, ALoadMakesTenSystemCallsAndASaveFour) {
  const auto made = [](const Call& call) {
    TestFiles::Write(kPath, kText.substr(0, 2000));
    const SystemCalls calls;
    call.run();
    return calls.names;
  };
  EXPECT_EQ(made(kReadOnly), "stat open fstat flock fcntl fcntl read fcntl flock close ");
  EXPECT_EQ(made(kUpdate), "stat open fstat flock fcntl read fcntl flock close ");
  for (const bool coalesced : {false, true}) {
    const SystemCalls calls;
    Saving(kPath, coalesced, "key=value\n");
    EXPECT_EQ(calls.names, "open fstat write close ");
  }
}

TEST(FileAccess, NoOpenFileIsInheritedByAProgramStartedMeanwhile) {
  for (const std::vector<Call>& all : {kSaves, kReads}) {
    for (const Call& call : all) {
      SystemCalls calls;
      call.run();
      EXPECT_NE(calls.arguments["open"].at(0) & O_CLOEXEC, 0) << call.name;
    }
  }
}

TEST(FileAccess, AnInterruptionIsNoEnd) {
  Expect(kText, kReads, {"open", EINTR, 1, 2});
  Expect(kText, kReads, {"read", EINTR, 1, 3});
  Expect(kText, kSaves, {"write", EINTR, 1, 3});
}

TEST(FileAccess, AReadErrorEndsTheContentAsTheEndOfTheFileDoes) {
  Expect(kText.substr(0, 10 * SystemCalls::kPartBytes), kReads, {"read", EIO, 11});
}

TEST(FileAccess, ASaveFailsUnlessTheSystemTakesEveryByte) {
  const std::string failure = "Error saving file \"" + kPath + "\" : file is too big.";
  Expect(failure, kSaves, {"write", ENOSPC});
  Expect(failure, kSaves, {"write", EIO, 5});
  Expect(failure, kSaves, {"write", 0, 4, 2});
  Expect(failure, kSaves, {"close", EIO});
}

TEST(FileAccess, ASaveRunsOnAThreadWithAStackOf32KiB) {
  pthread_attr_t usual, small;
  pthread_getattr_default_np(&usual);
  pthread_attr_init(&small);
  pthread_attr_setstacksize(&small, 32768);
  pthread_setattr_default_np(&small);
  for (const Call& call : kSaves) std::thread(call.run).join();
  pthread_setattr_default_np(&usual);
}

TEST(FileAccessLock, IsSharedWhereAnExclusiveOneTakesAWritableDescriptor) {
  const SystemFault overNfs = {"flock", EBADF, 1, 1, LOCK_EX};
  Expect(LockMessage(EBADF), {kUpdate}, overNfs);
  Expect(kText, {kReadOnly}, overNfs);
  SystemCalls calls(overNfs);
  Reading(kPath, true);
  EXPECT_EQ(calls.arguments["flock"],
            (std::vector<long>{LOCK_EX | LOCK_NB, LOCK_SH | LOCK_NB, LOCK_UN}));
}

TEST(FileAccessLock, OfTheWholeFileServesWhereRangeLocksAreUnknown) {
  for (const int reason : {EINVAL, ENOLCK, ENOTSUP, EOPNOTSUPP}) {
    Expect(kText, kLoads, {"fcntl", reason});
  }
}

TEST(FileAccessLock, RefusedQuotesTheReasonOfTheCallThatFailed) {
  Expect(LockMessage(ENOLCK), kLoads, {"flock", ENOLCK});
  Expect(LockMessage(EBADF), kLoads, {"flock", EBADF});
  Expect(LockMessage(EDEADLK), kLoads, {"fcntl", EDEADLK});
  Expect(LockMessage(ESTALE), kLoads, {"fstat", ESTALE});
}

TEST(FileAccessLock, IsTried101TimesInTenSecondsAndNotInStep) {
  TestFiles::Write(kPath, kText);
  SystemCalls calls({"fcntl", EAGAIN});
  EXPECT_EQ(Reading(kPath, true), LockMessage(EAGAIN));
  EXPECT_EQ(calls.arguments["fstat"].size(), 101u) << "the length may have changed";
  EXPECT_EQ(calls.arguments["flock"].size(), 202u) << "given back each time";
  const std::vector<long>& rests = calls.arguments["nanosleep"];
  EXPECT_EQ(std::accumulate(rests.begin(), rests.end(), 0L), 10000);
  EXPECT_GT(std::set<long>(rests.begin(), rests.end()).size(), 10u);
}

}  // namespace
