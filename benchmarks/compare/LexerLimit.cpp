// SPDX-License-Identifier: MIT
// Reads the file in blocks and finds where each token ends with a table of classes; no string
// comes to be.
#include <array>

#include "Files.h"
#include "Stream.h"

namespace {

enum Class : unsigned char { kSingle, kLetter, kDigit };

constexpr std::array<Class, 256> kClasses = [] {
  std::array<Class, 256> made = {};
  for (unsigned c = 'a'; c <= 'z'; ++c) made[c] = made[c - 32] = kLetter;
  for (unsigned c = '0'; c <= '9'; ++c) made[c] = kDigit;
  return made;
}();

Class ClassOf(char c) { return kClasses[static_cast<unsigned char>(c)]; }

}  // namespace

bool ReadStream(const char* path, StringSink& sink) {
  Class last = kSingle;
  return ReadBlocks(path, [&](const char* block, std::size_t size) {
    const char* const end = block + size;
    for (const char* next = block; next != end;) {
      const char* const start = next;
      const Class kind = ClassOf(*next++);
      if (kind != kSingle) {
        while (next != end && ClassOf(*next) == kind) ++next;
      }
      // A run that began in the block before is no new token.
      if (start != block || kind == kSingle || kind != last) ++sink.count;
      sink.bytes += static_cast<std::size_t>(next - start);
      last = kind;
    }
  });
}
