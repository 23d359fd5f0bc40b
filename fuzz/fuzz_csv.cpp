// SPDX-License-Identifier: MIT
// The first byte chooses delimiter and special token, the rest is the file.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../tests/CsvTwin.h"
#include "../tests/TestFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string path = TestFiles::Path("csv"), text(data + 1, data + size);
  TestFiles::Write(path, text, std::ios::binary);
  CsvTwin twin;
  CsvDocumentRow row;
  twin.Set(static_cast<CsvFieldDelimiter>(data[0] % 3), "\0\" ,"[data[0] / 3 % 4]);
  twin.Load(path.c_str(), &text);
  while (twin.GetRow(row)) {
  }
  return 0;
}
