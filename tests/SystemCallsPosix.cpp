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

/// The C library's function of that name and type.
template <class Function>
Function* Real(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool Refused(const char* name, int descriptor, long argument = 0) {
  if (shown == nullptr) return false;
  SystemCall call = {name, descriptor, argument, 0};
  return SystemCalls::Show(call) != 0;
}

}  // namespace

SystemCalls::SystemCalls(Hook hook) : hook_(std::move(hook)) { shown = &hook_; }
SystemCalls::~SystemCalls() { shown = nullptr; }

int SystemCalls::Show(SystemCall& call) {
  if (shown == nullptr) return 0;
  Hook* const hook = std::exchange(shown, nullptr);  // its own calls are not shown
  const int before = errno;
  const int reason = (*hook)(call);
  shown = hook;
  errno = reason != 0 ? reason : before;
  return reason != 0 ? -1 : 0;
}

extern "C" {

int stat(const char* path, struct stat* status) noexcept {
  static const auto real = Real(&stat, "stat");
  return Refused("stat", -1) ? -1 : real(path, status);
}

int fstat(int descriptor, struct stat* status) noexcept {
  static const auto real = Real(&fstat, "fstat");
  return Refused("fstat", descriptor) ? -1 : real(descriptor, status);
}

int open(const char* path, int flags, ...) {
  static const auto real = Real(&open, "open");
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return Refused("open", -1, flags) ? -1 : real(path, flags, mode);
}

int flock(int descriptor, int operation) noexcept {
  static const auto real = Real(&flock, "flock");
  return Refused("flock", descriptor, operation) ? -1 : real(descriptor, operation);
}

int fcntl(int descriptor, int command, ...) {
  static const auto real = Real(&fcntl, "fcntl");
  std::va_list rest;
  va_start(rest, command);
  void* const argument = va_arg(rest, void*);  // an int is passed alike
  va_end(rest);
  return Refused("fcntl", descriptor, command) ? -1 : real(descriptor, command, argument);
}

off_t lseek(int descriptor, off_t offset, int whence) noexcept {
  static const auto real = Real(&lseek, "lseek");
  return Refused("lseek", descriptor) ? -1 : real(descriptor, offset, whence);
}

ssize_t read(int descriptor, void* buffer, size_t bytes) {
  static const auto real = Real(&read, "read");
  SystemCall call = {"read", descriptor, 0, bytes};
  return SystemCalls::Show(call) != 0 ? -1 : real(descriptor, buffer, call.bytes);
}

ssize_t write(int descriptor, const void* buffer, size_t bytes) {
  static const auto real = Real(&write, "write");
  SystemCall call = {"write", descriptor, 0, bytes};
  return SystemCalls::Show(call) != 0 ? -1 : real(descriptor, buffer, call.bytes);
}

int close(int descriptor) {
  static const auto real = Real(&close, "close");
  const bool refused = Refused("close", descriptor);
  const int reason = errno;
  const int result = real(descriptor);
  if (refused) errno = reason;
  return refused ? -1 : result;
}

int nanosleep(const timespec* duration, timespec* left) {
  static const auto real = Real(&nanosleep, "nanosleep");
  if (shown == nullptr) return real(duration, left);
  return Refused("nanosleep", -1, duration->tv_sec * 1000 + duration->tv_nsec / 1000000) ? -1 : 0;
}

}  // extern "C"
