// SPDX-License-Identifier: MIT
// Functions of the C library defined anew: a program's own come first, for the libraries that it
// uses as well. Those that have offsets in them are the ones for 64 bits, as all that is tested.
#undef _FORTIFY_SOURCE
#include "SystemCallsPosix.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>

namespace {

thread_local SystemCalls* noted = nullptr;

/// The C library's function of that name and type.
template <class Function>
Function* Real(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Notes a call. Where it fails, the reason is in `errno`.
bool IsRefused(const char* name, long argument, std::size_t* bytes = nullptr) {
  if (noted == nullptr) return false;
  const SystemFault& fault = noted->fault;
  std::vector<long>& same = noted->arguments[name];
  same.push_back(argument);
  noted->names += name + std::string(" ");
  const bool fails = name == fault.name && same.size() >= fault.first &&
                     (same.size() - fault.first) % fault.every == 0 &&
                     (argument & fault.flag) == fault.flag;
  if (bytes != nullptr) *bytes = fails ? 0 : std::min(*bytes, SystemCalls::kPartBytes);
  if (fails && fault.reason != 0) errno = fault.reason;
  return fails && fault.reason != 0;
}

}  // namespace

SystemCalls::SystemCalls(const SystemFault& toMeet) : fault(toMeet) { noted = this; }
SystemCalls::~SystemCalls() { noted = nullptr; }

extern "C" {

int stat(const char* path, struct stat* status) noexcept {
  return IsRefused("stat", 0) ? -1 : Real(&stat, "stat64")(path, status);
}

int fstat(int descriptor, struct stat* status) noexcept {
  return IsRefused("fstat", 0) ? -1 : Real(&fstat, "fstat64")(descriptor, status);
}

int open(const char* path, int flags, ...) {
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return IsRefused("open", flags) ? -1 : Real(&open, "open64")(path, flags, mode);
}

int flock(int descriptor, int operation) noexcept {
  return IsRefused("flock", operation) ? -1 : Real(&flock, "flock")(descriptor, operation);
}

int fcntl(int descriptor, int command, ...) {
  std::va_list rest;
  va_start(rest, command);
  void* const argument = va_arg(rest, void*);  // an int is passed alike
  va_end(rest);
  return IsRefused("fcntl", 0) ? -1 : Real(&fcntl, "fcntl64")(descriptor, command, argument);
}

ssize_t read(int descriptor, void* buffer, size_t bytes) {
  return IsRefused("read", 0, &bytes) ? -1 : Real(&read, "read")(descriptor, buffer, bytes);
}

ssize_t write(int descriptor, const void* buffer, size_t bytes) {
  return IsRefused("write", 0, &bytes) ? -1 : Real(&write, "write")(descriptor, buffer, bytes);
}

int close(int descriptor) {
  const int result = Real(&close, "close")(descriptor);
  return IsRefused("close", 0) ? -1 : result;
}

int nanosleep(const timespec* duration, timespec* left) {
  if (noted == nullptr) return Real(&nanosleep, "nanosleep")(duration, left);
  return IsRefused("nanosleep", duration->tv_sec * 1000 + duration->tv_nsec / 1000000) ? -1 : 0;
}

}  // extern "C"
