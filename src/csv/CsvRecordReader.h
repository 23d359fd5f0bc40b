// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_CSV_CSV_RECORD_READER_H
#define ZELCONFUTILS_CSV_CSV_RECORD_READER_H

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

#include "platform/Platform.h"

namespace zelconfutils {

/// Splits a file into records. It owns the open stream, one block of the file, and the record in
/// hand, so that the documents that share it read on where the last of them stopped.
class CsvRecordReader {
 public:
  /// Large enough that the calls to the system do not count, small enough for the nearer caches.
  static constexpr std::size_t kBlockBytes = std::size_t{64} * 1024;

  /// Reads in blocks of `blockBytes` bytes, at least 1. Throws `std::bad_alloc`.
  explicit CsvRecordReader(std::size_t blockBytes = kBlockBytes);

  /// Opens a file, once for each reader. Null if it cannot be opened.
  std::FILE* Open(const char* path);

  /// Fetches the next record into `Record()`; CR LF counts as LF. False if the end of the file
  /// came before a line end; the record is then what was left, perhaps nothing. Throws
  /// `std::bad_alloc`, also for a record whose bytes and NUL cannot be counted in 32 bits;
  /// `Record()` is then the part that was read.
  bool ReadRecord();

  /// Lets the next `ReadRecord` give the record in hand once more, or go on with the part of it.
  void PutBack() { unread_ = true; }

  /// The record in hand, with its CR or LF, until the next `ReadRecord`.
  std::string& Record() { return record_; }

  /// Whether nothing follows the record in hand. Consumes nothing and allocates nothing.
  bool AtEnd() { return at_ == end_ && !Fill(); }

 private:
  struct Close {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };

  bool Fill();
  std::size_t Find(char byte) const;
  std::size_t FindLineEnd();

  const std::size_t blockBytes_;
  const std::unique_ptr<char[]> block_;
  Platform::File file_;  // what stream_ owns
  std::unique_ptr<std::FILE, Close> stream_;
  std::size_t at_ = 0;      // the next byte of the block to deliver
  std::size_t end_ = 0;     // the bytes in the block
  std::size_t nextCr_ = 0;  // the first CR at or after at_, `end_` if there is none;
  std::size_t nextLf_ = 0;  //   out of date if it lies before at_. The same for LF.
  std::string record_;
  bool unread_ = false;  // the next ReadRecord keeps record_
};

}  // namespace zelconfutils

#endif
