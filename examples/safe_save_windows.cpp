// SPDX-License-Identifier: MIT
// A save that survives a crash, a kill and a full disk: the side of Windows. The new bytes go to a
// sibling file and to the disk; then the sibling takes the old file's name in one step.
#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "safe_save.h"

namespace {

// A reader that has the file open keeps others from replacing it: about a second of patience.
constexpr int kReplaceTries = 20;
constexpr DWORD kReplacePauseMilliseconds = 50;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

[[noreturn]] void Fail(const std::string& what, DWORD reason = ::GetLastError()) {
  throw std::system_error(static_cast<int>(reason), std::system_category(), what);
}
void Check(bool good, const std::string& what) {
  if (!good) Fail(what);
}

struct Handle {
  HANDLE handle;
  explicit Handle(HANDLE opened) : handle(opened) {}
  Handle(const Handle&) = delete;
  ~Handle() { Close(); }
  bool IsOpen() const { return handle != INVALID_HANDLE_VALUE; }
  bool Close() {
    const HANDLE closed = std::exchange(handle, INVALID_HANDLE_VALUE);
    return closed == INVALID_HANDLE_VALUE || ::CloseHandle(closed) != 0;
  }
};

// Opens a file or folder to ask about it, not for its bytes.
HANDLE OpenToAsk(const std::string& path) {
  return ::CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                       FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

// A new, empty file beside the target that nobody else can open. It goes with this object.
struct Sibling {
  std::string name;
  Handle file{INVALID_HANDLE_VALUE};

  explicit Sibling(const std::string& target) {
    std::random_device random;
    do {
      std::string unique(6, ' ');
      for (char& letter : unique) letter = "abcdefghijklmnopqrstuvwxyz0123456789"[random() % 36];
      name = (FolderOf(target) / ("." + std::filesystem::path(target).filename().string() + "." +
                                  unique + kSiblingSuffix))
                 .string();
      file.handle = ::CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
    } while (!file.IsOpen() && ::GetLastError() == ERROR_FILE_EXISTS);
    Check(file.IsOpen(), name);
  }
  ~Sibling() {
    file.Close();
    if (!name.empty()) ::DeleteFileA(name.c_str());
  }

  void TakeName(const std::string& target) {
    for (int left = kReplaceTries;; --left) {
      if (::MoveFileExA(name.c_str(), target.c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0) {
        name.clear();
        return;
      }
      const DWORD reason = ::GetLastError();
      const bool inUse = reason == ERROR_SHARING_VIOLATION || reason == ERROR_ACCESS_DENIED;
      if (!inUse || left == 0) Fail(target, reason);
      ::Sleep(kReplacePauseMilliseconds);
    }
  }
};

void WriteAll(HANDLE file, const std::string& bytes, const std::string& name) {
  constexpr size_t kMostBytes = 1 << 24;
  for (size_t done = 0; done < bytes.size();) {
    const auto wanted = static_cast<DWORD>(std::min(bytes.size() - done, kMostBytes));
    DWORD written = 0;
    Check(::WriteFile(file, bytes.data() + done, wanted, &written, nullptr) != 0, name);
    if (written == 0) Fail(name, ERROR_DISK_FULL);
    done += written;
  }
}

// Owner or access control list of a file, as the system's own record of them.
std::vector<char> Security(const std::string& file, SECURITY_INFORMATION part) {
  DWORD size = 0;
  ::GetFileSecurityA(file.c_str(), part, nullptr, 0, &size);
  std::vector<char> record(size);
  Check(::GetFileSecurityA(file.c_str(), part, record.data(), size, &size) != 0, file);
  return record;
}

PSID OwnerIn(std::vector<char>& record) {
  PSID owner = nullptr;
  BOOL defaulted = FALSE;
  ::GetSecurityDescriptorOwner(record.data(), &owner, &defaulted);
  return owner;
}

bool HasFurtherStreams(const std::string& file) {
  std::wstring wide(file.size(), L'\0');
  const int length = ::MultiByteToWideChar(CP_ACP, 0, file.data(), static_cast<int>(file.size()),
                                           wide.data(), static_cast<int>(wide.size()));
  wide.resize(static_cast<size_t>(std::max(length, 0)));
  WIN32_FIND_STREAM_DATA stream;
  const HANDLE search = ::FindFirstStreamW(wide.c_str(), FindStreamInfoStandard, &stream, 0);
  if (search == INVALID_HANDLE_VALUE) return false;  // a file system without streams
  const bool further = ::FindNextStreamW(search, &stream) != 0;
  ::FindClose(search);
  return further;
}

// Throws for what cannot be replaced. Returns the file's attributes, or INVALID_FILE_ATTRIBUTES
// where there is no such file.
DWORD AttributesToKeep(const std::string& target) {
  const Handle file(OpenToAsk(target));
  if (!file.IsOpen()) {
    if (::GetLastError() != ERROR_FILE_NOT_FOUND) Fail(target);
    return INVALID_FILE_ATTRIBUTES;
  }
  BY_HANDLE_FILE_INFORMATION about;
  if (::GetFileType(file.handle) != FILE_TYPE_DISK ||
      ::GetFileInformationByHandle(file.handle, &about) == 0 ||
      (about.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    throw Refused(target + ": not a regular file");
  }
  if (about.nNumberOfLinks > 1) {
    throw Refused(target + ": it has " + std::to_string(about.nNumberOfLinks) +
                  " names (hard links), and only one of them would get the new bytes");
  }
  if ((about.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0) Fail(target, ERROR_ACCESS_DENIED);
  if ((about.dwFileAttributes & FILE_ATTRIBUTE_ENCRYPTED) != 0 || HasFurtherStreams(target))
    throw Refused(target + ": it is encrypted or has further data streams, which would be lost");
  return about.dwFileAttributes;
}

void TakeAttributes(const std::string& target, DWORD attributes, const std::string& to) {
  std::vector<char> owner = Security(target, OWNER_SECURITY_INFORMATION);
  std::vector<char> now = Security(to, OWNER_SECURITY_INFORMATION);
  if (!::EqualSid(OwnerIn(owner), OwnerIn(now))) {
    Check(::SetFileSecurityA(to.c_str(), OWNER_SECURITY_INFORMATION, owner.data()) != 0,
          target + ": its owner");
  }
  std::vector<char> list = Security(target, DACL_SECURITY_INFORMATION);
  Check(::SetFileSecurityA(to.c_str(), DACL_SECURITY_INFORMATION, list.data()) != 0,
        target + ": its access control list");
  Check(::SetFileAttributesA(to.c_str(), attributes) != 0, target + ": its attributes");
}

}  // namespace

std::string ResolvedPath(const std::string& path) {
  const Handle file(OpenToAsk(path));
  if (!file.IsOpen()) {
    const DWORD reason = ::GetLastError();
    const bool linkToNowhere = ::GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    if (reason != ERROR_FILE_NOT_FOUND || linkToNowhere) Fail(path, reason);
    return path;
  }
  std::string resolved(32768, '\0');  // the longest path that the system knows
  const DWORD length = ::GetFinalPathNameByHandleA(file.handle, resolved.data(),
                                                   static_cast<DWORD>(resolved.size()), 0);
  if (length == 0 || length >= resolved.size()) Fail(path);
  resolved.resize(length);
  return resolved;
}

void SafeSave(const std::string& path, const std::string& image) {
  const std::string target = ResolvedPath(path);
  const DWORD attributes = AttributesToKeep(target);
  Sibling sibling(target);
  WriteAll(sibling.file.handle, image, sibling.name);
  Check(::FlushFileBuffers(sibling.file.handle) != 0, sibling.name);
  Check(sibling.file.Close(), sibling.name);
  if (attributes != INVALID_FILE_ATTRIBUTES) TakeAttributes(target, attributes, sibling.name);
  sibling.TakeName(target);
}

CompanionLock::CompanionLock(const std::string& path) : handle_(0) {
  const std::string target = ResolvedPath(path);
  const std::string companion = target + ".lock";
  std::vector<char> list = Security(target, DACL_SECURITY_INFORMATION);
  SECURITY_ATTRIBUTES asTheFile{sizeof asTheFile, list.data(), FALSE};
  Handle file(::CreateFileA(companion.c_str(), GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, &asTheFile, OPEN_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
  OVERLAPPED first{};
  Check(file.IsOpen() && ::LockFileEx(file.handle, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &first) != 0,
        companion);
  handle_ = reinterpret_cast<std::intptr_t>(std::exchange(file.handle, INVALID_HANDLE_VALUE));
}

CompanionLock::~CompanionLock() {
  const auto file = reinterpret_cast<HANDLE>(handle_);
  OVERLAPPED first{};
  ::UnlockFileEx(file, 0, 1, 0, &first);  // at once: what closing alone ends may end later
  ::CloseHandle(file);
}
