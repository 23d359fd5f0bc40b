// SPDX-License-Identifier: MIT
#include "config/memory/TextPool.h"

#include <new>

namespace Configuration {

char* TextPool::Take(std::size_t bytes) {
  if (bytes > kLongestPooled) return TakeLong(bytes);
  const std::size_t sizeClass = (bytes - 1) / kGranule;
  FreeBlock*& free = freeBySize_[sizeClass];
  if (free == nullptr) return TakeFromSlab((sizeClass + 1) * kGranule);
  return reinterpret_cast<char*>(std::exchange(free, free->next));
}

void TextPool::Give(char* block, std::size_t bytes) noexcept {
  if (bytes <= kLongestPooled) {
    FreeBlock*& free = freeBySize_[(bytes - 1) / kGranule];
    free = new (block) FreeBlock{free};
    return;
  }
  LongBlock* header = reinterpret_cast<LongBlock*>(block) - 1;
  (header->previous != nullptr ? header->previous->next : longBlocks_) = header->next;
  if (header->next != nullptr) header->next->previous = header->previous;
  ::operator delete(header);
}

void TextPool::Reset() noexcept {
  slabs_.Reset();
  while (longBlocks_ != nullptr) ::operator delete(std::exchange(longBlocks_, longBlocks_->next));
  unused_ = {nullptr, nullptr};
  freeBySize_.fill(nullptr);
}

char* TextPool::TakeFromSlab(std::size_t bytes) {
  if (bytes > static_cast<std::size_t>(unused_.end - unused_.begin)) {
    unused_ = slabs_.Add();  // what is left of the slab, under one block, is given up
  }
  return std::exchange(unused_.begin, unused_.begin + bytes);
}

char* TextPool::TakeLong(std::size_t bytes) {
  auto* header = new (::operator new(sizeof(LongBlock) + bytes)) LongBlock{nullptr, longBlocks_};
  if (longBlocks_ != nullptr) longBlocks_->previous = header;
  longBlocks_ = header;
  return reinterpret_cast<char*>(header + 1);
}

}  // namespace Configuration
