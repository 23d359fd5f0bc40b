// SPDX-License-Identifier: MIT
#include "CsvDocument.h"
#include "Stream.h"

// Every field is a string of the row; whoever only counts them does not ask the row for it.
bool ReadStream(const char* path, StringSink& sink) {
  CsvDocument document;
  CsvDocumentRow row;
  if (!document.Load(path)) return false;
  while (document.IsCsvRecordPresence()) {
    if (!document.GetRow(row)) break;
    const unsigned short count = row.GetFieldsCount();
    if (sink.countOnly) {
      sink.count += count;
    } else {
      for (unsigned short i = 0; i < count; ++i) sink.Take(row.GetField(i));
    }
  }
  return true;
}
