// SPDX-License-Identifier: MIT
// What loads and saves ask of the system, and what becomes of a file when a call to it is
// interrupted, refused or does half of its work.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "ConfigException.h"
#include "ConfigFile.h"
#include "CsvDocument.h"
#include "MultiSectionFile.h"
#include "StreamIterator.h"
#include "SystemCallsPosix.h"
#include "TestFiles.h"
#include "TestSystem.h"

namespace {

using Configuration::ConfigFile;
using Configuration::MultiSectionFile;

/// Lines of ten bytes, more than any block holds.
const std::string& Text() {
  static const std::string text = [] {
    std::string lines;
    for (int i = 0; i < 20000; ++i) lines += "key=value\n";
    return lines;
  }();
  return text;
}

template <class File>
std::string Image(File& file) {
  std::string image(Text().size() + 1, '\0');
  return file.SaveToBuffer(image.data(), image.size()) ? image.c_str() : "no image";
}

std::string Load(const std::string& path, bool createIfMissing, bool readOnly) {
  ConfigFile file(path.c_str(), createIfMissing, readOnly, false, "=", "#", nullptr);
  return Image(file);
}

/// Every way to read a file: what was read, byte for byte.
const struct Reader {
  const char* name;
  std::string (*read)(const std::string& path);
} kReaders[] = {
    {"ConfigFile, read only", [](const std::string& path) { return Load(path, false, true); }},
    {"ConfigFile", [](const std::string& path) { return Load(path, false, false); }},
    {"ConfigFile, create if missing",
     [](const std::string& path) { return Load(path, true, false); }},
    {"ConfigFile, reload",
     [](const std::string& path) {
       ConfigFile file(nullptr, false, false, false, "=", "#", nullptr);
       file.AttachToBuffer("", path.c_str());
       file.Reload();
       return Image(file);
     }},
    {"MultiSectionFile",
     [](const std::string& path) {
       MultiSectionFile file(path.c_str(), false, true, false, "section", "\n{", "\n}", "=", "#",
                             nullptr);
       return Image(file);
     }},
    {"CsvDocument",
     [](const std::string& path) {
       std::string all;
       CsvDocument document;
       CsvDocumentRow row;
       if (!document.Load(path.c_str())) return std::string("not loaded");
       while (document.IsCsvRecordPresence()) {
         if (!document.GetRow(row)) break;
         all += row.GetField(0);
         if (all.size() % 10 == 9) all += "\n";  // a whole line
       }
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

void Save(const std::string& path, bool coalesced) {
  ConfigFile file(nullptr, false, false, false, "=", "#", nullptr);
  file.AttachToBuffer(Text().c_str(), path.c_str());
  if (!file.Save(coalesced, nullptr)) throw ConfigException("not saved");
}

/// What `work` gives, or the message of what it throws.
std::string Outcome(const std::function<std::string()>& work) {
  try {
    return work();
  } catch (const std::exception& failure) {
    return failure.what();
  }
}

std::string SaveOutcome(const std::string& path, bool coalesced) {
  return Outcome([&] { return Save(path, coalesced), "saved"; });
}

/// Says so briefly where a long text is not the one expected.
testing::AssertionResult IsText(const std::string& actual, const std::string& expected) {
  if (actual == expected) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << "expected " << expected.size() << " bytes, actual " << actual.size() << " bytes: \""
         << testing::PrintToString(actual.substr(0, 200)) << "\"";
}

class FileAccess : public testing::Test {
 protected:
  FileAccess() { TestFiles::Write(path, Text()); }
  const std::string path = TestFiles::Path("file");
};
class FileAccessLock : public FileAccess {};

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
  EXPECT_EQ(callsOf([&] { Load(path, false, true); }),
            "stat open fstat flock fcntl fcntl read fcntl flock close ");
  for (const bool createIfMissing : {false, true}) {
    EXPECT_EQ(callsOf([&] { Load(path, createIfMissing, false); }),
              "stat open fstat flock fcntl read fcntl flock close ");
  }
  ConfigFile file(path.c_str(), false, true, false, "=", "#", nullptr);
  for (const bool coalesced : {false, true}) {
    EXPECT_EQ(callsOf([&] { file.Save(coalesced, nullptr); }), "open fstat write close ");
  }
}

TEST_F(FileAccess, AnInterruptedReadIsNoEndOfTheFile) {
  for (const Reader& reader : kReaders) {
    SCOPED_TRACE(reader.name);
    int reads = 0;
    const SystemCalls calls([&](SystemCall& call) {
      if (call.name != "read") return call.name == "open" && reads++ == 0 ? EINTR : 0;
      call.bytes = std::min<std::size_t>(call.bytes, 777);
      return ++reads % 3 == 0 ? EINTR : 0;
    });
    EXPECT_TRUE(IsText(reader.read(path), Text()));
  }
}

TEST_F(FileAccess, AReadErrorEndsTheContentAsTheEndOfTheFileDoes) {
  for (const Reader& reader : kReaders) {
    SCOPED_TRACE(reader.name);
    int reads = 0;
    const SystemCalls calls([&](SystemCall& call) {
      if (call.name != "read") return 0;
      call.bytes = std::min<std::size_t>(call.bytes, 1000);
      return ++reads > 3 ? EIO : 0;
    });
    const std::string content = reader.read(path);
    if (reads == 0) continue;  // a C++ library that reads by the C library's streams
    EXPECT_TRUE(IsText(content, Text().substr(0, 3000)));
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
      EXPECT_EQ(SaveOutcome(path, coalesced), "saved");
    }
    EXPECT_GT(writes, 30);
    EXPECT_TRUE(IsText(TestFiles::Read(path), Text()));
  }
}

TEST_F(FileAccess, ASaveFailsUnlessTheSystemTakesEveryByte) {
  constexpr int kNothingTaken = -1;
  static const struct {
    const char* name;
    int time, reason;
  } rows[] = {
      {"write", 1, ENOSPC}, {"write", 2, EIO},           {"write", 5, EDQUOT},
      {"write", 7, EFBIG},  {"write", 1, kNothingTaken}, {"write", 4, kNothingTaken},
      {"close", 1, EIO},    {"close", 1, ENOSPC},
  };
  for (const auto& row : rows) {
    for (const bool coalesced : {false, true}) {
      SCOPED_TRACE(std::string(row.name) + " " + std::to_string(row.time) + ": " +
                   std::strerror(row.reason));
      int time = 0;
      const SystemCalls calls([&](SystemCall& call) {
        call.bytes = std::min<std::size_t>(call.bytes, 20000);
        if (call.name != row.name || ++time != row.time) return 0;
        if (row.reason != kNothingTaken) return row.reason;
        call.bytes = 0;
        return 0;
      });
      EXPECT_EQ(SaveOutcome(path, coalesced),
                "Error saving file \"" + path + "\" : file is too big.");
    }
  }
}

TEST_F(FileAccess, AForkDuringASaveLeavesNothingToWriteTwice) {
  for (const bool coalesced : {false, true}) {
    int children = 0;
    {
      const SystemCalls calls([&](SystemCall& call) {
        if (call.name != "write" && call.name != "close") return 0;
        ++children;
        std::fflush(stdout);  // ours must not come out twice either
        const pid_t child = fork();
        if (child == 0) {
          std::fflush(nullptr);  // as its exit would
          _exit(0);
        }
        waitpid(child, nullptr, 0);
        return 0;
      });
      EXPECT_EQ(SaveOutcome(path, coalesced), "saved");
    }
    EXPECT_GE(children, 2);
    EXPECT_TRUE(IsText(TestFiles::Read(path), Text()));
  }
}

// Open descriptors of the file, and those of them that a program started now would get.
std::string OpenDescriptors(const std::string& path) {
  int open = 0, inherited = 0;
  for (int descriptor = 0; descriptor < 256; ++descriptor) {
    std::error_code error;
    const auto link = "/proc/self/fd/" + std::to_string(descriptor);
    if (std::filesystem::read_symlink(link, error) != path) continue;
    ++open;
    inherited += (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0;
  }
  return std::to_string(open) + " open, " + std::to_string(inherited) + " inherited";
}

TEST_F(FileAccess, NoOpenFileIsInheritedByAProgramStartedMeanwhile) {
  const std::string real = std::filesystem::canonical(path);
  std::set<std::string> seen;
  {
    const SystemCalls calls([&](SystemCall& call) {
      if (call.name == "read" || call.name == "write") seen.insert(OpenDescriptors(real));
      return 0;
    });
    for (const Reader& reader : kReaders) reader.read(path);
    Save(path, true);
    Save(path, false);
  }
  EXPECT_EQ(seen, std::set<std::string>{"1 open, 0 inherited"});
  const FileIterator lines(path.c_str());
  EXPECT_EQ(OpenDescriptors(real), "1 open, 0 inherited");
}

TEST_F(FileAccess, ASaveRunsOnAThreadWithAStackOf32KiB) {
  static std::string outcome;
  const auto run = [this](const char* target, void* (*save)(void*)) {
    ConfigFile file(path.c_str(), false, true, false, "=", "#", nullptr);
    std::pair<ConfigFile*, const char*> arguments(&file, target);
    outcome = "no thread";
    pthread_t thread;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 32768);
    if (pthread_create(&thread, &attributes, save, &arguments) == 0) pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return outcome;
  };
  for (const bool coalesced : {false, true}) {
    static bool how;
    how = coalesced;
    const auto save = [](void* given) -> void* {
      const auto* const with = static_cast<std::pair<ConfigFile*, const char*>*>(given);
      outcome =
          Outcome([&] { return with->first->Save(how, with->second) ? "saved" : "not saved"; });
      return nullptr;
    };
    EXPECT_EQ(run(path.c_str(), save), "saved");
    EXPECT_EQ(run("/dev/full", save), "Error saving file \"/dev/full\" : file is too big.");
  }
}

// --- Locks ------------------------------------------------------------------------------------

/// Reads while the system answers each call as `hook` says. Sleeps take no time.
std::string LoadWith(const std::string& path, bool readOnly, SystemCalls::Hook hook) {
  const SystemCalls calls(std::move(hook));
  return Outcome([&] { return Load(path, false, readOnly); });
}

std::string LockMessage(const std::string& path, int reason) {
  return "Error locking file \"" + path + "\" : " + std::strerror(reason);
}

TEST_F(FileAccessLock, IsSharedWhereAnExclusiveOneTakesAWritableDescriptor) {
  bool readOnly = true;
  const SystemCalls::Hook asOverNfs = [&](SystemCall& call) {
    return call.name == "flock" && (call.argument & LOCK_EX) != 0 ? EBADF : 0;
  };
  EXPECT_TRUE(IsText(LoadWith(path, readOnly, asOverNfs), Text()));
  const int foreign = open(path.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(foreign, LOCK_EX), 0);
  EXPECT_EQ(LoadWith(path, readOnly, asOverNfs), LockMessage(path, EAGAIN));
  close(foreign);
  // Where the descriptor is writable nothing but an exclusive one will do.
  readOnly = false;
  EXPECT_EQ(LoadWith(path, readOnly, asOverNfs), LockMessage(path, EBADF));
}

TEST_F(FileAccessLock, OfTheWholeFileServesWhereRangeLocksAreUnknown) {
  for (const int reason : {EINVAL, ENOLCK, ENOTSUP, EOPNOTSUPP}) {
    for (const bool readOnly : {false, true}) {
      SCOPED_TRACE(std::string(std::strerror(reason)) + (readOnly ? ", read only" : ""));
      const SystemCalls::Hook unknown = [&](SystemCall& call) {
        EXPECT_NE(call.name, "nanosleep");
        return call.name == "fcntl" ? reason : 0;
      };
      EXPECT_TRUE(IsText(LoadWith(path, readOnly, unknown), Text()));
    }
  }
}

TEST_F(FileAccessLock, RefusedQuotesTheReasonOfTheCallThatFailed) {
  static const struct {
    const char* name;
    int reason;
  } rows[] = {
      {"flock", ENOLCK}, {"flock", EIO}, {"fcntl", EDEADLK}, {"fcntl", EIO}, {"fstat", ESTALE}};
  for (const auto& row : rows) {
    for (const bool readOnly : {false, true}) {
      SCOPED_TRACE(row.name);
      const auto refuse = [&](SystemCall& call) { return call.name == row.name ? row.reason : 0; };
      EXPECT_EQ(LoadWith(path, readOnly, refuse), LockMessage(path, row.reason));
    }
  }
}

TEST_F(FileAccessLock, IsTried101TimesInTenSecondsAndNotInStep) {
  std::vector<std::vector<long>> waits(2);
  for (std::vector<long>& rests : waits) {
    int tries = 0;
    EXPECT_EQ(LoadWith(path, true,
                       [&](SystemCall& call) {
                         if (call.name == "nanosleep") rests.push_back(call.argument);
                         if (call.name != "flock") return 0;
                         ++tries;
                         return EAGAIN;
                       }),
              LockMessage(path, EAGAIN));
    EXPECT_EQ(tries, 101);
    EXPECT_EQ(rests.size(), 100u);
    EXPECT_EQ(std::accumulate(rests.begin(), rests.end(), 0L), 10000);
  }
  EXPECT_NE(waits[0], waits[1]);
}

TEST_F(FileAccessLock, IsGivenBackAlthoughAForkedChildHasTheDescriptor) {
  for (const bool readOnly : {false, true}) {
    pid_t child = 0;
    LoadWith(path, readOnly, [&](SystemCall& call) {
      if (call.name == "read" && child == 0) {
        child = fork();
        while (child == 0) pause();
      }
      return 0;
    });
    for (const TestSystem::TakeLock take : TestSystem::ForeignLocks()) {
      EXPECT_TRUE(take(path.c_str()));
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
  }
}

// --- Each call in turn ------------------------------------------------------------------------

bool IsRefusal(const std::string& outcome) {
  return outcome.compare(0, 6, "Error ") == 0 || outcome.compare(0, 5, "Path ") == 0 ||
         outcome == "not loaded" || outcome == std::exception().what();
}

/// Lets each system call of `work` fail once, for each of many reasons. What comes of it is whole,
/// as `isWhole` tells, or refused, or the bytes before a read that failed. Gives the first run
/// that is none of these, and prints how often each came up.
std::string LostInSilence(const char* name, const std::function<std::string()>& work,
                          const std::function<bool(const std::string&)>& isWhole) {
  static const int reasons[] = {EINTR,  EIO,    ENOSPC, EDQUOT, EBADF,   EINVAL,   ENOLCK,
                                EAGAIN, EACCES, ENOMEM, EFBIG,  ESTALE,  EPERM,    ENXIO,
                                ENOENT, EROFS,  EISDIR, ENOSYS, EDEADLK, EOVERFLOW};
  int runs = 0, whole = 0, refused = 0, ended = 0;
  std::string lost;
  for (const int reason : reasons) {
    for (int time = 1, calls = 1; calls > 0; ++time) {
      const int filesBefore = TestSystem::OpenFiles();
      std::string failed, outcome;
      calls = 0;
      {
        const SystemCalls shown([&](SystemCall& call) {
          if (++calls != time) return 0;
          failed = call.name;
          return reason;
        });
        outcome = Outcome(work);
      }
      if (failed.empty()) break;
      ++runs;
      const bool leaks = TestSystem::OpenFiles() != filesBefore;
      if (isWhole(outcome)) {
        ++whole;
      } else if (IsRefusal(outcome)) {
        ++refused;
      } else if (failed == "read" && reason != EINTR &&
                 Text().compare(0, outcome.size(), outcome) == 0) {
        ++ended;
      } else if (lost.empty()) {
        lost = "gives " + testing::PrintToString(outcome.substr(0, 100));
      }
      if (leaks && lost.empty()) lost = "leaves a file open";
      if (!lost.empty()) {
        return "call " + std::to_string(time) + ", " + failed + ", failing with \"" +
               std::strerror(reason) + "\", " + lost;
      }
    }
  }
  std::cout << name << ": " << runs << " runs, " << whole << " whole, " << refused << " refused, "
            << ended << " ended by the read that failed\n";
  return runs > 0 ? "" : "no call was seen";
}

TEST_F(FileAccess, NoCallThatFailsOnceLosesBytesInSilence) {
  const auto isText = [](const std::string& outcome) { return outcome == Text(); };
  for (const Reader& reader : kReaders) {
    testing::internal::CaptureStderr();  // what a document says of a file that does not open
    EXPECT_EQ(LostInSilence(
                  reader.name, [&] { return reader.read(path); }, isText),
              "")
        << reader.name;
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(IsText(TestFiles::Read(path), Text())) << reader.name << " changed the file";
  }
  for (const bool coalesced : {false, true}) {
    const char* const name = coalesced ? "Save in one call" : "Save in blocks";
    const auto save = [&] {
      std::filesystem::remove(path);  // some file systems wait for the disk to truncate a file
      return SaveOutcome(path, coalesced);
    };
    const auto isSaved = [&](const std::string& outcome) {
      return outcome == "saved" && TestFiles::Read(path) == Text();
    };
    EXPECT_EQ(LostInSilence(name, save, isSaved), "") << name;
  }
}

}  // namespace
