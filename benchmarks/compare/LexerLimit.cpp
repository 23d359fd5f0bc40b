// SPDX-License-Identifier: MIT
// Reads the file in blocks and finds where each token ends with a table of classes; no string
// comes to be.
#include <array>
#include <cstdio>
#include <memory>

#include "Stream.h"

namespace {

constexpr std::size_t kBlockBytes = std::size_t{64} * 1024;

enum Class : unsigned char { kSingle, kLetter, kDigit };

constexpr std::array<Class, 256> kClasses = [] {
  std::array<Class, 256> made = {};
  for (unsigned c = 'a'; c <= 'z'; ++c) made[c] = made[c - 32] = kLetter;
  for (unsigned c = '0'; c <= '9'; ++c) made[c] = kDigit;
  return made;
}();

}  // namespace

bool ReadStream(const char* path, StringSink& sink) {
  std::FILE* stream = std::fopen(path, "rb");
  if (stream == nullptr) return false;
  const std::unique_ptr<unsigned char[]> block(new unsigned char[kBlockBytes]);
  Class last = kSingle;
  while (const std::size_t got = std::fread(block.get(), 1, kBlockBytes, stream)) {
    const unsigned char* const end = block.get() + got;
    for (const unsigned char* next = block.get(); next != end;) {
      const unsigned char* const start = next;
      const Class kind = kClasses[*next++];
      if (kind != kSingle) {
        while (next != end && kClasses[*next] == kind) ++next;
      }
      // A run that began in the block before is no new token.
      if (start != block.get() || kind == kSingle || kind != last) ++sink.totals.count;
      sink.totals.bytes += static_cast<std::size_t>(next - start);
      last = kind;
    }
  }
  std::fclose(stream);
  return true;
}

bool ReadOnly(const char*, std::uint64_t&) { return false; }
