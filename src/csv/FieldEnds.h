// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_CSV_FIELD_ENDS_H
#define ZELCONFUTILS_CSV_FIELD_ENDS_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zelconfutils {

/// Goes through the places of a text where a field may end: every delimiter, and every byte below
/// 0x0E, NUL, LF and CR among them. A few too many cost less than four comparisons for each byte;
/// the caller tells them apart.
class FieldEnds {
 public:
  FieldEnds(const char* text, std::size_t bytes, char delimiter)
      : text_(text), bytes_(bytes), delimiter_(delimiter) {}

  /// The offset of the next such byte; `bytes` or more after the last one.
  std::size_t Next() {
    while (ends_ == 0) {
      if (mapped_ == bytes_) return bytes_;
      start_ = mapped_;
      mapped_ = start_ + std::min(kMapBytes, bytes_ - start_);
      ends_ = Map(text_ + start_, mapped_ - start_);
    }
    const auto offset = static_cast<std::size_t>(std::countr_zero(ends_));
    ends_ &= ends_ - 1;
    return start_ + offset;
  }

 private:
  static constexpr std::size_t kMapBytes = 64;  // as many as a word has bits

  bool MayEnd(char c) const {
    return (c == delimiter_) |
           (static_cast<unsigned char>(c) < 0x0E);  // no branch, for the loop in Map
  }

  // Bit i tells of byte i. The loops have a fixed length, so that compilers turn them into a
  // handful of vector operations; a shorter text is copied to that length, and its padding
  // counts as ends.
  std::uint64_t Map(const char* text, std::size_t bytes) const {
    if (bytes == kMapBytes) return Map(text);
    char block[kMapBytes] = {};
    std::memcpy(block, text, bytes);
    return Map(block);
  }

  std::uint64_t Map(const char* block) const {
    unsigned char flags[kMapBytes];
    for (std::size_t i = 0; i < kMapBytes; ++i) flags[i] = MayEnd(block[i]);
    std::uint64_t map = 0;
    for (std::size_t i = 0; i < kMapBytes; i += 8) map |= Pack(flags + i) << i;
    return map;
  }

  // Eight flags of 0 or 1 into eight bits, the first flag lowest. The product moves flag k from
  // bit 8k to bit 56 + k, and no two of its terms meet in the same bit.
  static std::uint64_t Pack(const unsigned char* flags) {
    std::uint64_t word = 0;
    for (unsigned i = 0; i < 8; ++i) word |= std::uint64_t{flags[i]} << (8 * i);  // one load
    return (word * 0x0102040810204080u) >> 56;
  }

  const char* text_;
  std::size_t bytes_;
  char delimiter_;
  std::size_t start_ = 0;   // where the map begins
  std::size_t mapped_ = 0;  // where it ends
  std::uint64_t ends_ = 0;  // the map: the places not yet delivered
};

}  // namespace zelconfutils

#endif
