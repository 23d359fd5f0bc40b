// SPDX-License-Identifier: MIT
// Which calls clear the delete mark: each row of the tables in docs/cursors.md is tried.
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "FileCalls.h"
#include "FileFixtures.h"
#include "TestFiles.h"

namespace {

/// For each column of a table the file in which what is called x is deleted first.
using Columns = std::vector<const char*>;
const Columns kEntries = {"y=2\nx=1\ny=2\n", "y=2\nx=1\n"};
const Columns kSections = {"y{\n}\nx{\n}\ny{\n}\n", "y{\n}\nx{\n}\n"};
const Columns kSectionEntries = {"{\ny=2\nx=1\ny=2\n}\n", "{\ny=2\nx=1\n}\n", "y=2\nx=1\n"};

template <class File>
std::string Effect(const char* text, const FileCall<File>& call, Scenarios::Arguments with) {
  bool marks[2];
  for (const bool marked : {false, true}) {
    TestFiles::Write(TestFiles::Path("file"), text);
    File file(File::kUsualTokens, "file");
    bool isDeleted = file.DeleteEntry("x");
    if constexpr (File::kHasSections) {
      isDeleted = isDeleted || file.DeleteSectionEntry("x") || file.DeleteSection("x") < 3;
    }
    EXPECT_TRUE(isDeleted && file.DeleteMark());
    if (!marked) file.GotoEntry("none");  // a failed lookup clears it and moves nothing
    call.run(file, with);
    marks[marked] = file.DeleteMark();
  }
  return marks[0] ? "sets" : marks[1] ? "keeps" : "clears";
}

/// A row of the page, and how it is tried.
struct PageRow {
  std::string text;
  Columns columns;
  bool isTried = false;
};
/// By the calls that they name: `AddEntry(...)`, or `DeleteEntry("y")` where the argument matters.
using Page = std::map<std::string, PageRow>;

Page ReadPage() {
  Page page;
  std::istringstream lines(TestFiles::Read(ZELCONFUTILS_CURSORS_PAGE));
  Columns columns;
  for (std::string row; std::getline(lines, row);) {
    if (row.ends_with("| at end |")) columns = row.starts_with("| sections") ? kSections : kEntries;
    if (row.ends_with("| no section |")) columns = kSectionEntries;
    const std::size_t end = row.find(")` |");
    if (row.starts_with("| `") && end != row.npos) page[row.substr(3, end - 2)] = {row, columns};
  }
  return page;
}

/// Each call is tried with a key that is not there and another value, and with those that are.
template <class File>
void TryAllCalls(Page& page) {
  const Scenarios::Arguments arguments[] = {{"none", "5"}, {"y", "2"}};
  for (const FileCall<File>& call : AllCalls<File>()) {
    for (const Scenarios::Arguments& with : arguments) {
      std::string name = call.Statement(with);
      if (!page.contains(name)) name = call.text.substr(0, call.text.find('(')) + "(...)";
      PageRow& row = page[name];
      row.isTried = true;
      std::string actual = "| `" + name + "` |";
      for (const char* text : row.columns) actual += " " + Effect(text, call, with) + " |";
      EXPECT_EQ(row.text, actual) << call.Statement(with);
    }
  }
}

TEST(DeleteMark, EachCallClearsOrKeepsItAsThePageSays) {
  Page page = ReadPage();
  TryAllCalls<FlatFile>(page);
  TryAllCalls<SectionFile>(page);
  for (const auto& [name, row] : page) EXPECT_TRUE(row.isTried) << "no such call: " << name;
}

}  // namespace
