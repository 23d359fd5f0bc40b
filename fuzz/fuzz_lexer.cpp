// SPDX-License-Identifier: MIT
// The texts of all tokens, one after the other, are the input up to a NUL or the end mark, less the
// white space where it is ignored. After each token a copy of the lexer goes on.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "../tests/Quoted.h"
#include "ZelLex.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = std::string(data, data + size).c_str();
  std::string expected = text.substr(0, text.find('\xFF'));
  for (const bool ignores : {false, true}) {
    if (ignores) std::erase_if(expected, [](char c) { return c == ' ' || c == '\t' || c == '\v'; });
    BufferIterator source(text.c_str());
    auto lexer = std::make_unique<ZelLex>(&source, ignores);
    std::string joined;
    for (std::size_t left = text.size() + 1; left > 0; --left) {  // a token is a byte at least
      const ZelLexToken* const token = lexer->GetToken();
      if (token == nullptr) break;
      joined += token->text;
      lexer = std::make_unique<ZelLex>(*lexer);
    }
    if (joined.ends_with('\xFF')) joined.pop_back();  // at the end of a run it is no token
    Compare("the tokens of " + Quoted(text), Quoted(expected), Quoted(joined));
  }
  return 0;
}
