// SPDX-License-Identifier: MIT
#include "ConfigFile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "OpenConfigFile.h"
#include "SmartBuffer.h"
#include "TestFiles.h"

namespace {

using Configuration::ConfigLineList;
using Configuration::ConfigLinePosition;

constexpr std::size_t kTooSmall = 4294967295;

// A file on the disk, read by an object: a text in memory would lose a last line without its end.
class FlatFile {
 public:
  explicit FlatFile(std::string_view bytes, const char* separator = "=", const char* comment = "#",
                    const char* prefix = nullptr) {
    TestFiles::Write(Path(), bytes);
    file_.emplace(Path(), separator, comment, prefix);
  }
  std::string Path() const { return directory_.Path("file"); }
  OpenConfigFile* operator->() { return &*file_; }
  OpenConfigFile& operator*() { return *file_; }

 private:
  TestFiles::TemporaryDirectory directory_;
  std::optional<OpenConfigFile> file_;
};

// All entries as `[key|value]`, by way of a walk.
std::string Entries(OpenConfigFile& file) {
  std::string all;
  char key[2048], value[4096];
  for (file.Restart(); file.GotoNextEntry();) {
    if (file.GetCurrentEntry(key, sizeof key, value, sizeof value) == kTooSmall) return "too small";
    all += std::string("[") + key + "|" + value + "]";
  }
  return all;
}

TEST(LineStore, ABlockCarriesSlackMeasuredWhenItIsMade) {
  ConfigLineList lines;
  ConfigLinePosition line = lines.End();
  lines.InsertLine(line, "0123456789");
  EXPECT_EQ(line, lines.Lines().Last());
  EXPECT_EQ(line->capacity, 43u);
  EXPECT_FALSE(lines.GrowLine(line, 0));
  EXPECT_FALSE(lines.GrowLine(line, 33));
  lines.ShrinkLine(line, 33, true);
  EXPECT_EQ(line->capacity, 43u);
  EXPECT_TRUE(lines.GrowLine(line, 34));
  EXPECT_EQ(line->capacity, 76u);
  EXPECT_EQ(std::string(line->text), "0123456789");
  lines.AddLine("", false);
  EXPECT_EQ(lines.First()->capacity, 33u);
  EXPECT_EQ(lines.totalLength, 44u);
  EXPECT_EQ(lines.EraseLine(lines.First()), line);
  EXPECT_EQ(lines.totalLength, 44u);
}

TEST(LineStore, TheSaveBufferGrowsEverMoreRarely) {
  static const struct {
    std::size_t image, capacity, growth;
  } rows[] = {{70000, 71025, 1}, {71025, 73074, 2}, {65000, 73074, 2}, {73074, 77171, 4}};
  TestFiles::TemporaryDirectory directory;
  ConfigLineList lines;
  for (const auto& row : rows) {
    lines.Clear();
    lines.AddLine(std::string(row.image, 'x'), true);
    std::FILE* stream = std::fopen(directory.Path("out").c_str(), "wb");
    EXPECT_TRUE(lines.WriteAll(stream, true));
    std::fclose(stream);
    EXPECT_EQ(lines.saveCapacity, row.capacity) << row.image;
    EXPECT_EQ(lines.saveGrowth, row.growth) << row.image;
  }
  FlatFile empty("");
  EXPECT_TRUE(empty->Save(true, nullptr));
  EXPECT_EQ(empty->lines->saveBuffer, nullptr);
  empty->AddEntry("a", std::string(1000, 'x').c_str(), true);
  EXPECT_TRUE(empty->Save(true, nullptr));
  EXPECT_EQ(empty->lines->saveCapacity, 65536u);
}

TEST(Format, EachLineIsACommentAnEntryOrNeither) {
  const std::string longKey(1021, 'k');
  const struct {
    std::string text;
    const char *separator, *comment;
    std::string entries;
  } rows[] = {
      {"name = value\n", "=", "#", "[name| value]"},
      {"  name  =  some value  \n", "=", "#", "[name|  some value]"},
      {"# a=b\n # a=b\n#\n", "=", "#", "[# a|b]"},
      {"a=b=c\na=1 # note\n", "=", "#", "[a|b=c][a|1 # note]"},
      {"key=\nkey=   \n", "=", "#", "[key|][key|]"},
      {" =v\n=w\n \t =\n=\n", "=", "#", "[|v][|w][|][|]"},
      {"plain text\n\n  \n\f\v\r\n", "=", "#", ""},
      {"a=1", "=", "#", "[a|1]"},
      {"a=1\r\nb=2\t\v\f\r\n", "=", "#", "[a|1][b|2]"},
      {"\xA0k\x85=\xA0v\x85\xA0\n", "=", "#", "[\xA0k\x85|\xA0v\x85\xA0]"},
      {"a := b\na:b=c\n", ":=", "#", "[a| b]"},
      {"a = b\na=b\n = v\nc = \n", " = ", "#", "[a|b][|v][c|]"},
      {"a\tb\t\n\tx\n\t\n", "\t", "#", "[a|b][|x][|]"},
      {"a=1\n", "=", "", ""},
      {"a=1\n", "", "#", ""},
      {"//a=1\n/a=1\n", "=", "//", "[/a|1]"},
      {"\xEF\xBB\xBF#c=1\n", "=", "#", "[\xEF\xBB\xBF#c|1]"},
      {longKey + "==\n", "=", "#", "[" + longKey + "|=]"},        // 1024 bytes: LF alone behind
      {longKey + "x===\n", "=", "#", "[" + longKey + "x|][|=]"},  // the value ends with the piece
      {longKey + "xx#c=1\n", "=", "#", ""},                       // a comment in mid-line
      {longKey + "y:=v\n", ":=", "#", ""},                        // the separator over the border
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text.substr(0, 40) + " separator " + row.separator);
    FlatFile file(row.text, row.separator, row.comment);
    EXPECT_EQ(Entries(*file), row.entries);
    EXPECT_EQ(file->Fault(), "");
  }
}

TEST(ByteIdentity, HoldsForEveryFileAndEveryByteThatNoEditNames) {
  const auto line = [](std::size_t bytes) { return std::string(bytes - 1, 'x') + "\n"; };
  const std::string hazards[] = {"",
                                 "\n",
                                 "x",
                                 " \t\v\f\r\n  ",
                                 std::string("a\0b=\0c\0\n\0", 9),
                                 std::string(3000, '\0'),
                                 "a=1\rb=2\r",
                                 "a=1\r\nb=2\r\n",
                                 "a=1\r\nb=2\nc=3\rd=4\n\r\n\n\r",
                                 line(1022),
                                 line(1023),
                                 line(1024),
                                 line(1025),
                                 line(1026),
                                 line(2500),
                                 line(2500) + line(70000) + "end",
                                 "\xEF\xBB\xBF"
                                 "a=1\n",
                                 "gr\xFC\xDF"
                                 "e=\xE4\xA0\xFF\n\xFF\n",
                                 "=\n==\n=\n# only\n#",
                                 "\x1A\na=1\n\x1A",
                                 "a=1\nb=2",
                                 std::string(1023, '=') + std::string(1100, ' ') + "\n"};
  for (const std::string& hazard : hazards) {
    SCOPED_TRACE(testing::PrintToString(hazard.substr(0, 40)));
    for (const bool coalesced : {false, true}) {
      FlatFile file(hazard);
      EXPECT_TRUE(file->Save(coalesced, nullptr));
      EXPECT_EQ(TestFiles::Read(file.Path()), hazard);
    }
    FlatFile file("zz= 1 \n" + hazard + "\nzz=1");
    EXPECT_EQ(file->SetEntry("zz", "a longer value that has to move the line"), 2u);
    EXPECT_EQ(file->Image(), "zz=a longer value that has to move the line \n" + hazard + "\nzz=1");
    EXPECT_TRUE(file->DeleteEntry("zz"));
    EXPECT_EQ(file->SetEntry("zz", "22"), 2u);
    EXPECT_EQ(file->Image(), hazard + "\nzz=22");
    EXPECT_TRUE(file->DeleteEntry("zz"));
    EXPECT_TRUE(file->Save(true, ""));
    EXPECT_EQ(TestFiles::Read(file.Path()), hazard + "\n");
    EXPECT_EQ(file->Fault(), "");
  }
}

TEST(Edit, ChangesWhatItNamesAndNothingElse) {
  static const std::string fifty(50, 'x');
  using File = OpenConfigFile;
  static const struct {
    const char* before;
    bool (*edit)(File& file);
    std::string after;
  } rows[] = {
      {"a=1\n", [](File& f) { return f.SetEntry("a", "1") == 1 && !f.afterDelete; }, "a=1\n"},
      {"a = 1  \n", [](File& f) { return f.SetEntry("a", "22") == 2; }, "a =22  \n"},
      {"a=1", [](File& f) { return f.SetEntry("a", "2") == 2; }, "a=2"},
      {"a=   \n", [](File& f) { return f.SetEntry("a", "2") == 2; }, "a=2   \n"},
      {"a=1", [](File& f) { return f.AddEntry("b", "2", false) && f.GotoEntry("b"); }, "a=1b=2\n"},
      {"a=1\n#\n", [](File& f) { return f.SetEntry("b", "2") == 2 && Entries(f) == "[a|1][b|2]"; },
       "a=1\n#\nb=2\n"},
      {" a\t=1\r\n",
       [](File& f) { return f.SetEntry("a", fifty.c_str()) == 2 && f.GotoEntry("a"); },
       " a\t=" + fifty + "\r\n"},
      {"# head\na=1\n",
       [](File& f) {
         return f.InsertEntry("b", "2") && f.GotoPreviousEntry() && f.SetCurrentEntry("3") == 2;
       },
       "b=3\n# head\na=1\n"},
      {"a=1\n# mid\nc=3\n", [](File& f) { return f.GotoEntry("c") && f.InsertEntry("b", "2"); },
       "a=1\n# mid\nb=2\nc=3\n"},
      {"# only\n", [](File& f) { return f.InsertEntry("b", "2") && f.cursor->IsEnd(); },
       "b=2\n# only\n"},
      {"# only\n", [](File& f) { return f.AddEntry("b", "2", false); }, "# only\nb=2\n"},
      {"  name  = v\n", [](File& f) { return f.RenameEntry("x") && Entries(f) == "[x| v]"; },
       "  x  = v\n"},
      {"\tn = v \n",
       [](File& f) { return f.RenameEntry(fifty.c_str()) && Entries(f) == "[" + fifty + "| v]"; },
       "\t" + fifty + " = v \n"},
      {"=v\n", [](File& f) { return f.RenameEntry("x") && Entries(f) == "[x|v]"; }, "x=v\n"},
      {"   =v\n", [](File& f) { return f.RenameEntry("x") && Entries(f) == "[x|v]"; }, " x  =v\n"},
      {"a=1\n", [](File& f) { return !f.RenameEntry(""); }, "a=1\n"},
      {"#\n",
       [](File& f) {
         return f.SetCurrentEntry("1") == 0 && !f.RenameEntry("b") && !f.DeleteCurrentEntry();
       },
       "#\n"},
      {"",
       [](File& f) {
         return f.AddEntry(" k", "1", true) && f.RenameEntry("x") == false && f.GotoFirstEntry() &&
                f.RenameEntry("new ") && f.GotoEntry("new ");
       },
       "new =1\n"},
      {"",
       [](File& f) {
         return f.AddEntry("k=k", "1", true) && f.SetEntry("k=k", fifty.c_str()) == 2 &&
                f.GotoEntry("k=k");
       },
       "k=k=" + fifty + "\n"},
      {"a=1\nb=2\nc=3\n",
       [](File& f) {
         return f.DeleteEntry("b") && f.afterDelete && f.lines->totalLength == 8 &&
                f.GotoNextEntry() && f.DeleteCurrentEntry() && f.cursor->IsEnd();
       },
       "a=1\n"},
      {"#a\na=1\n#b\n",
       [](File& f) {
         return !f.DeleteEntry("z") && f.DeleteCurrentEntry() && f.GetEntryCount() == 0;
       },
       "#a\n#b\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.before) + " -> " + row.after);
    FlatFile file(row.before);
    EXPECT_TRUE(row.edit(*file));
    EXPECT_EQ(file->Image(), row.after);
    EXPECT_EQ(file->Fault(), "");
  }
  FlatFile prefixed("", "=", "#", "\t");
  EXPECT_TRUE(prefixed->AddEntry("k", "v", false));
  EXPECT_EQ(prefixed->Image(), "\tk=v\n");
  EXPECT_EQ(Entries(*prefixed), "[k|v]");
}

TEST(Edit, RefusesWhatDoesNotFitAndChangesNothing) {
  const std::string longest(1020, 'v');  // with "k", "=", line feed and terminator: 1024
  const std::string longer = longest + 'v', huge(100000, 'h');
  FlatFile file("a=1\n# end\n");
  const std::string before = file->Image();
  for (const std::string& value : {longer, huge}) {
    EXPECT_FALSE(file->AddEntry("k", value.c_str(), false));
    EXPECT_FALSE(file->InsertEntry("k", value.c_str()));
    EXPECT_EQ(file->SetEntry("k", value.c_str()), 0u);
    EXPECT_EQ(file->Image(), before);
  }
  EXPECT_TRUE(file->AddEntry("k", longest.c_str(), false));
  EXPECT_EQ(file->SetEntry("k", huge.c_str()), 2u);
  EXPECT_TRUE(file->GotoEntry("k"));
  EXPECT_FALSE(file->RenameEntry("n"));
  EXPECT_EQ(file->Image(), before + "k=" + huge + "\n");
  EXPECT_TRUE(file->DeleteCurrentEntry());

  // A tail or rest of 1023 bytes and its terminator can be carried over, one of 1024 cannot.
  for (const std::size_t blanks : {1022, 1023}) {
    const std::string line = "t=1" + std::string(blanks, ' ') + "\n";
    OpenConfigFile text(nullptr, false, false, false, "=", "#", nullptr);
    text.lines->AddLine(line, true);
    text.Load();
    EXPECT_EQ(text.SetCurrentEntry("22"), blanks == 1022 ? 2u : 0u);
    EXPECT_EQ(text.Image() == line, blanks == 1023);
    text.lines->ShrinkLine(text.lines->First(), blanks == 1022 ? 3 : 2, true);
    EXPECT_EQ(text.RenameEntry("n"), blanks == 1022);
    EXPECT_EQ(text.Fault(), "");
  }
}

TEST(Read, AValueComesWholeOrNotAtAll) {
  FlatFile file("ab=xyz\n=123\n");
  static const struct {
    const char* key;
    std::size_t size, result;
    std::string buffer;
  } rows[] = {
      {"ab", 6, 3, std::string("xyz\0??", 6)},
      {"ab", 4, 3, std::string("xyz\0??", 6)},
      {"ab", 3, kTooSmall, std::string("\0\0\0???", 6)},
      {"ab", 0, kTooSmall, "??????"},
      {"", 4, 3, std::string("123\0??", 6)},
      {"AB", 5, 0, std::string("\0\0\0\0\0?", 6)},
      {"a", 6, 0, std::string(6, '\0')},
      {"abc", 0, 0, "??????"},
  };
  for (const auto& row : rows) {
    std::string buffer = "??????";
    EXPECT_EQ(file->GetEntry(row.key, buffer.data(), row.size), row.result) << row.key << row.size;
    EXPECT_EQ(buffer, row.buffer) << row.key << row.size;
  }
}

TEST(Read, TheCurrentEntryGoesIntoTheBuffersThatAreGiven) {
  static const struct {
    const char* at;
    std::size_t keySize, valueSize, result;  // size 9: no buffer
    std::string key, value;
  } rows[] = {
      {"ab", 4, 4, 2, std::string("ab\0?", 4), std::string("xyz\0", 4)},
      {"ab", 9, 4, 3, "????", std::string("xyz\0", 4)},
      {"ab", 3, 9, 2, std::string("ab\0?", 4), "????"},
      {"ab", 9, 9, 0, "????", "????"},
      {"ab", 2, 4, kTooSmall, std::string("\0\0??", 4), "????"},
      {"ab", 3, 3, kTooSmall, std::string("ab\0?", 4), std::string("\0\0\0?", 4)},
      {"", 1, 4, 3, std::string("\0???", 4), std::string("123\0", 4)},
      {"end", 4, 4, 0, "????", "????"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.at) + std::to_string(row.keySize) + std::to_string(row.valueSize));
    FlatFile file("ab=xyz\n=123\n");
    if (!file->GotoEntry(row.at)) {
      while (file->GotoNextEntry()) {
      }
    }
    std::string key = "????", value = "????";
    EXPECT_EQ(file->GetCurrentEntry(row.keySize == 9 ? nullptr : key.data(), row.keySize,
                                    row.valueSize == 9 ? nullptr : value.data(), row.valueSize),
              row.result);
    EXPECT_EQ(key, row.key);
    EXPECT_EQ(value, row.value);
  }
}

TEST(LifeCycle, ATextInMemoryIsTakenLineByLine) {
  const auto line = [](std::size_t bytes) { return "k=" + std::string(bytes - 3, 'v') + "\n"; };
  TestFiles::TemporaryDirectory directory;
  OpenConfigFile file(nullptr, false, false, false, "=", "#", nullptr);
  EXPECT_TRUE(file.cursor->IsUnset());
  EXPECT_FALSE(file.Save(false, directory.Path("out").c_str()));
  EXPECT_FALSE(std::filesystem::exists(directory.Path("out")));
  const struct {
    std::string text;
    bool taken;
    std::string image;
    std::size_t entries;
  } rows[] = {
      {"a=1\nb=2", true, "a=1\n", 1},
      {"a=1", true, "", 0},
      {"a=1\n" + line(1023), true, "a=1\n" + line(1023), 2},
      {"a=1\n" + line(1024) + "c=3\n", false, "a=1\n", 0},
      {std::string(2000, 'x'), true, "", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text.substr(0, 20));
    OpenConfigFile made(row.text.c_str(), false, false, true, "=", "#", nullptr);
    EXPECT_EQ(made.path, nullptr);
    EXPECT_EQ(file.AttachToBuffer(row.text.c_str(), directory.Path("new").c_str()), row.taken);
    for (OpenConfigFile* object : {&made, &file}) {
      EXPECT_EQ(object->Image(), row.image);
      EXPECT_EQ(object->GetEntryCount(), row.entries);
      EXPECT_TRUE(*object->cursor == object->entries->First());
    }
    EXPECT_TRUE(file.Save(false, directory.Path("other").c_str()));
    EXPECT_FALSE(std::filesystem::exists(directory.Path("new")));
    EXPECT_EQ(TestFiles::Read(directory.Path("other")), row.image);
  }
  EXPECT_TRUE(file.AttachToBuffer("a=1\nb=2\n", nullptr));
  EXPECT_TRUE(file.DeleteEntry("a"));
  file.Reload();  // no path: not even the flag changes
  EXPECT_TRUE(file.afterDelete);
  EXPECT_EQ(file.Image(), "b=2\n");
  EXPECT_FALSE(file.SaveToBuffer(nullptr, 0));
}

TEST(LifeCycle, AssignmentSharesOneContent) {
  alignas(OpenConfigFile) unsigned char room[sizeof(OpenConfigFile)];  // never destroyed
  FlatFile file("a=1\n");
  auto* alias = new (room) OpenConfigFile(nullptr, false, false, false, ":", ";", nullptr);
  alias->Tidy();
  *alias = *file;
  EXPECT_EQ(alias->SetEntry("a", "2"), 2u);
  EXPECT_EQ(file->Image(), "a=2\n");
}

TEST(SmartBuffer, IsABlockOf1024Bytes) {
  alignas(SmartBuffer) unsigned char room[sizeof(SmartBuffer)];  // never destroyed
  SmartBuffer buffer;
  SmartBuffer& alias = *new (room) SmartBuffer;
  EXPECT_EQ(buffer.size(), 1024u);
  EXPECT_EQ(buffer[0], '\0');
  buffer[1023] = 'x';
  delete[] & alias;
  alias = buffer;
  EXPECT_EQ(alias(), &buffer);
}

TEST(ConfigException, EachCopyOwnsItsMessage) {
  auto source = std::make_unique<ConfigException>("text");
  const ConfigException copy(*source);
  ConfigException assigned("other");
  assigned = *source;
  assigned = static_cast<ConfigException&>(assigned);
  source.reset();
  EXPECT_STREQ(copy.what(), "text");
  EXPECT_STREQ(assigned.what(), "text");
}

}  // namespace
