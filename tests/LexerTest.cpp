// SPDX-License-Identifier: MIT
// The scenarios of line sources, lexer and parser, and what does not fit into one.
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "Scenarios.h"
#include "TestFiles.h"
#include "ZelLex.h"
#include "ZelParser.h"

namespace {

using Scenarios::ResultText;
using Scenarios::Scanner;

template <class Source>
std::string LinesText(Source& source) {
  std::string lines;
  while (source.HasMoreLines() && lines.size() < 100000) {
    lines += ' ' + Quoted(source.GetLine());
    if constexpr (std::is_copy_constructible_v<Source>) source = Source(source);
  }
  if (!source.GetLine().empty()) lines += " (a line after the end)";
  return lines.erase(0, 1);
}

// `TEXT | LINES OF A FILE | LINES OF A TEXT`
void RunLines(Scanner& line, Scanner) {
  const std::string text = line.Text();
  TestFiles::Write(TestFiles::Path("%a"), text, std::ios::binary);
  FileIterator file("%a"), closed("%a");
  BufferIterator buffer(text.c_str());
  closed.CloseFile();
  line.Need("|");
  Compare("lines of a file", line.Column(), LinesText(file));
  Compare("lines of a closed file", "", LinesText(closed));
  line.Need("|");
  Compare("lines of a text", line.Column(), LinesText(buffer));
}

// A caller's own source: hands out any lines, and no more after the last. Throws before each. An
// empty line is the end: no other may be asked for.
struct ListSource : StreamIterator {
  explicit ListSource(std::vector<std::string> given) : lines(std::move(given)) {}
  bool HasMoreLines() override { return next < lines.size(); }
  std::string GetLine() override {
    if (throws = !throws; throws) throw std::runtime_error("a line");
    if (next > 0 && lines[next - 1].empty()) throw std::logic_error("asked after an empty line");
    return lines.at(next++);
  }

  const std::vector<std::string> lines;
  std::size_t next = 0;
  bool throws = false;
};

// The tokens up to the end: `word "abc" digits "1"`. After each call, also after one in which the
// source throws, a copy of the lexer goes on.
std::string AllTokens(const ZelLex& first) {
  static const char* const kKinds[] = {"unknown", "mark", "word", "digits", "blank", "newline"};
  std::string tokens;
  auto lexer = std::make_unique<ZelLex>(first);
  for (; tokens.size() < 100000; lexer = std::make_unique<ZelLex>(*lexer)) {
    try {
      const ZelLexToken* const token = lexer->GetToken();
      if (token == nullptr) break;
      tokens += std::string(" ") + kKinds[token->kind] + ' ' + Quoted(token->text);
    } catch (const std::runtime_error&) {
    }
  }
  if (lexer->GetToken() != nullptr) tokens += " (a token after the end)";
  return tokens.erase(0, 1);
}

// `LINES | TOKENS | TOKENS WHERE WHITE SPACE IS IGNORED`, where those are others
void RunTokens(Scanner& line, Scanner) {
  const std::vector<std::string> lines = line.Texts();
  std::string expected;
  for (const bool ignores : {false, true}) {
    if (line.Take("|")) expected = line.Column();
    ListSource source(lines);
    Compare("tokens", expected, AllTokens(ZelLex(lines.empty() ? nullptr : &source, ignores)));
  }
}

// Its hook reads `limit` tokens at most, and throws instead where that is 0.
struct Reader : ZelParser {
  explicit Reader(const std::string& given) : text(given) { read.reserve(30000); }
  bool Parse(void* context) override {
    if (context != &limit) throw std::runtime_error("another context");
    if (limit == 0) throw std::runtime_error("hook");
    const ZelLexToken* token = nullptr;
    for (; limit > 0 && (token = GetToken()) != nullptr; --limit) read += token->text;
    return token != nullptr;
  }
  // A call that finds no memory is repeated.
  std::string Read(bool (ZelParser::*parse)(const char*, void*), const char* from, int tokens) {
    bool result = false;
    read.clear();
    for (limit = tokens;;) {
      try {
        result = (this->*parse)(from, &limit);
        break;
      } catch (const std::bad_alloc&) {
      } catch (const std::exception& failure) {
        return failure.what();
      }
    }
    return (result ? "true " : "false ") + Quoted(read);
  }
  std::string ReadFile(const char* name, int tokens) {
    return Read(&ZelParser::ParseFile, name, tokens);
  }
  std::string ReadText(int tokens) { return Read(&ZelParser::ParseBuffer, text.c_str(), tokens); }

  const std::string text;
  std::string read;
  int limit = 0;
};

const std::vector<Scenarios::Call<Reader>> kParserCalls = {SCENARIO_CALL(ReadFile(text, number)),
                                                           SCENARIO_CALL(ReadText(number))};

// `TEXT | CALL = RESULT; CALL`, with each allocation failing once
void RunParser(Scanner& line, Scanner) {
  const std::string text = line.Text();
  TestFiles::Write(TestFiles::Path("%a"), text, std::ios::binary);
  line.Need("|");
  const Scanner calls = line;
  std::optional<Reader> reader(std::in_place, text);
  FailingNew::ForEachAllocation(
      [&] {
        line = calls;
        Scenarios::RunCalls(line, *reader, kParserCalls);
      },
      [&](bool) { reader.emplace(text); });
}

const bool kRules = Scenarios::Register("LineSources", "lines.txt", RunLines) &&
                    Scenarios::Register("Lexer", "lexer.txt", RunTokens) &&
                    Scenarios::Register("Parser", "parser.txt", RunParser);

TEST(LexerObject, AnAssignmentIsWholeOrChangesNothing) {
  const std::string wide(50, 'w'), text = wide + " 1";
  BufferIterator source(text.c_str()), other("a b\nc");
  ZelLex lexer(&source, true), target(&other, false);
  lexer.GetToken();
  const ZelLexToken* const record = target.GetToken();
  const BufferIterator rest = other;
  const char* const former = R"(blank " " word "b" newline "\n" word "c")";
  const auto check = [&](bool failed) {
    EXPECT_EQ(record->text, failed ? "a" : wide);
    EXPECT_EQ(AllTokens(target), failed ? former : R"(unknown "" digits "1")");
    other = rest;
  };
  FailingNew::ForEachAllocation([&] { target = lexer; }, check);
  EXPECT_EQ(target.GetToken(), record) << "the one record of the lexer";
  target.GetToken();
  EXPECT_EQ(target.GetToken(), nullptr);
  EXPECT_EQ(record->kind, UnknownToken) << "at the end";
  EXPECT_EQ(record->text, "") << "at the end";
}

}  // namespace
