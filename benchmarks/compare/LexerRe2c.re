// SPDX-License-Identifier: MIT
// Reads the whole file first, the fastest way that re2c has.
#include <cstdio>
#include <memory>

#include "Stream.h"

bool ReadStream(const char* path, StringSink& sink) {
  std::FILE* stream = std::fopen(path, "rb");
  if (stream == nullptr) return false;
  std::fseek(stream, 0, SEEK_END);
  const std::size_t size = static_cast<std::size_t>(std::ftell(stream));
  std::rewind(stream);
  const std::unique_ptr<unsigned char[]> bytes(new unsigned char[size + 1]);
  const bool read = std::fread(bytes.get(), 1, size, stream) == size;
  std::fclose(stream);
  bytes[size] = 0;
  const unsigned char* YYCURSOR = bytes.get();
  const unsigned char* const YYLIMIT = YYCURSOR + size;
  std::string text;
  for (;;) {
    const unsigned char* const start = YYCURSOR;
    /*!re2c
      re2c:define:YYCTYPE = "unsigned char";
      re2c:yyfill:enable = 0;
      re2c:eof = 0;
      [A-Za-z]+ { goto take; }
      [0-9]+    { goto take; }
      *         { goto take; }
      $         { return read; }
    */
  take:
    text.assign(reinterpret_cast<const char*>(start), static_cast<std::size_t>(YYCURSOR - start));
    sink.Take(text);
  }
}

bool ReadOnly(const char*, std::uint64_t&) { return false; }
