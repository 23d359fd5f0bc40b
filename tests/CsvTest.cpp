// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <set>
#include <string>

#include "CsvDocument.h"
#include "CsvTwin.h"
#include "FailingNew.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "csv/CsvRecordReader.h"

namespace {

constexpr std::size_t kBlockBytes = zelconfutils::CsvRecordReader::kBlockBytes;

using TestFiles::Path;

TEST(Csv, LineEndsOverTheEndOfABlockAreWhole) {
  for (std::size_t bytes = kBlockBytes - 3; bytes <= kBlockBytes; ++bytes) {
    for (const std::string& text : TestFiles::AllTexts("a\r\n", 2)) {
      CsvTwin::ReadAll(std::string(bytes, 'x') + text, CommaDelimiter, '\0');
    }
  }
}

// Records around the size of a map of 64 bytes and of a block, fields around the room of a short
// string, settings that change between two rows, and documents that share a file.
TEST(Csv, RandomStepsGiveTheRowsOfTheTwins) {
  std::mt19937 random(1);
  const std::string bytes("a \",\r\n\0\xFF\x1A;;;\t\t\x0B\x0E\x80,,,,", 21);
  const std::string names[] = {Path("a"), Path("b"), Path("%s%n"), "/"};
  std::string texts[2], messages;
  for (int i = 0; i < 2; ++i) {
    while (texts[i].size() < 4 * kBlockBytes) {
      const std::size_t around[] = {0, 9, 40, 64, 200, kBlockBytes};
      for (std::size_t n = around[random() % (i == 0 ? 6 : 5)] + random() % 24; n > 0; --n) {
        texts[i] += random() % 12 == 0 ? bytes[random() % bytes.size()] : 'x';
      }
      texts[i] += random() % 2 == 0 ? "\r\n" : "\n";
    }
    TestFiles::Write(names[i], texts[i], std::ios::binary);
  }
  messages.reserve(100000);
  testing::internal::CaptureStderr();
  const int openFiles = TestSystem::OpenFiles() - 1;
  const long blocks = FailingNew::LiveBlocks();
  {
    CsvTwin twins[2];
    CsvDocumentRow row;
    for (int step = 0; step < 50000; ++step) {
      CsvTwin &twin = twins[random() % 2], &other = twins[random() % 2];
      const std::size_t file = random() % 5, action = random() % 2000;
      if (action == 0) {
        twin.Load(file < 4 ? names[file].c_str() : nullptr, file < 2 ? &texts[file] : nullptr);
        if (file == 4) messages += "Invalid CSV file  (null)\n";
        if (file == 2 || file == 3) messages += "Failed to open CSV file " + names[file] + "\n";
      } else if (action < 3) {
        twin.CopyFrom(other, action == 1);
      } else {
        const auto kind = static_cast<CsvFieldDelimiter>(random() % 4);  // the last is none
        if (action % 3 == 0) twin.Set(kind, "\0\" x"[random() % 4]);
        twin.GetRow(row);
        continue;
      }
      const std::set<void*> sources = {nullptr, twins[0].source.get(), twins[1].source.get()};
      EXPECT_EQ(TestSystem::OpenFiles(), openFiles + static_cast<int>(sources.size()));
    }
  }
  EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), messages);
}

TEST(Csv, ALongRecordKeepsNoRoom) {
  TestFiles::Write(Path("a"), std::string(3 * kBlockBytes, 'f') + "\nb\r\n", std::ios::binary);
  zelconfutils::CsvRecordReader reader;
  reader.Open(Path("a").c_str());
  reader.ReadRecord();
  reader.ReadRecord();
  EXPECT_EQ(reader.Record(), "b\n");
  EXPECT_LT(reader.Record().capacity(), kBlockBytes);
}

TEST(Csv, WhatIsAppendedBehindTheEndIsRead) {
  TestFiles::Write(Path("a"), "a");
  CsvDocument document;
  CsvDocumentRow row;
  document.Load(Path("a").c_str());
  EXPECT_TRUE(document.GetRow(row) && !document.GetRow(row));
  std::ofstream(Path("a"), std::ios::app) << "b\nc\n";
  EXPECT_TRUE(document.GetRow(row));
  EXPECT_EQ(row.GetField(0), "b");
  EXPECT_FALSE(document.IsCsvRecordPresence());  // for an end once met, nothing is looked for
}

TEST(Csv, FieldsOfARowAreCopiedAndWrapAt65536) {
  CsvDocumentRow row, copy;
  row.AddField(std::string("n\0l", 3));
  for (int i = 1; i < 65536; ++i) row.AddField("x");
  copy.AddField("old");
  FailingNew::ForEachAllocation(
      [&] { copy = row; }, [&](bool failed) { EXPECT_TRUE(!failed || copy.GetField(0) == "old"); });
  row.Reset();
  EXPECT_EQ(row.GetField(0), "");
  EXPECT_EQ(copy.GetFieldsCount(), 0);
  EXPECT_EQ(copy.GetField(0) + copy.GetField(65535), std::string("n\0lx", 4));
}

}  // namespace
