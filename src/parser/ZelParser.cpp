// SPDX-License-Identifier: MIT
#include "ZelParser.h"

#include <memory>
#include <utility>

ZelParser::ZelParser() : lexer(nullptr), fileSource(nullptr), bufferSource(nullptr) {}

ZelParser::~ZelParser() {
  delete std::exchange(fileSource, nullptr);
  delete std::exchange(lexer, nullptr);
  delete std::exchange(bufferSource, nullptr);
}

bool ZelParser::ParseFile(const char* fileName, void* context) {
  if (fileSource == nullptr) {
    auto made = std::make_unique<FileIterator>(fileName);
    if (lexer == nullptr) lexer = new ZelLex(made.get(), false);
    fileSource = made.release();
  }
  const bool result = Parse(context);
  fileSource->CloseFile();
  return result;
}

bool ZelParser::ParseBuffer(const char* text, void* context) {
  if (bufferSource == nullptr) {
    auto made = std::make_unique<BufferIterator>(text);
    if (lexer == nullptr) lexer = new ZelLex(made.get(), false);
    bufferSource = made.release();
  }
  return Parse(context);
}

ZelLexToken* ZelParser::GetToken() { return lexer->GetToken(); }
