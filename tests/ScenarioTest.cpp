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
void Run(Scanner& line, Scanner settings) {
  FileTokens tokens = File::kHasSections ? kPresetTokens : kFlatTokens;
  const std::vector<std::string> texts = settings.Texts();
  if (!texts.empty()) {
    tokens = {texts.at(0).c_str(), texts.at(1).c_str(), texts.at(2).c_str(),
              texts.at(3).c_str(), texts.at(4).c_str(), texts.at(5).c_str()};
  }
  TestFiles::Clear();
  const bool hasSource = !line.Take("none");
  const std::string before = hasSource ? line.Text() : "";
  std::string after = before;
  const auto made = [&] { return hasSource ? File(before, tokens) : File(tokens, nullptr); };
  if (line.Take("| throws")) {
    return Compare("message", line.Text(), Outcome([&] { return made().Image(); }));
  }
  File file = made();
  static const auto calls = AllCalls<File>();
  if (line.Take("| ") && !line.Take("-")) RunCalls(line, file, calls);
  if (line.Take("| torn down")) return Compare("object", "torn down\n", file.Dump());
  if (line.Take("| ") && !line.Take("same")) after = line.Text();
  Compare("image", Quoted(after), Quoted(file.Image()));
  if (line.Take("| ") && !line.Take("-")) Compare("entries", line.Column(), file.Entries());
  if (line.Take("| ")) Compare("sections", line.Column(), file.Sections());
}

const bool kRules = Scenarios::Register("FlatFile", "flat.txt", Run<FlatFile>) &&
                    Scenarios::Register("FlatFile", "files.txt", Run<FlatFile>) &&
                    Scenarios::Register("SectionFile", "sectioned.txt", Run<SectionFile>) &&
                    Scenarios::Register("SectionFile", "files.txt", Run<SectionFile>);

}  // namespace
