// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include "FailingNew.h"
#include "TestFiles.h"
#include "ZelParser.h"

namespace {

using TestFiles::Path;

// Its hook reads `limit` tokens at most.
struct Reader : ZelParser {
  Reader() { text.reserve(10000); }
  bool Parse(void* context) override {
    seenContext = context;
    const ZelLexToken* token = nullptr;
    for (int i = 0; i < limit && (token = GetToken()) != nullptr; ++i) text += token->text;
    if (throws) throw std::runtime_error("hook");
    return result;
  }
  /// What the hook reads of a source, where `%name` is a file and all else a text, which is read on
  /// in the next call.
  std::string Read(const char* source, int tokens) {
    const std::string path = Path(source);
    limit = tokens;
    text.clear();
    try {
      source[0] == '%' ? ParseFile(path.c_str(), this) : ParseBuffer(source, this);
    } catch (const std::exception& failure) {
      return typeid(failure) == typeid(std::exception) ? "(no file)" : failure.what();
    }
    return text;
  }

  std::string text;
  void* seenContext = this;
  int limit = 100;
  bool throws = false, result = true;
};

TEST(Parser, PassesTheContextInAndTheResultOut) {
  TestFiles::Write(Path("%a"), "a");
  for (const bool result : {true, false}) {
    Reader ofFile, ofText;
    ofFile.result = ofText.result = result;
    EXPECT_EQ(ofFile.ParseFile(Path("%a").c_str(), nullptr), result);
    EXPECT_EQ(ofText.ParseBuffer("a", &ofFile), result);
    EXPECT_EQ(ofFile.seenContext, nullptr);
    EXPECT_EQ(ofText.seenContext, &ofFile);
  }
}

TEST(Parser, ASecondCallGoesOnWithTheFirstSource) {
  static const struct {
    const char *rule, *first, *firstToken, *second, *rest;
    bool throws = false;
  } rows[] = {
      {"a file is closed: the rest of the line", "%a", "a", "%none", " b\n"},
      {"a text after it is ignored", "%a", "a", "y", " b\n"},
      {"a text is read to its end", "1 2\n3", "1", "y", " 2\n3"},
      {"a file after a text is ignored", "1 2\n3", "1", "%a", " 2\n3"},
      {"a file that is missing is tried again", "%none", "(no file)", "%a", "a b\nc d\n"},
      {"a missing file is told after a text, too", "1 2", "1", "%none", "(no file)"},
      {"a folder is no file", "%folder", "(no file)", "b", "b"},
      {"after a throw the file is open", "%a", "hook", "%a", " b\nc d\n", true},
  };
  TestFiles::Write(Path("%a"), "a b\nc d\n", std::ios::binary);
  std::filesystem::create_directory(Path("%folder"));
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rule);
    Reader parser;
    parser.throws = row.throws;
    EXPECT_EQ(parser.Read(row.first, 1), row.firstToken);
    parser.throws = false;
    EXPECT_EQ(parser.Read(row.second, 100), row.rest);
  }
}

TEST(Parser, AFailedAllocationLosesNothingThatTheRepeatedCallNeeds) {
  const std::string text = std::string(9000, 'w') + " 1\n" + std::string(50, 'w') + "7;\nend";
  TestFiles::Write(Path("%b"), text, std::ios::binary);
  for (const std::string path = Path("%b"); const bool ofFile : {true, false}) {
    const auto run = [&](Reader& parser) {
      ofFile ? parser.ParseFile(path.c_str(), nullptr) : parser.ParseBuffer(text.c_str(), nullptr);
    };
    FailingNew::ForEachAllocationOn<Reader>(run, [&](Reader& parser, bool failed) {
      if (failed) run(parser);
      EXPECT_EQ(parser.text, text);
    });
  }
}

}  // namespace
