// SPDX-License-Identifier: MIT
#include "csv/CsvRecordReader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "platform/Platform.h"

namespace zelconfutils {

namespace {

// A record's size is told in 32 bits and counts a NUL after it.
constexpr std::size_t kMaxRecordBytes = std::numeric_limits<std::uint32_t>::max() - 1;

bool EndsInLineEnd(const std::string& record) {
  return !record.empty() && (record.back() == '\n' || record.back() == '\r');
}

}  // namespace

CsvRecordReader::CsvRecordReader(std::size_t blockBytes)
    : blockBytes_(blockBytes), block_(new char[blockBytes]) {}

std::FILE* CsvRecordReader::Open(const char* path) {
  file_ = Platform::OpenFile(path, Platform::OpenMode::kReadBinary);
  if (file_.IsOpen()) stream_.reset(Platform::MakeStream(file_));
  return stream_.get();
}

bool CsvRecordReader::ReadRecord() {
  if (!std::exchange(unread_, false)) {
    record_.clear();
    if (record_.capacity() > blockBytes_) record_.shrink_to_fit();  // one long record, once
  }
  while (!EndsInLineEnd(record_) && !AtEnd()) {
    const std::size_t lineEnd = FindLineEnd();
    const std::size_t bytes = (lineEnd < end_ ? lineEnd + 1 : end_) - at_;
    if (bytes > kMaxRecordBytes - record_.size()) throw std::bad_alloc();
    record_.append(block_.get() + at_, bytes);
    at_ += bytes;
    if (record_.back() == '\r' && !AtEnd() && block_[at_] == '\n') {
      record_.back() = '\n';
      ++at_;
    }
  }
  return EndsInLineEnd(record_);
}

// At the end of the file the system is asked again each time: what another program appends in the
// meantime is read. Past the stream, which would only copy the block once more.
bool CsvRecordReader::Fill() {
  at_ = 0;
  end_ = Platform::ReadBytes(file_, block_.get(), blockBytes_);
  nextCr_ = Find('\r');
  nextLf_ = Find('\n');
  return end_ > 0;
}

std::size_t CsvRecordReader::Find(char byte) const {
  const void* found = std::memchr(block_.get() + at_, byte, end_ - at_);
  if (found == nullptr) return end_;
  return static_cast<std::size_t>(static_cast<const char*>(found) - block_.get());
}

// Both are remembered: looking for the CR of an LF file anew for each record would go through the
// rest of the block each time.
std::size_t CsvRecordReader::FindLineEnd() {
  if (nextCr_ < at_) nextCr_ = Find('\r');
  if (nextLf_ < at_) nextLf_ = Find('\n');
  return std::min(nextCr_, nextLf_);
}

}  // namespace zelconfutils
