// SPDX-License-Identifier: MIT
// Sectioned files: what makes a section, its name and its entries; three kinds of cursors; edits.
#include "MultiSectionFile.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "FileCalls.h"
#include "FileFixtures.h"
#include "FileScenarios.h"

namespace {

using namespace std::string_literals;
using Rows = std::vector<Scenario<SectionFile>>;
#define SECTIONED(...) CALLING(SectionFile, __VA_ARGS__)

struct ReadRow {
  std::string text, entries, sections;
};
void ExpectRead(const std::vector<ReadRow>& rows, const FileTokens& tokens = kPresetTokens) {
  for (const ReadRow& row : rows) {
    SCOPED_TRACE(Quoted(row.text));
    SectionFile file(row.text, tokens);
    EXPECT_EQ(file.Entries(), row.entries);
    EXPECT_EQ(file.Sections(), row.sections);
    EXPECT_EQ(file.Image(), row.text);
  }
}
void ExpectCorrupted(const std::vector<std::string>& texts,
                     const FileTokens& tokens = kPresetTokens) {
  for (const std::string& text : texts) {
    EXPECT_EQ(Outcome([&] { return SectionFile(text, tokens).Image(); }),
              "File \"" + TestFiles::Path("file") + "\" is corrupted!")
        << Quoted(text);
  }
}
void ExpectEdits(const Rows& rows, const FileTokens& tokens = kPresetTokens) {
  Expect<SectionFile>(rows, tokens, [](SectionFile&) {});
}

// Two sections between entries and comments.
const std::string kText = "# head\nx=0\nsection a {\n # in a\nk=1\nl=2\n# end\n}\ny=9\n{\n}\n";
const std::string kInA = "{\nk=1\nl=2\nm=3\n}\n";

// --- What a line means ---

TEST(SectionRead, LinesOutsideAndInsideASection) {
  ExpectRead({{"", "(end)", "(none)"},
              {"x=0\n{\nk=1\n}\ny=9\n", ">x[0] y[9]", ">{(unset) k[1]}"},
              {"section a {\n}\n \nsection b {\nno entry\n\n k = 1\n}\n", "(end)",
               ">a{(unset)} b{(unset) k[ 1]}"}});
}

TEST(SectionRead, SeparatorBeforeTheStartTokenMakesAnEntry) {
  ExpectRead({{"a = {\n", ">a[ {]", "(none)"}, {"={\n", ">[{]", "(none)"}});
  const FileTokens braces = {"section", "{{", "}}", "=", "#", ""};
  ExpectRead({{"a{{=\n}}\n", "(end)", ">a{{{(unset)}"}, {"={{\n", ">[{{]", "(none)"}}, braces);
}

TEST(SectionRead, StopTokenInAValueCloses) {
  ExpectRead({{"{\nlimit = }\nx=1\n", ">x[1]", ">{(unset)}"},
              {"{\n}=}\nx=1\n", ">x[1]", ">{(unset)}"},
              {"{\nk=1}2\n}\n", "(end)", ">{(unset) k[1}2]}"}});
}

TEST(SectionRead, CommentNeitherOpensNorClosesAtTheFirstByteOnly) {
  ExpectRead({{"#section a {\n", "(end)", "(none)"},
              {" #section a {\n}\n", "(end)", ">a{(unset)}"},
              {"{\n#}\n}\n", "(end)", ">{(unset)}"},
              {"{\n #}\nx=1\n", ">x[1]", ">{(unset)}"},
              {"{\n#k=1\n #k=2\n}\n", "(end)", ">{(unset) #k[2]}"}});
}

TEST(SectionRead, SectionsDoNotNest) {
  ExpectRead({{"section a {\nsection b {\nc=1\n}\n}\nx=1\n", ">x[1]", ">a{(unset) c[1]}"},
              {"}\nx=}\n", ">x[}]", "(none)"}});
}

TEST(SectionRead, UnfinishedSectionIsCorrupted) {
  ExpectCorrupted({"section a {\n", "{\n}", "{\n} \n", "{\n}\r\n", "{\n#}\n", "{\n}\n{\nk=1\n"});
  ExpectCorrupted({"\n{\n", "{\n", "a\n{\nk=1\n"}, kTwoLineTokens);
  ExpectRead({{"section a { \n", "(end)", "(none)"}});  // no start token: nothing is open
}

TEST(SectionRead, NameStandsAfterTheKeywordAndOneByte) {
  ExpectRead({{"section alpha {\n}\n", "(end)", ">alpha{(unset)}"},
              {" section\talpha\t {\n}\n", "(end)", ">alpha{(unset)}"},
              {"section  a b {\n}\n", "(end)", "> a b{(unset)}"},
              {"  foo {\n}\n", "(end)", ">  foo{(unset)}"},
              {"x{\n}\n", "(end)", ">x{(unset)}"},
              {"section {\n}\n", "(end)", ">{(unset)}"},
              {"subsection {\n}\n", "(end)", ">{(unset)}"},
              {"my section a section {\n}\n", "(end)", ">a section{(unset)}"},
              {"{ {\n}\n", "(end)", ">{{(unset)}"},
              {" {\n}\n", "(end)", ">{(unset)}"}});
  ExpectRead({{"alpha {\n}\n", "(end)", ">alpha{(unset)}"}}, {"", "{\n", "}\n", "=", "#", ""});
  ExpectRead({{"a {{b\n}}\n", "(end)", ">a {{{(unset)}"}}, {"", "{{", "}}", "=", "#", ""});
}

TEST(SectionRead, SectionsOfOneNameStayTwo) {
  ExpectRead({{"a{\nk=1\n}\na{\nk=2\n}\n", "(end)", ">a{(unset) k[1]} a{(unset) k[2]}"}});
  ExpectEdits({{"a{\n}\na{\n}\n", SECTIONED(GotoNextSection() && file.GotoSection("a")), "true",
                "a{\n}\na{\n}\n", "", ">a{(unset)} a{(unset)}"},
               {"a{\n}\n{\n}\n", SECTIONED(GotoSection("")), "true", "a{\n}\n{\n}\n", "",
                "a{(unset)} >{(unset)}"},
               {"a{\n}\n{\n}\n", SECTIONED(GotoSection("A")), "false", "a{\n}\n{\n}\n", "",
                ">a{(unset)} {(unset)}"}});
}

TEST(SectionRead, TwoLineFormTakesTheNameFromTheLineBefore) {
  ExpectRead({{"section a\n{\nk=1\n}\n", "(end)", ">a{(unset) k[1]}"},
              {"\n{\n}\n", "(end)", ">{(unset)}"},
              {"a \n{\n\n}\n", "(end)", ">a{(unset)}"},
              {"# c\n{\n}\n", "(end)", "># c{(unset)}"},
              {"x=1\n{\n}\n", ">x[1]", ">x=1{(unset)}"},
              {"a\n{\n}\n{\nk=1\n}\n", "(end)", ">a{(unset)} }{(unset) k[1]}"}},
             kTwoLineTokens);
}

TEST(SectionRead, TwoLineFormWithItsTokenLineFirstHasNoNameToSet) {
  ExpectRead({{"{\nk=1\n}\n", "(end)", ">{(unset) k[1]}"}}, kTwoLineTokens);
  ExpectEdits({{"{\n}\n", SECTIONED(SetSectionName("a")), "false", "{\n}\n", "", ">{(unset)}"}},
              kTwoLineTokens);
  SectionFile file("{\n}\n", kTwoLineTokens);
  EXPECT_TRUE(file.AddEntry("x", "1", true) && file.Save(false, nullptr));
  EXPECT_EQ(file.Sections(), ">{(unset)}");
  file.Reload();  // now there is a line before: it is taken for the name
  EXPECT_EQ(file.Entries() + " " + file.Sections(), ">x[1] >x=1{(unset)}");
}

TEST(SectionEdit, SharedLineRefusesEdits) {
  const std::string entry = "x=1\n{\n}\n", stop = "a\n{\n}\n{\nk=1\n}\n";
  const Rows rows = {{entry, SECTIONED(SetEntry("x", "2")), "0", entry},
                     {entry, SECTIONED(SetEntry("x", "1")), "1", entry},
                     {entry, SECTIONED(RenameEntry("y")), "false", entry},
                     {entry, SECTIONED(DeleteEntry("x")), "false", entry},
                     {entry, SECTIONED(DeleteCurrentEntry()), "false", entry},
                     {entry, SECTIONED(SetSectionName("a")), "false", entry},
                     {entry, SECTIONED(DeleteSection()), "4294967295", entry},
                     {stop, SECTIONED(DeleteSection("a")), "4294967295", stop},
                     {stop, SECTIONED(DeleteSection("}")), "4294967295", stop},
                     {stop, SECTIONED(GotoNextSection() && file.InsertSection("b")), "false", stop},
                     {stop, SECTIONED(SetSectionName("b")), "true", "section b\n" + stop.substr(2)},
                     {stop, SECTIONED(GotoSection("}") && file.DeleteSectionEntry("k")), "true",
                      "a\n{\n}\n{\n}\n"}};
  ExpectEdits(rows, kTwoLineTokens);
}

// --- Cursors ---

TEST(SectionCursor, EachSectionKeepsItsOwn) {
  SectionFile file("a{\nk=1\nl=2\n}\nb{\nm=3\nn=4\n}\n");
  file.GotoSecNextEntry();
  file.GotoSecNextEntry();
  file.GotoNextSection();
  file.GotoSecNextEntry();
  EXPECT_EQ(file.Sections(), "a{k[1] >l[2]} >b{>m[3] n[4]}");
  file.Restart();
  EXPECT_EQ(file.Sections(), "(unset) a{k[1] >l[2]} b{>m[3] n[4]}");
  file.RestartSection();  // there is no current section
  EXPECT_EQ(file.Sections(), "(unset) a{k[1] >l[2]} b{>m[3] n[4]}");
  file.GotoFirstSection();
  file.RestartSection();
  EXPECT_EQ(file.Sections(), ">a{(unset) k[1] l[2]} b{>m[3] n[4]}");
}

TEST(SectionCursor, RestartUnsetsTheTopLevelCursorToo) {
  SectionFile file(kText);
  EXPECT_EQ(file.Entries(), ">x[0] y[9]");
  file.Restart();
  EXPECT_EQ(file.Entries(), "(unset) x[0] y[9]");
  EXPECT_TRUE(file.GotoNextEntry() && file.GotoNextEntry());
  EXPECT_EQ(file.Entries(), "x[0] >y[9]");
}

TEST(SectionCursor, WalksOverSections) {
  const std::string text = "a{\n}\nb{\n}\n", a = ">a{(unset)} b{(unset)}",
                    b = "a{(unset)} >b{(unset)}", end = "a{(unset)} b{(unset)} (end)";
  ExpectEdits(
      {{text, SECTIONED(GotoNextSection()), "true", text, "", b},
       {text, SECTIONED(GotoPreviousSection()), "false", text, "", a},
       {text, SECTIONED(GotoLastSection()), "true", text, "", b},
       {text, SECTIONED(GotoLastSection() && file.GotoFirstSection()), "true", text, "", a},
       {text, SECTIONED(GotoLastSection() && file.GotoNextSection()), "false", text, "", end},
       {text, SECTIONED(GetSectionCount()), "2", text, "", a},
       {"", SECTIONED(GotoNextSection()), "false", ""},
       {"", SECTIONED(GotoPreviousSection()), "false", ""},
       {"", SECTIONED(GotoFirstSection()), "false", ""},
       {"", SECTIONED(GotoLastSection()), "false", ""}});
}

TEST(SectionCursor, WalksOverASectionsEntries) {
  const std::string all = kInA;
  ExpectEdits({{all, SECTIONED(GotoSecNextEntry()), "true", all, "", ">{>k[1] l[2] m[3]}"},
               {all, SECTIONED(GotoSecPrevEntry()), "false", all, "", ">{(unset) k[1] l[2] m[3]}"},
               {all, SECTIONED(GotoSecLastEntry()), "true", all, "", ">{k[1] l[2] >m[3]}"},
               {all, SECTIONED(GotoSecLastEntry() && file.GotoSecPrevEntry()), "true", all, "",
                ">{k[1] >l[2] m[3]}"},
               {all, SECTIONED(GotoSecFirstEntry() && file.GotoSecNextEntry()), "true", all, "",
                ">{k[1] >l[2] m[3]}"},
               {all, SECTIONED(GotoSecLastEntry() && file.GotoSecNextEntry()), "false", all, "",
                ">{k[1] l[2] m[3] (end)}"},
               {all, SECTIONED(GotoSecEntry("l")), "true", all, "", ">{k[1] >l[2] m[3]}"},
               {all, SECTIONED(GotoSecLastEntry() && file.GotoSecEntry("z")), "false", all, "",
                ">{k[1] l[2] >m[3]}"},
               {all, SECTIONED(GetSecEntryCount()), "3", all, "", ">{(unset) k[1] l[2] m[3]}"},
               {"{\n}\n", SECTIONED(GotoSecNextEntry()), "false", "{\n}\n", "", ">{(end)}"},
               {"{\n}\n", SECTIONED(GotoSecFirstEntry()), "false", "{\n}\n", "", ">{(unset)}"}});
}

TEST(SectionCursor, DeleteInsideAWalkSkipsNothing) {
  SectionFile file("x{\na=\n}\ny{\nx=\nb=\nx=\n}\nx{\n}\nx{\n}\n");
  std::string met;
  file.Restart();
  while (file.GotoNextSection()) {
    char name[8];
    file.GetSectionName(name, sizeof name);
    met += name + "("s;
    file.RestartSection();
    while (file.GotoSecNextEntry()) {
      char key[8];
      file.GetSecCurrentEntry(key, sizeof key, nullptr, 0);
      met += key;
      if (key[0] == 'x') file.DeleteSectionEntry();
    }
    met += ")";
    if (name[0] == 'x') file.DeleteSection();
  }
  EXPECT_EQ(met, "x(a)y(xbx)x()x()");
  EXPECT_EQ(file.Image(), "y{\nb=\n}\n");
}

TEST(SectionCursor, TheNextStepOfAnyOfTheThreeWalksUsesTheDeleteMark) {
  static const struct {
    const char* name;
    bool (SectionFile::*step)();
    std::string entries, sections;  // with a mark a step stays
  } rows[] = {
      {"entry", &SectionFile::GotoNextEntry, ">y[9] z[8]", ">a{k[1] >m[3]} b{(unset)}"},
      {"section", &SectionFile::GotoNextSection, ">y[9] z[8]", ">a{k[1] >m[3]} b{(unset)}"},
      {"section's entry", &SectionFile::GotoSecNextEntry, ">y[9] z[8]",
       ">a{k[1] >m[3]} b{(unset)}"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    SectionFile file("y=9\nz=8\na{\nk=1\nl=2\nm=3\n}\nb{\n}\n");
    file.DeleteSectionEntry("l");
    EXPECT_TRUE((file.*row.step)());
    EXPECT_FALSE(file.DeleteMark());
    EXPECT_EQ(file.Entries(), row.entries);
    EXPECT_EQ(file.Sections(), row.sections);
  }
}

TEST(SectionCursor, TheseCallsAloneLeaveTheSectionUnset) {
  const std::set<std::string> unsettling = {"GotoSection(key)",          "GotoPreviousSection()",
                                            "GetSectionCount()",         "RestartSection()",
                                            "SetSecCurrentEntry(value)", "DeleteSection(key)",
                                            "DeleteSectionEntry()"};
  for (const auto* calls : {&SectionCalls(), &SectionEntryCalls()}) {
    for (const FileCall<SectionFile>& call : *calls) {
      SectionFile file(kText);
      file.Restart();
      CallArguments with = {"none", ""};
      call.onFile(file, with);
      EXPECT_EQ(file.Sections().substr(0, 7) == "(unset)", unsettling.count(call.text) == 1)
          << call.text;
    }
  }
}

// --- Reads ---

TEST(SectionRead, NameFitsExactlyOrGivesZeros) {
  static const struct {
    const char* section;
    std::size_t size, result;
    std::string buffer;
  } rows[] = {{"abc", 5, 3, "abc\0~"s},  {"abc", 4, 3, "abc\0"s}, {"abc", 3, kTooSmall, "\0\0\0"s},
              {"abc", 0, kTooSmall, ""}, {"", 1, 0, "\0"s},       {"", 0, kTooSmall, ""}};
  SectionFile file("abc{\n}\n{\n}\n");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.section + (" " + std::to_string(row.size)));
    std::string buffer(row.size + 2, '~');
    EXPECT_TRUE(file.GotoSection(row.section));
    EXPECT_EQ(file.GetSectionName(buffer.data(), row.size), row.result);
    EXPECT_EQ(Quoted(buffer), Quoted(row.buffer + "~~"));
  }
}

TEST(SectionRead, EntryFitsExactlyOrGivesZeros) {
  static const struct {
    const char *text, *key;
    std::size_t size, result;
    std::string buffer;
  } rows[] = {{"{\na = 1\n}\n", "a ", 4, 0, "\0\0\0\0"s},
              {"{\na = 1\n}\n", "a", 3, 2, " 1\0"s},
              {"{\na = 1\n}\n", "a", 2, kTooSmall, "\0\0"s},
              {"{\na = 1\n}\n", "a", 0, kTooSmall, ""},
              {"{\n}\na=1\n", "a", 2, 0, "\0\0"s},
              {"a=1\n", "a", 3, 0, "\0\0\0"s},
              {"a=1\n", "a", 1, 0, "\0"s},
              {"a=1\n", "a", 0, 0, ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(Quoted(row.text) + row.key + " " + std::to_string(row.size));
    SectionFile file(row.text);
    std::string buffer(row.size + 2, '~');
    EXPECT_EQ(file.GetSectionEntry(row.key, buffer.data(), row.size), row.result);
    EXPECT_EQ(Quoted(buffer), Quoted(row.buffer + "~~"));
  }
}

TEST(SectionRead, WithoutASectionThereIsNothingToRead) {
  SectionFile file("a=1\n");
  char key[] = "~~", value[] = "~~";
  EXPECT_EQ(file.GetSectionName(key, 2), kTooSmall);
  EXPECT_EQ(file.GetSecCurrentEntry(key, 2, value, 2), 0u);
  EXPECT_EQ(key + std::string(value), "~~~~");
  EXPECT_EQ(file.GetSecEntryCount(), 0u);
  EXPECT_FALSE(file.GotoSecEntry("a") || file.GotoSecFirstEntry() || file.GotoSecLastEntry());
  EXPECT_FALSE(file.GotoSecNextEntry() || file.GotoSecPrevEntry());
}

TEST(SectionRead, CurrentEntryOfAnUnsetCursorIsTheFirst) {
  SectionFile file(kInA);
  char key[4] = "", value[4] = "";
  EXPECT_EQ(file.GetSecCurrentEntry(key, 4, value, 4), 1u);
  EXPECT_EQ(key + "="s + value, "k=1");
  EXPECT_EQ(file.Sections(), ">{>k[1] l[2] m[3]}");
}

TEST(SectionRead, TopLevelAndSectionsAreNameSpacesOfTheirOwn) {
  const std::string text = "x=2\na{\nx=3\nk=1\n}\ny=4\n", top = ">x[2] y[4]";
  ExpectEdits({{text, SECTIONED(GetEntryCount()), "2", text, top},
               {text, SECTIONED(GotoNextEntry()), "true", text, "x[2] >y[4]"},
               {text, SECTIONED(GotoEntry("k")), "false", text, top},
               {text, SECTIONED(GotoSecEntry("y")), "false", text, "", ">a{(unset) x[3] k[1]}"},
               {text, SECTIONED(SetEntry("x", "9")), "2", "x=9\n" + text.substr(4), ">x[9] y[4]"},
               {text, SECTIONED(DeleteEntry("k")), "false", text, top},
               {text, SECTIONED(SetEntry("k", "9")), "2", text + "k=9\n", ">x[2] y[4] k[9]"}});
}

// --- Sections: names, adding and deleting ---

TEST(SectionEdit, SetSectionNameWritesTheNameLineAnew) {
  const FileTokens bare = {"", "{\n", "}\n", "=", "#", "\t"};
  ExpectEdits({{"  my section  old\t{\nk=1\n}\n", SECTIONED(SetSectionName("beta")), "true",
                "section beta {\nk=1\n}\n", "", ">beta{(unset) k[1]}"},
               {"a {\n}\n", SECTIONED(SetSectionName("")), "true", "{\n}\n", "", ">{(unset)}"},
               {"x=1\n", SECTIONED(SetSectionName("a")), "false", "x=1\n"}});
  ExpectEdits({{"a {\n}\n", SECTIONED(SetSectionName("b")), "true", "b {\n}\n", "", ">b{(unset)}"}},
              bare);
  ExpectEdits({{"a\n{\n}\n", SECTIONED(SetSectionName("b c")), "true", "section b c\n{\n}\n", "",
                ">b c{(unset)}"},
               {"a\n{\n}\n", SECTIONED(SetSectionName("")), "true", "\n{\n}\n", "", ">{(unset)}"}},
              kTwoLineTokens);
}

TEST(SectionEdit, NameOfAnyLengthIsWrittenWhole) {
  const std::string name(3000, 'n'), header = "section " + name + " {\n";
  SectionFile file("a {\n}\n");
  EXPECT_TRUE(file.SetSectionName(name.c_str()));
  EXPECT_TRUE(file.AddSection(name.c_str(), false));
  EXPECT_EQ(file.Image(), header + "}\n" + header + "}\n");
  EXPECT_TRUE(file.GotoSection(name.c_str()) && file.SetSectionName("b"));
  EXPECT_EQ(file.Image(), "section b {\n}\n" + header + "}\n");
}

TEST(SectionEdit, AddSectionGoesToTheTopOrTheBottomOfTheFile) {
  ExpectEdits({{"#\na{\n}\n#\n", SECTIONED(AddSection("b", false)), "true",
                "#\na{\n}\n#\nsection b {\n}\n", "", "a{(unset)} >b{(unset)}"},
               {"#\na{\n}\n#\n", SECTIONED(AddSection("b", true)), "true",
                "section b {\n}\n#\na{\n}\n#\n", "", ">b{(unset)} a{(unset)}"},
               {"a{\n}\n", SECTIONED(AddSection("a", false)), "true", "a{\n}\nsection a {\n}\n", "",
                "a{(unset)} >a{(unset)}"},
               {"a{\n}\n", SECTIONED(AddSection(true)), "true", "{\n}\na{\n}\n", "",
                ">{(unset)} a{(unset)}"},
               {"a{\n}\n", SECTIONED(AddSection(false)), "true", "a{\n}\n{\n}\n", "",
                "a{(unset)} >{(unset)}"}});
  const FileTokens twoLines = {"section", "\n{\n", "\n}\n", "=", "#", "\t"};
  ExpectEdits(
      {{"", SECTIONED(AddSection("b", false)), "true", "section b\n{\n}\n", "", ">b{(unset)}"},
       {"", SECTIONED(AddSection("", true)), "true", "\n{\n}\n", "", ">{(unset)}"}},
      twoLines);
}

TEST(SectionEdit, InsertSectionGoesDirectlyBeforeTheCurrentOneOrToTheVeryTop) {
  const std::string text = "#\na{\n}\n#\nb{\n}\n#\n", added = "section c {\n}\n";
  ExpectEdits({{text, SECTIONED(InsertSection("c")), "true", added + text, "",
                ">c{(unset)} a{(unset)} b{(unset)}"},
               {text, SECTIONED(GotoLastSection() && file.InsertSection("c")), "true",
                "#\na{\n}\n#\n" + added + "b{\n}\n#\n", "", "a{(unset)} >c{(unset)} b{(unset)}"},
               {text, SECTIONED(DeleteSection("b") + file.InsertSection("c")), "2",
                "#\na{\n}\n#\n#\n" + added, "", "a{(unset)} >c{(unset)}"},
               {"#\n", SECTIONED(InsertSection("c")), "true", added + "#\n", "", ">c{(unset)}"}});
}

TEST(SectionEdit, DeleteSectionTakesAllItsLines) {
  ExpectEdits({{kText, SECTIONED(DeleteSection()), "1", "# head\nx=0\ny=9\n{\n}\n", ">x[0] y[9]",
                ">{(unset)}"},
               {kText, SECTIONED(DeleteSection("")), "1", kText.substr(0, kText.size() - 4), "",
                "a{(unset) k[1] l[2]} (end)"},
               {kText, SECTIONED(DeleteSection("z")), "4294967295", kText},
               {kText, SECTIONED(DeleteSection() + file.DeleteSection()), "1", "# head\nx=0\ny=9\n",
                "", "(none)"},
               {"x=1\n", SECTIONED(DeleteSection()), "4294967295", "x=1\n"}});
}

// --- A section's entries ---

TEST(SectionEdit, AddSectionEntryGoesDirectlyBeforeTheStopLine) {
  const std::string added =
      "# head\nx=0\nsection a {\n # in a\nk=1\nl=2\n# end\nm=3\n}\ny=9\n{\n}\n";
  ExpectEdits({{kText, SECTIONED(AddSectionEntry("m", "3")), "true", added, "",
                ">a{(unset) k[1] l[2] m[3]} {(unset)}"},
               {kText, SECTIONED(SetSectionEntry("m", "3")), "2", added, "",
                ">a{(unset) k[1] l[2] m[3]} {(unset)}"},
               {"{\n#\n}\n", SECTIONED(GotoSecNextEntry() || file.AddSectionEntry("k", "1")),
                "true", "{\n#\nk=1\n}\n", "", ">{k[1] (end)}"},
               {"x=1\n", SECTIONED(AddSectionEntry("m", "3")), "false", "x=1\n"},
               {"x=1\n", SECTIONED(SetSectionEntry("m", "3")), "0", "x=1\n"}});
}

TEST(SectionEdit, NewLineTakes1023BytesAndRefuses1024) {
  static const std::string v1020(1020, 'v'), v1021(1021, 'v');
  const std::string fits = "{\nk=" + v1020 + "\n}\n", none = "{\n}\n", one = "{\na=1\n}\n";
  ExpectEdits(
      {{none, SECTIONED(AddSectionEntry("k", v1020.c_str())), "true", fits},
       {none, SECTIONED(AddSectionEntry("k", v1021.c_str())), "false", none},
       {none, SECTIONED(SetSectionEntry("k", v1021.c_str())), "0", none},
       {none, SECTIONED(InsertSectionEntry("k", v1021.c_str(), false)), "false", none, "",
        ">{(end)}"},
       {one, SECTIONED(InsertSectionEntry("k", v1021.c_str(), true)), "false", one, "", ">{>a[1]}"},
       {one, SECTIONED(SetSectionEntry("a", v1021.c_str())), "2", "{\na=" + v1021 + "\n}\n"}});
}

TEST(SectionEdit, InsertSectionEntryGoesBeforeTheCurrentOneAndBecomesIt) {
  const std::string text = "{\n#\nk=1\n#\nl=2\n#\n}\n";
  ExpectEdits(
      {{text, SECTIONED(InsertSectionEntry("m", "3", false)), "true",
        "{\n#\nm=3\nk=1\n#\nl=2\n#\n}\n", "", ">{>m[3] k[1] l[2]}"},
       {text, SECTIONED(GotoSecLastEntry() && file.InsertSectionEntry("m", "3", true)), "true",
        "{\n#\nk=1\n#\nm=3\nl=2\n#\n}\n", "", ">{k[1] >m[3] l[2]}"},
       {text, SECTIONED(DeleteSectionEntry("l") && file.InsertSectionEntry("m", "3", false)),
        "true", "{\n#\nk=1\n#\n#\nm=3\n}\n", "", ">{k[1] m[3] (end)}"},
       {text, SECTIONED(InsertSectionEntry("l", "3", false)), "true",
        "{\n#\nl=3\nk=1\n#\nl=2\n#\n}\n", "", ">{>l[3] k[1] l[2]}"},
       {text, SECTIONED(InsertSectionEntry("l", "3", true)), "true", "{\n#\nk=1\n#\nl=3\n#\n}\n",
        "", ">{(unset) k[1] l[3]}"},
       {text, SECTIONED(InsertSectionEntry("l", "2", true)), "true", text, "",
        ">{(unset) k[1] l[2]}"},
       {"x=1\n", SECTIONED(InsertSectionEntry("x", "2", true)), "false", "x=1\n"}});
}

TEST(SectionEdit, SetKeepsEveryOtherByte) {
  ExpectEdits(
      {{"{\n k = 1 # c  \n}\n", SECTIONED(SetSectionEntry("k", "22")), "2", "{\n k =22  \n}\n", "",
        ">{(unset) k[22]}"},
       {"{\nk=1\nk=2\n}\n", SECTIONED(SetSectionEntry("k", "3")), "2", "{\nk=3\nk=2\n}\n"},
       {kInA, SECTIONED(SetSectionEntry("k", "1")), "1", kInA},
       {kInA, SECTIONED(SetSecCurrentEntry("9")), "0", kInA, "", ">{(unset) k[1] l[2] m[3]}"},
       {kInA, SECTIONED(GotoSecEntry("l") && file.SetSecCurrentEntry("99") == 2), "true",
        "{\nk=1\nl=99\nm=3\n}\n", "", ">{k[1] >l[99] m[3]}"},
       {kInA, SECTIONED(GotoSecEntry("l") && file.SetSecCurrentEntry("2") == 1), "true", kInA},
       {kInA, SECTIONED(DeleteSectionEntry("m") && file.SetSecCurrentEntry("9") != 0), "false",
        "{\nk=1\nl=2\n}\n"}});
}

TEST(SectionEdit, RenameSectionEntryKeepsTheBlanks) {
  ExpectEdits({{"{\n  k  = v \n}\n", SECTIONED(RenameSectionEntry("name")), "true",
                "{\n  name  = v \n}\n", "", ">{>name[ v]}"},
               {kInA, SECTIONED(RenameSectionEntry("")), "false", kInA, "", ">{>k[1] l[2] m[3]}"},
               {"{\n}\n", SECTIONED(RenameSectionEntry("n")), "false", "{\n}\n", "", ">{(end)}"},
               {"x=1\n", SECTIONED(RenameSectionEntry("n")), "false", "x=1\n"}});
}

TEST(SectionEdit, DeleteSectionEntryNeedsAWalkThatHasBegunOrAKey) {
  ExpectEdits(
      {{kInA, SECTIONED(DeleteSectionEntry()), "false", kInA, "", ">{(unset) k[1] l[2] m[3]}"},
       {kInA, SECTIONED(GotoSecEntry("l") && file.DeleteSectionEntry()), "true", "{\nk=1\nm=3\n}\n",
        "", ">{k[1] >m[3]}"},
       {kInA, SECTIONED(DeleteSectionEntry("l")), "true", "{\nk=1\nm=3\n}\n", "", ">{k[1] >m[3]}"},
       {kInA, SECTIONED(DeleteSectionEntry("z")), "false", kInA, "", ">{(unset) k[1] l[2] m[3]}"},
       {"{\nk=1\n}\n", SECTIONED(DeleteSectionEntry("k")), "true", "{\n}\n", "", ">{(end)}"},
       {"k=1\n", SECTIONED(DeleteSectionEntry("k")), "false", "k=1\n"}});
}

// --- Entries outside sections ---

TEST(SectionEdit, TopLevelLinesNeverLandInsideASection) {
  const std::string text = "a=1\n{\n}\nb=2\n{\n}\n";
  ExpectEdits(
      {{text, SECTIONED(AddEntry("x", "9", false)), "true", text + "x=9\n", ">a[1] b[2] x[9]"},
       {text, SECTIONED(AddEntry("x", "9", true)), "true", "x=9\n" + text, "x[9] >a[1] b[2]"},
       {text, SECTIONED(InsertEntry("x", "9")), "true", "x=9\n" + text, "x[9] >a[1] b[2]"},
       {text, SECTIONED(GotoLastEntry() && file.InsertEntry("x", "9")), "true",
        "a=1\n{\n}\nx=9\nb=2\n{\n}\n", "a[1] x[9] >b[2]"},
       {text, SECTIONED(DeleteEntry("b") && file.InsertEntry("x", "9")), "true",
        "a=1\n{\n}\n{\n}\nx=9\n", "a[1] x[9] (end)"},
       {"{\n}\na=1\n", SECTIONED(InsertEntry("x", "9")), "true", "x=9\n{\n}\na=1\n", "x[9] >a[1]"},
       {text, SECTIONED(GotoLastEntry() && file.GotoPreviousEntry()), "true", text, ">a[1] b[2]"},
       {text, SECTIONED(GotoLastEntry() && file.GotoFirstEntry() && file.RenameEntry("c")), "true",
        "c" + text.substr(1), ">c[1] b[2]"},
       {text, SECTIONED(DeleteCurrentEntry()), "true", text.substr(4), ">b[2]"}});
  SectionFile file(text);
  char buffer[4] = "", value[4] = "";
  EXPECT_EQ(file.GetEntry("b", buffer, 4) + file.GetCurrentEntry(nullptr, 0, value, 4), 2u);
  EXPECT_EQ(buffer + std::string(value), "21");
}

// --- The preset ---

TEST(SectionRead, ThePresetReadsItsFormatWhateverItsThirdArgument) {
  for (const bool ignored : {false, true}) {
    const std::string path = TestFiles::Written("x = 1\nsection a {\n# k=0\nk=1\n}\n");
    Configuration::MultiSectionConfigFile file(path.c_str(), false, ignored, true, false);
    char name[4], value[4];
    EXPECT_EQ(file.GetSectionName(name, 4) + file.GetSectionEntry("k", value, 4), 2u);
    EXPECT_EQ(name + std::string(value), "a1");
    EXPECT_TRUE(file.AddSection("b", false) && file.AddSectionEntry("k", "2"));
    char image[80];
    EXPECT_TRUE(file.SaveToBuffer(image, sizeof image));
    EXPECT_STREQ(image, "x = 1\nsection a {\n# k=0\nk=1\n}\nsection b {\nk=2\n}\n");
  }
}

}  // namespace
