// SPDX-License-Identifier: MIT
#include "StreamIterator.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <exception>
#include <ios>
#include <limits>
#include <locale>

#include "platform/Platform.h"

namespace Platform = zelconfutils::Platform;

StreamIterator::StreamIterator() = default;
StreamIterator::StreamIterator(const StreamIterator&) = default;
StreamIterator& StreamIterator::operator=(const StreamIterator&) = default;
StreamIterator::~StreamIterator() = default;

// Binary, because the runtimes differ in what text mode folds, and the classic locale, because a
// locale set by the host could convert bytes.
FileIterator::FileIterator(const char* fileName) : atEnd(false) {
  if (!Platform::OpenFile(buffer, fileName)) throw std::exception();
  buffer.pubimbue(std::locale::classic());
}

FileIterator::~FileIterator() { CloseFile(); }

bool FileIterator::HasMoreLines() { return buffer.is_open() && !atEnd; }

std::string FileIterator::GetLine() {
  std::string line;
  if (FileIterator::HasMoreLines()) atEnd = !buffer.TakeLine(line);
  return line;
}

void FileIterator::CloseFile() { buffer.close(); }

bool FileIterator::Buffer::TakeLine(std::string& line) {
  std::streamoff taken = 0;
  const char* lineFeed = nullptr;
  while (lineFeed == nullptr) {
    if (gptr() == egptr() && !Fill()) return false;
    const auto left = static_cast<std::size_t>(egptr() - gptr());
    lineFeed = static_cast<const char*>(std::memchr(gptr(), '\n', left));
    const auto bytes = lineFeed == nullptr ? egptr() - gptr() : lineFeed + 1 - gptr();
    try {
      line.append(gptr(), static_cast<std::size_t>(bytes));
    } catch (...) {
      pubseekoff(-taken, std::ios::cur, std::ios::in);
      throw;
    }
    taken += bytes;
    setg(eback(), gptr() + bytes, egptr());
  }
  if (line.size() > 1 && line[line.size() - 2] == '\r') line.erase(line.size() - 2, 1);
  return true;
}

// False at the end of the file, and where it cannot be read: some runtimes throw there, and some
// take an interruption for the end.
bool FileIterator::Buffer::Fill() {
  try {
    do {
      errno = 0;
      if (underflow() != traits_type::eof()) return true;
    } while (errno == EINTR);
    return false;
  } catch (const std::ios_base::failure&) {
    return false;
  }
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
