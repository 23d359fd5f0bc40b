// SPDX-License-Identifier: MIT
// A crash-safe save and a lock for read, edit and save, to be copied into a program: this header
// and text_file.h, with safe_save.cpp (POSIX) or safe_save_windows.cpp.
#ifndef ZELCONFUTILS_EXAMPLES_SAFE_SAVE_H
#define ZELCONFUTILS_EXAMPLES_SAFE_SAVE_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "text_file.h"

/// Puts `image` in the place of the file `path`: whatever happens, the file holds either all of
/// the old bytes or all of the new ones, and once the call has returned, the new ones are on the
/// disk. A symbolic link is followed. A new file is its owner's alone on POSIX, and inherits from
/// its folder on Windows.
///
/// Owner, group, mode, access control list and extended attributes are kept (Windows: owner, access
/// control list, attributes). Where one of them cannot be kept the file is not replaced: so it is
/// for somebody else's file, and for one with several names (hard links) or further data streams.
/// Nor is what is no regular file, or may not be written.
///
/// Throws `std::system_error` or `Refused`; nothing has changed then (but for a failure to flush
/// the folder: there the new bytes are in place, and a power cut may still bring back the old).
void SafeSave(const std::string& path, const std::string& image);

/// The name of the file itself: absolute, symbolic links followed. `path` where there is no file.
/// Throws `std::system_error` where that cannot be told, and for a link that leads nowhere.
std::string ResolvedPath(const std::string& path);

/// Excludes other processes that take the lock for the same file, by whatever name. Waits for it;
/// the system ends it for a process that dies.
///
/// The lock is on a companion, `PATH.lock` beside the file itself: a safe save puts a new file in
/// the place of the old one, and a lock on the old one would protect nobody. Whoever may read and
/// write the file may open the companion: it gets the file's owner and permissions when it is made.
/// It is never deleted, as another process may be waiting on it.
class CompanionLock {
 public:
  /// Throws `std::system_error` or `Refused`; the file must exist.
  explicit CompanionLock(const std::string& path);
  CompanionLock(const CompanionLock&) = delete;
  CompanionLock& operator=(const CompanionLock&) = delete;
  ~CompanionLock();

 private:
  std::intptr_t handle_;
};

/// The new bytes are gathered in a sibling of the file, `.NAME.XXXXXX.safe-save~`: the tilde makes
/// programs that read all files of a folder pass it by.
constexpr const char* kSiblingSuffix = ".safe-save~";

inline std::filesystem::path FolderOf(const std::string& file) {
  const auto folder = std::filesystem::path(file).parent_path();
  return folder.empty() ? "." : folder;
}

/// Siblings of the file that a killed save has left, or that a save of this moment is writing. They
/// may be deleted where no save is running.
inline std::vector<std::string> LeftoverSaves(const std::string& path) {
  const std::string file = ResolvedPath(path);
  const std::string prefix = "." + std::filesystem::path(file).filename().string() + ".";
  const std::string suffix = kSiblingSuffix;
  std::vector<std::string> leftovers;
  for (const auto& entry : std::filesystem::directory_iterator(FolderOf(file))) {
    const std::string name = entry.path().filename().string();
    if (name.size() == prefix.size() + 6 + suffix.size() &&
        name.compare(0, prefix.size(), prefix) == 0 &&
        name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0) {
      leftovers.push_back(entry.path().string());
    }
  }
  return leftovers;
}

/// Ends the last line of the file, safely saved, if it has no line feed: else an added entry would
/// run on from it. True when the file has changed.
inline bool MendLastLine(const std::string& path) {
  const std::string bytes = ReadBytes(path);
  if (EndsItsLastLine(bytes)) return false;
  SafeSave(path, bytes + LineEnd(bytes));
  return true;
}

#endif
