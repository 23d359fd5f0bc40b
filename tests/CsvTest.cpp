// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "CsvDocument.h"
#include "FailingNew.h"
#include "TestSystem.h"
#include "csv/CsvRecordReader.h"

namespace {

using Fields = std::vector<std::string>;

class TemporaryFile {
 public:
  TemporaryFile()
      : path_((std::filesystem::temp_directory_path() /
               ("zelconfutils_csv_" + std::to_string(std::random_device()())))
                  .string()) {}
  explicit TemporaryFile(const std::string& text) : TemporaryFile() { Write(text); }
  ~TemporaryFile() { std::filesystem::remove(path_); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  void Write(const std::string& text) const {
    std::filesystem::remove(path_);  // some file systems sync a file that is cut to 0 and rewritten
    Append(text);
  }
  void Append(const std::string& text) const {
    std::ofstream(path_, std::ios::binary | std::ios::app) << text;
  }
  const char* Path() const { return path_.c_str(); }

 private:
  std::string path_;
};

// The reader once more, byte by byte over a text in memory.
struct Twin {
  std::string bytes;
  char delimiter = ',', token = '\0';
  std::size_t at = 0;
  unsigned rowCount = 0;
  bool present = true;

  explicit Twin(const std::string& file) {
    for (std::size_t i = 0; i < file.size(); ++i) {
      if (file.compare(i, 2, "\r\n") != 0) bytes += file[i];
    }
  }

  std::string Record() {
    const std::size_t start = at;
    for (;;) {
      if (at == bytes.size()) {
        present = false;
        break;
      }
      const char c = bytes[at++];
      if (c == '\r' || c == '\n') {
        if (present && at == bytes.size()) present = false;
        break;
      }
    }
    return bytes.substr(start, at - start);
  }

  bool Row(Fields& row) {
    row.clear();
    std::string record = Record();
    if (record.empty()) return false;
    record += '\0';
    std::string field;
    for (const char c : record) {
      const bool delimits = c == delimiter;
      if (!delimits && c != '\r' && c != '\n' && c != '\0') {
        field += c;
        continue;
      }
      if (!field.empty() && field.front() == token) field.erase(0, 1);
      if (!field.empty() && field.back() == token) field.pop_back();
      while (!field.empty() && field.front() == ' ') field.erase(0, 1);
      while (!field.empty() && field.back() == ' ') field.pop_back();
      row.push_back(field);
      field.clear();
      if (!delimits) break;
    }
    ++rowCount;
    return true;
  }
};

Fields FieldsOf(const CsvDocumentRow& row) {
  Fields fields;
  for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) fields.push_back(row.GetField(i));
  return fields;
}

std::string Visible(const std::string& text) { return testing::PrintToString(text); }

struct Variant {
  CsvFieldDelimiter kind;
  char delimiter, token;
};

// One step of both, compared in all that a caller can see. False once both are at the end.
bool SameRow(CsvDocument& document, CsvDocumentRow& row, Twin& twin) {
  Fields expected;
  const bool result = twin.Row(expected);
  EXPECT_EQ(document.GetRow(row), result);
  EXPECT_EQ(FieldsOf(row), expected);
  EXPECT_EQ(document.IsCsvRecordPresence(), twin.present);
  EXPECT_EQ(document.GetRowCount(), twin.rowCount);
  return result && !testing::Test::HasFailure();
}

void CompareDocument(const char* path, const std::string& text, const Variant& variant,
                     CsvDocumentRow& row) {
  CsvDocument document;
  CsvFieldDelimiter kind = variant.kind;
  document.SetFieldDelimiter(kind);
  document.SetFieldSpecialToken(variant.token);
  Twin twin(text);
  twin.delimiter = variant.delimiter;
  twin.token = variant.token;
  ASSERT_TRUE(document.Load(path));
  ASSERT_TRUE(document.IsCsvRecordPresence());
  while (SameRow(document, row, twin)) {
  }
  SameRow(document, row, twin);  // the end again
}

void CompareReader(const char* path, const std::string& text, std::size_t blockBytes) {
  SCOPED_TRACE(blockBytes);
  CsvRecordReader reader(blockBytes);
  ASSERT_NE(reader.Open(path), nullptr);
  Twin twin(text);
  for (std::string record = "more"; !record.empty();) {
    record = twin.Record();
    const bool lineEnded = reader.ReadRecord();
    ASSERT_EQ(Visible(reader.Record()), Visible(record));
    ASSERT_EQ(lineEnded, record.find_first_of("\r\n") != std::string::npos);
    ASSERT_EQ(reader.AtEnd(), twin.at == twin.bytes.size());
  }
}

const std::string kAlphabet("a \",\r\n\0", 7);

// All texts over the alphabet of exactly `length` bytes.
std::vector<std::string> AllTexts(int length) {
  std::vector<std::string> texts = {""};
  for (; length > 0; --length) {
    std::vector<std::string> longer;
    for (const std::string& text : texts) {
      for (const char c : kAlphabet) longer.push_back(text + c);
    }
    texts.swap(longer);
  }
  return texts;
}

const Variant kVariants[] = {{CommaDelimiter, ',', '\0'},
                             {CommaDelimiter, ',', '"'},
                             {CommaDelimiter, ',', ' '},
                             {SemicolonDelimiter, ';', '"'}};

TEST(CsvReading, EveryShortFileGivesTheRowsOfTheTwin) {
  const TemporaryFile file;
  CsvDocumentRow row;  // one for all: what it held before must not show
  for (int length = 0; length <= 4; ++length) {
    for (const std::string& text : AllTexts(length)) {
      SCOPED_TRACE(Visible(text));
      file.Write(text);
      for (const Variant& variant : kVariants) CompareDocument(file.Path(), text, variant, row);
      for (const std::size_t blockBytes : {1u, 2u, 3u})
        CompareReader(file.Path(), text, blockBytes);
      if (HasFailure()) return;
    }
  }
}

TEST(CsvReading, EveryShortTextInsideALongFileGivesTheRowsOfTheTwin) {
  std::string text;
  for (const std::string& piece : AllTexts(6)) text += piece + '\n';
  const TemporaryFile file(text);
  CsvDocumentRow row;
  for (const Variant& variant : kVariants) CompareDocument(file.Path(), text, variant, row);
  for (const std::size_t blockBytes : {5u, 64u}) CompareReader(file.Path(), text, blockBytes);
}

// Records around the size of a map of 64 bytes and of a block, fields around the room of a short
// string, and settings that change between two rows.
TEST(CsvReading, RandomLongFilesGiveTheRowsOfTheTwin) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const std::string bytes = kAlphabet + "\xFF\x1A;;;\t\t\x0B\x0E\x80,,,,";
  const TemporaryFile file;
  CsvDocumentRow row;
  for (int run = 0; run < 40 && !HasFailure(); ++run) {
    std::string text;
    while (text.size() < 3 * CsvRecordReader::kBlockBytes) {
      const std::size_t around[] = {0, 9, 40, 64, 200, CsvRecordReader::kBlockBytes};
      for (std::size_t n = around[random() % (run % 4 == 0 ? 6 : 5)] + random() % 24; n > 0; --n) {
        text += random() % 12 == 0 ? bytes[random() % bytes.size()] : 'x';
      }
      text += random() % 2 == 0 ? "\r\n" : "\n";
    }
    file.Write(text);
    CsvDocument document;
    Twin twin(text);
    ASSERT_TRUE(document.Load(file.Path()));
    do {
      auto kind = static_cast<CsvFieldDelimiter>(random() % 4);
      if (kind <= TabDelimiter) twin.delimiter = ",;\t"[kind];
      document.SetFieldDelimiter(kind);
      document.SetFieldSpecialToken(twin.token = "\0\" x"[random() % 4]);
    } while (SameRow(document, row, twin));
    CompareReader(file.Path(), text, 1 + random() % 300);
  }
}

TEST(CsvReading, ALongRecordKeepsNoRoom) {
  const TemporaryFile file(std::string(3 * CsvRecordReader::kBlockBytes, 'f') + "\nb\n");
  CsvRecordReader reader;
  reader.Open(file.Path());
  reader.ReadRecord();
  reader.ReadRecord();
  EXPECT_LT(reader.Record().capacity(), CsvRecordReader::kBlockBytes);
}

TEST(CsvReading, WhatIsAppendedBehindTheEndIsRead) {
  const TemporaryFile file("a");
  CsvDocument document;
  CsvDocumentRow row;
  document.Load(file.Path());
  EXPECT_TRUE(document.GetRow(row));
  EXPECT_FALSE(document.GetRow(row));
  file.Append("b\nc\n");
  EXPECT_TRUE(document.GetRow(row));
  EXPECT_EQ(row.GetField(0), "b");
  EXPECT_FALSE(document.IsCsvRecordPresence());  // for an end once met, nothing is looked for
}

TEST(CsvLoad, FailuresAreToldAndKeepRecordPresence) {
  const TemporaryFile file("a\nb\nc\n"), missing;
  const std::string folder = std::filesystem::temp_directory_path().string();
  const std::string odd = std::string(missing.Path()) + "%s%n";
  const struct {
    const char* path;
    std::string message;
  } rows[] = {
      {nullptr, "Invalid CSV file  (null)\n"},
      {missing.Path(), "Failed to open CSV file " + std::string(missing.Path()) + "\n"},
      {odd.c_str(), "Failed to open CSV file " + odd + "\n"},
      {folder.c_str(), "Failed to open CSV file " + folder + "\n"},
      {"", "Failed to open CSV file \n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    for (const bool loaded : {false, true}) {
      CsvDocument document;
      CsvDocumentRow record;
      if (loaded) {
        ASSERT_TRUE(document.Load(file.Path()));
        ASSERT_TRUE(document.GetRow(record));
      }
      testing::internal::CaptureStderr();
      EXPECT_FALSE(document.Load(row.path));
      EXPECT_EQ(testing::internal::GetCapturedStderr(), row.message);
      EXPECT_EQ(document.IsCsvRecordPresence(), loaded);
      record.AddField("old");
      EXPECT_FALSE(document.GetRow(record));  // the earlier file has gone
      EXPECT_EQ(record.GetFieldsCount(), 0);
      EXPECT_FALSE(document.IsCsvRecordPresence());
      ASSERT_TRUE(document.Load(file.Path()));
      EXPECT_TRUE(document.GetRow(record));
      EXPECT_EQ(record.GetField(0), "a");
      EXPECT_EQ(document.GetRowCount(), loaded ? 2u : 1u);
    }
  }
}

TEST(CsvCopy, SharesFileAndPositionWhichTheLastOneCloses) {
  const TemporaryFile file("a\nb\nc;x\nd\n"), other("o\n");
  const int before = TestSystem::OpenFiles();
  auto first = std::make_unique<CsvDocument>();
  CsvDocumentRow row;
  first->Load(file.Path());
  first->GetRow(row);
  CsvDocument copy(*first), assigned;
  assigned.Load(other.Path());
  assigned = *first;
  assigned = *&assigned;
  EXPECT_TRUE(copy.GetRow(row));
  EXPECT_EQ(row.GetField(0), "b");
  EXPECT_EQ(first->GetRowCount(), 1u);
  EXPECT_EQ(copy.GetRowCount(), 2u);
  CsvFieldDelimiter semicolon = SemicolonDelimiter;
  assigned.SetFieldDelimiter(semicolon);
  EXPECT_TRUE(first->Load(other.Path()));  // lets go of the shared file only for itself
  first.reset();
  EXPECT_TRUE(assigned.GetRow(row));
  EXPECT_EQ(FieldsOf(row), (Fields{"c", "x"}));
  assigned = CsvDocument();
  EXPECT_TRUE(copy.GetRow(row));
  EXPECT_EQ(row.GetField(0), "d");
  EXPECT_FALSE(copy.IsCsvRecordPresence());
  EXPECT_EQ(TestSystem::OpenFiles(), before + 1);
  copy = CsvDocument();
  EXPECT_EQ(TestSystem::OpenFiles(), before);
}

TEST(CsvRow, FieldsAreAppendedCopiedAndWrapAt65536) {
  const TemporaryFile file("a,b\nc\n");
  CsvDocument document;
  CsvDocumentRow row;
  document.Load(file.Path());
  document.GetRow(row);
  row.AddField("more");
  row.AddField(std::string("n\0l", 3));
  CsvDocumentRow copy(row), assigned;
  assigned.AddField("gone");
  assigned = row;
  document.GetRow(row);
  EXPECT_EQ(FieldsOf(row), Fields{"c"});
  EXPECT_EQ(FieldsOf(copy), (Fields{"a", "b", "more", std::string("n\0l", 3)}));
  EXPECT_EQ(FieldsOf(assigned), FieldsOf(copy));
  EXPECT_EQ(copy.GetField(4), "");
  copy.Reset();
  EXPECT_EQ(copy.GetField(0), "");
  for (int i = 0; i < 65536; ++i) copy.AddField("x");
  EXPECT_EQ(copy.GetFieldsCount(), 0);
  EXPECT_EQ(copy.GetField(65535), "x");
}

TEST(CsvMemory, AFailedAllocationLosesNoRecord) {
  const std::string wide(80, 'w'), block(CsvRecordReader::kBlockBytes - 100, 's');
  const std::string texts[] = {block + "\n" + wide + ",b," + wide + wide + "\r\nlast",
                               "first\n" + block + block + block};
  for (const std::string& text : texts) {
    const TemporaryFile file(text);
    const long before = FailingNew::LiveBlocks();
    std::unique_ptr<CsvDocument> document;
    std::unique_ptr<CsvDocumentRow> row;
    const int failures = FailingNew::ForEachAllocation(
        [&] {
          document = std::make_unique<CsvDocument>();
          document->Load(file.Path());
          row = std::make_unique<CsvDocumentRow>();
          document->GetRow(*row);
          row = std::make_unique<CsvDocumentRow>();
          return [&] { document->GetRow(*row); };  // crosses a block of the reader
        },
        [&](bool failed) {
          Twin twin(text);
          Fields expected;
          twin.Row(expected);
          if (failed) {
            EXPECT_EQ(document->GetRowCount(), twin.rowCount);
            EXPECT_TRUE(document->IsCsvRecordPresence());
            expected.clear();
          } else {
            twin.Row(expected);
          }
          EXPECT_EQ(FieldsOf(*row), expected);
          while (SameRow(*document, *row, twin)) {
          }
          document.reset();
          row.reset();
        });
    EXPECT_GT(failures, 1);
    EXPECT_EQ(FailingNew::LiveBlocks(), before);
  }
}

TEST(CsvMemory, AFailedAllocationChangesNeitherDocumentNorRow) {
  const TemporaryFile file("a\nb\nc\n"), other("o\n");
  CsvDocument source;
  source.Load(other.Path());
  CsvDocumentRow fields, longer;
  fields.AddField(std::string(50, 'f'));
  longer.AddField(std::string(60, 'l'));
  longer.AddField(std::string(60, 'm'));
  std::unique_ptr<CsvDocument> document;
  std::unique_ptr<CsvDocumentRow> row;
  const std::function<void()> operations[] = {
      [&] { document->Load(other.Path()); }, [&] { *document = source; },
      [&] { CsvDocument copy(source); },     [&] { *row = longer; },
      [&] { CsvDocumentRow copy(longer); },  [&] { row->AddField(std::string(70, 'n').c_str()); },
  };
  for (const auto& operation : operations) {
    const int failures = FailingNew::ForEachAllocation(
        [&] {
          document = std::make_unique<CsvDocument>();
          row = std::make_unique<CsvDocumentRow>(fields);
          document->Load(file.Path());
          return operation;
        },
        [&](bool failed) {
          if (!failed) return;
          EXPECT_EQ(FieldsOf(*row), FieldsOf(fields));
          EXPECT_TRUE(document->GetRow(*row));
          EXPECT_EQ(row->GetField(0), "a");
        });
    EXPECT_GT(failures, 0);
  }
}

}  // namespace
