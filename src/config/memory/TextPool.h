// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MEMORY_TEXT_POOL_H
#define ZELCONFUTILS_MEMORY_TEXT_POOL_H

#include <array>
#include <cstddef>
#include <utility>

#include "config/memory/SlabChain.h"

namespace Configuration {

/// Blocks for line texts: each a block of its own, taken and given back alone. Blocks of the
/// length of usual lines are cut from slabs, side by side in the order in which they are taken,
/// and used again by size; longer ones are heap blocks. All go with the pool.
class TextPool {
 public:
  TextPool() = default;
  TextPool(const TextPool&) = delete;
  TextPool& operator=(const TextPool&) = delete;
  ~TextPool() { Reset(); }

  /// A block of at least `bytes` bytes. May throw `std::bad_alloc`.
  char* Take(std::size_t bytes);

  /// Takes back a block, with the `bytes` that it was taken for.
  void Give(char* block, std::size_t bytes) noexcept;

  /// Releases all blocks.
  void Reset() noexcept;

 private:
  struct FreeBlock {
    FreeBlock* next;
  };
  /// Stands in front of a long block, so that the pool finds it without the line's help.
  struct LongBlock {
    LongBlock* previous;
    LongBlock* next;
  };

  static constexpr std::size_t kGranule = 8;          // block sizes are multiples of this
  static constexpr std::size_t kLongestPooled = 256;  // a line of 222 bytes with its slack

  char* TakeFromSlab(std::size_t bytes);
  char* TakeLong(std::size_t bytes);

  SlabChain slabs_;
  SlabChain::Room unused_{nullptr, nullptr};
  LongBlock* longBlocks_ = nullptr;
  std::array<FreeBlock*, kLongestPooled / kGranule> freeBySize_{};
};

}  // namespace Configuration

#endif
