// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_WALK_H
#define ZELCONFUTILS_TESTS_FILE_WALK_H

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "FileCalls.h"
#include "FileFixtures.h"
#include "FileModel.h"
#include "TestFiles.h"

/// Decisions taken from an input, zeros after its end.
class Choices {
 public:
  explicit Choices(std::string_view input) : rest(input) {}
  bool More() const { return !rest.empty(); }
  std::size_t Below(std::size_t limit) {
    std::size_t n = 0;
    for (std::size_t most = limit - 1; most > 0 && More(); most >>= 8) {
      n = n << 8 | static_cast<unsigned char>(rest[0]);
      rest.remove_prefix(1);
    }
    return n % limit;
  }
  bool OneIn(std::size_t n) { return Below(n) == 0; }
  template <class List>
  const auto& OneOf(const List& list) {
    return *(std::begin(list) + static_cast<std::ptrdiff_t>(Below(std::size(list))));
  }
  /// Up to `most` of the pieces; now and then a long run.
  std::string Text(std::size_t most, const std::vector<std::string>& pieces,
                   const char (&runs)[3] = " x") {
    std::string text;
    for (std::size_t n = Below(most + 1); n > 0; --n) {
      if (OneIn(85)) text.append(OneIn(3) ? 1000 + Below(40) : Below(60), runs[Below(2)]);
      text += OneOf(pieces);
    }
    return text;
  }

 private:
  std::string_view rest;
};

/// A file object and its model take the same steps, which an input decides. Each allocation of each
/// step fails once.
template <class File>
class FileWalk {
 public:
  FileWalk(const FileTokens& with, Choices input) : tokens(with), choices(input) {}

  /// Throws `std::runtime_error` with a report at the first difference.
  void Run() {
    TestFiles::Write(path, choices.Text(choices.OneIn(2) ? 30 : 3, ContentPieces()) + tokens.stop);
    file.AttachToBuffer("", path.c_str());
    model.Attach("");
    for (ReadAgain(); !file.IsTornDown() && choices.More();) {
      Step();
      if (choices.OneIn(30)) SaveAndReadAgain();
    }
  }

 private:
  using string = std::string;

  /// `<` stands for the start token, `[` for it without a leading line feed, `>` for the stop
  /// token.
  std::vector<string> ContentPieces() const {
    const string start = tokens.start;
    const std::map<char, string> meanings = {
        {'<', start},           {'[', start.substr(start[0] == '\n')},
        {'>', tokens.stop},     {'=', tokens.separator},
        {'#', tokens.comment},  {'@', tokens.keyword},
        {'0', string(1, '\0')}, {'L', string(1020, 'L')}};
    std::vector<string> pieces = {
        "a",   "b",    " ",  "=",  "#",   "\xA0",    "[",      "@ a<",   "b<",       "<",   "a\n",
        ">",   ">",    " >", "#>", " #>", "a= 1 \n", "=v\n",   " b=2\n", "  =\n",    "k=>", "k=<",
        " \n", "\r\n", "\n", "\n", "0",   "0=\n",    "L=>1\n", "Lx==\n", "\xFF=\x85"};
    for (string& piece : pieces) {
      string text;
      for (const char c : piece) text += meanings.contains(c) ? meanings.at(c) : string(1, c);
      piece = text;
    }
    return pieces;
  }

  void Step() {
    static const FileCallTable<File> calls = [] {
      FileCallTable<File> all = AllCalls<File>();
      std::erase_if(all, [](const FileCall<File>& call) { return call.onModel == nullptr; });
      return all;
    }();
    // A composed key with white space at its ends would be read differently once its line moves.
    static const std::vector<string> keyParts = {"a", "b", "key", "k y", "=", "#", "v\xE4", "a="};
    static const std::vector<string> valueParts = {"a", "b", "key", " ",    "\t",
                                                   "=", "#", "\v",  "v\xE4"};
    static const string keys[] = {"", "a", "b", "k", "a b", string(40, 'n')};
    static const string values[] = {
        "", "1", " 2", "3", string(40, 'v'), string(1021, 'v'), string(1022, 'v')};
    const FileCall<File>& call = choices.OneOf(calls);
    const bool isOdd = choices.OneIn(2);
    CallArguments with = {isOdd ? choices.Text(3, keyParts, "xx") : choices.OneOf(keys),
                          isOdd ? choices.Text(6, valueParts) : choices.OneOf(values)};
    report += call.Statement(with) + "; ";
    string result;
    FailingNew::ForEachAllocation([&] { result = call.onFile(file, with); },
                                  [&](bool failed) {
                                    if (failed)
                                      Require(model.Image(), file.Image(),
                                              "image after a failed allocation");
                                  });
    Require(call.onModel(model, with), result, "result");
    Require(model.Dump(), file.Dump(), "object");
  }

  void SaveAndReadAgain() {
    const bool coalesced = choices.OneIn(2);
    std::filesystem::remove(path);  // or the save would wait for the disk
    report += coalesced ? "Save(true, nullptr)" : "Save(false, nullptr)";
    Require("true", Outcome([&] { return file.Save(coalesced, nullptr); }), "result");
    Require(model.Image(), TestFiles::Read(path), "saved file");
    ReadAgain();
  }

  /// Reads the file anew, or takes its bytes as a text; a failed allocation changes nothing.
  void ReadAgain() {
    const string image = TestFiles::Read(path);
    const bool attaches = choices.OneIn(3);
    report = "tokens";
    for (const char* token : {tokens.keyword, tokens.start, tokens.stop, tokens.separator,
                              tokens.comment, tokens.prefix}) {
      report += " " + Quoted(token);
    }
    report += "\n" + Quoted(image) + (attaches ? " attached | " : " | ");
    string result;
    FailingNew::ForEachAllocation(
        [&] {
          if (file.IsTornDown()) return;  // it was only the message that found no memory
          result = Outcome([&] {
            if (attaches) return file.AttachToBuffer(image.c_str(), otherPath.c_str());
            file.Reload();
            return true;
          });
        },
        [&](bool failed) {
          if (!failed || file.IsTornDown()) return;
          Require(model.Dump(), file.Dump(), "object after a failed allocation");
          Step();
        });
    bool expected = true;
    if (attaches) {
      expected = model.Attach(image.c_str());
      std::swap(path, otherPath);
    } else {
      model.Load(image);
    }
    if (!model.isCorrupted) {
      Require(ResultText(expected), result, "result");
      return Require(model.Dump(), file.Dump(), "object");
    }
    Require("torn down\n", file.Dump(), "object after a text that ends inside a section");
    if (!result.empty()) Require("File \"" + path + "\" is corrupted!", result, "message");
  }

  void Require(const string& expected, const string& actual, const string& what) {
    if (expected == actual) return;
    throw std::runtime_error("wrong " + what + "; all since the last load, as a scenario:\n\n" +
                             report + "\n\nexpected " + what + "\n" + expected + "\nactual " +
                             what + "\n" + actual);
  }

  const FileTokens& tokens;
  Choices choices;
  File file{tokens, nullptr};
  FileModel model{tokens};
  string path = TestFiles::Path("file"), otherPath = TestFiles::Path("other");
  string report;
};

#endif
