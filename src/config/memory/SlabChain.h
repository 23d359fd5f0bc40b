// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MEMORY_SLAB_CHAIN_H
#define ZELCONFUTILS_MEMORY_SLAB_CHAIN_H

#include <cstddef>
#include <utility>

namespace Configuration {

/// The memory of a pool: slabs that are released together. What is expected comes in as few slabs
/// as can be; beyond that each slab adds a quarter to what there is, so that an object of any size
/// has little memory that it does not use.
class SlabChain {
 public:
  SlabChain() = default;
  SlabChain(const SlabChain&) = delete;
  SlabChain& operator=(const SlabChain&) = delete;
  ~SlabChain() { Reset(); }

  struct Room {
    char* begin;  ///< aligned for any object of usual alignment
    char* end;

    std::size_t Bytes() const { return static_cast<std::size_t>(end - begin); }
  };

  /// So many bytes are going to be needed from now on, about. Takes no memory yet.
  void Expect(std::size_t bytes) { expectedBytes_ = bytes; }

  /// Adds a slab of some hundred bytes or more. Throws `std::bad_alloc`.
  Room Add();

  void Reset() noexcept;

 private:
  struct alignas(std::max_align_t) Slab {
    Slab* previous;
    std::size_t bytes;
  };

  Slab* last_ = nullptr;
  std::size_t totalBytes_ = 0;
  std::size_t expectedBytes_ = 0;
  bool largePages_ = true;
};

}  // namespace Configuration

#endif
