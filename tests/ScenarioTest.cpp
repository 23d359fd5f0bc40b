// SPDX-License-Identifier: MIT
// The scenarios of the two file classes, and of the check of their paths.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FailingNew.h"
#include "FileCalls.h"
#include "FileFixtures.h"
#include "Scenarios.h"
#include "TestFiles.h"
#include "TestSystem.h"
#include "config/files/PathCheck.h"

namespace {

using Scenarios::Scanner;

template <class File>
const std::vector<FileCall<File>> kCalls = AllCalls<File>();

template <class File>
void Run(Scanner& line, Scanner settings) {
  FileTokens tokens = File::kUsualTokens;
  const std::vector<std::string> texts = settings.Texts();
  if (!texts.empty()) {
    tokens = {texts.at(0).c_str(), texts.at(1).c_str(), texts.at(2).c_str(),
              texts.at(3).c_str(), texts.at(4).c_str(), texts.at(5).c_str()};
  }
  const bool isNone = line.Take("none"), creates = line.Take("create"), reads = line.Take("read");
  const bool isNamed = creates || reads || line.Take("open");
  const std::string text = isNone ? "" : line.Text(), path = isNamed ? text : "file";
  std::string before = isNamed ? "" : text, after = before;
  TestFiles::Clear();
  TestFiles::Write("file", before);
  const auto make = [&] { return File(tokens, isNone ? nullptr : path.c_str(), creates, reads); };
  const auto image = [&] { return make().Image(); };
  const int openFiles = TestSystem::OpenFiles();
  FailingNew::ForEachAllocation([&] { Outcome(image); }, [](bool) {});
  Compare("files left open", "0", std::to_string(TestSystem::OpenFiles() - openFiles));
  if (line.Take("| throws")) {
    return Compare("message", line.HasText() ? line.Text() : line.Column(), Outcome(image));
  }
  File file = make();
  if (line.Take("| ") && !line.Take("-")) RunCalls(line, file, kCalls<File>);
  if (line.Take("| torn down")) return Compare("object", "torn down\n", file.Dump());
  if (line.Take("| ") && !line.Take("same")) after = line.Text();
  Compare("image", Quoted(after), Quoted(file.Image()));
  if (line.Take("| ") && !line.Take("-")) Compare("entries", line.Column(), file.Entries());
  if (line.Take("| ")) Compare("sections", line.Column(), file.Sections());
}

// `PATH | DIRECTORY`, or `make PATH | DIRECTORY`
void RunPath(Scanner& line, Scanner) {
  TestFiles::Clear();
  const bool makes = line.Take("make");
  const Configuration::PathCheck check(line.Text().c_str(), makes);
  line.Need("|");
  Compare("directory", line.Text(), makes && !check.Exists() ? "(not there)" : check.Text());
}

const bool kRules = Scenarios::Register("FlatFile", "flat.txt", Run<FlatFile>) &&
                    Scenarios::Register("FlatFile", "files.txt", Run<FlatFile>) &&
                    Scenarios::Register("SectionFile", "sectioned.txt", Run<SectionFile>) &&
                    Scenarios::Register("SectionFile", "files.txt", Run<SectionFile>) &&
                    Scenarios::Register("PathCheck", "paths.txt", RunPath);

}  // namespace
