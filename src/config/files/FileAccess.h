// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_FILES_FILE_ACCESS_H
#define ZELCONFUTILS_FILES_FILE_ACCESS_H

#include <cstddef>

#include "config/files/FileLock.h"
#include "config/lines/ConfigLineList.h"

/// Everything between a file object and the disk. Serves all file classes.
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

}  // namespace Configuration::FileAccess

#endif
