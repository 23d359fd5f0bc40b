// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_COMPARE_KEY_FILE_H
#define ZELCONFUTILS_COMPARE_KEY_FILE_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

constexpr std::size_t kTextBytes = 1024;  ///< room for a key or a value, its NUL included

/// Copies a NUL-terminated text and returns its length; the data has none that does not fit.
inline std::size_t CopyText(char* buffer, const char* text) {
  const std::size_t length = std::strlen(text);
  std::memcpy(buffer, text, length + 1);
  return length;
}

/// What each contender says of a walk, so that all are seen to have done the same work.
struct WalkTotals {
  std::uint64_t entries = 0;
  std::uint64_t keyBytes = 0;
  std::uint64_t firstBytes = 0;  ///< the sum of the values' first bytes

  void Count(std::size_t keyLength, const char* value) {
    ++entries;
    keyBytes += keyLength;
    firstBytes += static_cast<unsigned char>(value[0]);
  }

  /// For a contender that shows its own texts: copies both first.
  [[gnu::always_inline]] void CopyAndCount(const char* keyText, const char* valueText) {
    char key[kTextBytes];
    char value[kTextBytes];
    CopyText(value, valueText);
    Count(CopyText(key, keyText), value);
    asm volatile("" : : "m"(key), "m"(value));  // somebody reads them
  }
};

/// A file of keys and values in the hands of one contender. The destructor releases it. An
/// operation that a contender does not offer keeps the failure below and is not asked for.
class KeyFile {
 public:
  virtual ~KeyFile() = default;

  /// Reads the file into the form that answers the calls below.
  virtual bool Load(const char* path) = 0;

  /// Copies the value to `buffer` of `kTextBytes` bytes and returns its length.
  virtual std::size_t LookUp(const char* section, const char* key, char* buffer) = 0;

  /// Copies key and value of every entry to two buffers.
  virtual WalkTotals Walk() { return {}; }

  /// Gives an existing key another value.
  virtual bool Change(const char*, const char*, const char*) { return false; }

  /// Writes the file, comments included where the contender keeps them: from one buffer with one
  /// call or in another way, where it has both.
  virtual bool Save(const char*, bool) { return false; }
};

/// Defined by each contender. `sections`: the file has many of them, else one.
std::unique_ptr<KeyFile> MakeKeyFile(bool sections);

#endif
