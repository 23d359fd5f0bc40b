// SPDX-License-Identifier: MIT
// The first byte chooses the mode and the length of the lines, which need not end in LF; the rest
// is the text. The tokens must give back the text, up to the end mark.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "ZelLex.h"

namespace {

class Pieces : public StreamIterator {
 public:
  Pieces(std::string bytes, std::size_t piece) : text(std::move(bytes)), length(piece) {}
  bool HasMoreLines() override { return next < text.size(); }
  std::string GetLine() override {
    const std::size_t start = next;
    next = std::min(text.size(), start + length);
    return text.substr(start, length);
  }

 private:
  std::string text;
  std::size_t length, next = 0;
};

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const bool ignore = (data[0] & 1) != 0;
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  Pieces source(text, data[0] / 2 + std::size_t{1});
  ZelLex lexer(&source, ignore);
  std::size_t at = 0;
  std::int32_t before = UnknownToken;
  while (const ZelLexToken* token = lexer.GetToken()) {
    const std::string& bytes = token->text;
    if (bytes.empty()) {
      Require(ignore && token->kind == UnknownToken);
      const std::size_t end = std::min(text.find_first_not_of(" \t\v", at), text.size());
      Require(end > at);
      at = end;
    } else {
      Require(text.compare(at, bytes.size(), bytes) == 0);
      at += bytes.size();
      const bool run = token->kind == StringConstantToken || token->kind == DigitConstantToken;
      Require(run ? token->kind != before : bytes.size() == 1);  // a run came whole
      Require((token->kind == NewLineToken) == (bytes == "\n"));
      Require(!ignore || token->kind != WhiteSpaceToken);
    }
    before = bytes.empty() ? std::int32_t{UnknownToken} : token->kind;
  }
  Require(at == text.size() || text[at] == '\xFF' || (at > 0 && text[at - 1] == '\xFF'));
  Require(lexer.GetToken() == nullptr);
  return 0;
}
