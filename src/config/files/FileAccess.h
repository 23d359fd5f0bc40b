// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_FILES_FILE_ACCESS_H
#define ZELCONFUTILS_FILES_FILE_ACCESS_H

#include <cstddef>

#include "config/files/FileLock.h"
#include "config/lines/ConfigLineList.h"

/// Everything between a file object and the outside: reading, saving, texts in memory, and the
/// messages that a failure raises. Serves all file classes.
///
/// The functions throw `ConfigException`, and `std::bad_alloc`, with the file closed. They
/// change nothing but the lines; what else the failed object holds is its own to release.
namespace Configuration::FileAccess {

/// Throws unless the directory of `path` exists.
void RequireDirectory(const char* path);

/// Opens `path` and appends its lines to `lines`; none of them when memory runs out.
void Read(ConfigLineList& lines, FileLock& lock, const char* path, bool readOnly,
          bool createIfMissing);

/// Writes `lines` to `target` or, where that is null or empty, to `path`. False without a path:
/// then no file is touched. True means that the system has accepted every byte.
bool Save(ConfigLineList& lines, FileLock& lock, const char* path, bool coalesced,
          const char* target);

/// Appends the lines of `text` to `lines`. Bytes behind the last line feed are dropped. False at
/// a line that is too long; the lines in front of it stay.
bool CutIntoLines(const char* text, ConfigLineList& lines);

/// Copies the file image with a terminator to `buffer`. False when it does not fit `size` bytes;
/// `buffer` then holds an empty text, if it has room for one.
bool CopyImage(const ConfigLineList& lines, char* buffer, std::size_t size);

/// Throws the message for a text whose sections cannot be told. `path` may be null.
[[noreturn]] void ThrowCorrupted(const char* path);

/// Throws the message for a start or stop token of fewer than 2 bytes.
[[noreturn]] void ThrowTokenTooShort();

}  // namespace Configuration::FileAccess

#endif
