// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_SYSTEM_CALLS_POSIX_H
#define ZELCONFUTILS_TESTS_SYSTEM_CALLS_POSIX_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// Which calls of one name fail: from the first given on each so many. A read or a write that fails
/// for no reason says that it did nothing.
struct SystemFault {
  std::string name = "";
  int reason = 0;
  std::size_t first = 1, every = 1;
  long flag = 0;  ///< that the argument has, for the call to fail
};

/// Notes the calls of this thread while it lives: stat, open, fstat, flock, fcntl, read, write,
/// close and nanosleep, those of the library and of the C++ library, not what the C library calls
/// within itself. They go to the system unless they fail (a close closes all the same); reads and
/// writes do a part of what they are asked to. Sleeps take no time.
struct SystemCalls {
  static constexpr std::size_t kPartBytes = 4100;

  explicit SystemCalls(const SystemFault& toMeet = {});
  SystemCalls(const SystemCalls&) = delete;
  ~SystemCalls();

  const SystemFault fault;
  std::string names;  ///< "stat open "
  /// By name. Of open its flags, of flock the operation, of nanosleep the milliseconds.
  std::map<std::string, std::vector<long>> arguments;
};

#endif
