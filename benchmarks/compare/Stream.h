// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_COMPARE_STREAM_H
#define ZELCONFUTILS_COMPARE_STREAM_H

#include <cstdint>
#include <string>

/// Takes the fields or tokens of a file, one after the other, as a `std::string` each.
struct StringSink {
  void Take(const std::string& text) {
    ++count;
    bytes += text.size();
    const char* data = text.data();
    asm volatile("" : : "r"(data) : "memory");  // somebody reads them
  }

  std::uint64_t count = 0;  ///< fields or tokens
  std::uint64_t bytes = 0;  ///< in all of them together
  bool countOnly = false;   ///< the strings come to be, but nobody asks the reader for them
};

/// Reads the file at `path` and gives each of its strings to `sink`; defined by each contender.
/// False: it cannot.
bool ReadStream(const char* path, StringSink& sink);

#endif
