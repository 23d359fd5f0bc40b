// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_CSV_TWIN_H
#define ZELCONFUTILS_TESTS_CSV_TWIN_H

#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "CsvDocument.h"
#include "TestFiles.h"
#include "csv/CsvRecordReader.h"

/// The reader once more, byte by byte over a text in memory.
struct CsvTwin {
  using Fields = std::vector<std::string>;

  std::string bytes;
  char delimiter = ',', token = '\0';
  std::size_t at = 0;
  unsigned rowCount = 0;
  bool present = true;

  explicit CsvTwin(const std::string& file) {
    for (std::size_t i = 0; i < file.size(); ++i) {
      if (file.compare(i, 2, "\r\n") != 0) bytes += file[i];
    }
  }

  std::string Record() {
    const std::size_t start = at;
    while (at < bytes.size() && bytes[at] != '\r' && bytes[at] != '\n') ++at;
    if (at < bytes.size()) ++at;
    present = present && at < bytes.size();
    return bytes.substr(start, at - start);
  }

  Fields Row() {
    Fields row;
    std::string field;
    for (const char c : Record() + '\0') {
      if (c != delimiter && std::strchr("\r\n", c) == nullptr) {  // which finds NUL too
        field += c;
        continue;
      }
      if (!field.empty() && field.front() == token) field.erase(0, 1);
      if (!field.empty() && field.back() == token) field.pop_back();
      while (!field.empty() && field.front() == ' ') field.erase(0, 1);
      while (!field.empty() && field.back() == ' ') field.pop_back();
      row.push_back(std::exchange(field, ""));
      if (c != delimiter) break;
    }
    return row;
  }

  /// One step of both, compared in all that a caller can see. False once both are at the end;
  /// throws where they differ.
  bool NextRow(CsvDocument& document, CsvDocumentRow& row) {
    const bool given = at < bytes.size();
    const Fields expected = given ? Row() : Fields();
    rowCount += given ? 1 : 0;
    present = present && given;
    Require(document.GetRow(row) == given, "result");
    Require(FieldsOf(row) == expected, "fields");
    Require(document.IsCsvRecordPresence() == present, "record presence");
    Require(document.GetRowCount() == rowCount, "row count");
    return given;
  }

  /// Reads a file that holds `text` as a document, and once more as records by way of blocks of
  /// several sizes. Throws where they differ from the twin.
  static void Check(const std::string& path, const std::string& text, CsvFieldDelimiter kind,
                    char token) {
    TestFiles::Write(path, text, std::ios::binary);
    CsvTwin twin(text);
    CsvDocument document;
    CsvDocumentRow row;  // one for all: what it held before must not show
    document.SetFieldDelimiter(kind);
    document.SetFieldSpecialToken(twin.token = token);
    twin.delimiter = ",;\t"[kind];
    twin.Require(document.Load(path.c_str()) && document.IsCsvRecordPresence(), "Load");
    while (twin.NextRow(document, row)) {
    }
    twin.NextRow(document, row);  // the end again
    for (const std::size_t blockBytes : {1u, 2u, 3u, 64u}) {
      CsvRecordReader reader(blockBytes);
      twin.Require(reader.Open(path.c_str()) != nullptr, "Open");
      twin.at = 0;
      for (std::string record = "more"; !record.empty();) {
        record = twin.Record();
        twin.Require(reader.ReadRecord() == (record.find_first_of("\r\n") != record.npos), "line");
        twin.Require(reader.Record() == record, "record");
        twin.Require(reader.AtEnd() == (twin.at == twin.bytes.size()), "end");
      }
    }
  }

  static Fields FieldsOf(const CsvDocumentRow& row) {
    Fields fields;
    for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) fields.push_back(row.GetField(i));
    return fields;
  }

 private:
  void Require(bool holds, const char* what) const {
    if (holds) return;
    const std::size_t from = at < 40 ? 0 : at - 40;
    throw std::logic_error(what + (" differs before the end of: " + bytes.substr(from, at - from)));
  }
};

#endif
