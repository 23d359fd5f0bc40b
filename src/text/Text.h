// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TEXT_TEXT_H
#define ZELCONFUTILS_TEXT_TEXT_H

#include <cstddef>

/// Rules on bytes that must not depend on the locale that the host program has set: all classes
/// are those of the "C" locale, so that no byte from 0x80 up is a letter, a digit or white space.
namespace zelconfutils::Text {

/// Blank, tab, line feed, vertical tab, form feed, carriage return.
constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

constexpr bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// `c` in lower case if it is an ASCII letter.
constexpr char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

/// Whether two terminated texts are equal with ASCII case ignored.
bool EqualIgnoringCase(const char* left, const char* right);

/// A heap copy of a terminated text, made with `new char[]` and owned by the caller. Null gives
/// null. Throws `std::bad_alloc`.
char* Duplicate(const char* text);

}  // namespace zelconfutils::Text

#endif
