// SPDX-License-Identifier: MIT
#include "CsvDocument.h"
#include "Stream.h"

bool ReadStream(const char* path, StringSink& sink) {
  CsvDocument document;
  CsvDocumentRow row;
  if (!document.Load(path)) return false;
  while (document.IsCsvRecordPresence()) {
    if (!document.GetRow(row)) break;
    const unsigned short count = row.GetFieldsCount();
    for (unsigned short i = 0; i < count; ++i) sink.Take(row.GetField(i));
  }
  return true;
}

// Every field is a string of the row, but nobody asks the row for it.
bool ReadOnly(const char* path, std::uint64_t& count) {
  CsvDocument document;
  CsvDocumentRow row;
  if (!document.Load(path)) return false;
  while (document.IsCsvRecordPresence()) {
    if (!document.GetRow(row)) break;
    count += row.GetFieldsCount();
  }
  return true;
}
