// SPDX-License-Identifier: MIT
#include "config/entries/CopyOut.h"

#include <cstring>

#include "config/entries/Walk.h"

namespace Configuration {

std::size_t CopyOut(std::string_view text, Buffer buffer) {
  if (buffer.size < text.size() + 1) {
    CopyNothing(buffer);
    return kTooSmall;
  }
  text.copy(buffer.bytes, text.size());
  buffer.bytes[text.size()] = '\0';
  return text.size();
}

std::size_t CopyOut(const ConfigEntry& entry, Buffer key, Buffer value) {
  std::size_t result = 0;
  if (key.bytes != nullptr) result = CopyOut(entry.Name(), key);
  if (value.bytes == nullptr || result == kTooSmall) return result;
  const std::size_t valueResult = CopyOut(entry.Value(), value);
  return valueResult == kTooSmall || result == 0 ? valueResult : result;
}

std::size_t CopyValueOf(ConfigEntryList& entries, std::string_view key, Buffer buffer) {
  const ConfigEntryPosition found = Walk::Find(entries, key);
  return found.IsAtElement() ? CopyOut(found->Value(), buffer) : CopyNothing(buffer);
}

std::size_t CopyNothing(Buffer buffer) {
  if (buffer.size > 0) std::memset(buffer.bytes, 0, buffer.size);
  return 0;
}

}  // namespace Configuration
