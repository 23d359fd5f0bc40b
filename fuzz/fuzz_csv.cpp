// SPDX-License-Identifier: MIT
// The first byte of an input chooses delimiter and special token, the rest is the file.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../tests/CsvReference.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  CsvReference::Check(std::string(data + 1, data + size),
                      static_cast<CsvFieldDelimiter>(data[0] % 3), "\0\" ,"[data[0] / 3 % 4]);
  return 0;
}
