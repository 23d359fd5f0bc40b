// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ENTRIES_COPY_OUT_H
#define ZELCONFUTILS_ENTRIES_COPY_OUT_H

#include <cstddef>
#include <string_view>

#include "config/entries/ConfigEntry.h"

namespace Configuration {

/// A block that the caller of an operation gives for a text; without bytes the text is not wanted.
struct Buffer {
  char* bytes;
  std::size_t size;
};

/// The result for a buffer that is too small: 32 bits set, not the largest `size_t`.
constexpr std::size_t kTooSmall = 0xFFFFFFFF;

/// Copies `text` with a terminator, whole or not at all: its length; or `kTooSmall`, and then all
/// bytes of `buffer` are 0.
std::size_t CopyOut(std::string_view text, Buffer buffer);

/// Copies key and value, each if it is wanted; a buffer that is too small ends it. The key's
/// length if a key was copied that is not empty, else the value's if one was copied.
std::size_t CopyOut(const ConfigEntry& entry, Buffer key, Buffer value);

/// Copies the value of the first entry with that key. Without one `CopyNothing`.
std::size_t CopyValueOf(ConfigEntryList& entries, std::string_view key, Buffer buffer);

/// Fills the buffer with zeros: 0.
std::size_t CopyNothing(Buffer buffer);

}  // namespace Configuration

#endif
