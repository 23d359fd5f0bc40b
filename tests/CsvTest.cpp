// SPDX-License-Identifier: MIT
// The scenarios of CSV files, and what does not fit into one.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "CsvDocument.h"
#include "FailingNew.h"
#include "Scenarios.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "csv/RowMemory.h"

namespace {

using Scenarios::ResultText;

// A document that has loaded the file `a`, and another one.
struct Documents {
  Documents() { document->Load("a"); }

  // With what is written on the standard error stream.
  std::string Load(const char* from) {
    testing::internal::CaptureStderr();
    const std::string result = document->Load(from) ? "true " : "false ";
    return result + Quoted(testing::internal::GetCapturedStderr());
  }
  // Each allocation fails once: where that shows in the row or the document, it is told, too.
  std::string GetRow() {
    std::string text;
    bool given = false;
    const bool expected = document->IsCsvRecordPresence();
    const auto tell = [&](bool failed) {
      for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) {
        text += '[' + Bare(row.GetField(i)) + ']';
      }
      if (failed && document->IsCsvRecordPresence() != expected) text += "(other state)";
    };
    FailingNew::ForEachAllocation([&] { given = document->GetRow(row); }, tell);
    return text + (given ? "" : "false") + (document->IsCsvRecordPresence() ? '+' : '.');
  }
  std::string Rows() {
    std::string rows = GetRow();
    while (document->IsCsvRecordPresence() && rows.size() < 300000) rows += ' ' + GetRow();
    return rows;
  }
  // Whether the next record needs more room than the row and the document have kept.
  bool GetRowAllocates() {
    return FailingNew::ForEachAllocation([this] { document->GetRow(row); }, [](bool) {}) > 0;
  }
  std::string State() const {
    return "rows " + std::to_string(document->GetRowCount()) + ", files " +
           std::to_string(TestSystem::OpenFiles() - openFiles);
  }
  CsvFieldDelimiter& Kind(int number) { return kind = static_cast<CsvFieldDelimiter>(number); }
  void Append(const char* text) { std::ofstream("a", std::ios::app) << text; }
  void Assign(const CsvDocument& given) {
    const std::string before = State();
    FailingNew::ForEachAllocation(
        [&] { *document = given; },
        [&](bool failed) { Compare("state", failed ? before : State(), State()); });
  }

  const int openFiles = TestSystem::OpenFiles();
  std::unique_ptr<CsvDocument> document = std::make_unique<CsvDocument>();
  std::unique_ptr<CsvDocument> other = std::make_unique<CsvDocument>();
  CsvDocumentRow row;
  CsvFieldDelimiter kind = CommaDelimiter;
};

const std::vector<Scenarios::Call<Documents>> kCalls = {
    SCENARIO_CALL(Load(text)),
    SCENARIO_CALL(Load(nullptr)),
    SCENARIO_CALL(document->IsCsvRecordPresence()),
    SCENARIO_CALL(GetRow()),
    SCENARIO_CALL(Rows()),
    SCENARIO_CALL(GetRowAllocates()),
    SCENARIO_CALL(row.Reset()),
    SCENARIO_CALL(State()),
    SCENARIO_CALL(document->SetFieldDelimiter(on.Kind(number))),
    SCENARIO_CALL(document->SetFieldSpecialToken(*text)),
    SCENARIO_CALL(Append(text)),
    SCENARIO_CALL(document.swap(on.other)),
    SCENARIO_CALL(Assign(*on.other)),
    SCENARIO_CALL(Assign(*on.document)),
    SCENARIO_CALL(Assign(CsvDocument(*on.other)))};

// `FILE | CALL = RESULT; CALL`
void Run(Scenarios::Scanner& line, Scenarios::Scanner) {
  TestFiles::Write(TestFiles::Path("a"), line.Text(), std::ios::binary);
  line.Need("|");
  const int openFiles = TestSystem::OpenFiles();
  Scenarios::RunCalls(line, Documents(), kCalls);
  Compare("files left open", "0", std::to_string(TestSystem::OpenFiles() - openFiles));
}

const bool kRules = Scenarios::Register("Csv", "csv.txt", Run);

TEST(CsvRow, FieldsAreTheRowsOwnAndWrapAt65536) {
  const std::string text("n\0l", 3);
  CsvDocumentRow row, copy;
  for (int i = 0; i < 65536; ++i) row.AddField(text);
  for (const char* field : {"old", "older"}) copy.AddField(field);
  FailingNew::ForEachAllocation(
      [&] { copy = row; },
      [&](bool failed) { EXPECT_EQ(copy.GetField(0), failed ? "old" : text); });
  row.Reset();
  EXPECT_EQ(row.GetField(0), "") << "past the last field";
  EXPECT_EQ(copy.GetFieldsCount(), 0) << "65536 in 16 bits";
  EXPECT_EQ(CsvDocumentRow(copy).GetField(65535), text);
}

TEST(CsvRow, AWideRowGetsRoomForTheWholeRecordAtOnceAndGivesItBack) {
  namespace RowMemory = zelconfutils::RowMemory;
  RowMemory::Fields fields(RowMemory::kKeptFields);
  RowMemory::AddField(fields, ",a,,\n", ',');
  EXPECT_EQ(fields.size(), RowMemory::kKeptFields + 1);
  EXPECT_EQ(fields.capacity(), RowMemory::kKeptFields + 1 + 3);
  fields[0] = "a";
  RowMemory::Truncate(fields, 2);
  EXPECT_EQ(fields, (RowMemory::Fields{"a", ""}));
}

}  // namespace
