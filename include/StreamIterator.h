// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_STREAM_ITERATOR_H
#define ZELCONFUTILS_STREAM_ITERATOR_H

#include <cstdint>
#include <fstream>
#include <string>

#include "ZelExport.h"

/// A source of text, handed out line by line. `ZelLex` reads through this interface alone, so a
/// program can derive a source of its own and give it to a lexer.
///
/// A line is a string of bytes; its last byte is an LF if it had one in the text. LF is the only
/// byte that ends a line. What a lexer expects of every source:
///   - `GetLine` is called only straight after `HasMoreLines` returned true.
///   - An empty string is the end of the input: nothing more is asked for, whatever
///     `HasMoreLines` would say. A blank line inside the text comes as a line of one LF.
///   - Nothing is put between two lines: one without an LF runs straight on into the next.
///
/// Sources have no locks: one belongs to one thread at a time.
class ZELCONFUTILS_API StreamIterator {
 public:
  StreamIterator();
  /// Copies nothing: there is nothing to copy.
  StreamIterator(const StreamIterator& other);
  /// Changes nothing.
  StreamIterator& operator=(const StreamIterator& other);
  virtual ~StreamIterator();

  /// True means that `GetLine` may be called, not that there is text left: a source need not
  /// look ahead.
  virtual bool HasMoreLines() = 0;

  /// The next line, by value, its LF included; moves past it. Empty at the end of the text.
  virtual std::string GetLine() = 0;
};

/// The lines of a file, each CR LF pair in it read as one LF, on every platform. A CR without an
/// LF after it is an ordinary byte of its line, and so is a NUL.
class ZELCONFUTILS_API FileIterator : public StreamIterator {
 public:
  /// Opens the file named by the NUL-terminated `fileName` for reading; other readers and
  /// writers are not locked out. Throws `std::exception` itself, which has no message of its own,
  /// if the file cannot be opened or is a directory; throws `std::bad_alloc`.
  FileIterator(const char* fileName);
  FileIterator(const FileIterator&) = delete;
  FileIterator& operator=(const FileIterator&) = delete;

  /// Closes the file if it is open.
  ~FileIterator() override;

  /// False for a closed file, and once a read has run into the end of the file. There is no
  /// look-ahead: after the last line of a file that ends in LF, and for an empty file, the
  /// result is true, and only the `GetLine` that follows finds the end and gives an empty string.
  bool HasMoreLines() override;

  /// The next line: with exactly one LF as its last byte, or without one if the file ends first.
  /// Empty at the end of the file and for a closed file. A read error ends the input like the end
  /// of the file, an interrupted read does not. Throws `std::bad_alloc`, and then stays before
  /// the line, so that the call can be repeated (what cannot be read twice, a pipe for one, goes on
  /// after the bytes read).
  std::string GetLine() override;

  /// Closes the file if it is open; unread lines are gone. May be called any number of times.
  /// There is no reopening.
  void CloseFile();

 private:
  // Lines are taken where the file was read to: a stream would hand them on in one more copy.
  class Buffer : public std::filebuf {
   public:
    bool TakeLine(std::string& line);  // false: the end of the file came first

   private:
    bool Fill();
  };

  Buffer buffer;
  bool atEnd;  // a read ran into the end of the file
};

/// The lines of a text in memory, each byte as it is: a CR before an LF stays. A text that
/// ends in LF has no empty line after it.
class ZELCONFUTILS_API BufferIterator : public StreamIterator {
 public:
  /// Reads the NUL-terminated `text`, which is neither copied nor owned: the caller keeps it alive
  /// and unchanged for as long as the iterator is read. Of a text of 4 GiB or more the first
  /// 4294967295 bytes are read, as many as 32 bits can count.
  BufferIterator(const char* text);

  /// Both read the same text, from the same position on; each then has a position of its own.
  BufferIterator(const BufferIterator& other);
  /// The same; what this object read before is forgotten.
  BufferIterator& operator=(const BufferIterator& other);
  ~BufferIterator() override;

  /// Whether there is a byte left.
  bool HasMoreLines() override;

  /// The bytes up to and including the next LF, or up to the end of the text. Empty, and nothing
  /// changes, at the end. Throws `std::bad_alloc`, and then nothing has moved.
  std::string GetLine() override;

 private:
  const char* buffer;      // the caller's
  std::uint32_t length;    // bytes before the first NUL, taken once
  std::uint32_t position;  // index of the next unread byte, 0 to `length`
};

#endif
