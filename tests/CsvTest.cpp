// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <utility>

#include "CsvDocument.h"
#include "CsvReference.h"
#include "FailingNew.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "csv/CsvRecordReader.h"
#include "csv/RowMemory.h"

namespace {

constexpr std::size_t kBlockBytes = zelconfutils::CsvRecordReader::kBlockBytes;

using CsvReference::AllRows;
using CsvReference::RowText;
using TestFiles::Path;

std::string Write(const std::string& text) {
  TestFiles::Write(Path("a"), text, std::ios::binary);
  return Path("a");
}

TEST(Csv, RecordsAndFieldsOfAFile) {
  static const struct {
    const char* rule;
    std::string file, rows;
    char token = '\0';
    CsvFieldDelimiter delimiter = CommaDelimiter;
  } rows[] = {
      {"a line end ends the record", "a,b,c\nd\n", "[a][b][c]+ [d]."},
      {"the end of the file ends it, too", "a,b,c", "[a][b][c]."},
      {"CR LF is one line end", "a\r\nb\r\n", "[a]+ [b]."},
      {"CR alone is a line end", "a\rb\r\r\nc", "[a]+ [b]+ []+ [c]."},
      {"an empty line is a row of one empty field", "\n\na\n\n", "[]+ []+ [a]+ []."},
      {"an empty file may have a row, until asked", "", "false."},
      {"empty fields count", ",a,,b,\n,", "[][a][][b][]+ [][]."},
      {"a NUL ends the row, but not the record", {"a,b\0c,d\ne", 9}, "[a][b]+ [e]."},
      {"bytes from 0x80 on and 0x1A are data", "\xFF\x1A\x80\n\x1A", "[\xFF\x1A\x80]+ [\x1A]."},
      {"spaces go at both ends, tabs stay", "  a b ,   ,\tc\t\n", "[a b][][\tc\t]."},
      {"the semicolon may separate", "a,b;c", "[a,b][c].", '\0', SemicolonDelimiter},
      {"the tab may separate", "a,b\t \tc", "[a,b][][c].", '\0', TabDelimiter},
      {"without a special token a quote is data", "'a'", "['a']."},
      {"the special token goes at either end", "'a','b,c'", "[a][b][c].", '\''},
      {"the special token goes once", "''a'','',',a'b", "['a'][][][a'b].", '\''},
      {"the token goes only where it ends the field", " 'a' ,' b '", "['a'][b].", '\''},
      {"a quoted line end ends the record", "'a\nb'", "[a]+ [b].", '\''},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(CsvReference::Read(row.file, row.delimiter, row.token), row.rows) << row.rule;
  }
}

TEST(Csv, SettingsHoldFromTheNextRowOn) {
  CsvDocument document;
  CsvDocumentRow row;
  document.Load(Write("'a';b\n'a';b").c_str());
  document.GetRow(row);
  EXPECT_EQ(RowText(row), "['a';b]");
  document.SetFieldSpecialToken('\'');
  for (auto kind : {SemicolonDelimiter, static_cast<CsvFieldDelimiter>(3)}) {
    document.SetFieldDelimiter(kind);
  }
  document.GetRow(row);
  EXPECT_EQ(RowText(row), "[a][b]") << "an unknown delimiter leaves the one before";
}

TEST(Csv, AFailedLoadTellsWhyAndClosesTheFileBefore) {
  const std::string missing = Path("%s%n");
  const std::pair<const char*, std::string> rows[] = {
      {missing.c_str(), "Failed to open CSV file " + missing + "\n"},
      {"/", "Failed to open CSV file /\n"},
      {nullptr, "Invalid CSV file  (null)\n"}};
  CsvDocument document;
  CsvDocumentRow row;
  for (const auto& [path, message] : rows) {
    SCOPED_TRACE(message);
    ASSERT_TRUE(document.Load(Write("a\nb\n").c_str()) && document.GetRow(row));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(document.Load(path));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
    EXPECT_TRUE(document.IsCsvRecordPresence()) << "until a row is asked for, as before";
    EXPECT_FALSE(document.GetRow(row) || document.IsCsvRecordPresence());
    EXPECT_EQ(RowText(row), "");
  }
  EXPECT_EQ(document.GetRowCount(), 3u) << "over all files";
}

TEST(Csv, GetRowStaysFalseAtTheEndUntilTheFileGrows) {
  CsvDocument document;
  CsvDocumentRow row;
  document.Load(Write("a").c_str());
  EXPECT_TRUE(document.GetRow(row));
  EXPECT_FALSE(document.GetRow(row) || document.GetRow(row));
  EXPECT_EQ(RowText(row), "");
  std::ofstream(Path("a"), std::ios::app) << "b\nc\n";
  EXPECT_TRUE(document.GetRow(row));
  EXPECT_EQ(RowText(row), "[b]");
  EXPECT_FALSE(document.IsCsvRecordPresence()) << "for an end once met, nothing is looked for";
}

TEST(Csv, CopiesShareTheOpenFileAndItsPosition) {
  const std::string path = Write("x\ny");
  const int openFiles = TestSystem::OpenFiles();
  const long blocks = FailingNew::LiveBlocks();
  {
    CsvDocument document, assigned;
    CsvDocumentRow row;
    auto kind = SemicolonDelimiter;
    document.SetFieldDelimiter(kind);
    document.SetFieldSpecialToken('\'');
    assigned.Load(path.c_str());
    EXPECT_EQ(AllRows(assigned), "[x]+ [y].");
    TestFiles::Write(Path("b"), "1\n2\n3;'3'\n4", std::ios::binary);
    document.Load(Path("b").c_str());
    document.GetRow(row);
    FailingNew::ForEachAllocation(
        [&] { assigned = document; },
        [&](bool failed) { EXPECT_EQ(assigned.GetRowCount(), failed ? 2u : 1u); });
    assigned = *&assigned;
    CsvDocument copy(assigned);
    EXPECT_EQ(TestSystem::OpenFiles(), openFiles + 1);
    assigned.GetRow(row);
    EXPECT_EQ(RowText(row), "[2]");
    EXPECT_EQ(AllRows(copy), "[3][3]+ [4].") << "with the settings, too";
    EXPECT_EQ(copy.GetRowCount(), 3u) << "those before the copy, too";
    EXPECT_FALSE(document.GetRow(row) || document.IsCsvRecordPresence());
  }
  EXPECT_EQ(TestSystem::OpenFiles(), openFiles);
  EXPECT_EQ(FailingNew::LiveBlocks(), blocks) << "a leak";
}

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

// Calls that allocate tell what was not kept.
TEST(CsvRow, GivesBackWhatAWideOrLongRecordHasLeft) {
  for (const auto& [large, usual] : {std::pair(std::string(60000, ','), std::string(2000, ',')),
                                     std::pair(std::string(60000, 'x'), std::string(900, 'x'))}) {
    SCOPED_TRACE("records of " + large.substr(0, 1));
    CsvDocument document;
    CsvDocumentRow row;
    const std::string twice = large + "\n" + large + "\n" + usual + "\n";
    document.Load(Write(twice + "a\n" + usual + "\n" + large).c_str());
    const auto allocates = [&] {
      return FailingNew::ForEachAllocation([&] { document.GetRow(row); }, [](bool) {}) > 0;
    };
    EXPECT_TRUE(allocates()) << "a large record";
    EXPECT_FALSE(allocates()) << "another one";
    EXPECT_TRUE(allocates()) << "a usual one moves to room of its own";
    EXPECT_FALSE(allocates()) << "a short one";
    EXPECT_FALSE(allocates()) << "a usual one again";
    EXPECT_TRUE(allocates()) << "a large one again";
    const long blocks = FailingNew::LiveBlocks();
    row.Reset();
    EXPECT_EQ(FailingNew::LiveBlocks(), blocks - 1) << "the room goes with Reset";
  }
}

TEST(CsvRow, AWideRowGetsRoomForTheWholeRecordAtOnce) {
  namespace RowMemory = zelconfutils::RowMemory;
  RowMemory::Fields fields(RowMemory::kKeptFields);
  RowMemory::AddField(fields, ",a,,\n", ',');
  EXPECT_EQ(fields.size(), RowMemory::kKeptFields + 1);
  EXPECT_EQ(fields.capacity(), RowMemory::kKeptFields + 1 + 3);
}

TEST(CsvRecords, ALongRecordKeepsNoRoom) {
  zelconfutils::CsvRecordReader reader;
  reader.Open(Write(std::string(3 * kBlockBytes, 'f') + "\nb\r\n").c_str());
  reader.ReadRecord();
  reader.ReadRecord();
  EXPECT_EQ(reader.Record(), "b\n");
  EXPECT_LT(reader.Record().capacity(), kBlockBytes);
}

// Around the room of a short string, a map of 64 bytes, and a block.
TEST(CsvReference, ReadsTheSameAtTheEndsOfWhatIsReadAtOnce) {
  for (const std::size_t end : {std::size_t{16}, std::size_t{64}, kBlockBytes}) {
    for (std::size_t bytes = end - 3; bytes <= end; ++bytes) {
      for (const std::string& text : TestFiles::AllTexts("a,\r\n", 2)) {
        CsvReference::Check(std::string(bytes, 'x') + text, CommaDelimiter, '\0');
      }
    }
  }
}

}  // namespace
