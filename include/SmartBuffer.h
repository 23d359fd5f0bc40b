// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_SMART_BUFFER_H
#define ZELCONFUTILS_SMART_BUFFER_H

#include <cstddef>

#include "ZelExport.h"

/// A block of 1024 bytes for a caller's key and value buffers:
///
///     SmartBuffer value;
///     file.GetEntry("name", &value, value.size());
class ZELCONFUTILS_API SmartBuffer {
 public:
  /// Allocates the block and makes it an empty text. Throws `std::bad_alloc`.
  SmartBuffer();
  /// Not offered: two objects would release one block.
  SmartBuffer(const SmartBuffer&) = delete;
  ~SmartBuffer();

  /// Takes over the other's pointer and size as they stand and releases nothing: both objects then
  /// name one block, and this one's earlier block is without an owner. Only one of the two may be
  /// destroyed afterwards; the caller ensures that.
  SmartBuffer& operator=(const SmartBuffer& other);

  /// The block.
  char* operator&();
  /// The block.
  const char* operator()() const;
  /// The byte at `index`, which must be below `size()`: it is not tested.
  char& operator[](size_t index);
  /// The same; the byte may be written through it.
  char& operator[](size_t index) const;

  /// The size of the block in bytes: 1024.
  size_t size() const;

 private:
  char* data;
  size_t blockSize;
};

namespace Configuration {
using ::SmartBuffer;  // so that it may be spelled like the classes whose calls it serves
}

#endif
