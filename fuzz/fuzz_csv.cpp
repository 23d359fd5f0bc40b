// SPDX-License-Identifier: MIT
// The first byte chooses delimiter and special token, the rest is the file.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>

#include "CsvDocument.h"
#include "csv/CsvRecordReader.h"

namespace {

struct ScratchFile {
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("zelconfutils_fuzz_csv_" + std::to_string(std::random_device()())))
                               .string();
  ~ScratchFile() { std::filesystem::remove(path); }
};

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

// What a field must look like, and with neither token nor spaces nor NUL: that the fields joined
// are the record.
void CheckRow(const CsvDocumentRow& row, std::string_view record, char delimiter, char token) {
  std::string joined;
  for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) {
    const std::string field = row.GetField(i);
    Require(field.find_first_of(std::string("\r\n\0", 3) + delimiter) == field.npos, "bare field");
    Require(field.empty() || (field.front() != ' ' && field.back() != ' '), "trimmed field");
    joined += i == 0 ? field : delimiter + field;
  }
  if (!record.empty() && (record.back() == '\n' || record.back() == '\r')) record.remove_suffix(1);
  if (row.GetFieldsCount() == 0) return;  // 65536 of them
  if (token == '\0' && record.find_first_of(std::string_view(" \0", 2)) == record.npos) {
    Require(joined == record, "joined fields are the record");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFile scratch;
  if (size == 0) return 0;
  auto kind = static_cast<CsvFieldDelimiter>(data[0] % 3);
  const char delimiter = ",;\t"[kind];
  const char token = "\0\" ,"[data[0] / 3 % 4];
  std::filesystem::remove(scratch.path);  // rewriting a file cut to 0 makes some systems sync it
  std::FILE* file = std::fopen(scratch.path.c_str(), "wb");
  Require(file != nullptr && std::fwrite(data + 1, 1, size - 1, file) == size - 1, "scratch file");
  std::fclose(file);

  CsvDocument document;
  document.SetFieldDelimiter(kind);
  document.SetFieldSpecialToken(token);
  Require(document.Load(scratch.path.c_str()), "Load");
  CsvRecordReader large, small(1 + data[0] % 7);
  large.Open(scratch.path.c_str());
  small.Open(scratch.path.c_str());

  CsvDocumentRow row;
  std::size_t rows = 0;
  while (document.IsCsvRecordPresence()) {
    const bool lineEnded = large.ReadRecord();
    Require(small.ReadRecord() == lineEnded && small.Record() == large.Record(),
            "records do not depend on the block");
    const bool delivered = document.GetRow(row);
    Require(delivered || (rows == 0 && size == 1), "only an empty file has no row");
    if (delivered) CheckRow(row, large.Record(), delimiter, token);
    rows += delivered ? 1 : 0;
  }
  Require(large.AtEnd() && small.AtEnd(), "nothing is left");
  Require(!document.GetRow(row) && row.GetFieldsCount() == 0, "the end stays the end");
  Require(document.GetRowCount() == rows, "GetRowCount");
  return 0;
}
