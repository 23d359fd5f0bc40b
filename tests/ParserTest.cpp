// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "ZelParser.h"

namespace {

using Lines = std::vector<std::string>;

class TempFile {
 public:
  explicit TempFile(const std::string& bytes)
      : path(testing::TempDir() + "zel_parser_" + std::to_string(std::random_device()())) {
    std::ofstream(path, std::ios::binary) << bytes;
  }
  ~TempFile() { std::filesystem::remove(path); }
  const char* Path() const { return path.c_str(); }

 private:
  std::string path;
};

Lines AllLines(StreamIterator&& source) {
  Lines lines;
  while (source.HasMoreLines()) lines.push_back(source.GetLine());
  return lines;
}

// A caller's own source: hands out any lines, notes each question, and throws once where told.
struct ListSource : StreamIterator {
  explicit ListSource(Lines given) : lines(std::move(given)) {}
  bool HasMoreLines() override { return log += '?', next < lines.size(); }
  std::string GetLine() override {
    log += '!';
    if (next != throwAt) return lines[next++];
    throwAt = SIZE_MAX;
    throw std::runtime_error("line");
  }

  Lines lines;
  std::string log;
  std::size_t next = 0, throwAt = SIZE_MAX;
};

// A length tells texts apart that hold any byte.
std::string Show(int kind, const std::string& text) {
  return std::to_string(kind) + ':' + std::to_string(text.size()) + text + ' ';
}

std::string Next(ZelLex& lexer) {
  const ZelLexToken* token = lexer.GetToken();
  return token == nullptr ? "end" : Show(token->kind, token->text);
}

// The lexer once more, one byte at a time.
class SlowLexer {
 public:
  SlowLexer(StreamIterator* from, bool ignore) : source(from), ignoreWhiteSpaces(ignore) {}

  std::string GetToken() {
    Get();
    if (atEnd) return "end";
    const int kind = KindOf(current);
    std::string text(1, current);
    if (kind != 2 && kind != 3 && (kind != 4 || !ignoreWhiteSpaces)) return Show(kind, text);
    for (Get(); KindOf(current) == kind; Get()) text += current;
    if (--position < line.size()) current = line[position];  // else an empty line was the end
    return kind == 4 ? Show(0, "") : Show(kind, text);
  }

 private:
  static int KindOf(signed char c) {
    if (std::strchr("!%^&*()-+={}|~[]\\;':\\\"<>?,./#_", c) != nullptr) return 1;
    if (c == 10) return 5;
    if (c == 32 || c == 9 || c == 11) return 4;
    return (c | 32) >= 'a' && (c | 32) <= 'z' ? 2 : c >= '0' && c <= '9' ? 3 : 0;
  }
  void Get() {
    if (current != -1 && position == line.size()) {
      const bool more = source->HasMoreLines() && !(line = source->GetLine()).empty();
      if (more)
        position = 0;
      else
        current = -1;
    }
    if (current == -1)
      atEnd = true;
    else
      current = line[position++];
  }

  StreamIterator* source;
  bool ignoreWhiteSpaces, atEnd = false;
  std::string line;
  std::size_t position = 0;
  signed char current = 0;
};

constexpr char kCut = '\x01';  // in a test's text: the source's next line starts here

void LexesAsTheSlowLexer(const std::string& text) {
  Lines lines(1);
  for (const char c : text) c == kCut ? lines.emplace_back() : lines.back() += c;
  for (const bool ignore : {false, true}) {
    ListSource list(lines), slowList(lines);
    BufferIterator buffer(text.c_str()), slowBuffer(text.c_str());
    ZelLex ofList(&list, ignore), ofBuffer(&buffer, ignore);
    SlowLexer slowOfList(&slowList, ignore), slowOfBuffer(&slowBuffer, ignore);
    for (int ends = 0; ends < 3;) {
      const std::string token = slowOfList.GetToken(), bufferToken = slowOfBuffer.GetToken();
      ASSERT_EQ(Next(ofList), token) << testing::PrintToString(text);
      ASSERT_EQ(Next(ofBuffer), bufferToken) << testing::PrintToString(text);
      ASSERT_EQ(list.log, slowList.log) << testing::PrintToString(text);
      ends += token == "end" && bufferToken == "end";
    }
  }
}

TEST(LineSources, HandOutLines) {
  const std::string piece(4095, 'x');  // a file's line is read in pieces of this length
  const struct {
    std::string text;
    Lines file, buffer;
  } rows[] = {
      {"", {""}, {}},
      {"a\n", {"a\n", ""}, {"a\n"}},
      {"a", {"a"}, {"a"}},
      {"a\n\nb", {"a\n", "\n", "b"}, {"a\n", "\n", "b"}},
      {"a\r\nb\rc\r\r\n\r", {"a\n", "b\rc\r\n", "\r"}, {"a\r\n", "b\rc\r\r\n", "\r"}},
      {std::string("a\0b\nc", 5), {std::string("a\0b\n", 4), "c"}, {"a"}},
      {piece + "\n", {piece + "\n", ""}, {piece + "\n"}},
      {piece + "\r\n\r\n", {piece + "\n", "\n", ""}, {piece + "\r\n", "\r\n"}},
      {"\r" + piece + "\n", {"\r" + piece + "\n", ""}, {"\r" + piece + "\n"}},
      {piece.substr(1) + "\r\nz", {piece.substr(1) + "\n", "z"}, {piece.substr(1) + "\r\n", "z"}},
      {piece + piece, {piece + piece}, {piece + piece}},
  };
  for (const auto& row : rows) {
    const TempFile file(row.text);
    EXPECT_EQ(AllLines(FileIterator(file.Path())), row.file);
    EXPECT_EQ(AllLines(BufferIterator(row.text.c_str())), row.buffer);
  }
}

TEST(LineSources, FileThatCannotBeOpenedThrowsThePlainException) {
  for (const char* path : {"/nowhere/at/all", "."}) {
    try {
      FileIterator source(path);
      ADD_FAILURE() << path;
    } catch (const std::exception& failure) {
      EXPECT_EQ(typeid(failure), typeid(std::exception)) << path;
    }
  }
}

TEST(LineSources, ClosedFileHasNoMoreLines) {
  const TempFile file("a\nb\n");
  FileIterator source(file.Path());
  EXPECT_EQ(source.GetLine(), "a\n");
  source.CloseFile();
  source.CloseFile();
  EXPECT_FALSE(source.HasMoreLines());
  EXPECT_EQ(source.GetLine(), "");
}

TEST(LineSources, ReadErrorEndsTheInput) {
  const char* unreadable = "/proc/self/mem";  // opens, and its first byte is never mapped
  if (!std::filesystem::exists(unreadable)) GTEST_SKIP();
  EXPECT_EQ(AllLines(FileIterator(unreadable)), Lines{""});
}

TEST(Lexer, EqualsTheSlowOne) {
  EXPECT_EQ(ZelLex(nullptr, false).GetToken(), nullptr);
  const std::string symbols("a1 \n;\xFF\0\r\x01", 9);
  Lines texts = {""};
  for (std::size_t i = 0; i < texts.size(); ++i) {  // all texts of up to five symbols
    LexesAsTheSlowLexer(texts[i]);
    for (std::size_t s = 0; texts[i].size() < 5 && s < symbols.size(); ++s) {
      texts.push_back(texts[i] + symbols[s]);
    }
  }
  for (int pair = 0; pair < 0x10000; ++pair) {
    LexesAsTheSlowLexer({static_cast<char>(pair >> 8), static_cast<char>(pair)});
  }
  const char bytes[] = "aaaaaaaabZz0000009   \t\v\n\n;_\"$\r\x01\x01";
  std::mt19937 random(1);
  for (std::string text; text.size() < 60000; LexesAsTheSlowLexer(text.substr(text.size() / 2))) {
    for (int i = 0; i < 50; ++i) text.append(1 + random() % 30, bytes[random() % 33]);
  }
}

TEST(Lexer, CopiesShareTheSourceAndNotTheRecord) {
  BufferIterator source("one \nx\xFF"), otherSource("three");
  ZelLex lexer(&source, false), other(&otherSource, true);
  ZelLexToken *const record = lexer.GetToken(), *const otherRecord = other.GetToken();
  ZelLex copy(lexer);
  other = lexer;
  other = *&other;
  EXPECT_EQ(otherRecord->text, "one");
  EXPECT_EQ(Next(copy), "4:1  ");
  EXPECT_EQ(record->text, "one");
  EXPECT_EQ(other.GetToken(), otherRecord);
  EXPECT_EQ(otherRecord->text, " ");
  for (const char* token : {"4:1  ", "5:1\n ", "2:1x "}) EXPECT_EQ(Next(lexer), token);
  for (const char* token : {"5:1\n ", "end"}) EXPECT_EQ(Next(other), token);
  ZelLex atEndMark(lexer);
  EXPECT_EQ(Next(atEndMark), "end");
}

TEST(Lexer, RunOutlivesASourceThatThrows) {
  ListSource source({"ab", "c ", " \n"});
  ZelLex lexer(&source, true);
  source.throwAt = 1;
  EXPECT_THROW(lexer.GetToken(), std::runtime_error);
  EXPECT_EQ(Next(lexer), "2:3abc ");
  source.throwAt = 2;
  EXPECT_THROW(lexer.GetToken(), std::runtime_error);
  for (const char* token : {"0:0 ", "5:1\n ", "end"}) EXPECT_EQ(Next(lexer), token);
}

// Reads `limit` tokens at most and then does as told.
struct Reader : ZelParser {
  bool Parse(void* context) override {
    seenContext = context;
    const ZelLexToken* token = nullptr;
    for (int i = 0; i < limit && (token = GetToken()) != nullptr; ++i) text += token->text;
    if (throws) throw std::runtime_error("hook");
    return result;
  }
  bool Run(const char* fileName, const char* buffer) {
    return fileName != nullptr ? ParseFile(fileName, this) : ParseBuffer(buffer, this);
  }

  std::string text;
  void* seenContext = nullptr;
  int limit = 1000000;
  bool result = true, throws = false;
};

TEST(Parser, SecondCallGoesOnWithTheFirstSource) {
  const TempFile file("a b\nc d\n"), otherFile("x\n");
  const struct {
    const char *first, *second;  // null: a text
    int limit;
    const char* rest;
  } rows[] = {
      {file.Path(), "/nowhere/at/all", 1, " b\n"}, {file.Path(), otherFile.Path(), 9, ""},
      {file.Path(), nullptr, 1, " b\n"},           {nullptr, nullptr, 1, " 2\n3"},
      {nullptr, otherFile.Path(), 1, " 2\n3"},
  };
  for (const auto& row : rows) {
    Reader parser;
    parser.limit = row.limit;
    parser.result = row.limit == 1;
    EXPECT_EQ(parser.Run(row.first, "1 2\n3"), parser.result);
    EXPECT_EQ(parser.seenContext, &parser);
    parser.text.clear();
    parser.limit = 9;
    parser.Run(row.second, "y\n");
    EXPECT_EQ(parser.text, row.rest) << &row - rows;
  }
}

TEST(Parser, FailedOpenAndThrowingHookLeaveAUsableParser) {
  const TempFile file("a\nb\n");
  Reader parser;
  EXPECT_THROW(parser.ParseFile("/nowhere/at/all", &parser), std::exception);
  EXPECT_EQ(parser.seenContext, nullptr);
  parser.limit = 2;
  parser.throws = true;
  EXPECT_THROW(parser.ParseFile(file.Path(), nullptr), std::runtime_error);
  EXPECT_EQ(parser.text, "a\n");
  EXPECT_EQ(parser.GetToken()->text, "b");  // the file is still open
}

TEST(Allocations, FailedOneLosesNothingThatTheRepeatedCallNeeds) {
  const std::string text = std::string(9000, 'w') + " 1\n" + std::string(70, '7') + ";\nend";
  const TempFile file(text);
  for (const char* fileName : {file.Path(), static_cast<const char*>(nullptr)}) {
    std::unique_ptr<Reader> parser;
    long blocks = 0;
    const auto run = [&] { parser->Run(fileName, text.c_str()); };
    const auto setUp = [&] {
      blocks = FailingNew::LiveBlocks();
      parser = std::make_unique<Reader>();
      parser->text.reserve(text.size());
      return [&run] { run(); };
    };
    const int failures = FailingNew::ForEachAllocation(setUp, [&](bool failed) {
      if (failed) run();
      EXPECT_EQ(parser->text, text);
      parser.reset();
      EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
    });
    EXPECT_GE(failures, 6);
  }
}

TEST(Allocations, FailedCopyChangesNothing) {
  const std::string text = std::string(50, 'w') + " 1";
  BufferIterator source(text.c_str()), otherSource("");
  ZelLex lexer(&source, false);
  lexer.GetToken();
  std::unique_ptr<ZelLex> target;
  long blocks = 0;
  const auto copy = [&] { *target = ZelLex(lexer); };
  const auto setUp = [&] {
    blocks = FailingNew::LiveBlocks();
    otherSource = BufferIterator("a b");
    target = std::make_unique<ZelLex>(&otherSource, false);
    target->GetToken();
    return [&copy] { copy(); };
  };
  const int failures = FailingNew::ForEachAllocation(setUp, [&](bool failed) {
    EXPECT_EQ(Next(*target), "4:1  ");
    EXPECT_EQ(Next(*target), failed ? "2:1b " : "3:11 ");
    target.reset();
    EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
  });
  EXPECT_EQ(failures, 5);
}

}  // namespace
