// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_CONFIG_EXCEPTION_H
#define ZELCONFUTILS_CONFIG_EXCEPTION_H

#include <exception>

#include "ZelExport.h"

/// What the file classes throw when a file cannot be read, saved or understood. The object that
/// threw has then released everything it held and must not be used again, only destroyed.
///
/// Owns a copy of its message, and so does each copy of it.
class ZELCONFUTILS_API ConfigException : public std::exception {
 public:
  /// Copies `text`, which must not be null. Throws `std::bad_alloc`.
  ConfigException(const char* text);
  /// Copies the other's message. Throws `std::bad_alloc`.
  ConfigException(const ConfigException& other);
  ~ConfigException() override;

  /// Replaces the message by a copy of the other's; assignment to itself does nothing. Throws
  /// `std::bad_alloc`, and then the message is the one before.
  ConfigException& operator=(const ConfigException& other);

  /// The message, terminated. It lives as long as this object.
  const char* what() const noexcept override;

 private:
  char* message;
};

namespace Configuration {
using ::ConfigException;  // so that it may be spelled like the classes that throw it
}

#endif
