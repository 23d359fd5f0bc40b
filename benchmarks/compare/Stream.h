// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_COMPARE_STREAM_H
#define ZELCONFUTILS_COMPARE_STREAM_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "Data.h"

/// Takes the fields or tokens of a file, one after the other, as a `std::string` each.
class StringSink {
 public:
  void Take(const std::string& text) {
    ++totals.count;
    totals.bytes += text.size();
    const char* bytes = text.data();
    asm volatile("" : : "r"(bytes) : "memory");  // somebody reads them
  }
  StreamTotals totals;
};

/// Reads the file at `path` and gives each of its strings to `sink`; defined by each contender.
/// False: it cannot.
bool ReadStream(const char* path, StringSink& sink);

/// The same, but the strings only come to be, and are counted; false where there is no such way.
bool ReadOnly(const char* path, std::uint64_t& count);

#endif
