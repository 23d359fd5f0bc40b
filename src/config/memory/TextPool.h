// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MEMORY_TEXT_POOL_H
#define ZELCONFUTILS_MEMORY_TEXT_POOL_H

#include <array>
#include <cstddef>
#include <utility>

#include "config/memory/SlabChain.h"

namespace Configuration {

/// Blocks for line texts: each a block of its own, taken and given back alone. Blocks of the
/// length of usual lines lie in slabs, side by side in the order in which they are taken, and are
/// used again by size; longer ones are heap blocks. All go with the pool.
///
/// A block knows its capacity, so that the line need not:
///
///     usual   capacity (1 byte)  text  terminator  up to a multiple of the granule
///     long    LongBlock          0     text  terminator
///                                      ^ what `Take` returns
class TextPool {
 public:
  TextPool() = default;
  TextPool(const TextPool&) = delete;
  TextPool& operator=(const TextPool&) = delete;
  ~TextPool() { Reset(); }

  /// So many texts are going to be taken, with so many bytes of capacity in all.
  void Expect(std::size_t texts, std::size_t capacities);

  /// Room for a text of `capacity` bytes, at least those of a pointer, and its terminator. May
  /// throw `std::bad_alloc`.
  char* Take(std::size_t capacity);

  /// Takes back the room of a text.
  void Give(char* text) noexcept;

  /// What a text was taken for.
  static std::size_t Capacity(const char* text) {
    const auto usual = static_cast<unsigned char>(text[-1]);
    return usual != 0 ? usual : CapacityOfLong(text);
  }

  /// Releases all blocks.
  void Reset() noexcept;

 private:
  struct FreeBlock {
    FreeBlock* next;
  };
  /// Stands before a long text, so that the pool finds it without the line's help.
  struct LongBlock {
    LongBlock* previous;
    LongBlock* next;
    std::size_t capacity;
  };

  static constexpr std::size_t kGranule = 8;     // sizes of usual blocks are multiples of this
  static constexpr std::size_t kAroundText = 2;  // capacity and terminator
  static constexpr std::size_t kLongestUsual = 256 - kAroundText;  // a line of 221 and its slack

  /// Of usual blocks: those of one class have the same size.
  static std::size_t SizeClass(std::size_t capacity) {
    return (capacity + kAroundText - 1) / kGranule;
  }
  static std::size_t BlockBytes(std::size_t sizeClass) { return (sizeClass + 1) * kGranule; }
  static LongBlock* HeaderOfLong(const char* text);
  static std::size_t CapacityOfLong(const char* text) { return HeaderOfLong(text)->capacity; }

  char* TakeBlock(std::size_t sizeClass);
  char* TakeLong(std::size_t capacity);

  SlabChain slabs_;
  SlabChain::Room unused_{nullptr, nullptr};
  LongBlock* longBlocks_ = nullptr;
  std::array<FreeBlock*, (kLongestUsual + kAroundText) / kGranule> freeBySize_{};
};

}  // namespace Configuration

#endif
