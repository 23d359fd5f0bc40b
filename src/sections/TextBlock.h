// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_SECTIONS_TEXT_BLOCK_H
#define ZELCONFUTILS_SECTIONS_TEXT_BLOCK_H

#include <cstddef>

/// The texts of the section records. A text is a `char*` field of its owner: null, or a block
/// from `new char[]` with the text, its NUL and zeros up to the end. An owner that sets several
/// texts in one step makes the missing blocks first (`Set` on a field of a temporary owner) and
/// then calls `Adopt`, so that nothing has changed when an allocation fails.
namespace zelconfutils::TextBlock {

inline constexpr std::size_t kBytes = 512;  // of each block, the NUL included

/// Copies `text`, truncated to 511 bytes, into the block; a null `block` is allocated, which may
/// throw `std::bad_alloc`. A null `text` changes nothing. `text` may lie in the block.
void Set(char*& block, const char* text);

/// The same, but without an allocation: a null `block` takes `fresh`, which holds `text`
/// already and is null afterwards.
void Adopt(char*& block, char*& fresh, const char* text);

/// Zeroes the block, if there is one.
void Wipe(char* block);

/// Both null, or both present and equal with ASCII case ignored.
bool Match(const char* left, const char* right);

}  // namespace zelconfutils::TextBlock

#endif
