// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_FILES_FAILURE_H
#define ZELCONFUTILS_FILES_FAILURE_H

/// The messages of all file classes. Each function throws a `ConfigException` with one, which
/// comes whole, however long a path it quotes.
namespace Configuration::Failure {

/// The file at `path` cannot be opened, locked or saved: `action` ends in "ing".
[[noreturn]] void Throw(const char* action, const char* path, const char* reason);

/// `directory` is none, or cannot be looked at.
[[noreturn]] void ThrowNoDirectory(const char* directory);

/// The sections of a text cannot be told. `path` may be null.
[[noreturn]] void ThrowCorrupted(const char* path);

/// A start or stop token has fewer than 2 bytes.
[[noreturn]] void ThrowTokenTooShort();

}  // namespace Configuration::Failure

#endif
