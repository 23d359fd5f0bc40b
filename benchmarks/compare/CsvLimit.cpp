// SPDX-License-Identifier: MIT
// Reads the file in blocks and finds where each field ends, eight bytes at a time; no string comes
// to be.
#include <bit>
#include <cstring>

#include "Files.h"
#include "Stream.h"

namespace {

// The top bit of each byte of `word` that equals `c`.
std::uint64_t Equal(std::uint64_t word, char c) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kLow = 0x7f * kOnes;
  const std::uint64_t zero = word ^ (kOnes * static_cast<unsigned char>(c));
  return ~(((zero & kLow) + kLow) | zero | kLow);
}

}  // namespace

bool ReadStream(const char* path, StringSink& sink) {
  std::size_t offset = 0;  // of the block in the file
  std::size_t start = 0;   // of the field
  const auto end = [&](std::size_t place) {
    ++sink.count;
    sink.bytes += place - start;
    start = place + 1;
  };
  return ReadBlocks(path, [&](const char* bytes, std::size_t size) {
    std::size_t i = 0;
    for (; i + 8 <= size; i += 8) {
      std::uint64_t word;
      std::memcpy(&word, bytes + i, 8);
      for (std::uint64_t ends = Equal(word, ',') | Equal(word, '\n'); ends != 0; ends &= ends - 1) {
        end(offset + i + static_cast<std::size_t>(std::countr_zero(ends)) / 8);
      }
    }
    for (; i < size; ++i) {
      if (bytes[i] == ',' || bytes[i] == '\n') end(offset + i);
    }
    offset += size;
  });
}
