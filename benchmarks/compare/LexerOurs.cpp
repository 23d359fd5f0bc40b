// SPDX-License-Identifier: MIT
#include "Stream.h"
#include "ZelLex.h"

bool ReadStream(const char* path, StringSink& sink) {
  FileIterator source(path);
  ZelLex lexer(&source, false);
  while (const ZelLexToken* token = lexer.GetToken()) sink.Take(token->text);
  return true;
}
