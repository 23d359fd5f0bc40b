// SPDX-License-Identifier: MIT
#include "StreamIterator.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <exception>
#include <ios>
#include <limits>
#include <locale>

#include "platform/Platform.h"

namespace {

constexpr std::size_t kPieceBytes = 4096;  // one read of a line from the stream, its NUL included

}  // namespace

StreamIterator::StreamIterator() = default;
StreamIterator::StreamIterator(const StreamIterator&) = default;
StreamIterator& StreamIterator::operator=(const StreamIterator&) = default;
StreamIterator::~StreamIterator() = default;

// Binary, because the runtimes differ in what text mode folds, and the classic locale, because a
// locale set by the host could convert bytes.
FileIterator::FileIterator(const char* fileName) {
  if (Platform::IsDirectory(fileName)) throw std::exception();
  stream.imbue(std::locale::classic());
  stream.open(fileName, std::ios::in | std::ios::binary);
  if (!stream) throw std::exception();
}

FileIterator::~FileIterator() { CloseFile(); }

bool FileIterator::HasMoreLines() { return stream.is_open() && !stream.eof(); }

// The stream fills a piece of our own and not a string: it would swallow a failed allocation. An
// LF behind a full piece is still taken with it, so that a CR in front of it is in the same piece.
std::string FileIterator::GetLine() {
  std::string line;
  std::streamoff taken = 0;
  bool complete = !FileIterator::HasMoreLines();
  while (!complete) {
    char piece[kPieceBytes];
    stream.getline(piece, kPieceBytes);
    taken += stream.gcount();
    auto length = static_cast<std::size_t>(stream.gcount());
    if (stream.bad()) stream.setstate(std::ios::eofbit);
    if (stream.good()) {  // an LF was met: counted, but not stored
      --length;
      if (length > 0 && piece[length - 1] == '\r') --length;
      piece[length++] = '\n';
    }
    complete = stream.good() || stream.eof();
    if (!complete) stream.clear();  // the piece is full: the line goes on
    try {
      line.append(piece, length);
    } catch (...) {
      stream.clear();
      stream.rdbuf()->pubseekoff(-taken, std::ios::cur, std::ios::in);
      throw;
    }
  }
  return line;
}

void FileIterator::CloseFile() {
  if (stream.is_open()) stream.close();
}

BufferIterator::BufferIterator(const char* text)
    : buffer(text),
      length(static_cast<std::uint32_t>(
          std::min<std::size_t>(std::strlen(text), std::numeric_limits<std::uint32_t>::max()))),
      position(0) {}

BufferIterator::BufferIterator(const BufferIterator&) = default;
BufferIterator& BufferIterator::operator=(const BufferIterator&) = default;
BufferIterator::~BufferIterator() = default;

bool BufferIterator::HasMoreLines() { return position != length; }

std::string BufferIterator::GetLine() {
  const char* start = buffer + position;
  const std::size_t left = length - position;
  const void* lineFeed = std::memchr(start, '\n', left);
  const std::size_t bytes =
      lineFeed == nullptr
          ? left
          : static_cast<std::size_t>(static_cast<const char*>(lineFeed) - start) + 1;
  std::string line(start, bytes);
  position += static_cast<std::uint32_t>(bytes);
  return line;
}
