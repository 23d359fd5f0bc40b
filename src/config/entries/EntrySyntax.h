// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ENTRIES_ENTRY_SYNTAX_H
#define ZELCONFUTILS_ENTRIES_ENTRY_SYNTAX_H

#include <cstddef>
#include <initializer_list>
#include <string_view>

/// What a line means, for every file class: text in, offsets out.
namespace Configuration::EntrySyntax {

/// Not found, as in `std::string_view`.
constexpr std::size_t kNone = std::string_view::npos;

/// The offset of the first `token` in `line`; an empty token occurs in no line.
inline std::size_t Find(std::string_view line, std::string_view token) {
  if (token.size() == 1) return line.find(token.front());  // the usual one: a plain memchr
  return token.empty() ? kNone : line.find(token);
}

/// `Find` for a line as it was read, in which a line feed can only be the last byte: a token that
/// ends in one needs no search.
inline std::size_t FindInFreshLine(std::string_view line, std::string_view token) {
  if (token.empty() || token.back() != '\n') return Find(line, token);
  return line.ends_with(token) ? line.size() - token.size() : kNone;
}

/// A comment token counts at the very first byte alone. (An empty one makes all lines comments.)
inline bool IsComment(std::string_view line, std::string_view comment) {
  if (comment.size() == 1) return !line.empty() && line.front() == comment.front();
  return line.starts_with(comment);
}

/// The parts of an entry line, left to right:
///
///     head  key  gap  separator  value  tail
///
/// Head and gap are white space, the tail is white space with the line end. White space right after
/// the separator belongs to the value.
struct EntrySpans {
  std::size_t key;
  std::size_t keyLength;
  std::size_t value;
  std::size_t valueLength;
};

/// The parts of `line`, whose first separator stands at `separatorAt`.
EntrySpans Parse(std::string_view line, std::size_t separatorAt, std::size_t separatorLength);

/// Where the key before the separator at `separatorAt` ends: after its last byte that is not white
/// space, but after the line's first byte where all are. 0 for a separator at 0.
std::size_t KeyEnd(std::string_view line, std::size_t separatorAt);

/// The offset after the last byte of `text` that is not white space; at least 1 where `text` is not
/// empty.
std::size_t TrimmedLength(std::string_view text);

/// The longest composed line with its line feed and its terminator.
constexpr std::size_t kWorkBufferBytes = 1024;

/// The most bytes after a key or a value that an edit carries over.
constexpr std::size_t kLongestRestBytes = 1023;

/// Writes the parts of a new line, a line feed and a terminator to `buffer`, which has
/// `kWorkBufferBytes` bytes. The result views the line in `buffer`, without the terminator; it is
/// empty when the line would not fit, and then nothing is written.
std::string_view Compose(std::initializer_list<std::string_view> parts, char* buffer);

}  // namespace Configuration::EntrySyntax

#endif
