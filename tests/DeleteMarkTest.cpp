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
  const char* text;
  bool (*erase)(File&);
};
template <class File>
const std::vector<AfterDelete<File>> kEntries = {
    {"y=2\nx=1\ny=2\n", [](File& f) { return f.DeleteEntry("x"); }},
    {"y=2\nx=1\n", [](File& f) { return f.DeleteEntry("x"); }}};
const std::vector<AfterDelete<SectionFile>> kSections = {
    {"y{\n}\nx{\n}\ny{\n}\n", [](SectionFile& f) { return f.DeleteSection("x") == 2; }},
    {"y{\n}\nx{\n}\n", [](SectionFile& f) { return f.DeleteSection("x") == 1; }}};
const std::vector<AfterDelete<SectionFile>> kSectionEntries = {
    {"{\ny=2\nx=1\ny=2\n}\n", [](SectionFile& f) { return f.DeleteSectionEntry("x"); }},
    {"{\ny=2\nx=1\n}\n", [](SectionFile& f) { return f.DeleteSectionEntry("x"); }},
    {"y=2\nx=1\n", [](SectionFile& f) { return f.DeleteEntry("x"); }}};

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
std::string Table(const char* head, const std::vector<AfterDelete<File>>& files,
                  const FileCallTable<File>& calls) {
  std::string table = head, last;
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
  const char* const entries =
      "| entries of a `ConfigFile`, and those outside sections | on an entry | at end |\n"
      "|---|---|---|\n";
  const std::string flat = Table(entries, kEntries<FlatFile>, kEntryCalls<FlatFile>);
  EXPECT_EQ(flat, Table(entries, kEntries<SectionFile>, kEntryCalls<SectionFile>));
  const std::string tables =
      flat +
      Table("| `ConfigFile` alone | on an entry | at end |\n|---|---|---|\n", kEntries<FlatFile>,
            kFlatOnlyCalls<FlatFile>) +
      Table("| sections | at a section | at end |\n|---|---|---|\n", kSections,
            kSectionCalls<SectionFile>) +
      Table("| entries of a section | on an entry | at end | no section |\n|---|---|---|---|\n",
            kSectionEntries, kSectionEntryCalls<SectionFile>) +
      Table("| the file | on an entry | at end |\n|---|---|---|\n", kEntries<FlatFile>,
            kLifeCalls<FlatFile>);
  const std::string page = TestFiles::Read(ZELCONFUTILS_CURSORS_PAGE),
                    begin = "<!-- tables -->\n\n";
  const std::size_t at = page.find(begin) + begin.size();
  EXPECT_EQ(page.substr(at, page.find("<!-- end -->") - at), tables);
}

}  // namespace
