// SPDX-License-Identifier: MIT
// The first byte chooses delimiter and special token, the rest is the file.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../tests/CsvTwin.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TestFiles::TemporaryDirectory directory;
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  const auto kind = static_cast<CsvFieldDelimiter>(data[0] % 3);
  CsvTwin::Check(directory.Path("csv"), text, kind, "\0\" ,"[data[0] / 3 % 4]);
  return 0;
}
