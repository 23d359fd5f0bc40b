// SPDX-License-Identifier: MIT
#include "config/memory/TextPool.h"

#include <new>

#include "config/memory/Poison.h"

namespace Configuration {

void TextPool::Expect(std::size_t texts, std::size_t capacities) {
  constexpr std::size_t kRounding = kGranule / 2;  // of a block, on average
  constexpr std::size_t kScatter = 64;             // of all roundings in a small file
  const std::size_t perText = kAroundText + kRounding + Poison::kGapBytes;
  slabs_.Expect(capacities + texts * perText + kScatter);
}

char* TextPool::Take(std::size_t capacity) {
  if (capacity > kLongestUsual) return TakeLong(capacity);
  const std::size_t sizeClass = SizeClass(capacity);
  char* block = TakeBlock(sizeClass);
  const std::size_t used = capacity + kAroundText;
  Poison::Forbid(block + used, BlockBytes(sizeClass) - used);
  *block = static_cast<char>(capacity);
  return block + 1;
}

void TextPool::Give(char* text) noexcept {
  const std::size_t capacity = Capacity(text);
  if (capacity <= kLongestUsual) {
    const std::size_t sizeClass = SizeClass(capacity);
    FreeBlock*& free = freeBySize_[sizeClass];
    free = new (text - 1) FreeBlock{free};
    Poison::Forbid(free, BlockBytes(sizeClass));
    return;
  }
  LongBlock* header = HeaderOfLong(text);
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

TextPool::LongBlock* TextPool::HeaderOfLong(const char* text) {
  return reinterpret_cast<LongBlock*>(const_cast<char*>(text - 1)) - 1;
}

char* TextPool::TakeBlock(std::size_t sizeClass) {
  const std::size_t bytes = BlockBytes(sizeClass);
  FreeBlock*& free = freeBySize_[sizeClass];
  if (free != nullptr) {
    char* block = reinterpret_cast<char*>(free);
    Poison::Permit(block, bytes);
    free = free->next;
    return block;
  }
  if (bytes + Poison::kGapBytes > unused_.Bytes()) {
    unused_ = slabs_.Add();  // what is left of the slab, under one block, is given up
    Poison::Forbid(unused_.begin, unused_.Bytes());
  }
  char* block = std::exchange(unused_.begin, unused_.begin + bytes + Poison::kGapBytes);
  Poison::Permit(block, bytes);
  return block;
}

char* TextPool::TakeLong(std::size_t capacity) {
  const std::size_t bytes = sizeof(LongBlock) + capacity + kAroundText;
  auto* header = new (::operator new(bytes)) LongBlock{nullptr, longBlocks_, capacity};
  if (longBlocks_ != nullptr) longBlocks_->previous = header;
  longBlocks_ = header;
  char* block = reinterpret_cast<char*>(header + 1);
  *block = 0;
  return block + 1;
}

}  // namespace Configuration
