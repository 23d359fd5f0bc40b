// SPDX-License-Identifier: MIT
// Runs the scenarios of tests/scenarios: each rule is a test of that name.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "FileCalls.h"
#include "FileFixtures.h"

namespace {

/// Reads a line of a scenario file from left to right.
class Scanner {
 public:
  explicit Scanner(std::string_view line) : rest(line) {}
  bool Take(std::string_view token) {
    while (rest.starts_with(' ')) rest.remove_prefix(1);
    if (!rest.starts_with(token)) return false;
    rest.remove_prefix(token.size());
    return true;
  }
  void Need(std::string_view token) {
    if (!Take(token))
      throw std::runtime_error("no '" + std::string(token) + "' at: " + std::string(rest));
  }
  /// A name or a number, or what is up to one of the bytes that end it.
  std::string Word(std::string_view ends = " ,()=;|*\"") {
    Take("");
    const std::string word(rest.substr(0, rest.find_first_of(ends)));
    rest.remove_prefix(word.size());
    return word;
  }
  bool HasText() {
    Take("");
    const std::size_t digits = rest.find_first_not_of("0123456789");
    return digits != rest.npos && (rest[digits] == '"' || rest[digits] == '*');
  }
  /// `"a=" + 1020*"v" + "\n"`
  std::string Text() {
    std::string all;
    do {
      const std::string count = Word();
      if (!count.empty()) Need("*");
      Need("\"");
      std::string term;
      for (; !rest.empty() && rest[0] != '"'; rest.remove_prefix(1)) {
        term += rest[0] == '\\' ? Escape() : rest[0];
      }
      Need("\"");
      for (int n = count.empty() ? 1 : std::stoi(count); n > 0; --n) all += term;
    } while (Take("+"));
    return all;
  }
  /// What is written as `call`, with literals for the names in it.
  bool TakeAs(std::string_view call, CallArguments& with) {
    for (Scanner expected(call); !expected.AtEnd(); expected.rest.remove_prefix(1)) {
      const std::string name = expected.Word();
      if (name == "key" || name == "value") {
        if (!HasText()) return false;
        (name == "key" ? with.key : with.value) = Text();
      } else if (name == "size" || name == "otherSize") {
        (name == "size" ? with.size : with.otherSize) = std::strtoul(Word().c_str(), nullptr, 10);
      } else if (Word() != name) {
        return false;
      }
      if (!Take(expected.rest.substr(0, 1))) return false;
    }
    return true;
  }
  bool AtEnd() { return Take("") && rest.empty(); }

 private:
  char Escape() {
    rest.remove_prefix(1);
    if (rest[0] < '0' || rest[0] > '7') {
      const std::string_view names = "nrtvf";
      const std::size_t at = names.find(rest[0]);
      return at != names.npos ? "\n\r\t\v\f"[at] : rest[0];
    }
    const char byte = static_cast<char>((rest[0] - '0') * 64 + (rest[1] - '0') * 8 + rest[2] - '0');
    rest.remove_prefix(2);
    return byte;
  }
  std::string_view rest;
};

/// Takes the call of the table that is written there, and what it is made with.
template <class File>
FileCall<File> TakeCall(Scanner& line, CallArguments& with) {
  static const FileCallTable<File> calls = AllCalls<File>();
  for (const FileCall<File>& call : calls) {
    Scanner rest = line;
    with = {};
    if (!rest.TakeAs(call.text, with)) continue;
    line = rest;
    with = {with.key, with.value, with.size, with.otherSize};  // and buffers of these sizes
    return call;
  }
  throw std::runtime_error("no call " + line.Word());
}

struct Row {
  int number;
  std::string line;
};

template <class File>
class Rule : public testing::Test {
 public:
  Rule(std::string path, std::vector<Row> rows) : path_(path), rows_(rows) {}

 private:
  void TestBody() override {
    FileTokens tokens = File::kHasSections ? kPresetTokens : kFlatTokens;
    std::vector<std::string> texts;
    for (const Row& row : rows_) {
      try {
        Scanner line(row.line);
        if (line.Take("tokens")) {
          texts.clear();
          while (!line.AtEnd()) texts.push_back(line.Text());
          tokens = {texts.at(0).c_str(), texts.at(1).c_str(), texts.at(2).c_str(),
                    texts.at(3).c_str(), texts.at(4).c_str(), texts.at(5).c_str()};
        } else {
          Run(row, line, tokens);
        }
      } catch (const std::exception& failure) {
        Expect(row, "to run", "", failure.what());
      }
    }
  }
  void Run(const Row& row, Scanner& line, const FileTokens& tokens) {
    const std::string before = line.Text();
    std::string after = before;
    if (line.Take("| corrupted")) {
      const std::string message = "File \"" + TestFiles::Path("file") + "\" is corrupted!";
      return Expect(row, "a message", message,
                    Outcome([&] { return File(before, tokens).Image(); }));
    }
    File file(before, tokens);
    if (line.Take("| ")) Call(row, line, file);
    if (line.Take("| ") && !line.Take("same")) after = line.Text();
    Expect(row, "image", Quoted(after), Quoted(file.Image()));
    if (line.Take("| ") && !line.Take("-")) Expect(row, "entries", line.Word("|"), file.Entries());
    if (line.Take("| ")) Expect(row, "sections", line.Word("|"), file.Sections());
    if (!line.AtEnd()) throw std::runtime_error("more columns than there are");
  }
  void Call(const Row& row, Scanner& line, File& file) {
    if (line.Take("-")) return;
    do {
      CallArguments with;
      const FileCall<File> call = TakeCall<File>(line, with);
      const std::string result = call.onFile(file, with);
      if (!line.Take("=")) continue;  // only what comes after is told
      Expect(row, "result of " + call.text, line.Word(), result);
      const std::string after = "~~~~";
      if (line.HasText()) Expect(row, "buffer", Quoted(line.Text() + after), Quoted(with.buffer));
      if (line.HasText())
        Expect(row, "other buffer", Quoted(line.Text() + after), Quoted(with.other));
    } while (line.Take(";"));
  }
  void Expect(const Row& row, const std::string& what, std::string expected, std::string actual) {
    while (expected.ends_with(' ')) expected.pop_back();
    if (expected == actual) return;
    ADD_FAILURE_AT(path_.c_str(), row.number) << row.line << "\nexpected " << what << ": "
                                              << expected << "\nactual " << what << ": " << actual;
  }

  std::string path_;
  std::vector<Row> rows_;
};

/// Makes a test of each rule of a file: `[Name]` and the scenarios below it.
template <class File>
bool Register(const char* suite, const std::string& path) {
  static std::vector<std::pair<Row, std::vector<Row>>> rules;
  std::ifstream file(path);
  Row row = {0, ""};
  while (std::getline(file, row.line)) {
    ++row.number;
    if (row.line.starts_with('[')) {
      rules.push_back({{row.number, row.line.substr(1, row.line.find(']') - 1)}, {}});
    } else if (!row.line.empty() && !row.line.starts_with('#')) {
      rules.back().second.push_back(row);
    }
  }
  for (const auto& [name, rows] : rules) {
    testing::RegisterTest(
        suite, name.line.c_str(), nullptr, nullptr, path.c_str(), name.number,
        [=, &rows = rows]() -> testing::Test* { return new Rule<File>(path, rows); });
  }
  return !rules.empty();
}

const bool kHasRules =
    Register<FlatFile>("FlatFile", ZELCONFUTILS_SCENARIOS "/flat.txt") &&
    Register<SectionFile>("SectionFile", ZELCONFUTILS_SCENARIOS "/sectioned.txt");

TEST(Scenarios, AreThere) { EXPECT_TRUE(kHasRules); }

}  // namespace
