// SPDX-License-Identifier: MIT
// The fields of all rows, joined again, are the file, but for line ends, for spaces and special
// tokens, and for what stands after a NUL in its record.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "../tests/Quoted.h"
#include "../tests/TestFiles.h"
#include "CsvDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size), path = TestFiles::Path("csv");
  TestFiles::Write(path, text, std::ios::binary);
  CsvDocument document;
  document.SetFieldSpecialToken('"');
  document.Load(path.c_str());
  std::string joined, expected = text;
  for (CsvDocumentRow row; joined.size() <= size && document.GetRow(row); joined.back() = '\n') {
    for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) joined += row.GetField(i) + ',';
  }
  for (std::size_t at = 0; (at = expected.find("\r\n", at)) != text.npos;) expected.erase(at, 1);
  std::replace(expected.begin(), expected.end(), '\r', '\n');
  if (!expected.empty() && expected.back() != '\n') expected += '\n';
  for (std::size_t at; (at = expected.find('\0')) != text.npos;) {
    expected.erase(at, expected.find('\n', at) - at);
  }
  for (std::string* all : {&joined, &expected}) {
    std::erase_if(*all, [](char c) { return c == ' ' || c == '"'; });
  }
  Compare("the rows of " + Quoted(text), Quoted(expected), Quoted(joined));
  return 0;
}
