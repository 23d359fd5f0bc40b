// SPDX-License-Identifier: MIT
// The fields of all rows, one after the other, are the bytes of the file up to its first NUL, less
// delimiters, line ends, spaces and special tokens.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../tests/Quoted.h"
#include "../tests/TestFiles.h"
#include "CsvDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = std::string(data, data + size).c_str(), path = TestFiles::Path("csv");
  TestFiles::Write(path, text, std::ios::binary);
  CsvDocument document;
  document.SetFieldSpecialToken('"');
  document.Load(path.c_str());
  std::string fields, expected = text;
  for (CsvDocumentRow row; fields.size() <= size && document.GetRow(row);) {
    for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) fields += row.GetField(i);
  }
  const auto isNoData = [](char c) { return std::string("\", \r\n").find(c) != std::string::npos; };
  std::erase_if(expected, isNoData);
  std::erase_if(fields, isNoData);
  Compare("the rows of " + Quoted(text), Quoted(expected), Quoted(fields));
  return 0;
}
