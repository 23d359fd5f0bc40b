// SPDX-License-Identifier: MIT
#include "config/files/FileAccess.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "ConfigException.h"
#include "config/files/PathCheck.h"
#include "platform/Platform.h"

namespace Platform = zelconfutils::Platform;

namespace Configuration::FileAccess {

namespace {

// A physical line that is longer is stored as several lines; written back, they join up again.
constexpr std::size_t kLongestLineBytes = 1023;
constexpr std::size_t kReadBlockBytes = 65536;

[[noreturn]] void Throw(const std::string& message) { throw ConfigException(message.c_str()); }

[[noreturn]] void ThrowFileError(const char* action, const char* path, const char* reason) {
  Throw(std::string("Error ") + action + " file \"" + path + "\" : " + reason);
}

// An open file with the lock on it.
class LockedFile {
 public:
  LockedFile(FileLock& lock, const char* action, const char* path, Platform::OpenMode mode)
      : lock_(lock), file_(Platform::OpenFile(path, mode)) {
    if (!file_.IsOpen()) ThrowFileError(action, path, std::strerror(errno));
    try {
      if (!lock_.Acquire(file_)) ThrowFileError("locking", path, std::strerror(errno));
    } catch (...) {
      Close();
      throw;
    }
  }
  LockedFile(const LockedFile&) = delete;
  LockedFile& operator=(const LockedFile&) = delete;
  ~LockedFile() {
    if (file_.IsOpen()) Close();
  }

  const Platform::File& Get() const { return file_; }

  // The bytes that it had when it was locked.
  std::size_t Length() const { return static_cast<std::size_t>(lock_.Bytes()); }

  // Gives the lock back, which closing alone would not do while a forked child has a copy of the
  // descriptor, and closes the file. False when the system refused bytes at the last.
  bool Close() {
    lock_.Release();
    const bool closed = Platform::CloseFile(std::exchange(file_, {}));
    lock_.FileClosed();
    return closed;
  }

 private:
  FileLock& lock_;
  Platform::File file_;
};

// The length of the first line in `text`: up to and with its line feed, or all that fits a line.
// 0 when `text` ends in front of both.
std::size_t FirstLineLength(std::string_view text) {
  const std::string_view reach = text.substr(0, kLongestLineBytes);
  const void* end = std::memchr(reach.data(), '\n', reach.size());
  if (end != nullptr) {
    return static_cast<std::size_t>(static_cast<const char*>(end) - reach.data()) + 1;
  }
  return reach.size() == kLongestLineBytes ? kLongestLineBytes : 0;
}

// Reads in blocks; an unfinished line moves to the front of the next one.
void ReadLines(const LockedFile& file, ConfigLineList& lines) {
  // One byte more than the file, so that a small one is read whole and its end is seen at once.
  const std::size_t blockBytes =
      file.Length() == 0 ? kReadBlockBytes
                         : std::clamp(file.Length() + 1, kLongestLineBytes + 1, kReadBlockBytes);
  const std::unique_ptr<char[]> block(new char[blockBytes]);  // read into, so not zeroed
  std::size_t kept = 0;
  std::size_t total = 0;
  for (bool atEnd = false; !atEnd;) {
    const std::size_t wanted = blockBytes - kept;
    const std::size_t got = Platform::ReadBytes(file.Get(), block.get() + kept, wanted);
    total += got;
    // A short count alone may be a pipe's, or an interruption's.
    atEnd = got == 0 || (got < wanted && total == file.Length());
    std::string_view unread(block.get(), kept + got);
    for (std::size_t n = FirstLineLength(unread); n != 0; n = FirstLineLength(unread)) {
      lines.AddLine(unread.substr(0, n), true);
      unread.remove_prefix(n);
    }
    if (atEnd && !unread.empty()) lines.AddLine(unread, true);
    kept = unread.size();
    std::memmove(block.get(), unread.data(), kept);
  }
}

}  // namespace

void RequireDirectory(const char* path) {
  const PathCheck check(path, false);
  if (!check.Exists()) Throw(std::string("Path ") + check.Text() + " does not exist.");
}

void Read(ConfigLineList& lines, FileLock& lock, const char* path, bool readOnly,
          bool createIfMissing) {
  using Platform::OpenMode;
  LockedFile file(lock, "opening", path,
                  readOnly          ? OpenMode::kRead
                  : createIfMissing ? OpenMode::kAppend
                                    : OpenMode::kUpdate);
  const ConfigLinePosition last = lines.Lines().Last();
  try {
    ReadLines(file, lines);
  } catch (...) {
    while (lines.Lines().Last() != last) lines.EraseLine(lines.Lines().Last());
    throw;
  }
}

bool Save(ConfigLineList& lines, FileLock& lock, const char* path, bool coalesced,
          const char* target) {
  if (path == nullptr) return false;
  if (target == nullptr || *target == '\0') target = path;
  LockedFile file(lock, "saving", target, Platform::OpenMode::kReplace);
  // Some file systems tell of a full disk only when the file is closed.
  const bool written = lines.WriteAll(file.Get(), coalesced);
  if (!file.Close() || !written) ThrowFileError("saving", target, "file is too big.");
  return true;
}

bool CutIntoLines(const char* text, ConfigLineList& lines) {
  while (const char* end = std::strchr(text, '\n')) {
    const std::string_view line(text, static_cast<std::size_t>(end - text) + 1);
    if (line.size() > kLongestLineBytes) return false;
    lines.AddLine(line, true);
    text = end + 1;
  }
  return true;
}

bool CopyImage(const ConfigLineList& lines, char* buffer, std::size_t size) {
  if (size == 0) return false;
  char* end = buffer;
  for (const ConfigLine& line : lines.Lines()) {
    if (line.length >= size - static_cast<std::size_t>(end - buffer)) {
      *buffer = '\0';
      return false;
    }
    std::memcpy(end, line.text, line.length);
    end += line.length;
  }
  *end = '\0';
  return true;
}

void ThrowCorrupted(const char* path) {
  Throw(std::string("File \"") + (path != nullptr ? path : "") + "\" is corrupted!");
}

void ThrowTokenTooShort() { Throw("Length of section's start & stop tokens must be at least 2!"); }

}  // namespace Configuration::FileAccess
