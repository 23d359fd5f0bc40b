// SPDX-License-Identifier: MIT
#include "config/memory/SlabChain.h"

#include <algorithm>
#include <new>

#include "platform/Platform.h"

namespace Platform = zelconfutils::Platform;

namespace Configuration {

namespace {

constexpr std::size_t kFirstBytes = 512;
constexpr std::size_t kGrowthDivisor = 4;
constexpr std::size_t kLargestBytes = Platform::kLargePageBytes;
// From here on one call for all pages is cheaper than a fault for each.
constexpr std::size_t kProvidedBytes = std::size_t{128} << 10;

}  // namespace

SlabChain::Room SlabChain::Add() {
  const std::size_t wanted =
      expectedBytes_ != 0 ? expectedBytes_ + sizeof(Slab) : totalBytes_ / kGrowthDivisor;
  const std::size_t bytes = std::clamp(wanted, kFirstBytes, kLargestBytes);
  void* block;
  if (bytes < kLargestBytes) {
    block = ::operator new(bytes);
  } else {
    block = ::operator new (bytes, std::align_val_t{kLargestBytes});
  }
  if (bytes >= kProvidedBytes) {
    largePages_ = Platform::ProvidePages(block, bytes, largePages_);
  }
  last_ = new (block) Slab{last_, bytes};
  totalBytes_ += bytes;
  expectedBytes_ -= std::min(expectedBytes_, bytes - sizeof(Slab));
  return {reinterpret_cast<char*>(last_ + 1), static_cast<char*>(block) + bytes};
}

void SlabChain::Reset() noexcept {
  while (last_ != nullptr) {
    Slab* slab = std::exchange(last_, last_->previous);
    if (slab->bytes < kLargestBytes) {
      ::operator delete(slab);
    } else {
      ::operator delete (slab, std::align_val_t{kLargestBytes});
    }
  }
  totalBytes_ = expectedBytes_ = 0;
}

}  // namespace Configuration
