// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_SCENARIOS_H
#define ZELCONFUTILS_TESTS_SCENARIOS_H

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Calls.h"
#include "FailingNew.h"
#include "Quoted.h"
#include "TestFiles.h"

/// Runs the files of tests/scenarios: each `[Rule]` is a test of that name, and each line below it
/// a scenario, which a family of classes reads and carries out.
namespace Scenarios {

/// Reads a line from left to right. Throws where it finds something else.
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
    if (!Take(token)) throw std::runtime_error("no '" + std::string(token) + "' at: " + Column());
  }
  /// A name or a number, or what is up to one of the bytes that end it.
  std::string Word(std::string_view ends = " ,()=;|\"") {
    Take("");
    const std::string word(rest.substr(0, rest.find_first_of(ends)));
    rest.remove_prefix(word.size());
    return word;
  }
  /// The rest up to a `|`, or to another byte that ends it, outside of texts.
  std::string Column(std::string_view ends = "|") {
    Take("");
    std::size_t bytes = 0;
    for (bool quoted = false; bytes < rest.size(); ++bytes) {
      if (rest[bytes] == '"') quoted = !quoted;
      if (quoted && rest[bytes] == '\\') ++bytes;
      if (!quoted && ends.find(rest[bytes]) != ends.npos) break;
    }
    std::string column(rest.substr(0, bytes));
    rest.remove_prefix(column.size());
    while (column.ends_with(' ')) column.pop_back();
    return column;
  }
  bool HasText() {
    Take("");
    const std::size_t digits = rest.find_first_not_of("0123456789");
    return digits != rest.npos && (rest[digits] == '"' || (digits > 0 && rest[digits] == '*'));
  }
  /// `"a=" + 1020*"v" + "\n"`
  std::string Text() {
    std::string all;
    do {
      const std::string count = Word("*\"");
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
  /// The texts of a column.
  std::vector<std::string> Texts() {
    std::vector<std::string> texts;
    while (HasText()) texts.push_back(Text());
    return texts;
  }
  /// The first call of the table that fits what is written there, with texts and numbers for names.
  template <class Call>
  const Call& TakeCall(const std::vector<Call>& calls, Arguments& arguments) {
    for (const Call& call : calls) {
      Scanner written = *this;
      Arguments taken;
      if (!written.TakeAs(call.text, taken)) continue;
      *this = written;
      arguments = taken;
      return call;
    }
    throw std::runtime_error("no such call: " + Column(";|"));
  }

 private:
  bool TakeAs(std::string_view call, Arguments& arguments) {
    for (Scanner expected(call); !expected.rest.empty(); expected.rest.remove_prefix(1)) {
      const std::string name = expected.Word();
      expected.Take("");
      if (HasText()) {
        arguments.Set(name, Text());
      } else if (const std::string word = Word(); word != name) {
        if (word.empty() || word.find_first_not_of("0123456789") != word.npos) return false;
        arguments.Set(name, word);
      }
      if (!Take(expected.rest.substr(0, 1))) return false;
    }
    return true;
  }
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

/// Carries out a scenario; `settings` are those of the last line `tokens` of its rule.
using Runner = void (*)(Scanner& line, Scanner settings);

struct Row {
  int number;
  std::string line, settings;
};

class Rule : public testing::Test {
 public:
  Rule(const std::string& path, const std::vector<Row>& rows, Runner run)
      : path_(path), rows_(rows), run_(run) {}

 private:
  void TestBody() override {
    for (const Row& row : rows_) {
      const long blocks = FailingNew::LiveBlocks();
      try {
        Scanner line(row.line);
        run_(line, Scanner(row.settings));
        Compare("columns", "", line.Column(""));
        Compare("blocks left", "0", std::to_string(FailingNew::LiveBlocks() - blocks));
      } catch (const std::exception& failure) {
        ADD_FAILURE_AT(path_.c_str(), row.number) << row.line << '\n' << failure.what();
      }
    }
  }

  const std::string path_;
  const std::vector<Row> rows_;
  const Runner run_;
};

/// Makes the tests of a file, once. Throws when it has none.
inline bool Register(const char* suite, const char* name, Runner run) {
  TestFiles::Path("");  // the directory of all of them is to hold memory from here on
  const std::string path = std::string(ZELCONFUTILS_SCENARIOS "/") + name;
  std::ifstream file(path);
  std::shared_ptr<std::vector<Row>> rows;
  for (Row row = {1, "", ""}; std::getline(file, row.line); ++row.number) {
    if (row.line.starts_with('[')) {
      rows = std::make_shared<std::vector<Row>>();
      row.settings.clear();
      const std::string rule = row.line.substr(1, row.line.find(']') - 1);
      testing::RegisterTest(suite, rule.c_str(), nullptr, nullptr, path.c_str(), row.number,
                            [=]() -> testing::Test* { return new Rule(path, *rows, run); });
    } else if (row.line.starts_with("tokens")) {
      row.settings = row.line.substr(6);
    } else if (!row.line.empty() && !row.line.starts_with('#')) {
      rows->push_back(row);
    }
  }
  return rows != nullptr ? true : throw std::runtime_error("no scenarios in " + path);
}

/// `CALL = RESULT; CALL`, on `object`. The result is the message where the call throws one, and
/// what it left in its buffers stands after it.
template <class Object, class Calls>
void RunCalls(Scanner& line, Object&& object, const Calls& calls) {
  do {
    Arguments with;
    const auto& call = line.TakeCall(calls, with);
    std::string result = Outcome([&] { return call.run(object, with); });
    const auto buffer = [&](const char* names, const std::string& left, std::size_t size) {
      if (call.text.find(names) == std::string::npos) return;
      result += ' ' + Quoted(left.substr(0, size));
      if (left.find_first_not_of('~', size) != left.npos) result += " (and bytes after it)";
    };
    buffer("buffer, size", with.buffer, with.size);
    buffer("other, otherSize", with.other, with.otherSize);
    if (line.Take("=")) Compare("result of " + call.text, line.Column(";|"), result);
  } while (line.Take(";"));
}

}  // namespace Scenarios

#endif
