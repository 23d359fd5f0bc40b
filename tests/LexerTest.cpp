// SPDX-License-Identifier: MIT
// The scenarios of line sources, lexer and parser, and what does not fit into one.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "FailingNew.h"
#include "LexerReference.h"
#include "Scenarios.h"
#include "TestFiles.h"
#include "ZelLex.h"
#include "ZelParser.h"

namespace {

using LexerReference::AllTokens;
using LexerReference::ListSource;
using Scenarios::ResultText;
using Scenarios::Scanner;
using TestFiles::Path;

std::string Written(const std::string& text) {
  TestFiles::Write(Path("%a"), text, std::ios::binary);
  return Path("%a");
}

std::string LinesText(auto& source, auto goOn) {
  std::string lines;
  for (; source.HasMoreLines() && lines.size() < 100000; goOn(source)) {
    lines += ' ' + Quoted(source.GetLine());
  }
  if (!source.GetLine().empty()) lines += " (a line after the end)";
  return lines.erase(0, 1);
}

// `TEXT | LINES OF A FILE | LINES OF A TEXT`
void RunLines(Scanner& line, Scanner) {
  const std::string text = line.Text();
  FileIterator file(Written(text).c_str());
  BufferIterator buffer(text.c_str());
  line.Need("|");
  Compare("lines of a file", line.Column(), LinesText(file, [](FileIterator&) {}));
  line.Need("|");
  Compare("lines of a text", line.Column(), LinesText(buffer, [](BufferIterator& source) {
            source = BufferIterator(source);  // a copy reads on where it was made
          }));
}

// `LINES | TOKENS | TOKENS WHERE WHITE SPACE IS IGNORED`, where those are others
void RunTokens(Scanner& line, Scanner) {
  const std::vector<std::string> lines = line.Texts();
  std::string expected;
  for (const bool ignores : {false, true}) {
    if (line.Take("|")) expected = line.Column();
    ListSource source(lines);
    ZelLex lexer(&source, ignores);
    Compare("tokens", expected, AllTokens(lexer));
    Compare("tokens after the end", "", AllTokens(lexer));
  }
}

// Its hook reads `limit` tokens at most, and throws instead where that is 0.
struct Reader : ZelParser {
  explicit Reader(const std::string& text = "") : source(text) { read.reserve(30000); }
  bool Parse(void* given) override {
    if (limit == 0) throw std::runtime_error("hook");
    if (given != context) read += "(another context)";
    const ZelLexToken* token = nullptr;
    for (int i = 0; i < limit && (token = GetToken()) != nullptr; ++i) read += token->text;
    return result;
  }
  template <class Call>
  std::string Read(int tokens, Call parse) {
    read.clear();
    limit = tokens;
    context = tokens == 1 ? &limit : nullptr;
    result = !result;
    try {
      if (parse() != result) read += "(another result)";
    } catch (const std::exception& failure) {
      return typeid(failure) == typeid(std::exception) ? "no file" : failure.what();
    }
    return Quoted(read);
  }
  std::string ReadFile(const std::string& name, int tokens) {
    return Read(tokens, [&] { return ParseFile(name.c_str(), context); });
  }
  std::string ReadText(int tokens) {
    return Read(tokens, [&] { return ParseBuffer(source.c_str(), context); });
  }

  const std::string source, path = Path("%a");
  std::string read;
  void* context = nullptr;
  int limit = 100;
  bool result = true;
};

const std::vector<Scenarios::Call<Reader>> kParserCalls = {SCENARIO_CALL(ReadFile(text, number)),
                                                           SCENARIO_CALL(ReadFile(on.path, number)),
                                                           SCENARIO_CALL(ReadText(number))};

// `TEXT | CALL = RESULT; CALL`
void RunParser(Scanner& line, Scanner) {
  Reader reader(line.Text());
  Written(reader.source);
  line.Need("|");
  Scenarios::RunCalls(line, reader, kParserCalls);
}

const bool kRules = Scenarios::Register("LineSources", "lines.txt", RunLines) &&
                    Scenarios::Register("Lexer", "lexer.txt", RunTokens) &&
                    Scenarios::Register("Parser", "parser.txt", RunParser);

TEST(LineSource, AClosedFileHasNoLines) {
  FileIterator source(Written("a\nb\n").c_str());
  EXPECT_EQ(source.GetLine(), "a\n");
  source.CloseFile();
  EXPECT_FALSE(source.HasMoreLines());
  EXPECT_EQ(source.GetLine(), "");
}

TEST(LexerObject, HasNoTokensWithoutASource) {
  EXPECT_EQ(ZelLex(nullptr, false).GetToken(), nullptr);
}

TEST(LexerObject, AnAssignmentIsWholeOrChangesNothing) {
  const std::string wide(50, 'w');
  ListSource source({wide + " 1"}), other({"a b"});
  ZelLex lexer(&source, true), target(&other, false);
  LexerReference::NextToken(lexer);
  const ZelLexToken* record = LexerReference::NextToken(target);
  const auto check = [&](bool failed) {
    EXPECT_EQ(record->text, failed ? "a" : wide);
    ZelLex rest(target);
    EXPECT_EQ(AllTokens(rest), failed ? R"(blank " " word "b")" : R"(unknown "" digits "1")");
  };
  FailingNew::ForEachAllocation([&] { target = lexer; }, check);
  EXPECT_EQ(target.GetToken(), record) << "the one record of the lexer";
  target.GetToken();
  EXPECT_EQ(target.GetToken(), nullptr);
  EXPECT_EQ(LexerReference::TokenText(*record), R"(unknown "")") << "at the end";
}

TEST(ParserObject, AFailedAllocationLosesNothingThatTheRepeatedCallNeeds) {
  const std::string text = std::string(20000, 'w') + " 1\n" + std::string(50, 'w') + "7;\nend";
  for (const std::string path = Written(text); const bool ofFile : {true, false}) {
    const auto run = [&](Reader& parser) {
      ofFile ? parser.ParseFile(path.c_str(), nullptr) : parser.ParseBuffer(text.c_str(), nullptr);
    };
    FailingNew::ForEachAllocationOn<Reader>(run, [&](Reader& parser, bool failed) {
      if (failed) run(parser);
      EXPECT_EQ(parser.read, text);
    });
  }
}

}  // namespace
