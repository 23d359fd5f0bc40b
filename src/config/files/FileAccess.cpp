// SPDX-License-Identifier: MIT
#include "config/files/FileAccess.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "config/files/Failure.h"
#include "config/files/PathCheck.h"
#include "config/lines/LineText.h"
#include "platform/Platform.h"

namespace Platform = zelconfutils::Platform;

namespace Configuration::FileAccess {

namespace {

constexpr std::size_t kReadBlockBytes = 65536;

// An open file with the lock on it.
class LockedFile {
 public:
  LockedFile(FileLock& lock, const char* action, const char* path, Platform::OpenMode mode)
      : lock_(lock), file_(Platform::OpenFile(path, mode)) {
    if (!file_.IsOpen()) Failure::Throw(action, path, std::strerror(errno));
    try {
      if (!lock_.Acquire(file_)) Failure::Throw("locking", path, std::strerror(errno));
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

std::size_t CountLineFeeds(std::string_view text) {
  constexpr std::size_t kPieceBytes = 128;  // whose count fits one byte: 16 are counted at a time
  std::size_t count = 0;
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, kPieceBytes);
    unsigned char inPiece = 0;
    for (const char c : piece) inPiece = static_cast<unsigned char>(inPiece + (c == '\n'));
    count += inPiece;
    text.remove_prefix(piece.size());
  }
  return count;
}

// Tells how many lines come, when the first block of a file is there: all of a small file's, or as
// many as go by those of the block.
void ExpectLines(ConfigLineList& lines, std::string_view block, std::size_t fileLength) {
  if (block.empty()) return;
  const std::size_t fileBytes = std::max(fileLength, block.size());
  const double share = static_cast<double>(fileBytes) / static_cast<double>(block.size());
  const double lineCount = static_cast<double>(CountLineFeeds(block) + 1) * share;
  lines.Expect(static_cast<std::size_t>(lineCount), fileBytes);
}

// Reads in blocks; an unfinished line moves to the front of the next one.
void ReadLines(const LockedFile& file, ConfigLineList& lines) {
  // One byte more than the file, so that a small one is read whole and its end is seen at once.
  const std::size_t blockBytes =
      file.Length() == 0
          ? kReadBlockBytes
          : std::clamp(file.Length() + 1, LineText::kLongestLineBytes + 1, kReadBlockBytes);
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
    if (total == got) ExpectLines(lines, unread, file.Length());
    for (std::size_t n = LineText::FirstLineLength(unread); n != 0;
         n = LineText::FirstLineLength(unread)) {
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
  if (!check.Exists()) Failure::ThrowNoDirectory(check.Text());
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
  if (!file.Close() || !written) Failure::Throw("saving", target, "file is too big.");
  return true;
}

}  // namespace Configuration::FileAccess
