// SPDX-License-Identifier: MIT
#include "TestSystem.h"

#define WIN32_LEAN_AND_MEAN
#include <fcntl.h>
#include <io.h>
#include <sys/locking.h>
#include <windows.h>

#include <cerrno>

namespace TestSystem {

const int kDirectoryError = EACCES, kLongNameError = ENOENT, kLockedError = EACCES;

const bool kHasTextMode = true, kHasDrives = true;

int OpenFiles() {
  int count = 0;
  for (int descriptor = 0; descriptor < 512; ++descriptor) count += _get_osfhandle(descriptor) >= 0;
  return count;
}

// Another program that shares nothing, or no writing.
Refusal::Refusal(const std::string& path, bool forReadingToo)
    : file_(CreateFileA(path.c_str(), GENERIC_READ, forReadingToo ? 0 : FILE_SHARE_READ, nullptr,
                        OPEN_EXISTING, 0, nullptr)) {}

Refusal::~Refusal() { CloseHandle(file_); }

const std::vector<ForeignLock>& ForeignLocks() {
  static const std::vector<ForeignLock> locks = {
      {"_locking",
       [](const char* path) {
         const int file = _open(path, _O_RDWR | _O_BINARY);
         return _locking(file, _LK_NBLCK, _filelength(file)) == 0 || _filelength(file) == 0;
       }},
      {"LockFile, the last byte",
       [](const char* path) {
         HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                   OPEN_EXISTING, 0, nullptr);
         const DWORD size = GetFileSize(file, nullptr);
         return size == 0 || LockFile(file, size - 1, 0, 1, 0) != 0;
       }},
  };
  return locks;
}

Process::Process(const std::vector<std::string>& arguments) {
  char program[MAX_PATH];
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  std::string line = "test";
  for (const std::string& argument : arguments) line += " \"" + argument + "\"";
  STARTUPINFOA start = {};
  start.cb = sizeof start;
  PROCESS_INFORMATION made = {};
  if (CreateProcessA(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                     &made)) {
    CloseHandle(made.hThread);
    process_ = made.hProcess;
  }
}

Process::~Process() {
  Kill();
  Succeeds();
}

bool Process::Succeeds() {
  if (process_ == nullptr) return false;
  DWORD code = 1;
  WaitForSingleObject(process_, INFINITE);
  GetExitCodeProcess(process_, &code);
  CloseHandle(process_);
  process_ = nullptr;
  return code == 0;
}

void Process::Kill() {
  if (process_ != nullptr) TerminateProcess(process_, 1);
}

}  // namespace TestSystem
