// SPDX-License-Identifier: MIT
#include "config/files/FileAccess.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

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

// An open stream with the lock on it. Closing the stream ends the lock.
class LockedStream {
 public:
  LockedStream(FileLock& lock, const char* action, const char* path, const char* mode)
      : lock_(lock), stream_(Platform::OpenFile(path, mode)) {
    if (stream_ == nullptr) ThrowFileError(action, path, std::strerror(errno));
    try {
      if (!lock_.Acquire(stream_)) ThrowFileError("locking", path, std::strerror(errno));
    } catch (...) {
      Close();
      throw;
    }
  }
  LockedStream(const LockedStream&) = delete;
  LockedStream& operator=(const LockedStream&) = delete;
  ~LockedStream() {
    if (stream_ != nullptr) Close();
  }

  std::FILE* Get() const { return stream_; }

  // Gives the lock back and closes the stream. False when the system refused bytes at the last.
  bool Finish() {
    lock_.Release();
    return Close();
  }

 private:
  bool Close() {
    const bool closed = std::fclose(stream_) == 0;
    stream_ = nullptr;
    lock_.StreamClosed();
    return closed;
  }

  FileLock& lock_;
  std::FILE* stream_;
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
void ReadLines(std::FILE* stream, ConfigLineList& lines) {
  const auto fileLength = static_cast<std::size_t>(
      std::max<std::int64_t>(Platform::FileLength(Platform::Descriptor(stream)), 0));
  // One byte more than the file, so that a small one is read whole and its end is seen at once.
  const std::size_t blockBytes =
      fileLength == 0 ? kReadBlockBytes
                      : std::clamp(fileLength + 1, kLongestLineBytes + 1, kReadBlockBytes);
  const std::unique_ptr<char[]> block(new char[blockBytes]);  // read into, so not zeroed
  std::size_t kept = 0;
  for (bool atEnd = false; !atEnd;) {
    const std::size_t wanted = blockBytes - kept;
    const std::size_t got = std::fread(block.get() + kept, 1, wanted, stream);
    atEnd = got < wanted;
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
  const char* mode = readOnly ? "r" : createIfMissing ? "a+" : "r+";
  LockedStream stream(lock, "opening", path, mode);
  std::rewind(stream.Get());  // a stream opened for appending may stand at its end
  const ConfigLinePosition last = lines.Lines().Last();
  try {
    ReadLines(stream.Get(), lines);
  } catch (...) {
    while (lines.Lines().Last() != last) lines.EraseLine(lines.Lines().Last());
    throw;
  }
  stream.Finish();
}

bool Save(ConfigLineList& lines, FileLock& lock, const char* path, bool coalesced,
          const char* target) {
  if (path == nullptr) return false;
  if (target == nullptr || *target == '\0') target = path;
  LockedStream stream(lock, "saving", target, "w+");
  // A small file stays in the stream's buffer as a whole: only the flush tells of a full disk.
  bool accepted = lines.WriteAll(stream.Get(), coalesced) && std::fflush(stream.Get()) == 0;
  if (accepted) accepted = stream.Finish();
  if (!accepted) ThrowFileError("saving", target, "file is too big.");
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
