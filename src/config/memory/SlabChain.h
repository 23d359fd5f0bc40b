// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MEMORY_SLAB_CHAIN_H
#define ZELCONFUTILS_MEMORY_SLAB_CHAIN_H

#include <cstddef>
#include <utility>

namespace Configuration {

/// The memory of a pool: slabs that double from a few hundred bytes, so that a small object stays
/// small, to one large page of the system. All are released together.
class SlabChain {
 public:
  SlabChain() = default;
  SlabChain(const SlabChain&) = delete;
  SlabChain& operator=(const SlabChain&) = delete;
  ~SlabChain() { Reset(); }

  struct Room {
    char* begin;  ///< aligned for any object of usual alignment
    char* end;
  };

  /// Adds a slab of some hundred bytes or more. Throws `std::bad_alloc`.
  Room Add();

  void Reset() noexcept;

 private:
  struct alignas(std::max_align_t) Slab {
    Slab* previous;
    std::size_t bytes;
  };

  static constexpr std::size_t kFirstBytes = 512;

  Slab* last_ = nullptr;
  std::size_t nextBytes_ = kFirstBytes;
};

}  // namespace Configuration

#endif
