// SPDX-License-Identifier: MIT
#include "config/lines/ConfigLineList.h"

#include <cstring>
#include <new>
#include <utility>

#include "platform/Platform.h"

namespace Platform = zelconfutils::Platform;

namespace Configuration {

namespace {

// On the stack, as a plain save needs no memory, and threads may have little of that.
constexpr std::size_t kWriteBlockBytes = 16384;

}  // namespace

void ConfigLine::Assign(TextPool& pool, std::string_view newText) {
  char* block = pool.Take(newText.size() + kNewLineSlack);
  if (text != nullptr) pool.Give(text);
  text = block;
  length = newText.size();
  std::memcpy(text, newText.data(), length);
  text[length] = '\0';
}

bool ConfigLine::Grow(TextPool& pool, std::size_t n) {
  const std::size_t newLength = length + n;
  if (newLength <= Capacity()) {
    length = newLength;
    return false;
  }
  char* block = pool.Take(newLength + kGrownLineSlack);
  std::memcpy(block, text, length);
  block[length] = '\0';
  pool.Give(std::exchange(text, block));
  length = newLength;
  return true;
}

void ConfigLineList::InheritSaveBuffer(ConfigLineList& former) noexcept {
  saveCapacity = former.saveCapacity;
  saveGrowth = former.saveGrowth;
  saveBuffer = std::move(former.saveBuffer);
}

void ConfigLineList::Expect(std::size_t lineCount, std::size_t bytes) {
  lines_.Expect(lineCount);
  texts_.Expect(lineCount, bytes + lineCount * kNewLineSlack);
}

void ConfigLineList::AddLine(std::string_view text, bool atEnd) {
  ConfigLinePosition position = atEnd ? End() : First();
  InsertLine(position, text);
}

void ConfigLineList::InsertLine(ConfigLinePosition& position, std::string_view text) {
  lines_.Reserve();
  ConfigLine line;
  line.Assign(texts_, text);
  position = lines_.Insert(position, line);
  totalLength += text.size();
}

ConfigLinePosition ConfigLineList::InsertLines(ConfigLinePosition position,
                                               std::initializer_list<std::string_view> texts) {
  ConfigLinePosition first = position;
  try {
    for (const std::string_view text : texts) {
      ConfigLinePosition line = position;
      InsertLine(line, text);
      if (first == position) first = line;
    }
  } catch (...) {
    while (first != position) first = EraseLine(first);
    throw;
  }
  return first;
}

bool ConfigLineList::GrowLine(ConfigLinePosition position, std::size_t n) {
  if (n == 0) return false;
  const bool moved = position->Grow(texts_, n);
  totalLength += n;  // after Grow: a failed allocation must not leave a wrong total
  return moved;
}

void ConfigLineList::ShrinkLine(ConfigLinePosition position, std::size_t n, bool terminate) {
  if (n == 0) return;
  totalLength -= n;
  position->length -= n;
  if (terminate) position->text[position->length] = '\0';
}

ConfigLinePosition ConfigLineList::EraseLine(ConfigLinePosition position) noexcept {
  totalLength -= position->length;
  texts_.Give(position->text);
  return lines_.Erase(position);
}

void ConfigLineList::Clear() noexcept {
  lines_.Clear();
  texts_.Reset();
  shared_.clear();
  totalLength = 0;
}

bool ConfigLineList::WriteAll(const Platform::File& file, bool coalesced) {
  return coalesced ? WriteAtOnce(file) : WriteInBlocks(file);
}

bool ConfigLineList::WriteInBlocks(const Platform::File& file) const {
  char block[kWriteBlockBytes];
  std::size_t used = 0;
  for (const ConfigLine& line : lines_) {
    std::size_t taken = 0;
    // Whole blocks, so that each but the last covers whole pages of the file.
    for (; line.length - taken > sizeof block - used; used = 0) {
      const std::size_t room = sizeof block - used;
      std::memcpy(block + used, line.text + taken, room);
      if (!Platform::WriteBytes(file, block, sizeof block)) return false;
      taken += room;
    }
    std::memcpy(block + used, line.text + taken, line.length - taken);
    used += line.length - taken;
  }
  return Platform::WriteBytes(file, block, used);
}

bool ConfigLineList::WriteAtOnce(const Platform::File& file) {
  if (totalLength == 0) return true;
  if (!ProvideSaveBuffer()) return false;
  char* end = saveBuffer.get();
  for (const ConfigLine& line : lines_) {
    std::memcpy(end, line.text, line.length);
    end += line.length;
  }
  *end = '\0';
  return Platform::WriteBytes(file, saveBuffer.get(), totalLength);
}

bool ConfigLineList::ProvideSaveBuffer() {
  const std::size_t needed = totalLength + 1;
  if (saveBuffer == nullptr) {
    saveCapacity =
        needed <= kFirstSaveBufferBytes ? kFirstSaveBufferBytes : totalLength + kSaveBufferSlack;
  } else if (saveCapacity < needed) {
    saveGrowth *= 2;
    saveCapacity = (saveGrowth << 10) + needed;
    saveBuffer.reset();  // its bytes are written anew: nothing to move
  } else {
    return true;
  }
  saveBuffer.reset(new (std::nothrow) char[saveCapacity]);
  if (saveBuffer == nullptr) return false;
  if (saveCapacity > kFirstSaveBufferBytes) {
    Platform::ProvidePages(saveBuffer.get(), saveCapacity, true);
  }
  return true;
}

}  // namespace Configuration
