// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_CSV_REFERENCE_H
#define ZELCONFUTILS_TESTS_CSV_REFERENCE_H

#include <string>
#include <vector>

#include "CsvDocument.h"
#include "FailingNew.h"
#include "Quoted.h"
#include "TestFiles.h"

/// Rows as texts, the reader of CSV files once more, plainly, and a check of the one by the other.
namespace CsvReference {

inline std::string RowText(const CsvDocumentRow& row) {
  std::string text;
  for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) text += '[' + row.GetField(i) + ']';
  return text;
}

/// The rows as long as one can be expected: `[a][b]+ [c].`, `+` where another one is expected then.
/// Each allocation fails once: where that shows in the row or the document, it is told, too.
inline std::string AllRows(CsvDocument& document) {
  std::string text;
  CsvDocumentRow row;
  while (document.IsCsvRecordPresence()) {
    if (!text.empty()) text += ' ';
    bool given = false;
    const auto tell = [&](bool failed) {
      text += RowText(row);
      if (failed && !document.IsCsvRecordPresence()) text += "no memory, but a row less expected";
    };
    FailingNew::ForEachAllocation([&] { given = document.GetRow(row); }, tell);
    text += given ? "" : "false";
    text += document.IsCsvRecordPresence() ? '+' : '.';
  }
  return text;
}

/// The row that a record gives, its line end included.
inline std::string RowText(const std::string& record, char delimiter, char token) {
  std::vector<std::string> fields(1);
  for (const char c : record) {
    if (c == '\r' || c == '\n' || c == '\0') break;
    c == delimiter ? fields.emplace_back() : fields.back() += c;
  }
  std::string text;
  for (std::string& field : fields) {
    if (!field.empty() && field.front() == token) field.erase(0, 1);
    if (!field.empty() && field.back() == token) field.pop_back();
    field.erase(0, field.find_first_not_of(' '));
    field.erase(field.find_last_not_of(' ') + 1);
    text += '[' + field + ']';
  }
  return text;
}

/// What `AllRows` is to tell of a file that holds `text`.
inline std::string AllRows(const std::string& text, char delimiter, char token) {
  std::string rows, record;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.compare(i, 2, "\r\n") == 0) continue;  // counts as LF
    record += text[i];
    const bool isLast = i + 1 == text.size();
    if (text[i] != '\r' && text[i] != '\n' && !isLast) continue;
    rows += RowText(record, delimiter, token) + (isLast ? "." : "+ ");
    record.clear();
  }
  return rows.empty() ? "false." : rows;
}

/// The rows of a file that holds `text`.
inline std::string Read(const std::string& text, CsvFieldDelimiter kind, char token) {
  const std::string path = TestFiles::Path("csv");
  TestFiles::Write(path, text, std::ios::binary);
  CsvDocument document;
  document.SetFieldDelimiter(kind);
  document.SetFieldSpecialToken(token);
  return document.Load(path.c_str()) ? AllRows(document) : "not loaded";
}

/// Throws where a document gives other rows than the reference.
inline void Check(const std::string& text, CsvFieldDelimiter kind, char token) {
  const char delimiter = ",;\t"[kind];
  Compare("the rows of " + Quoted(text) + ", delimiter " + Quoted({delimiter}) +
              ", special token " + Quoted({token}),
          Quoted(AllRows(text, delimiter, token)), Quoted(Read(text, kind, token)));
}

/// Of an input the first byte chooses delimiter and special token, the rest is the file.
inline void CheckInput(const std::string& input) {
  if (input.empty()) return;
  const auto first = static_cast<unsigned char>(input[0]);
  Check(input.substr(1), static_cast<CsvFieldDelimiter>(first % 3), "\0\" ,"[first / 3 % 4]);
}

}  // namespace CsvReference

#endif
