// SPDX-License-Identifier: MIT
// The scenarios of the two file classes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FileCalls.h"
#include "FileFixtures.h"
#include "Scenarios.h"

namespace {

using Scenarios::Scanner;

template <class File>
void RunCalls(Scanner& line, File& file) {
  static const FileCallTable<File> calls = AllCalls<File>();
  do {
    Scenarios::Literals literals = {{"size", "64"}, {"otherSize", "64"}};
    const FileCall<File>& call = line.TakeCall(calls, literals);
    CallArguments with = {literals["key"], literals["value"], std::stoul(literals["size"]),
                          std::stoul(literals["otherSize"])};
    const std::string result = call.onFile(file, with);
    if (!line.Take("=")) continue;  // only what comes after is told
    Compare("result of " + call.text, line.Word(), result);
    const std::string after = "~~~~";
    if (line.HasText()) Compare("buffer", Quoted(line.Text() + after), Quoted(with.buffer));
    if (line.HasText()) Compare("other buffer", Quoted(line.Text() + after), Quoted(with.other));
  } while (line.Take(";"));
}

template <class File>
void Run(Scanner& line, Scanner settings) {
  FileTokens tokens = File::kHasSections ? kPresetTokens : kFlatTokens;
  const std::vector<std::string> texts = settings.Texts();
  if (!texts.empty()) {
    tokens = {texts.at(0).c_str(), texts.at(1).c_str(), texts.at(2).c_str(),
              texts.at(3).c_str(), texts.at(4).c_str(), texts.at(5).c_str()};
  }
  const std::string before = line.Text();
  std::string after = before;
  if (line.Take("| corrupted")) {
    return Compare("message", "File \"" + TestFiles::Path("file") + "\" is corrupted!",
                   Outcome([&] { return File(before, tokens).Image(); }));
  }
  File file(before, tokens);
  if (line.Take("| ") && !line.Take("-")) RunCalls(line, file);
  if (line.Take("| ") && !line.Take("same")) after = line.Text();
  Compare("image", Quoted(after), Quoted(file.Image()));
  if (line.Take("| ") && !line.Take("-")) Compare("entries", line.Column(), file.Entries());
  if (line.Take("| ")) Compare("sections", line.Column(), file.Sections());
}

const bool kFlat = Scenarios::Register("FlatFile", "flat.txt", Run<FlatFile>);
const bool kSectioned = Scenarios::Register("SectionFile", "sectioned.txt", Run<SectionFile>);

}  // namespace
