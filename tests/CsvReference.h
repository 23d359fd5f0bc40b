// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_CSV_REFERENCE_H
#define ZELCONFUTILS_TESTS_CSV_REFERENCE_H

#include <algorithm>
#include <sstream>
#include <string>

#include "CsvDocument.h"
#include "FailingNew.h"
#include "Quoted.h"
#include "TestFiles.h"

/// Rows as texts, the reader of CSV files once more, plainly, and a check of the one by the other.
namespace CsvReference {

inline std::string RowText(const CsvDocumentRow& row) {
  std::string text;
  for (unsigned short i = 0; i < row.GetFieldsCount(); ++i)
    text += '[' + Bare(row.GetField(i)) + ']';
  return text;
}

/// The next row, and whether another one is expected then: `[a][b]+`, or `[a][b].`, or `false.`
/// Each allocation fails once: where that shows in the row or the document, it is told, too.
inline std::string NextRow(CsvDocument& document, CsvDocumentRow& row) {
  std::string text;
  bool given = false;
  const bool expected = document.IsCsvRecordPresence();
  const auto tell = [&](bool failed) {
    text += RowText(row);
    if (failed && document.IsCsvRecordPresence() != expected) text += "(other state, no memory)";
  };
  FailingNew::ForEachAllocation([&] { given = document.GetRow(row); }, tell);
  return text + (given ? "" : "false") + (document.IsCsvRecordPresence() ? '+' : '.');
}

/// The next rows as long as one is expected: `[a][b]+ [c].`
inline std::string Rows(CsvDocument& document) {
  CsvDocumentRow row;
  std::string text = NextRow(document, row);
  while (document.IsCsvRecordPresence()) text += ' ' + NextRow(document, row);
  return text;
}

/// The row that a record gives, its line end included.
inline std::string RowText(const std::string& record, char delimiter, char token) {
  const std::size_t end = record.find_first_of(std::string("\r\n\0", 3));
  std::istringstream fields(record.substr(0, end) + delimiter);
  std::string text;
  for (std::string field; std::getline(fields, field, delimiter);) {
    if (!field.empty() && field.front() == token) field.erase(0, 1);
    if (!field.empty() && field.back() == token) field.pop_back();
    field.erase(0, field.find_first_not_of(' '));
    field.erase(field.find_last_not_of(' ') + 1);
    text += '[' + Bare(field) + ']';
  }
  return text;
}

/// The rows of a file that holds `text`.
inline std::string Rows(std::string text, char delimiter, char token) {
  for (std::size_t at = 0; (at = text.find("\r\n", at)) != text.npos;) text.erase(at, 1);
  std::string rows;
  for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
    end = std::min(text.find_first_of("\r\n", at), text.size() - 1) + 1;
    rows += RowText(text.substr(at, end - at), delimiter, token);
    rows += end == text.size() ? "." : "+ ";
  }
  return rows.empty() ? "false." : rows;
}

/// Throws where a document gives other rows than the reference.
inline void Check(const std::string& text, CsvFieldDelimiter kind, char token) {
  const char delimiter = ",;\t"[kind];
  TestFiles::Write(TestFiles::Path("csv"), text, std::ios::binary);
  CsvDocument document;
  document.SetFieldDelimiter(kind);
  document.SetFieldSpecialToken(token);
  document.Load(TestFiles::Path("csv").c_str());
  Compare("the rows of " + Quoted(text) + ", delimiter " + Quoted({delimiter}) +
              ", special token " + Quoted({token}),
          Rows(text, delimiter, token), Rows(document));
}

}  // namespace CsvReference

#endif
