// SPDX-License-Identifier: MIT
// Reads the whole file first, the fastest way that re2c has.
#include "Files.h"
#include "Stream.h"

bool ReadStream(const char* path, StringSink& sink) {
  std::size_t size = 0;
  const auto bytes = ReadWhole(path, size);
  if (bytes == nullptr) return false;
  const char* YYCURSOR = bytes.get();
  const char* const YYLIMIT = YYCURSOR + size;
  std::string text;
  for (;;) {
    const char* const start = YYCURSOR;
    /*!re2c
      re2c:define:YYCTYPE = "unsigned char";
      re2c:yyfill:enable = 0;
      re2c:eof = 0;
      [A-Za-z]+ { goto take; }
      [0-9]+    { goto take; }
      *         { goto take; }
      $         { return true; }
    */
  take:
    text.assign(start, static_cast<std::size_t>(YYCURSOR - start));
    sink.Take(text);
  }
}
