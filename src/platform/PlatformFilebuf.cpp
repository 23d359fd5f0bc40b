// SPDX-License-Identifier: MIT
#include "platform/Platform.h"

#include <fstream>
#include <utility>

#ifdef __GLIBCXX__
#include <ext/stdio_filebuf.h>
#endif

namespace zelconfutils::Platform {

namespace {

constexpr std::ios::openmode kMode = std::ios::in | std::ios::binary;

// Gives `buffer` an open file, which the standard has no name for. False, and the file is the
// caller's to close, on failure.
#if defined(__GLIBCXX__)
bool Attach(std::filebuf& buffer, int descriptor) {
  __gnu_cxx::stdio_filebuf<char> opened(descriptor, kMode);
  if (!opened.is_open()) return false;
  buffer.std::filebuf::operator=(std::move(opened));
  return true;
}
#elif defined(_LIBCPP_VERSION)
bool Attach(std::filebuf& buffer, int descriptor) {
  return buffer.__open(descriptor, kMode) != nullptr;
}
#endif

}  // namespace

bool OpenFile(std::filebuf& buffer, const char* path) {
#if defined(__GLIBCXX__) || defined(_LIBCPP_VERSION)
  const File file = OpenFile(path, OpenMode::kReadBinary);
  if (!file.IsOpen()) return false;
  if (Attach(buffer, file.descriptor)) return true;
  CloseFile(file);
  return false;
#else
  return !IsDirectory(path) && buffer.open(path, kMode) != nullptr;
#endif
}

}  // namespace zelconfutils::Platform
