// SPDX-License-Identifier: MIT
#include "CsvDocument.h"

#include <string_view>
#include <utility>

#include "csv/CsvRecordReader.h"
#include "csv/FieldEnds.h"
#include "csv/RowMemory.h"
#include "text/Text.h"

namespace RowMemory = zelconfutils::RowMemory;
namespace Text = zelconfutils::Text;

namespace {

constexpr char kTrimSet[] = " ";  // GetCsvFields counts on one byte

// Most fields of most tables are that short, and it is the room that a string has without a block
// of its own. Copied in this one length: lengths that vary from field to field cost more in
// mispredicted branches than the bytes do.
constexpr std::size_t kShortBytes = 15;

// Replaces `field` by `text`, which lies in a record that goes on up to `recordEnd`.
void Store(std::string& field, std::string_view text, const char* recordEnd) {
  if (field.capacity() > RowMemory::kKeptTextBytes && text.size() < field.capacity() / 2) {
    std::string(text).swap(field);  // an assignment may keep the room
  } else if (text.size() <= kShortBytes &&
             kShortBytes <= static_cast<std::size_t>(recordEnd - text.data())) {
    field.assign(text.data(), kShortBytes);
    field.resize(text.size());
  } else {
    field.assign(text);
  }
}

}  // namespace

CsvDocument::CsvDocument() { Initialize(); }

CsvDocument::CsvDocument(const CsvDocument& other)
    : delimiter(other.delimiter),
      specialToken(other.specialToken),
      path(Text::Duplicate(other.path)),
      file(other.file),
      rowCount(other.rowCount),
      recordPresent(other.recordPresent),
      delimiterKind(other.delimiterKind),
      reader(other.reader) {}

CsvDocument& CsvDocument::operator=(const CsvDocument& other) {
  if (this == &other) return *this;
  char* copy = Text::Duplicate(other.path);
  CleanUp();
  delimiter = other.delimiter;
  specialToken = other.specialToken;
  path = copy;
  file = other.file;
  rowCount = other.rowCount;
  recordPresent = other.recordPresent;
  delimiterKind = other.delimiterKind;
  reader = other.reader;
  return *this;
}

CsvDocument::~CsvDocument() { CleanUp(); }

void CsvDocument::SetFieldDelimiter(CsvFieldDelimiter& kind) {
  delimiterKind = kind;
  switch (kind) {
    case CommaDelimiter:
      delimiter = ',';
      break;
    case SemicolonDelimiter:
      delimiter = ';';
      break;
    case TabDelimiter:
      delimiter = '\t';
      break;
  }
}

void CsvDocument::SetFieldSpecialToken(const char& token) { specialToken = token; }

bool CsvDocument::Load(const char* source) {
  std::unique_ptr<char[]> copy(Text::Duplicate(source));
  auto opened = std::make_shared<zelconfutils::CsvRecordReader>();
  CleanUp();
  path = copy.release();
  if (path == nullptr) {
    std::fprintf(stderr, "Invalid CSV file  %s\n", "(null)");
    return false;
  }
  file = opened->Open(path);
  if (file == nullptr) {
    std::fprintf(stderr, "Failed to open CSV file %s\n", path);
    return false;
  }
  reader = std::move(opened);
  recordPresent = true;
  return true;
}

bool CsvDocument::GetRow(CsvDocumentRow& row) {
  if (reader == nullptr) {
    row.Reset();
    recordPresent = false;
    return false;
  }
  const bool wasPresent = recordPresent;
  try {
    char* record = nullptr;
    std::uint32_t size = 0;
    GetCsvRecord(record, size);
    if (!GetCsvFields(&row, record, size)) {
      row.Reset();
      return false;
    }
  } catch (...) {
    reader->PutBack();
    recordPresent = wasPresent;
    row.Reset();
    throw;
  }
  ++rowCount;
  return true;
}

std::uint32_t CsvDocument::GetRowCount() const { return rowCount; }

bool CsvDocument::IsCsvRecordPresence() const { return recordPresent; }

void CsvDocument::Initialize() {
  delimiterKind = CommaDelimiter;
  delimiter = ',';
  specialToken = '\0';
}

void CsvDocument::CleanUp() {
  delete[] std::exchange(path, nullptr);
  reader.reset();
  file = nullptr;
}

void CsvDocument::GetCsvRecord(char*& record, std::uint32_t& size) {
  const bool lineEnded = reader->ReadRecord();
  recordPresent = lineEnded && recordPresent && !reader->AtEnd();
  std::string& text = reader->Record();
  if (text.empty()) return;
  record = text.data();
  size = static_cast<std::uint32_t>(text.size() + 1);
}

bool CsvDocument::GetCsvFields(CsvDocumentRow* row, const char* record, const std::uint32_t& size) {
  if (size == 0) return false;
  std::vector<std::string>& fields = row->fields;
  std::size_t count = 0;
  std::size_t begin = 0;
  zelconfutils::FieldEnds ends(record, size, delimiter);
  for (std::size_t end = ends.Next(); end < size; end = ends.Next()) {
    const char ending = record[end];
    if (!IsFieldDelimiter(ending) && !IsRowSeparator(ending) && ending != '\0') continue;

    std::string_view text(record + begin, end - begin);
    if (!text.empty() && IsFieldSpecialChar(text.front())) text.remove_prefix(1);
    if (!text.empty() && IsFieldSpecialChar(text.back())) text.remove_suffix(1);
    if (count == fields.size()) RowMemory::AddField(fields, record + end, delimiter);
    Store(fields[count], text, record + size);
    // Asked here too, as few fields need the call.
    if (!text.empty() && (text.front() == *kTrimSet || text.back() == *kTrimSet)) {
      StringTrim(fields[count], kTrimSet, true, true);
    }
    ++count;

    if (!IsFieldDelimiter(ending)) break;
    begin = end + 1;
  }
  RowMemory::Truncate(fields, count);
  return true;
}

bool CsvDocument::StringTrim(std::string& text, const char* chars, bool left, bool right) {
  const std::size_t before = text.size();
  const std::string_view set(chars);
  if (left && !text.empty() && set.find(text.front()) != set.npos) {
    text.erase(0, text.find_first_not_of(set));
  }
  if (right && !text.empty() && set.find(text.back()) != set.npos) {
    text.erase(text.find_last_not_of(set) + 1);
  }
  return text.size() != before;
}
