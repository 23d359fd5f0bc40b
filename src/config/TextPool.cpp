// SPDX-License-Identifier: MIT
#include "config/TextPool.h"

#include <algorithm>
#include <new>

namespace Configuration {

void swap(TextPool& left, TextPool& right) noexcept {
  std::swap(left.slabs_, right.slabs_);
  std::swap(left.longBlocks_, right.longBlocks_);
  std::swap(left.unused_, right.unused_);
  std::swap(left.unusedBytes_, right.unusedBytes_);
  std::swap(left.nextSlabBytes_, right.nextSlabBytes_);
  std::swap(left.freeBySize_, right.freeBySize_);
}

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
  while (slabs_ != nullptr) ::operator delete(std::exchange(slabs_, slabs_->next));
  while (longBlocks_ != nullptr) ::operator delete(std::exchange(longBlocks_, longBlocks_->next));
  unused_ = nullptr;
  unusedBytes_ = 0;
  nextSlabBytes_ = kFirstSlabBytes;
  freeBySize_.fill(nullptr);
}

char* TextPool::TakeFromSlab(std::size_t bytes) {
  if (bytes > unusedBytes_) {  // what is left of the slab, under one block, is given up
    slabs_ = new (::operator new(nextSlabBytes_)) Slab{slabs_};
    unused_ = reinterpret_cast<char*>(slabs_ + 1);
    unusedBytes_ = nextSlabBytes_ - sizeof(Slab);
    nextSlabBytes_ = std::min(nextSlabBytes_ * 2, kLargestSlabBytes);
  }
  unusedBytes_ -= bytes;
  return std::exchange(unused_, unused_ + bytes);
}

char* TextPool::TakeLong(std::size_t bytes) {
  auto* header = new (::operator new(sizeof(LongBlock) + bytes)) LongBlock{nullptr, longBlocks_};
  if (longBlocks_ != nullptr) longBlocks_->previous = header;
  longBlocks_ = header;
  return reinterpret_cast<char*>(header + 1);
}

}  // namespace Configuration
