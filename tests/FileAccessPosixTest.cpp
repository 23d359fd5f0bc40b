// SPDX-License-Identifier: MIT
// What loads and saves ask of the system, and what becomes of a file when a call to it is
// interrupted, refused or does half of its work.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <iterator>
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
    {"ConfigFile, create if missing",
     [](const std::string& path) { return FlatFile(kFlatTokens, path.c_str(), true).Image(); }},
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
  const auto callsOf = [](const std::function<void()>& work) {
    std::string names;
    const SystemCalls calls([&](SystemCall& call) {
      names += call.name + " ";
      return 0;
    });
    work();
    return names;
  };
  TestFiles::Write(path, "key=value\n");
  EXPECT_EQ(callsOf([&] { Reading(path, true); }),
            "stat open fstat flock fcntl fcntl read fcntl flock close ");
  EXPECT_EQ(callsOf([&] { Reading(path, false); }),
            "stat open fstat flock fcntl read fcntl flock close ");
  FlatFile file(kFlatTokens, path.c_str());
  for (const bool coalesced : {false, true}) {
    EXPECT_EQ(callsOf([&] { file.Save(coalesced, nullptr); }), "open fstat write close ");
  }
}

TEST_F(FileAccess, NoOpenFileIsInheritedByAProgramStartedMeanwhile) {
  std::size_t opened = 0;
  const SystemCalls calls([&](SystemCall& call) {
    if (call.name != "open") return 0;
    ++opened;
    EXPECT_NE(call.argument & O_CLOEXEC, 0);
    return 0;
  });
  for (const Reader& reader : kReaders) reader.read(path);
  Saving(path, false, "");
  EXPECT_EQ(opened, std::size(kReaders) + 1);
}

TEST_F(FileAccess, AnInterruptedReadIsNoEndOfTheFile) {
  for (const Reader& reader : kReaders) {
    SCOPED_TRACE(reader.name);
    int opens = 0, reads = 0;
    const SystemCalls calls([&](SystemCall& call) {
      if (call.name == "open") return opens++ == 0 ? EINTR : 0;
      if (call.name != "read") return 0;
      call.bytes = std::min<std::size_t>(call.bytes, 700);
      return ++reads % 3 == 0 ? EINTR : 0;
    });
    EXPECT_EQ(Quoted(reader.read(path)), Quoted(text));
  }
}

TEST_F(FileAccess, AReadErrorEndsTheContentAsTheEndOfTheFileDoes) {
  for (const Reader& reader : kReaders) {
    SCOPED_TRACE(reader.name);
    int reads = 0;
    const SystemCalls calls([&](SystemCall& call) {
      if (call.name != "read") return 0;
      call.bytes = std::min<std::size_t>(call.bytes, 700);
      return ++reads > 10 ? EIO : 0;
    });
    const std::string content = reader.read(path);
    if (reads == 0) continue;  // a C++ library that reads by the C library's streams
    EXPECT_EQ(Quoted(content), Quoted(text.substr(0, 7000)));
  }
}

TEST_F(FileAccess, ASaveThatIsInterruptedAndTakenInPartsIsWhole) {
  for (const bool coalesced : {false, true}) {
    int writes = 0;
    {
      const SystemCalls calls([&](SystemCall& call) {
        if (call.name != "write") return 0;
        call.bytes = std::min<std::size_t>(call.bytes, 4097);
        return ++writes % 3 == 0 ? EINTR : 0;
      });
      EXPECT_EQ(Saving(path, coalesced, text.c_str()), "true");
    }
    EXPECT_GT(writes, 30);
    EXPECT_EQ(Quoted(TestFiles::Read(path)), Quoted(text));
  }
}

TEST_F(FileAccess, ASaveFailsUnlessTheSystemTakesEveryByte) {
  constexpr int kNothingTaken = -1;
  static const struct {
    const char* name;
    int time, reason;
  } rows[] = {
      {"write", 1, ENOSPC}, {"write", 5, EIO}, {"write", 4, kNothingTaken}, {"close", 1, EIO}};
  for (const auto& row : rows) {
    for (const bool coalesced : {false, true}) {
      SCOPED_TRACE(row.name + (" " + std::to_string(row.time)) + (coalesced ? ", coalesced" : ""));
      int time = 0;
      const SystemCalls calls([&](SystemCall& call) {
        call.bytes = std::min<std::size_t>(call.bytes, 20000);
        if (call.name != row.name || ++time != row.time) return 0;
        if (row.reason != kNothingTaken) return row.reason;
        call.bytes = 0;
        return 0;
      });
      EXPECT_EQ(Saving(path, coalesced, text.c_str()),
                "Error saving file \"" + path + "\" : file is too big.");
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
    std::string said;
    const auto save = [&](const char* target) {
      said += Outcome([&] { return file.Save(coalesced, target); }) + "\n";
    };
    std::thread(save, path.c_str()).join();
    std::thread(save, "/dev/full").join();
    EXPECT_EQ(said, "true\nError saving file \"/dev/full\" : file is too big.\n");
  }
  pthread_setattr_default_np(&usual);
}

TEST_F(FileAccessLock, IsSharedWhereAnExclusiveOneTakesAWritableDescriptor) {
  bool isShared = false;
  const SystemCalls asOverNfs([&](SystemCall& call) {
    if (call.name != "flock") return 0;
    if (call.argument == (LOCK_SH | LOCK_NB)) isShared = true;
    return (call.argument & LOCK_EX) != 0 ? EBADF : 0;
  });
  EXPECT_EQ(Reading(path, false), LockMessage(EBADF));
  EXPECT_FALSE(isShared);
  EXPECT_EQ(Quoted(Reading(path, true)), Quoted(text));
  EXPECT_TRUE(isShared);
}

TEST_F(FileAccessLock, OfTheWholeFileServesWhereRangeLocksAreUnknown) {
  for (const int reason : {EINVAL, ENOLCK, ENOTSUP, EOPNOTSUPP}) {
    for (const bool readOnly : {false, true}) {
      SCOPED_TRACE(std::string(std::strerror(reason)) + (readOnly ? ", read only" : ""));
      const SystemCalls calls([&](SystemCall& call) { return call.name == "fcntl" ? reason : 0; });
      EXPECT_EQ(Quoted(Reading(path, readOnly)), Quoted(text));
    }
  }
}

TEST_F(FileAccessLock, RefusedQuotesTheReasonOfTheCallThatFailed) {
  static const struct {
    const char* name;
    int reason;
  } rows[] = {{"flock", ENOLCK}, {"flock", EBADF}, {"fcntl", EDEADLK}, {"fstat", ESTALE}};
  for (const auto& row : rows) {
    for (const bool readOnly : {false, true}) {
      SCOPED_TRACE(std::string(row.name) + (readOnly ? ", read only" : ""));
      const SystemCalls calls(
          [&](SystemCall& call) { return call.name == row.name ? row.reason : 0; });
      EXPECT_EQ(Reading(path, readOnly), LockMessage(row.reason));
    }
  }
}

TEST_F(FileAccessLock, IsTried101TimesInTenSecondsAndNotInStep) {
  int tries = 0;
  std::vector<long> rests;
  const SystemCalls calls([&](SystemCall& call) {
    if (call.name == "nanosleep") rests.push_back(call.argument);
    if (call.name != "flock") return 0;
    ++tries;
    return EAGAIN;
  });
  EXPECT_EQ(Reading(path, true), LockMessage(EAGAIN));
  EXPECT_EQ(tries, 101);
  EXPECT_EQ(rests.size(), 100u);
  EXPECT_EQ(std::accumulate(rests.begin(), rests.end(), 0L), 10000);
  EXPECT_GT(std::set<long>(rests.begin(), rests.end()).size(), 10u);
}

}  // namespace
