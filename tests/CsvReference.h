// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_CSV_REFERENCE_H
#define ZELCONFUTILS_TESTS_CSV_REFERENCE_H

#include <memory>
#include <string>
#include <vector>

#include "CsvDocument.h"
#include "FailingNew.h"
#include "Quoted.h"
#include "TestFiles.h"

/// A document, and beside it the reader once more, plainly: byte by byte over a text in memory,
/// which its copies share. Each call is made with each of its allocations failing once. Where the
/// two differ in anything that a caller can see, `std::logic_error` tells the step and both.
struct CsvReference {
  struct Source {
    std::string bytes;  // of the file, CR LF folded
    std::size_t at = 0;
  };

  CsvDocument document;
  std::shared_ptr<Source> source;
  char delimiter = ',', token = '\0';
  unsigned rowCount = 0;
  bool present = false;

  void Set(CsvFieldDelimiter kind, char newToken) {
    document.SetFieldDelimiter(kind);
    document.SetFieldSpecialToken(token = newToken);
    if (kind <= TabDelimiter) delimiter = ",;\t"[kind];
  }

  /// `bytes` is what the file holds, null when it cannot be opened.
  void Load(const char* path, const std::string* bytes) {
    bool loaded = false;
    FailingNew::ForEachAllocation([&] { loaded = document.Load(path); }, [](bool) {});
    Compare("Load", bytes != nullptr ? "true" : "false", loaded ? "true" : "false");
    source.reset();
    if (bytes == nullptr) return;
    source = std::make_shared<Source>();
    for (std::size_t i = 0; i < bytes->size(); ++i) {
      if (bytes->compare(i, 2, "\r\n") != 0) source->bytes += (*bytes)[i];
    }
    present = true;
  }

  void CopyFrom(const CsvReference& other, bool byConstructor) {
    const auto copy = [&] {
      byConstructor ? document = CsvDocument(other.document) : document = other.document;
    };
    FailingNew::ForEachAllocation(copy, [](bool) {});
    *this = other;
  }

  bool GetRow(CsvDocumentRow& row) {
    const std::string before = ResultText(false, {}, rowCount, present);
    const bool any = source != nullptr && source->at < source->bytes.size();
    const std::size_t start = any ? source->at : 0;
    const Fields expected = any ? NextRow() : Fields();
    const std::string step = "GetRow of the record " +
                             Quoted(any ? source->bytes.substr(start, source->at - start) : "") +
                             ", delimiter " + Quoted({delimiter}) + ", special token " +
                             Quoted({token});
    bool given = false;
    const auto actual = [&] {
      Fields fields;
      for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) fields.push_back(row.GetField(i));
      return ResultText(given, fields, document.GetRowCount(), document.IsCsvRecordPresence());
    };
    FailingNew::ForEachAllocation([&] { given = document.GetRow(row); },
                                  [&](bool failed) {
                                    if (failed) Compare(step + ", no memory", before, actual());
                                  });
    rowCount += any ? 1 : 0;
    present = present && any && source->at < source->bytes.size();
    Compare(step, ResultText(any, expected, rowCount, present), actual());
    return any;
  }

  /// Reads a file that holds `text` to its end.
  static void ReadAll(const std::string& text, CsvFieldDelimiter kind, char token) {
    const std::string path = TestFiles::Path("csv");
    TestFiles::Write(path, text, std::ios::binary);
    CsvReference reference;
    CsvDocumentRow row;
    reference.Set(kind, token);
    reference.Load(path.c_str(), &text);
    while (reference.GetRow(row)) {
    }
  }

  /// Of an input the first byte chooses delimiter and special token, the rest is the file.
  static void ReadInput(const std::string& input) {
    if (input.empty()) return;
    const auto first = static_cast<unsigned char>(input[0]);
    ReadAll(input.substr(1), static_cast<CsvFieldDelimiter>(first % 3), "\0\" ,"[first / 3 % 4]);
  }

 private:
  using Fields = std::vector<std::string>;

  static std::string ResultText(bool given, const Fields& fields, unsigned rows, bool more) {
    std::string text = given ? "true, fields" : "false, fields";
    for (const std::string& field : fields) text += ' ' + Quoted(field);
    return text + ", " + std::to_string(rows) + " rows so far, " + (more ? "more" : "no more");
  }

  Fields NextRow() {
    Fields row(1);
    bool afterNul = false;
    while (source->at < source->bytes.size()) {
      const char c = source->bytes[source->at++];
      if (c == '\r' || c == '\n') break;
      afterNul = afterNul || c == '\0';
      if (afterNul) continue;
      c == delimiter ? row.emplace_back() : row.back() += c;
    }
    for (std::string& field : row) {
      if (!field.empty() && field.front() == token) field.erase(0, 1);
      if (!field.empty() && field.back() == token) field.pop_back();
      field.erase(0, field.find_first_not_of(' '));
      field.erase(field.find_last_not_of(' ') + 1);
    }
    return row;
  }
};

#endif
