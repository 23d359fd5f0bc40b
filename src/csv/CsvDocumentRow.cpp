// SPDX-License-Identifier: MIT
#include "CsvDocument.h"

#include "csv/RowMemory.h"

CsvDocumentRow::CsvDocumentRow() = default;

// Field by field: the copy of a whole vector leaks in libc++ 14 when a field finds no memory.
CsvDocumentRow::CsvDocumentRow(const CsvDocumentRow& other) : CsvDocumentRow() {
  fields.reserve(other.fields.size());
  for (const std::string& field : other.fields) fields.push_back(field);
}

CsvDocumentRow& CsvDocumentRow::operator=(const CsvDocumentRow& other) {
  CsvDocumentRow copy(other);
  fields.swap(copy.fields);
  return *this;
}

CsvDocumentRow::~CsvDocumentRow() { Cleanup(); }

void CsvDocumentRow::AddField(const char* field) { fields.emplace_back(field); }

void CsvDocumentRow::AddField(const std::string& field) { fields.push_back(field); }

std::string CsvDocumentRow::GetField(unsigned short index) const {
  return index < fields.size() ? fields[index] : std::string();
}

unsigned short CsvDocumentRow::GetFieldsCount() const {
  return static_cast<unsigned short>(fields.size());
}

void CsvDocumentRow::Reset() { Cleanup(); }

void CsvDocumentRow::Cleanup() { zelconfutils::RowMemory::Clear(fields); }
