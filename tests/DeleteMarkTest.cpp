// SPDX-License-Identifier: MIT
// Which calls clear the delete mark: each row of the tables in docs/cursors.md is tried.
#include <gtest/gtest.h>

#include <set>
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
std::string Effect(const char* text, const FileCall<File>& call, CallArguments with) {
  bool marks[2];
  for (const bool marked : {false, true}) {
    File file(text);
    bool isDeleted = file.DeleteEntry("x");
    if constexpr (File::kHasSections) {
      isDeleted = isDeleted || file.DeleteSectionEntry("x") || file.DeleteSection("x") < 3;
    }
    EXPECT_TRUE(isDeleted && file.DeleteMark());
    if (!marked) file.GotoEntry("none");  // a failed lookup clears it and moves nothing
    call.onFile(file, with);
    marks[marked] = file.DeleteMark();
  }
  return marks[0] ? "sets" : marks[1] ? "keeps" : "clears";
}

/// A call is tried with a key that is not there and another value, and with those that are.
const CallArguments kArguments[] = {{"none", "5"}, {"y", "2"}};

/// Tries what the row names: `AddEntry(...)`, or `DeleteEntry("y")` where the key or value matters.
/// Takes from `untried` what it has tried; false if that is nothing.
template <class File>
bool Try(const std::string& row, const Columns& columns, std::set<std::string>& untried) {
  const std::string name = row.substr(3, row.find('`', 3) - 3);
  const std::size_t untriedBefore = untried.size();
  for (const FileCall<File>& call : AllCalls<File>()) {
    for (const CallArguments& with : kArguments) {
      const std::string statement = call.Statement(with);
      if (name != statement && name != call.text.substr(0, call.text.find('(')) + "(...)") continue;
      std::string actual = "| `" + name + "` |";
      for (const char* text : columns) actual += " " + Effect(text, call, with) + " |";
      EXPECT_EQ(row, actual) << statement;
      untried.erase(statement);
    }
  }
  return untried.size() < untriedBefore;
}

template <class File>
std::set<std::string> AllStatements() {
  std::set<std::string> all;
  for (const FileCall<File>& call : AllCalls<File>()) {
    for (const CallArguments& with : kArguments) all.insert(call.Statement(with));
  }
  return all;
}

TEST(DeleteMark, EachCallClearsOrKeepsItAsThePageSays) {
  std::set<std::string> flat = AllStatements<FlatFile>(), sectioned = AllStatements<SectionFile>();
  std::istringstream page(TestFiles::Read(ZELCONFUTILS_CURSORS_PAGE));
  Columns columns;
  for (std::string row; std::getline(page, row);) {
    if (row.ends_with("| at end |")) columns = row.starts_with("| sections") ? kSections : kEntries;
    if (row.ends_with("| no section |")) columns = kSectionEntries;
    if (!row.starts_with("| `") || row.find('(') == row.npos) continue;
    const bool isFlat = Try<FlatFile>(row, columns, flat);
    EXPECT_TRUE(Try<SectionFile>(row, columns, sectioned) || isFlat) << "no such call: " << row;
  }
  EXPECT_EQ(flat, std::set<std::string>());  // each call has a row
  EXPECT_EQ(sectioned, std::set<std::string>());
}

}  // namespace
