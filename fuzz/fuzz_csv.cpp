// SPDX-License-Identifier: MIT
// The first byte of an input chooses the settings, the rest is the file.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../tests/CsvReference.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CsvReference::CheckInput(std::string(data, data + size));
  return 0;
}
