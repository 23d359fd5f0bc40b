// SPDX-License-Identifier: MIT
#include "CsvDocument.h"

CsvDocumentRow::CsvDocumentRow() = default;

CsvDocumentRow::CsvDocumentRow(const CsvDocumentRow& other) = default;

CsvDocumentRow& CsvDocumentRow::operator=(const CsvDocumentRow& other) {
  std::vector<std::string> copy(other.fields);
  fields.swap(copy);
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

void CsvDocumentRow::Cleanup() { fields.clear(); }
