// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_COMPARE_FILES_H
#define ZELCONFUTILS_COMPARE_FILES_H

#include <sys/stat.h>

#include <cstddef>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string_view>

/// The bytes of a file, read in one piece, and a NUL after them. Null: it cannot.
inline std::unique_ptr<char[]> ReadWhole(const char* path, std::size_t& size) {
  struct stat status;
  std::FILE* stream = std::fopen(path, "rb");
  if (stream == nullptr || fstat(fileno(stream), &status) != 0) return nullptr;
  size = static_cast<std::size_t>(status.st_size);
  std::unique_ptr<char[]> bytes(new char[size + 1]);
  bytes[size] = '\0';
  if (std::fread(bytes.get(), 1, size, stream) != size) bytes.reset();
  std::fclose(stream);
  return bytes;
}

/// Gives the bytes of a file to `take(bytes, size)`, block by block. False: it cannot.
template <class Take>
bool ReadBlocks(const char* path, Take take) {
  constexpr std::size_t kBlockBytes = std::size_t{64} * 1024;
  std::FILE* stream = std::fopen(path, "rb");
  if (stream == nullptr) return false;
  const std::unique_ptr<char[]> block(new char[kBlockBytes]);
  while (const std::size_t got = std::fread(block.get(), 1, kBlockBytes, stream)) {
    take(block.get(), got);
  }
  std::fclose(stream);
  return true;
}

/// Makes a file of these bytes, with one call of the system for each piece.
inline bool WritePieces(const char* path, std::initializer_list<std::string_view> pieces) {
  std::FILE* stream = std::fopen(path, "wb");
  if (stream == nullptr) return false;
  std::setvbuf(stream, nullptr, _IONBF, 0);
  bool written = true;
  for (const auto piece : pieces) {
    written = written && std::fwrite(piece.data(), 1, piece.size(), stream) == piece.size();
  }
  return std::fclose(stream) == 0 && written;
}

#endif
