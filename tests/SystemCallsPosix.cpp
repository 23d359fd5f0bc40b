// SPDX-License-Identifier: MIT
// Functions of the C library defined anew: a program's own come first, for the libraries that it
// uses as well.
#undef _FORTIFY_SOURCE
#include "SystemCallsPosix.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <utility>

namespace {

thread_local SystemCalls::Hook* shown = nullptr;

/// The C library's function of that name and type. A function that has offsets in it may have a
/// name of its own for those of 64 bits, and on a 32-bit system another layout: that one comes
/// first.
template <class Function>
Function* Real(Function*, const char* name, const char* nameFor64 = nullptr) {
  void* found = nameFor64 != nullptr ? dlsym(RTLD_NEXT, nameFor64) : nullptr;
  if (found == nullptr) found = dlsym(RTLD_NEXT, name);
  return reinterpret_cast<Function*>(found);
}

/// Lets the hook decide on a call. Where it refuses, its reason is in `errno`.
bool IsRefused(SystemCall&& call, std::size_t* bytes = nullptr) {
  if (shown == nullptr) return false;
  SystemCalls::Hook* const hook = std::exchange(shown, nullptr);  // its own calls are not shown
  const int before = errno;
  const int reason = (*hook)(call);
  shown = hook;
  errno = reason != 0 ? reason : before;
  if (bytes != nullptr) *bytes = call.bytes;
  return reason != 0;
}

}  // namespace

SystemCalls::SystemCalls(Hook hook) : hook_(std::move(hook)) { shown = &hook_; }
SystemCalls::~SystemCalls() { shown = nullptr; }

extern "C" {

int stat(const char* path, struct stat* status) noexcept {
  static const auto real = Real(&stat, "stat", "stat64");
  return IsRefused({"stat", 0, 0}) ? -1 : real(path, status);
}

int fstat(int descriptor, struct stat* status) noexcept {
  static const auto real = Real(&fstat, "fstat", "fstat64");
  return IsRefused({"fstat", 0, 0}) ? -1 : real(descriptor, status);
}

int open(const char* path, int flags, ...) {
  static const auto real = Real(&open, "open", "open64");
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return IsRefused({"open", flags, 0}) ? -1 : real(path, flags, mode);
}

int flock(int descriptor, int operation) noexcept {
  static const auto real = Real(&flock, "flock");
  return IsRefused({"flock", operation, 0}) ? -1 : real(descriptor, operation);
}

int fcntl(int descriptor, int command, ...) {
  static const auto real = Real(&fcntl, "fcntl", "fcntl64");
  std::va_list rest;
  va_start(rest, command);
  void* const argument = va_arg(rest, void*);  // an int is passed alike
  va_end(rest);
  return IsRefused({"fcntl", 0, 0}) ? -1 : real(descriptor, command, argument);
}

ssize_t read(int descriptor, void* buffer, size_t bytes) {
  static const auto real = Real(&read, "read");
  return IsRefused({"read", 0, bytes}, &bytes) ? -1 : real(descriptor, buffer, bytes);
}

ssize_t write(int descriptor, const void* buffer, size_t bytes) {
  static const auto real = Real(&write, "write");
  return IsRefused({"write", 0, bytes}, &bytes) ? -1 : real(descriptor, buffer, bytes);
}

int close(int descriptor) {
  static const auto real = Real(&close, "close");
  const bool refused = IsRefused({"close", 0, 0});
  const int reason = errno;
  const int result = real(descriptor);
  if (refused) errno = reason;
  return refused ? -1 : result;
}

int nanosleep(const timespec* duration, timespec* left) {
  static const auto real = Real(&nanosleep, "nanosleep");
  if (shown == nullptr) return real(duration, left);
  return IsRefused({"nanosleep", duration->tv_sec * 1000 + duration->tv_nsec / 1000000, 0}) ? -1
                                                                                            : 0;
}

}  // extern "C"
