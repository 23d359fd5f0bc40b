// SPDX-License-Identifier: MIT
// The first byte chooses delimiter and special token, the rest is the file.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../tests/CsvTwin.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const auto kind = static_cast<CsvFieldDelimiter>(data[0] % 3);
  CsvTwin::ReadAll(std::string(data + 1, data + size), kind, "\0\" ,"[data[0] / 3 % 4]);
  return 0;
}
