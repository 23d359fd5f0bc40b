// SPDX-License-Identifier: MIT
// Which calls clear the delete mark: the tables of docs/cursors.md, made anew and held against the
// page.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FileCalls.h"
#include "FileFixtures.h"
#include "TestFiles.h"

namespace {

/// A file in which a delete has just left a cursor somewhere.
template <class File>
struct AfterDelete {
  const char *where, *text;
  bool (*erase)(File&);
};
const std::vector<AfterDelete<FlatFile>> kFlat = {
    {"on an entry", "y=2\nx=1\ny=2\n", [](FlatFile& f) { return f.DeleteEntry("x"); }},
    {"at end", "y=2\nx=1\n", [](FlatFile& f) { return f.DeleteEntry("x"); }}};
const std::vector<AfterDelete<SectionFile>> kTopLevel = {
    {"on an entry", "y=2\nx=1\ny=2\n", [](SectionFile& f) { return f.DeleteEntry("x"); }},
    {"at end", "y=2\nx=1\n", [](SectionFile& f) { return f.DeleteEntry("x"); }}};
const std::vector<AfterDelete<SectionFile>> kSections = {
    {"at a section", "y{\n}\nx{\n}\ny{\n}\n",
     [](SectionFile& f) { return f.DeleteSection("x") == 2; }},
    {"at end", "y{\n}\nx{\n}\n", [](SectionFile& f) { return f.DeleteSection("x") == 1; }}};
const std::vector<AfterDelete<SectionFile>> kSectionEntries = {
    {"on an entry", "{\ny=2\nx=1\ny=2\n}\n",
     [](SectionFile& f) { return f.DeleteSectionEntry("x"); }},
    {"at end", "{\ny=2\nx=1\n}\n", [](SectionFile& f) { return f.DeleteSectionEntry("x"); }},
    {"no section", "y=2\nx=1\n", [](SectionFile& f) { return f.DeleteEntry("x"); }}};

/// What the call does to the mark, in each of the files.
template <class File, class Call>
std::string Effects(const std::vector<AfterDelete<File>>& files, Call call) {
  std::string cells;
  for (const AfterDelete<File>& after : files) {
    bool marks[2];
    for (const bool marked : {false, true}) {
      File file(after.text);
      EXPECT_TRUE(after.erase(file) && file.DeleteMark());
      if (!marked) file.GotoEntry("none");  // a failed lookup clears it and moves nothing
      call(file);
      marks[marked] = file.DeleteMark();
    }
    cells += marks[0] ? " sets |" : marks[1] ? " keeps |" : " clears |";
  }
  return cells + "\n";
}

/// Each call is made with a key that is not there and another value, and with those that are; it
/// has two rows where that makes a difference.
template <class File>
std::string Table(const char* title, const std::vector<AfterDelete<File>>& files,
                  const FileCallTable<File>& calls) {
  std::string table = std::string("| ") + title + " |", rule = "|---|", last;
  for (const AfterDelete<File>& after : files) {
    table += std::string(" ") + after.where + " |";
    rule += "---|";
  }
  table += "\n" + rule + "\n";
  for (const FileCall<File>& call : calls) {
    const auto row = [&](const std::string& name, const CallArguments& with) {
      return "| `" + name + "` |" + Effects(files, [&](File& file) {
               CallArguments arguments = with;
               call.onFile(file, arguments);
             });
    };
    const CallArguments absent = {"none", "5"}, present = {"y", "2"};
    const bool hasNone = call.text.ends_with("()");
    const std::string name = call.text.substr(0, call.text.find('(')) + (hasNone ? "()" : "(...)");
    std::string rows = row(name, absent);
    if (rows != row(name, present)) {
      rows = row(call.Statement(absent), absent) + row(call.Statement(present), present);
    }
    if (rows != last) table += rows;
    last = rows;
  }
  return table + "\n";
}

TEST(DeleteMark, EachCallClearsOrKeepsItAsThePageSays) {
  const char* const title = "entries of a `ConfigFile`, and those outside sections";
  const std::string flat = Table(title, kFlat, EntryCalls<FlatFile>());
  EXPECT_EQ(flat, Table(title, kTopLevel, EntryCalls<SectionFile>()));
  const std::string tables = flat + Table("`ConfigFile` alone", kFlat, FlatOnlyCalls()) +
                             Table("sections", kSections, SectionCalls()) +
                             Table("entries of a section", kSectionEntries, SectionEntryCalls()) +
                             Table("the file", kFlat, LifeCalls<FlatFile>());
  const std::string page = TestFiles::Read(ZELCONFUTILS_CURSORS_PAGE),
                    begin = "<!-- tables -->\n\n";
  const std::size_t at = page.find(begin) + begin.size();
  EXPECT_EQ(page.substr(at, page.find("<!-- end -->") - at), tables);
}

}  // namespace
