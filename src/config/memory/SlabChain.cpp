// SPDX-License-Identifier: MIT
#include "config/memory/SlabChain.h"

#include <algorithm>
#include <new>

#include "platform/Platform.h"

namespace Platform = zelconfutils::Platform;

namespace Configuration {

using Platform::kLargePageBytes;

SlabChain::Room SlabChain::Add() {
  const std::size_t bytes = nextBytes_;
  void* block;
  if (bytes < kLargePageBytes) {
    block = ::operator new(bytes);
  } else {
    // The first touch of each page is the largest part of loading a large file: 150 MB are 38,000
    // small pages or 75 large ones, and the load takes two thirds of the time.
    block = ::operator new (bytes, std::align_val_t{kLargePageBytes});
    Platform::PreferLargePages(block, bytes);
  }
  last_ = new (block) Slab{last_, bytes};
  nextBytes_ = std::min(bytes * 2, kLargePageBytes);
  return {reinterpret_cast<char*>(last_ + 1), static_cast<char*>(block) + bytes};
}

void SlabChain::Reset() noexcept {
  while (last_ != nullptr) {
    Slab* slab = std::exchange(last_, last_->previous);
    if (slab->bytes < kLargePageBytes) {
      ::operator delete(slab);
    } else {
      ::operator delete (slab, std::align_val_t{kLargePageBytes});
    }
  }
  nextBytes_ = kFirstBytes;
}

}  // namespace Configuration
