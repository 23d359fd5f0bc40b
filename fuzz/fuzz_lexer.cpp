// SPDX-License-Identifier: MIT
// The first byte chooses the length of the lines, which need not end in LF; the rest is the text.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "../tests/SlowLexer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::size_t length = data[0] / 2 + std::size_t{1};
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size(); at += length) lines.push_back(text.substr(at, length));
  SlowLexer::Check(lines);
  return 0;
}
