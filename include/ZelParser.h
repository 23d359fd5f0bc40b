// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ZEL_PARSER_H
#define ZELCONFUTILS_ZEL_PARSER_H

#include "StreamIterator.h"
#include "ZelExport.h"
#include "ZelLex.h"

/// The frame of a parser without a grammar: it makes the line source and the lexer for a file or
/// for a text in memory and calls `Parse`, in which a subclass does the parsing.
///
/// An object serves one source. Sources and lexer are made once and not replaced: a later call
/// runs `Parse` again on what the lexer has left, and ignores its file name or text. (The first
/// `ParseFile` after a `ParseBuffer`, and the other way round, still makes its source, but the
/// lexer stays on the first.) A second source needs a second object.
///
/// No locks: an object belongs to one thread at a time.
class ZELCONFUTILS_API ZelParser {
 public:
  ZelParser();
  ZelParser(const ZelParser&) = delete;
  ZelParser& operator=(const ZelParser&) = delete;

  /// Destroys the sources and the lexer; a file that an exception left open is closed.
  virtual ~ZelParser();

  /// Opens the file, calls `Parse` with `context`, closes the file, and returns what `Parse`
  /// returned. Line ends of CR LF are read as LF.
  ///
  /// Throws `std::exception` itself, before `Parse` is called, if the file cannot be opened, and
  /// `std::bad_alloc`; nothing has been made then, and a later call tries again with its own name.
  /// What `Parse` throws passes through, and the file stays open until the parser is destroyed.
  virtual bool ParseFile(const char* fileName, void* context);

  /// Calls `Parse` with `context` on the NUL-terminated `text` and returns what it returned. The
  /// text is not copied: it must stay as it is for as long as tokens are read. Throws
  /// `std::bad_alloc`, and then nothing has been made; what `Parse` throws passes through.
  virtual bool ParseBuffer(const char* text, void* context);

  /// The parse hook, written by the subclass: calls `GetToken` until it returns null or the
  /// grammar is satisfied. `context` is the caller's pointer, which nothing here looks at; null
  /// is passed on too. The result has a meaning for the caller alone.
  virtual bool Parse(void* context) = 0;

  /// The next token, or null at the end of the input; see `ZelLex::GetToken`. White space and
  /// line ends are reported, each byte as a token. To be called within `Parse` or after it: there
  /// is no lexer before.
  ZelLexToken* GetToken();

 private:
  ZelLex* lexer;  // owned, like the sources; each is null until it is needed
  FileIterator* fileSource;
  BufferIterator* bufferSource;
};

#endif
