// SPDX-License-Identifier: MIT
// Flat and sectioned files beside a model, through the steps that the input decides.
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "../tests/FailingNew.h"
#include "../tests/FileCalls.h"

namespace {

using std::string;

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
  const auto& OneOf(const auto& list) { return std::data(list)[Below(std::size(list))]; }
  string Text(std::size_t mostPieces, const std::vector<string>& pieces) {
    string text;
    for (std::size_t n = Below(mostPieces + 1); n > 0; --n) text += OneOf(pieces);
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

  /// Throws `std::logic_error` with a report at the first difference.
  void Run() {
    TestFiles::Write(TestFiles::Path("file"), Content());
    file.AttachToBuffer("", "file");
    model.Load("");
    StartReport("");
    for (ReadAgain(); !file.IsTornDown() && choices.More();) {
      Step();
      if (choices.OneIn(30)) SaveAndReadAgain();
    }
  }

 private:
  /// In the pieces `<` stands for the start token, `[` for it without a leading line feed, `>` for
  /// the stop token.
  string Content() {
    static const std::vector<string> pieces = {
        "a",   "b",    " ",  "=",  "#",   "\xA0",    "[",      "@ a<",   "b<",       "<",   "a\n",
        ">",   ">",    " >", "#>", " #>", "a= 1 \n", "=v\n",   " b=2\n", "  =\n",    "k=>", "k=<",
        " \n", "\r\n", "\n", "\n", "0",   "0=\n",    "L=>1\n", "Lx==\n", "\xFF=\x85"};
    const std::map<char, string> meanings = {
        {'<', tokens.start},    {'[', tokens.start + (tokens.start[0] == '\n')},
        {'>', tokens.stop},     {'=', tokens.separator},
        {'#', tokens.comment},  {'@', tokens.keyword},
        {'0', string(1, '\0')}, {'L', string(1020, 'L')}};
    string content;
    for (const char c : choices.Text(choices.OneIn(2) ? 30 : 3, pieces)) {
      content += meanings.contains(c) ? meanings.at(c) : string(1, c);
    }
    return content + tokens.stop;
  }

  void Step() {
    static const auto calls = AllCalls<File>();
    const FileCall<File>& call = choices.OneOf(calls);
    if (call.onModel == nullptr) return;
    // A composed key with white space at its ends would be read differently once its line moves.
    static const std::vector<string> keys = {"a", "b",  "key",   "k y",          "=",
                                             "#", "a=", "v\xE4", string(40, 'n')};
    static const std::vector<string> values = {"1",  "b",       "key",           " \t",
                                               "=#", "v\xE4\v", string(40, 'v'), string(1021, 'v')};
    Scenarios::Arguments with = {choices.Text(2, keys), choices.Text(3, values)};
    report += call.Statement(with) + "; ";
    string result;
    const auto check = [&](bool failed) {
      const char* const what = "image after a failed allocation";
      if (failed) Require(what, Quoted(model.Image()), Quoted(file.Image()));
    };
    FailingNew::ForEachAllocation([&] { result = call.run(file, with); }, check);
    Require("result", call.onModel(model, with), result);
    Require("object", model.Dump(), file.Dump());
  }

  void SaveAndReadAgain() {
    const bool coalesced = choices.OneIn(2);
    std::filesystem::remove("file");  // or the save would wait for the disk
    report += coalesced ? "Save(true, nullptr); " : "Save(false, nullptr); ";
    Require("result", "true", file.Save(coalesced, nullptr) ? "true" : "false");
    Require("saved file", Quoted(model.Image()), Quoted(TestFiles::Read("file")));
    ReadAgain();
  }

  /// Reads the file anew; a failed allocation changes nothing.
  void ReadAgain() {
    const string image = TestFiles::Read("file");
    const auto reload = [&] {
      if (!file.IsTornDown()) file.Reload();
      return "";
    };
    const auto check = [&](bool failed) {
      if (!failed || file.IsTornDown()) return;
      report += "(a read that fails); ";
      Require("object after a failed allocation", model.Dump(), file.Dump());
      Step();
    };
    FailingNew::ForEachAllocation([&] { Outcome(reload); }, check);
    StartReport(image);
    const bool isWhole = model.Load(image);
    Require("object", isWhole ? model.Dump() : "torn down\n", file.Dump());
  }

  void StartReport(const string& image) {
    report = "tokens";
    for (const char* token : {tokens.keyword, tokens.start, tokens.stop, tokens.separator,
                              tokens.comment, tokens.prefix}) {
      report += " " + Quoted(token);
    }
    report += "\n" + Quoted(image) + " | ";
  }
  void Require(const char* what, const string& expected, const string& actual) {
    if (expected == actual) return;
    Compare("wrong " + string(what) + "; all since the last load, as a scenario:\n\n" + report,
            "\n" + expected, "\n" + actual);
  }

  const FileTokens& tokens;
  Choices choices;
  File file{tokens, nullptr};
  FileModel model{tokens};
  string report;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const FileTokens tokens[] = {
      kFlatTokens,
      {"", "", "", ":=", "#", "\t"},
      {"", "", "", " = ", "//", ""},
      {"", "", "", "\t", "#", "  "},
      {"", "", "", "=", "//", "a="},
      {"", "", "", "=", "", ""},
      {"", "", "", "==", "#", " "},
      kPresetTokens,
      {"section", "\n{\n", "}\n", "=", "#", ""},
      {"section", "\n{\n", "\n}\n", "=", "#", ""},
      {"", "\nBEGIN\n", "END\n", ":=", "//", "\t"},
      {"a", "\n{", "\n}", "==", ";;", ""},
      {"section", "{{", "}}", "=", "#", ""},
      {"{\n", " {\n", "}\n", " ", "#", "\t"},  // keyword and separator are in the start token
  };
  Choices choices({reinterpret_cast<const char*>(data), size});
  const FileTokens& chosen = choices.OneOf(tokens);
  if (*chosen.start == '\0') FileWalk<FlatFile>(chosen, choices).Run();
  if (*chosen.start != '\0') FileWalk<SectionFile>(chosen, choices).Run();
  return 0;
}
