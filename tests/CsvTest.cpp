// SPDX-License-Identifier: MIT
// The scenarios of CSV files, and what does not fit into one.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "CsvDocument.h"
#include "CsvReference.h"
#include "FailingNew.h"
#include "Scenarios.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "csv/CsvRecordReader.h"
#include "csv/RowMemory.h"

namespace {

using Scenarios::ResultText;
using TestFiles::Path;

std::string Written(const std::string& text) {
  TestFiles::Write(Path("a"), text, std::ios::binary);
  return Path("a");
}

// What is held now: files, and blocks of memory.
std::pair<int, long> Held() { return {TestSystem::OpenFiles(), FailingNew::LiveBlocks()}; }

// A document that has loaded a file, and another one.
struct Documents {
  explicit Documents(const std::string& text) { document->Load(Written(text).c_str()); }

  // With what is written on the standard error stream.
  std::string Load(const char* path) {
    testing::internal::CaptureStderr();
    const std::string result = document->Load(path) ? "true " : "false ";
    return result + Quoted(testing::internal::GetCapturedStderr());
  }
  std::string GetRow() { return CsvReference::NextRow(*document, row); }
  std::string Rows() { return CsvReference::Rows(*document); }
  // Whether the next record needs more room than the row and the document have kept.
  bool GetRowAllocates() {
    return FailingNew::ForEachAllocation([this] { document->GetRow(row); }, [](bool) {}) > 0;
  }
  std::string State() const {
    return "rows " + std::to_string(document->GetRowCount()) + ", files " +
           std::to_string(TestSystem::OpenFiles() - openFiles);
  }
  void SetFieldDelimiter(int kind) {
    auto variable = static_cast<CsvFieldDelimiter>(kind);
    document->SetFieldDelimiter(variable);
  }
  void Append(const char* text) { std::ofstream(Path("a"), std::ios::app) << text; }
  void Assign(const CsvDocument& given) {
    const std::string before = State();
    const auto check = [&](bool failed) {
      if (failed) Compare("state", before, State());
    };
    FailingNew::ForEachAllocation([&] { *document = given; }, check);
  }

  const int openFiles = TestSystem::OpenFiles();
  std::unique_ptr<CsvDocument> document = std::make_unique<CsvDocument>();
  std::unique_ptr<CsvDocument> other = std::make_unique<CsvDocument>();
  CsvDocumentRow row;
  const std::string file = Path("a");
};

const std::vector<Scenarios::Call<Documents>> kCalls = {
    SCENARIO_CALL(Load(text)),
    SCENARIO_CALL(Load(nullptr)),
    SCENARIO_CALL(Load(on.file.c_str())),
    SCENARIO_CALL(document->IsCsvRecordPresence()),
    SCENARIO_CALL(GetRow()),
    SCENARIO_CALL(Rows()),
    SCENARIO_CALL(GetRowAllocates()),
    SCENARIO_CALL(row.Reset()),
    SCENARIO_CALL(State()),
    SCENARIO_CALL(SetFieldDelimiter(number)),
    SCENARIO_CALL(document->SetFieldSpecialToken(*text)),
    SCENARIO_CALL(Append(text)),
    SCENARIO_CALL(document.swap(on.other)),
    SCENARIO_CALL(Assign(*on.other)),
    SCENARIO_CALL(Assign(*on.document)),
    SCENARIO_CALL(Assign(CsvDocument(*on.other)))};

void Run(Scenarios::Scanner& line, Scenarios::Scanner) {
  const std::string text = line.Text();
  line.Need("|");
  Path("a");  // the directory holds memory from the first call on
  const auto held = Held();
  std::optional<Documents> documents(text);
  Scenarios::RunCalls(line, *documents, kCalls);
  documents.reset();
  if (Held() != held) throw std::logic_error("a file or memory is left");
}

const bool kRules = Scenarios::Register("Csv", "csv.txt", Run);

TEST(CsvRow, FieldsAreTheRowsOwnAndWrapAt65536) {
  CsvDocumentRow row, copy;
  row.AddField(std::string("n\0l", 3));
  for (int i = 1; i < 65536; ++i) row.AddField("x");
  copy.AddField("old");
  FailingNew::ForEachAllocation(
      [&] { copy = row; },
      [&](bool failed) { EXPECT_EQ(copy.GetField(0), failed ? "old" : row.GetField(0)); });
  row.Reset();
  EXPECT_EQ(row.GetField(0), "") << "past the last field";
  EXPECT_EQ(copy.GetFieldsCount(), 0) << "65536 in 16 bits";
  EXPECT_EQ(CsvDocumentRow(copy).GetField(0) + copy.GetField(65535), std::string("n\0lx", 4));
}

TEST(CsvRow, AWideRowGetsRoomForTheWholeRecordAtOnce) {
  namespace RowMemory = zelconfutils::RowMemory;
  RowMemory::Fields fields(RowMemory::kKeptFields);
  RowMemory::AddField(fields, ",a,,\n", ',');
  EXPECT_EQ(fields.size(), RowMemory::kKeptFields + 1);
  EXPECT_EQ(fields.capacity(), RowMemory::kKeptFields + 1 + 3);
}

TEST(CsvRecords, ALongRecordKeepsNoRoom) {
  zelconfutils::CsvRecordReader reader(1000);
  reader.Open(Written(std::string(3000, 'f') + "\nb\r\n").c_str());
  reader.ReadRecord();
  reader.ReadRecord();
  EXPECT_EQ(reader.Record(), "b\n");
  EXPECT_LT(reader.Record().capacity(), 1000u);
}

}  // namespace
