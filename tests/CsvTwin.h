// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_CSV_TWIN_H
#define ZELCONFUTILS_TESTS_CSV_TWIN_H

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "CsvDocument.h"
#include "TestFiles.h"

/// The reader once more, byte by byte over a text in memory, which its copies share.
struct CsvTwin {
  using Fields = std::vector<std::string>;
  struct Source {
    std::string bytes;
    std::size_t at = 0;
  };

  std::shared_ptr<Source> source;
  char delimiter = ',', token = '\0';
  unsigned rowCount = 0;
  bool present = false;

  void Load(const std::string& file) {
    source = std::make_shared<Source>();
    for (std::size_t i = 0; i < file.size(); ++i) {
      if (file.compare(i, 2, "\r\n") != 0) source->bytes += file[i];
    }
    present = true;
  }

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

  /// The same step as the document, whose `GetRow` returned `given`; compared in all that a caller
  /// can see. False once both are at the end; throws where they differ.
  bool Follow(bool given, const CsvDocument& document, const CsvDocumentRow& row) {
    const bool any = source != nullptr && source->at < source->bytes.size();
    const Fields expected = any ? Row() : Fields();
    rowCount += any ? 1 : 0;
    present = present && any && source->at < source->bytes.size();
    Fields fields;
    for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) fields.push_back(row.GetField(i));
    if (given != any || fields != expected || document.GetRowCount() != rowCount ||
        document.IsCsvRecordPresence() != present) {
      throw std::logic_error("differs before the end of: " +
                             (any ? source->bytes.substr(0, source->at) : ""));
    }
    return any;
  }

  /// Reads a file that holds `text` to its end and once more. Throws where the twin differs.
  static void Check(const std::string& path, const std::string& text, CsvFieldDelimiter kind,
                    char token) {
    TestFiles::Write(path, text, std::ios::binary);
    CsvTwin twin;
    CsvDocument document;
    CsvDocumentRow row;  // one for all: what it held before must not show
    twin.Load(text);
    document.SetFieldDelimiter(kind);
    document.SetFieldSpecialToken(twin.token = token);
    twin.delimiter = ",;\t"[kind];
    if (!document.Load(path.c_str()) || !document.IsCsvRecordPresence()) {
      throw std::logic_error("not loaded: " + text);
    }
    while (twin.Follow(document.GetRow(row), document, row)) {
    }
    twin.Follow(document.GetRow(row), document, row);
  }
};

#endif
