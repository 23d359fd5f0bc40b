// SPDX-License-Identifier: MIT
#include <fstream>
#include <utility>

#include "platform/Platform.h"

#ifdef __GLIBCXX__
#include <ext/stdio_filebuf.h>
#endif

namespace zelconfutils::Platform {

bool OpenFile(std::filebuf& buffer, const char* path) {
  constexpr std::ios::openmode kMode = std::ios::in | std::ios::binary;
#ifdef __GLIBCXX__
  const File file = OpenFile(path, OpenMode::kReadBinary);
  if (!file.IsOpen()) return false;
  __gnu_cxx::stdio_filebuf<char> opened(file.descriptor, kMode);
  if (!opened.is_open()) {
    CloseFile(file);
    return false;
  }
  buffer.std::filebuf::operator=(std::move(opened));
  return true;
#else
  return !IsDirectory(path) && buffer.open(path, kMode) != nullptr;
#endif
}

}  // namespace zelconfutils::Platform
