// SPDX-License-Identifier: MIT
#include "FailingNew.h"

#include <cstdlib>
#include <new>

namespace {

constexpr long kNever = -1;
long liveBlocks = 0, allBlocks = 0, untilFailure = kNever;

void* TryAllocate(std::size_t bytes) noexcept {
  if (untilFailure >= 0 && untilFailure-- == 0) return nullptr;
  void* block = std::malloc(bytes == 0 ? 1 : bytes);
  if (block != nullptr) ++liveBlocks, ++allBlocks;
  return block;
}

}  // namespace

void* operator new(std::size_t bytes) {
  void* block = TryAllocate(bytes);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept {
  if (block != nullptr) --liveBlocks;
  std::free(block);
}
// Under a sanitizer these would otherwise be its own, and their blocks not ours to release.
void* operator new[](std::size_t bytes) { return operator new(bytes); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return TryAllocate(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return TryAllocate(n); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }

namespace FailingNew {

long LiveBlocks() { return liveBlocks; }
long AllBlocks() { return allBlocks; }

int ForEachAllocation(const std::function<void()>& operation,
                      const std::function<void(bool failed)>& check) {
  for (int nth = 0;; ++nth) {
    bool failed = false;
    untilFailure = nth;
    try {
      operation();
    } catch (const std::bad_alloc&) {
      failed = true;
    } catch (...) {
      untilFailure = kNever;
      throw;
    }
    // An operation may also handle the failure itself; then it is still a failure that came.
    const bool came = untilFailure == kNever;
    untilFailure = kNever;
    check(failed);
    if (!came) return nth;
  }
}

}  // namespace FailingNew
