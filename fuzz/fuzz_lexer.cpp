// SPDX-License-Identifier: MIT
// The input is the text; 0x01 parts it into the lines that the lexer is given.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../tests/LexerReference.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const bool ignore : {false, true}) LexerReference::Check({data, data + size}, ignore);
  return 0;
}
