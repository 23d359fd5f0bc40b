// SPDX-License-Identifier: MIT
// What it does with an input stands beside the test that does the same with the kept ones.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../tests/CsvReference.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CsvReference::ReadInput(std::string(data, data + size));
  return 0;
}
