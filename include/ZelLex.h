// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ZEL_LEX_H
#define ZELCONFUTILS_ZEL_LEX_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "StreamIterator.h"
#include "ZelExport.h"

/// What a token was made from. The classes are those of the "C" locale, whatever locale the
/// program has set; no byte from 0x80 up is in any of them.
enum ZelLexTokenKind : std::int32_t {
  /// One byte of no class below: `$`, `@`, the grave accent, CR, form feed, other control bytes,
  /// 0x80 to 0xFF. With an empty text: a skipped run of white space.
  UnknownToken = 0,
  /// One byte of `!%^&*()-+={}|~[]\;':"<>?,./#_`, or a NUL byte.
  PunctuationToken = 1,
  /// A run of letters, A to Z and a to z, of any length.
  StringConstantToken = 2,
  /// A run of digits, 0 to 9, of any length.
  DigitConstantToken = 3,
  /// One space, horizontal tab or vertical tab; each byte of a run is a token of its own.
  WhiteSpaceToken = 4,
  /// One LF.
  NewLineToken = 5,
};

/// A token: its kind and its bytes.
struct ZELCONFUTILS_API ZelLexToken {
  /// @name The kinds once more, so that they may be spelled with the token's name
  /// @{
  static constexpr ZelLexTokenKind UnknownToken = ::UnknownToken;  ///< as in `ZelLexTokenKind`
  static constexpr ZelLexTokenKind PunctuationToken = ::PunctuationToken;        ///< likewise
  static constexpr ZelLexTokenKind StringConstantToken = ::StringConstantToken;  ///< likewise
  static constexpr ZelLexTokenKind DigitConstantToken = ::DigitConstantToken;    ///< likewise
  static constexpr ZelLexTokenKind WhiteSpaceToken = ::WhiteSpaceToken;          ///< likewise
  static constexpr ZelLexTokenKind NewLineToken = ::NewLineToken;                ///< likewise
  /// @}

  std::int32_t kind = UnknownToken;  ///< One of `ZelLexTokenKind`.
  std::string text;                  ///< May hold a NUL byte.
};

/// Turns the text of a line source into tokens, one for each call. It knows no grammar: no
/// keywords, comments, quoted strings, signs or fractions, and no line numbers.
///
/// The byte 0xFF is the end mark: as a token's first byte it is delivered as an `UnknownToken` and
/// ends the input; after a run it ends the run and the input. Nothing after it is read.
///
/// No locks: a lexer and its source belong to one thread at a time.
class ZELCONFUTILS_API ZelLex {
 public:
  /// A lexer on `source`, which it does not own and which must outlive the reading; null is an
  /// empty input. Reads nothing yet. With `ignoreWhiteSpaces` a run of white space comes as one
  /// `UnknownToken` without text instead of one token for each byte; an LF is reported in either
  /// case. Throws `std::bad_alloc`.
  ZelLex(StreamIterator* source, bool ignoreWhiteSpaces);

  /// A lexer at the same place of the same source, which both then share: a line that one of them
  /// fetches is gone for the other. The token record is the copy's own. Throws `std::bad_alloc`.
  ZelLex(const ZelLex& other);
  /// The same; this lexer's record stays where it is and takes the other's content. Throws
  /// `std::bad_alloc`, and then nothing has changed.
  ZelLex& operator=(const ZelLex& other);

  /// Releases the record, not the source.
  virtual ~ZelLex();

  /// The next token, or null at the end of the input and on every call from then on.
  ///
  /// The pointer is the same on every call that does not return null: it is the lexer's own
  /// record, valid as long as the lexer, and the next call overwrites it. A run goes on in the
  /// next line if a line ends without an LF. Of a line of 4 GiB or more the first 4294967295 bytes
  /// are read.
  ///
  /// Passes on what the source throws; throws `std::bad_alloc`. The call can then be repeated and
  /// goes on with the same token. Only the beginning of a run that had crossed into another line
  /// is lost where its further growth found no memory.
  ZelLexToken* GetToken();

 private:
  char GetChar();  // the new `current`
  int PutChar();   // the new `current`
  void IgnoreWhiteSpaces();
  bool ReadShortRun(ZelLexTokenKind kind);
  void ReadRun(ZelLexTokenKind kind);
  bool RunGoesOn(ZelLexTokenKind kind);
  bool FetchLine();
  void ResetToken();
  static ZelLexTokenKind KindOf(char c);  // of the token that starts with `c`

  // The terminator is found too: NUL is a member of every set.
  static constexpr bool IsOneOf(char c, const char* set) {
    while (*set != '\0' && *set != c) ++set;
    return *set == c;
  }

  StreamIterator* source;  // not owned
  ZelLexToken* token;      // owned; the one record that every call fills
  std::string line;        // the line being read
  std::uint32_t position;  // index in `line` of the next unread byte
  signed char current;     // the byte last read or put back; -1 is the end mark
  bool ignoreWhiteSpaces;
  bool atEnd;  // once set, stays set
};

#endif
