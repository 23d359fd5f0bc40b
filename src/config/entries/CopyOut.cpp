// SPDX-License-Identifier: MIT
#include "config/entries/CopyOut.h"

#include <cstring>

#include "config/entries/Walk.h"

namespace Configuration {

namespace {

// Asked of the sizes: a text of `kTooSmall` bytes would have that result too.
bool Fits(std::string_view text, Buffer buffer) { return text.size() < buffer.size; }

}  // namespace

std::size_t CopyOut(std::string_view text, Buffer buffer) {
  if (!Fits(text, buffer)) {
    CopyNothing(buffer);
    return kTooSmall;
  }
  text.copy(buffer.bytes, text.size());
  buffer.bytes[text.size()] = '\0';
  return text.size();
}

std::size_t CopyOut(const ConfigEntry& entry, Buffer key, Buffer value) {
  std::size_t result = 0;
  if (key.bytes != nullptr) {
    result = CopyOut(entry.Name(), key);
    if (!Fits(entry.Name(), key)) return result;
  }
  if (value.bytes == nullptr) return result;
  const std::size_t valueResult = CopyOut(entry.Value(), value);
  return result == 0 || !Fits(entry.Value(), value) ? valueResult : result;
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
