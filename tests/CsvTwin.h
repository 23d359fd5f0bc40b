// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_CSV_TWIN_H
#define ZELCONFUTILS_TESTS_CSV_TWIN_H

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "CsvDocument.h"
#include "FailingNew.h"
#include "TestFiles.h"

/// A document, and beside it the reader once more: byte by byte over a text in memory, which its
/// copies share. Each call is made with each of its allocations failing once; where the two differ
/// in anything that a caller can see, it throws.
struct CsvTwin {
  using Fields = std::vector<std::string>;
  struct Source {
    std::string bytes;
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
    Require(loaded == (bytes != nullptr), "load");
    source.reset();
    if (bytes == nullptr) return;
    source = std::make_shared<Source>();
    for (std::size_t i = 0; i < bytes->size(); ++i) {
      if (bytes->compare(i, 2, "\r\n") != 0) source->bytes += (*bytes)[i];
    }
    present = true;
  }

  void CopyFrom(const CsvTwin& other, bool byWayOfAnother) {
    const auto copy = [&] {
      byWayOfAnother ? document = CsvDocument(other.document) : document = other.document;
    };
    FailingNew::ForEachAllocation(copy, [](bool) {});
    *this = other;
  }

  bool GetRow(CsvDocumentRow& row) {
    const bool any = source != nullptr && source->at < source->bytes.size();
    bool given = false;
    FailingNew::ForEachAllocation([&] { given = document.GetRow(row); },
                                  [&](bool failed) {
                                    Require(!failed || row.GetFieldsCount() == 0, "failed row");
                                    Require(!failed || document.IsCsvRecordPresence() == present,
                                            "presence");
                                  });
    const Fields expected = any ? Row() : Fields();
    Fields fields;
    for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) fields.push_back(row.GetField(i));
    rowCount += any ? 1 : 0;
    present = present && any && source->at < source->bytes.size();
    Require(given == any && fields == expected && document.GetRowCount() == rowCount &&
                document.IsCsvRecordPresence() == present,
            any ? source->bytes.substr(0, source->at) : "end");
    return any;
  }

  /// Reads a file that holds `text` to its end.
  static void ReadAll(const std::string& text, CsvFieldDelimiter kind, char token) {
    const std::string path = TestFiles::Path("csv");
    TestFiles::Write(path, text, std::ios::binary);
    CsvTwin twin;
    CsvDocumentRow row;
    twin.Set(kind, token);
    twin.Load(path.c_str(), &text);
    while (twin.GetRow(row)) {
    }
  }

 private:
  Fields Row() {
    Fields row(1);
    bool behindNul = false;
    while (source->at < source->bytes.size()) {
      const char c = source->bytes[source->at++];
      if (c == '\r' || c == '\n') break;
      behindNul = behindNul || c == '\0';
      if (behindNul) continue;
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
  static void Require(bool holds, const std::string& what) {
    if (!holds) throw std::logic_error("differs: " + what);
  }
};

#endif
