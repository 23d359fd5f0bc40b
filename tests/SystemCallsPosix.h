// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_SYSTEM_CALLS_POSIX_H
#define ZELCONFUTILS_TESTS_SYSTEM_CALLS_POSIX_H

#include <cstddef>
#include <functional>
#include <string>

/// A call to the system on its way there.
struct SystemCall {
  std::string name;   ///< "open", "flock", ...
  long argument;      ///< open: flags; flock: operation; nanosleep: milliseconds
  std::size_t bytes;  ///< read, write: asked for; a hook may make it fewer
};

/// Shows the calls of this thread to `hook` while it lives: stat, open, fstat, flock, fcntl, read,
/// write, close and nanosleep, those of the library and of the C++ library, not what the C library
/// calls within itself. A call fails with the reason that `hook` returns (a close closes all the
/// same), or goes to the system for 0. Sleeps take no time.
class SystemCalls {
 public:
  using Hook = std::function<int(SystemCall&)>;
  explicit SystemCalls(Hook hook);
  ~SystemCalls();
  SystemCalls(const SystemCalls&) = delete;
  SystemCalls& operator=(const SystemCalls&) = delete;

 private:
  Hook hook_;
};

#endif
