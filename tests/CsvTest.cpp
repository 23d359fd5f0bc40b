// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "AllTexts.h"
#include "CsvDocument.h"
#include "CsvTwin.h"
#include "FailingNew.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "csv/CsvRecordReader.h"

namespace {

using Fields = CsvTwin::Fields;

const std::string kAlphabet("a \",\r\n\0", 7);
constexpr std::size_t kBlockBytes = CsvRecordReader::kBlockBytes;

class Csv : public testing::Test {
 protected:
  std::string Write(const char* name, const std::string& text) const {
    TestFiles::Write(directory.Path(name), text, std::ios::binary);
    return directory.Path(name);
  }

  const TestFiles::TemporaryDirectory directory;
  CsvDocument document;
  CsvDocumentRow row;
};

TEST_F(Csv, EveryShortTextGivesTheRowsOfTheTwinAloneAndInALongFile) {
  const auto check = [this](const std::string& text) {
    for (const char token : {'\0', '"', ' '}) {
      CsvTwin::Check(directory.Path("a"), text, CommaDelimiter, token);
    }
  };
  for (const std::string& text : AllTexts(kAlphabet, 4)) check(text);
  std::string all;
  for (const std::string& text : AllTexts(kAlphabet, 6)) all += text + '\n';
  check(all);
}

// Records around the size of a map of 64 bytes and of a block, fields around the room of a short
// string, and settings that change between two rows.
TEST_F(Csv, RandomLongFilesGiveTheRowsOfTheTwin) {
  std::mt19937 random(1);
  const std::string bytes = kAlphabet + "\xFF\x1A;;;\t\t\x0B\x0E\x80,,,,";
  for (int run = 0; run < 40; ++run) {
    std::string text;
    while (text.size() < 3 * kBlockBytes) {
      const std::size_t around[] = {0, 9, 40, 64, 200, kBlockBytes};
      for (std::size_t n = around[random() % (run % 4 == 0 ? 6 : 5)] + random() % 24; n > 0; --n) {
        text += random() % 12 == 0 ? bytes[random() % bytes.size()] : 'x';
      }
      text += random() % 2 == 0 ? "\r\n" : "\n";
    }
    CsvDocument changing;
    CsvTwin twin(text);
    changing.Load(Write("a", text).c_str());
    do {
      auto kind = static_cast<CsvFieldDelimiter>(random() % 4);
      if (kind <= TabDelimiter) twin.delimiter = ",;\t"[kind];
      changing.SetFieldDelimiter(kind);
      changing.SetFieldSpecialToken(twin.token = "\0\" x"[random() % 4]);
    } while (twin.NextRow(changing, row));
  }
}

TEST_F(Csv, ALongRecordKeepsNoRoom) {
  CsvRecordReader reader;
  reader.Open(Write("a", std::string(3 * kBlockBytes, 'f') + "\nb\n").c_str());
  reader.ReadRecord();
  reader.ReadRecord();
  EXPECT_LT(reader.Record().capacity(), kBlockBytes);
}

TEST_F(Csv, WhatIsAppendedBehindTheEndIsRead) {
  document.Load(Write("a", "a").c_str());
  EXPECT_TRUE(document.GetRow(row));
  EXPECT_FALSE(document.GetRow(row));
  std::ofstream(directory.Path("a"), std::ios::app) << "b\nc\n";
  EXPECT_TRUE(document.GetRow(row));
  EXPECT_EQ(row.GetField(0), "b");
  EXPECT_FALSE(document.IsCsvRecordPresence());  // for an end once met, nothing is looked for
}

TEST_F(Csv, AFailedLoadIsToldAndKeepsRecordPresence) {
  const std::string file = Write("a", "a\nb\nc\n"), missing = directory.Path("%s%n");
  for (const char* path : {static_cast<const char*>(nullptr), missing.c_str(), "/", ""}) {
    for (const bool loaded : {false, true}) {
      CsvDocument again;
      EXPECT_TRUE(!loaded || (again.Load(file.c_str()) && again.GetRow(row)));
      testing::internal::CaptureStderr();
      EXPECT_FALSE(again.Load(path));
      EXPECT_EQ(testing::internal::GetCapturedStderr(),
                path == nullptr ? "Invalid CSV file  (null)\n"
                                : "Failed to open CSV file " + std::string(path) + "\n");
      EXPECT_EQ(again.IsCsvRecordPresence(), loaded);
      row.AddField("old");
      EXPECT_FALSE(again.GetRow(row) || again.IsCsvRecordPresence());  // the earlier file has gone
      EXPECT_EQ(row.GetFieldsCount(), 0);
      EXPECT_TRUE(again.Load(file.c_str()) && again.GetRow(row));
      EXPECT_EQ(row.GetField(0), "a");
      EXPECT_EQ(again.GetRowCount(), loaded ? 2u : 1u);
    }
  }
}

TEST_F(Csv, CopiesShareFileAndPositionWhichTheLastOneCloses) {
  const std::string file = Write("a", "a\nb\nc;x\nd\n"), other = Write("b", "o\n");
  const int before = TestSystem::OpenFiles();
  CsvTwin twin("a\nb\nd\n");
  document.Load(file.c_str());
  twin.NextRow(document, row);
  CsvDocument copy(document), assigned;
  assigned.Load(other.c_str());
  assigned = document;
  assigned = *&assigned;
  twin.NextRow(copy, row);
  EXPECT_EQ(document.GetRowCount(), 1u);
  CsvFieldDelimiter semicolon = SemicolonDelimiter;
  assigned.SetFieldDelimiter(semicolon);
  EXPECT_TRUE(document.Load(other.c_str()));  // lets go of the shared file only for itself
  EXPECT_TRUE(assigned.GetRow(row));
  EXPECT_EQ(CsvTwin::FieldsOf(row), (Fields{"c", "x"}));
  assigned = document = CsvDocument();
  twin.NextRow(copy, row);
  EXPECT_EQ(TestSystem::OpenFiles(), before + 1);
  copy = CsvDocument();
  EXPECT_EQ(TestSystem::OpenFiles(), before);
}

TEST_F(Csv, FieldsOfARowAreCopiedAndWrapAt65536) {
  row.AddField(std::string("n\0l", 3));
  for (int i = 1; i < 65536; ++i) row.AddField("x");
  CsvDocumentRow copy(row);
  row.Reset();
  EXPECT_EQ(row.GetField(0), "");
  EXPECT_EQ(copy.GetFieldsCount(), 0);
  EXPECT_EQ(copy.GetField(0) + copy.GetField(65535), std::string("n\0lx", 4));
}

TEST_F(Csv, AFailedAllocationLosesNoRecordAndChangesNoRow) {
  const std::string wide(80, 'w'), block(kBlockBytes - 100, 's'), name = directory.Path("a");
  CsvDocument source;
  source.Load(Write("b", "o\n").c_str());
  CsvDocumentRow fields, longer;
  fields.AddField(wide);
  for (int i = 0; i < 2; ++i) longer.AddField(wide + wide);
  std::unique_ptr<CsvDocument> target;
  const std::function<void()> read = [&] { target->GetRow(row); };  // crosses a block
  const struct {
    std::string text;
    std::function<void()> run;
  } rows[] = {
      {block + "\n" + wide + ",b," + wide + wide + "\r\nlast", read},
      {"first\n" + block + block + block, read},
      {"a\nb\n", [&] { target->Load(name.c_str()); }},
      {"a\nb\n", [&] { *target = source; }},
      {"a\nb\n", [&] { CsvDocument copy(source); }},
      {"a\nb\n", [&] { row = longer; }},
      {"a\nb\n", [&] { CsvDocumentRow copy(longer); }},
      {"a\nb\n", [&] { row.AddField(wide.c_str()); }},
  };
  for (const auto& operation : rows) {
    const std::string& text = operation.text;
    const bool reads = text != rows[2].text;
    long live = 0;
    Write("a", text);
    std::optional<CsvTwin> twin;
    const auto setUp = [&] {
      live = FailingNew::LiveBlocks();
      twin.emplace(text);
      target = std::make_unique<CsvDocument>();
      target->Load(name.c_str());
      twin->NextRow(*target, row);
      row = fields;
      return operation.run;
    };
    const int failures = FailingNew::ForEachAllocation(setUp, [&](bool failed) {
      if (failed) {
        EXPECT_EQ(CsvTwin::FieldsOf(row), reads ? Fields() : Fields{wide});
        EXPECT_TRUE(target->IsCsvRecordPresence());
      } else if (reads) {
        EXPECT_EQ(CsvTwin::FieldsOf(row), twin->Row());
        ++twin->rowCount;
      }
      while ((failed || reads) && twin->NextRow(*target, row)) {
      }
      target.reset();
      row = CsvDocumentRow();
      twin.reset();
      EXPECT_EQ(FailingNew::LiveBlocks(), live);
    });
    EXPECT_GT(failures, reads ? 1 : 0);
  }
}

}  // namespace
