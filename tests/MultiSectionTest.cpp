// SPDX-License-Identifier: MIT
// Tables are texts: a row is a line, its columns are parted by " | ", and `/` is a line feed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "ConfigException.h"
#include "FailingNew.h"
#include "SectionModel.h"
#include "TestFiles.h"

namespace {

using Configuration::MultiSectionConfigFile;
using Configuration::MultiSectionFile;
using std::size_t;
using std::string;

// `P` the preset, `T` two lines, `B` no line feeds, `I` with a prefix, `K` with an odd keyword.
SectionTokens TokensOf(char letter) {
  if (letter == 'T') return {"section", "\n{\n", "}\n", "=", "#", nullptr};
  if (letter == 'B') return {"", "{{", "}}", "=", "#", nullptr};
  if (letter == 'I') return {"", "\n{\n", "\n}\n", " ", "#", "\t"};
  return {letter == 'P' ? "section" : "{\n", "{\n", "}\n", "=", "#", nullptr};
}

template <class File>
concept AddsByNameAlone = requires(File& file) {
  file.AddSection("name");
};
template <class File>
concept AddsNameless = requires(File& file) {
  file.AddSection(true);
};
static_assert(AddsNameless<MultiSectionFile> && !AddsByNameAlone<MultiSectionFile>);

using Row = std::vector<string>;

void ForEachRow(const string& table, const std::function<void(const Row&)>& check) {
  std::istringstream lines(table);
  for (string line; std::getline(lines, line);) {
    if (line.empty()) continue;
    SCOPED_TRACE(line);
    std::replace(line.begin(), line.end(), '/', '\n');
    Row row;
    for (size_t at = 0, end = 0; end != string::npos; at = end + 3) {
      end = line.find(" | ", at);
      row.push_back(line.substr(at, end - at));
    }
    check(row);
  }
}

// Runs a script of steps `e.put:key,value=outcome` (`_` is a blank, `@9` nine bytes); the result is
// the script with the outcomes that came.
string Rerun(OpenSectionFile& file, const string& script) {
  const auto argument = [](string text) {
    std::replace(text.begin(), text.end(), '_', ' ');
    return text[0] == '@' ? string(std::strtoul(&text[1], nullptr, 10), 'x') : text;
  };
  string ran, word;
  for (std::istringstream words(script); words >> word;) {
    const string call = word.substr(0, word.rfind('='));
    string name, a, b;
    std::istringstream parts(call);
    std::getline(std::getline(std::getline(parts, name, ':'), a, ','), b);
    for (const SectionStep& step : SectionSteps()) {
      if (step.name != name) continue;
      ran += (ran.empty() ? "" : " ") + call + "=";
      ran += step.run(file, argument(a).c_str(), argument(b).c_str());
    }
  }
  return ran;
}

string MessageOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const ConfigException& exception) {
    return exception.what();
  }
  return "";
}

TEST(MultiSectionFormat, LinesAndNames) {
  TestFiles::TemporaryDirectory directory;
  const string path = directory.Path("file");
  const auto check = [&path](const Row& row) {
    TestFiles::Write(path, row[1]);
    OpenSectionFile file(TokensOf(row[0][0]), path.c_str());
    EXPECT_EQ(file.Picture(), row[2]);
    EXPECT_EQ(file.Image(), row[1]);
    EXPECT_EQ(file.Fault(), "");
  };
  const string table = R"(
P |  | $; $
P | #mode = fast/timeout = 30/section alpha {//host = a # b/limit = }/ | *timeout[ 30]; *alpha{^host[ a # b]}
P | section beta{/}/retries=2/foo {/}/  foo {/}/ | *retries[2]; *beta{^}foo{^}  foo{^}
P | section  foo {/}/my sectionXa {/}/ #section b {/}/#section c {/}/ | $; * foo{^}a{^}b{^}
P | section {/}/{/}/subsection {/}/x{/}/ | $; *{^}{^}{^}x{^}
P | section a {/#}/ #k=v/ =v/=w/b=  /l=} / #}/k=v | *k[v]; *a{^#k[v][v][w]b[]l[}]}
P | section a {/section b {/c=1/}/}/k=}/a = {/{ / | *k[}]a[ {]; *a{^c[1]}
P | section a {/k=1/k=2/}/section a {/}/ | $; *a{^k[1]k[2]}a{^}
T | section x/{/}//{/}/#c/{/}/k=1 /{/}/{/}/ | *k[1]; *x{^}{^}#c{^}k=1{^}}{^}
T | {/a=1/}/ | $; *{^a[1]}
B | a=1/k={{/{{=1/a {{ b/}} /a {{ b/}}/ | *a[1]k[{{]; *{{={^}a {{{^}
K | a {/}/ | $; *{^}
I | a b/{/	c d/}/ | *a[b]; *a b{^c[d]}
)";
  ForEachRow(table, check);
  check({"P", "a {\r\nk=1\n}\r\n", "*k[1]; $"});
  check({"P", string(1023, 'x') + "{\n}\n", "$; *{^}"});  // a line of its own
}

TEST(MultiSectionFormat, TextsThatEndInsideASection) {
  TestFiles::TemporaryDirectory directory;
  const string path = directory.Path("file");
  const string table = R"(
P | k=1/section a {/
P | section a {/k=1/#}/
P | section a {/}
P | section a {/} /
T | {/
T | a/{/}/}/{/
)";
  ForEachRow(table, [&path](const Row& row) {
    const SectionTokens tokens = TokensOf(row[0][0]);
    const string message = "File \"" + path + "\" is corrupted!";
    TestFiles::Write(path, "");
    OpenSectionFile file(tokens, path.c_str()), other(tokens);
    TestFiles::Write(path, row[1]);
    EXPECT_EQ(MessageOf([&] { OpenSectionFile(tokens, path.c_str()); }), message);
    EXPECT_EQ(MessageOf([&] { file.Reload(); }), message);
    EXPECT_EQ(MessageOf([&] { other.AttachToBuffer(row[1].c_str(), nullptr); }),
              "File \"\" is corrupted!");
    EXPECT_TRUE(file.lines == nullptr && other.sections == nullptr);
    file.Tidy();
  });
}

// What each operation does to the cursors and the flag.
void CheckEffects(const string& table) {
  ForEachRow(table, [](const Row& row) {
    OpenSectionFile file(TokensOf('P'));
    file.Take("x=1\nsection a {\np=1\nq=2\n}\nsection b {\nr=3\n}\ny=2\n");
    EXPECT_EQ(Rerun(file, row[0]), row[0]);
    EXPECT_EQ(file.Picture(), row[1]);
  });
}

TEST(MultiSectionCursors, OfSections) {
  CheckEffects(R"(
restart=- next=1 next=1 next=0 next=0 prev=1 prev=1 prev=0 | ^x[1]y[2]; *a{^p[1]q[2]}b{^r[3]}
delete=1 next=1 t.next=1 | x[1]*y[2]; *b{^r[3]}
delete=1 name=1b next=0 | *x[1]y[2]; b{^r[3]}$
restart=- delete=1 delete=0 delete=! count=0 next=0 | ^x[1]y[2]; $
delete=1 delete=0 delete=! count=0 | *x[1]y[2]; $+
last=1 deletename:a=1 | *x[1]y[2]; *b{^r[3]}+
last=1 insert:n=1 next=1 | *x[1]y[2]; a{^p[1]q[2]}n{^}*b{^r[3]}
delete=1 add:n=1 insert:a=1 | *x[1]y[2]; b{^r[3]}*a{^}n{^}
last=1 next=0 insert:n=1 addfront:=1 | *x[1]y[2]; *{^}a{^p[1]q[2]}b{^r[3]}n{^}
delete=1 rename:n=1 next=0 | *x[1]y[2]; n{^r[3]}$
)");
}

TEST(MultiSectionCursors, OfEntriesThatAreRead) {
  CheckEffects(R"(
e.next=1 e.read=1p,1 e.next=1 e.next=0 e.next=0 e.prev=1 | *x[1]y[2]; *a{p[1]*q[2]}b{^r[3]}
restart=- e.restart=- | ^x[1]y[2]; ^a{^p[1]q[2]}b{^r[3]}
restart=- e.count=2 | ^x[1]y[2]; *a{^p[1]q[2]}b{^r[3]}
e.next=1 next=1 e.next=1 goto:a=1 e.next=1 | *x[1]y[2]; *a{p[1]*q[2]}b{*r[3]}
last=1 next=0 e.count=0 e.first=0 e.next=0 e.get:r=0 e.read=0, e.goto:r=0 | *x[1]y[2]; a{^p[1]q[2]}b{^r[3]}$
e.first=1 t.delete=1 e.next=1 e.next=1 | *y[2]; *a{p[1]*q[2]}b{^r[3]}
e.last=1 e.delete=1 e.next=0 e.prev=1 | *x[1]y[2]; *a{*p[1]}b{^r[3]}
e.first=1 e.delete=1 e.get:q=12 e.next=0 | *x[1]y[2]; *a{q[2]$}b{^r[3]}
add:n=1 e.next=0 e.add:k,v=1 e.next=0 e.prev=1 | *x[1]y[2]; a{^p[1]q[2]}b{^r[3]}*n{*k[v]}
e.last=1 restart=- e.prev=1 e.restart=- | ^x[1]y[2]; *a{^p[1]q[2]}b{^r[3]}
)");
}

TEST(MultiSectionCursors, OfEntriesThatAreEdited) {
  CheckEffects(R"(
e.set:9=0 e.delete=0 e.read=1p,1 e.set:9=2 | *x[1]y[2]; *a{*p[9]q[2]}b{^r[3]}
restart=- e.set:9=0 e.delete=0 e.deletekey:p=1 | ^x[1]y[2]; *a{*q[2]}b{^r[3]}+
restart=- e.add:k,v=1 | ^x[1]y[2]; *a{^p[1]q[2]k[v]}b{^r[3]}
e.first=1 e.delete=1 e.rename:=0 e.rename:k=1 | *x[1]y[2]; *a{*k[2]}b{^r[3]}
e.insert:k,v=1 e.last=1 e.insert:l,w=1 | *x[1]y[2]; *a{k[v]p[1]*l[w]q[2]}b{^r[3]}
e.replace:q,2=1 e.replace:q,3=1 | *x[1]y[2]; *a{^p[1]q[3]}b{^r[3]}
e.last=1 e.deletekey:p=1 e.next=1 e.next=0 | *x[1]y[2]; *a{q[2]$}b{^r[3]}
delete=1 delete=0 e.insert:k,v=0 | *x[1]y[2]; $+
delete=1 delete=0 e.add:k,v=0 e.put:k,v=0 e.rename:k=0 e.set:v=0 e.delete=0 e.deletekey:k=0 | *x[1]y[2]; $
e.add:a,@1021=0 e.insert:a,@1021=0 e.put:a,@1021=0 | *x[1]y[2]; *a{*p[1]q[2]}b{^r[3]}
e.add:a,@1020=1 e.put:p,@2000=2 e.rename:w=0 e.put:p,5=2 e.rename:w=1 e.deletekey:a=1 | *x[1]y[2]; *a{w[5]q[2]$}b{^r[3]}+
)");
}

TEST(MultiSectionCursors, OfTheTopLevel) {
  CheckEffects(R"(
restart=- t.prev=0 t.read=1x,1 t.next=1 | x[1]*y[2]; ^a{^p[1]q[2]}b{^r[3]}
t.delete=1 t.read=1y,2 t.rename:k=1 t.count=1 t.next=1 | *k[2]; *a{^p[1]q[2]}b{^r[3]}
t.delete=1 next=1 t.next=0 next=1 | y[2]$; a{^p[1]q[2]}*b{^r[3]}
e.first=1 e.delete=1 t.next=1 t.next=1 | x[1]*y[2]; *a{*q[2]}b{^r[3]}
restart=- t.delete=1 t.delete=1 t.delete=0 t.rename:k=0 | $; ^a{^p[1]q[2]}b{^r[3]}+
t.last=1 t.next=0 t.insert:k,v=1 | x[1]y[2]k[v]$; *a{^p[1]q[2]}b{^r[3]}
t.put:x,1=1 t.put:p,9=2 t.get:q=0 t.goto:r=0 | *x[1]y[2]p[9]; *a{^p[1]q[2]}b{^r[3]}
)");
}

TEST(MultiSectionEdits, ChangeTheirOwnLinesAlone) {
  const auto check = [](const Row& row) {
    OpenSectionFile file(TokensOf(row[0][0]));
    file.Take(row[1]);
    EXPECT_EQ(Rerun(file, row[2]), row[2]);
    EXPECT_EQ(file.Image(), row[3]);
    EXPECT_EQ(file.Fault(), "");
  };
  ForEachRow(R"(
P | section alpha {/  # limits/  a = 1/  # end/}/ | e.first=1 e.put:a,2=2 e.put:a,2=1 e.rename:rate=1 e.add:b,3=1 e.insert:c,4=1 e.replace:b,5=1 e.delete=1 e.next=1 e.read=4rate,2 | section alpha {/  # limits/  rate =2/  # end/b=5/}/
P | section a {/a=1   /host = a # b/#c/}/ | e.put:a,22=2 e.put:host,c=2 e.put:n,1=2 | section a {/a=22   /host =c/#c/n=1/}/
P |   alpha {/}/ | rename:beta=1 name=4beta rename:=1 name=0 goto:=1 | {/}/
P | k=1 | add:a=1 addfront:=1 rename:b=1 | section b {/}/k=1section a {/}/
P | #h/section a {//#c/}/#m/section b {/}/ | restart=- insert:n=1 | section n {/}/#h/section a {//#c/}/#m/section b {/}/
P | #h/section a {//#c/}/#m/section b {/}/ | last=1 insert:=1 | #h/section a {//#c/}/#m/{/}/section b {/}/
P | #h/section a {//#c/}/#m/section b {/}/ | delete=1 | #h/#m/section b {/}/
P | a=1/section s {/}/b=2/ | t.insert:x,9=1 | x=9/a=1/section s {/}/b=2/
P | a=1/section s {/}/b=2/ | t.next=1 t.insert:x,9=1 t.add:z,8=1 | a=1/section s {/}/x=9/b=2/z=8/
I |  | add:a=1 e.add:k,v=1 add:=1 rename:b=1 rename:=1 | a/{/	k v/}//{/}/
T | k=1/{/}/n/{/}/{/v=2/}/ | rename:z=0 delete=! deletename:k=1=! t.put:k,2=0 t.put:k,1=1 t.rename:j=0 t.delete=0 t.deletekey:k=0 | k=1/{/}/n/{/}/{/v=2/}/
T | k=1/{/}/n/{/}/{/v=2/}/ | last=1 rename:z=0 delete=! insert:z=0 prev=1 delete=! | k=1/{/}/n/{/}/{/v=2/}/
T | k=1/{/}/n/{/}/{/v=2/}/ | goto:n=1 rename:m=1 e.add:l,4=1 last=1 e.put:v,3=2 | k=1/{/}/section m/{/l=4/}/{/v=3/}/
T | {/a=1/}/#c/{/}/ | rename:z=0 name=0 e.put:a,2=2 last=1 rename:n=1 | {/a=2/}/section n/{/}/
T | {/a=1/}/b=2/ | delete=0 | b=2/
)",
             check);
}

TEST(MultiSectionEdits, ThawEachLineWithItsText) {
  Configuration::ConfigLineList lines;
  for (int i = 0; i < 3; ++i) {  // each time in the same place of memory, if the system so likes
    lines.AddLine("a=1\n", true);
    EXPECT_FALSE(lines.IsFrozen(lines.First()));
    lines.Freeze(lines.First());
    lines.Clear();
  }
}

TEST(MultiSectionReads, ComeWholeOrNotAtAll) {
  // Call and size, result and buffers: a NUL as `_`, an untouched byte as `~`.
  const string table = R"(
name 4 | 3 abc_
name 3 | ! ___~
k 3 | 2  v_~
k 2 | ! __~~
k 0 | ! ~~~~
z 3 | 0 ___~
z 0 | 0 ~~~~
current 2 | 1 k_ v_~
current 1 | ! _~~~~~
current 0 | 2 ~~ v_~
)";
  ForEachRow(table, [](const Row& row) {
    MultiSectionConfigFile file("section abc {\nk= v\n}\n", false, true, false, true);
    std::istringstream parts(row[0]);
    string call, key(2, '~'), value(4, '~');
    size_t size = 0;
    parts >> call >> size;
    const size_t result =
        call == "name" ? file.GetSectionName(value.data(), size)
        : call == "current"
            ? file.GetSecCurrentEntry(size == 0 ? nullptr : key.data(), size, value.data(), 4)
            : file.GetSectionEntry(call.c_str(), value.data(), size);
    const string bytes = (call == "current" ? key : "") + value;
    string told = Told(result) + " " + bytes;
    std::replace(told.begin(), told.end(), '\0', '_');
    EXPECT_EQ(told, row[1]);
  });
}

TEST(MultiSectionLife, FromFilesAndTexts) {
  TestFiles::TemporaryDirectory directory;
  const string path = directory.Path("file"), lost = directory.Path("no") + "/file";
  const auto open = [](const char* source, const char* start, const char* stop) {
    MultiSectionFile(source, true, false, false, nullptr, start, stop, "=", "#", nullptr);
  };
  const string message = "Length of section's start & stop tokens must be at least 2!";
  EXPECT_EQ(MessageOf([&] { open(nullptr, "{", "}\n"); }), message);
  EXPECT_EQ(MessageOf([&] { open(lost.c_str(), "{\n", "\n"); }), message);
  EXPECT_EQ(MessageOf([&] { open(nullptr, "\n{", "\n}"); }), "");
  EXPECT_EQ(MessageOf([&] { open(lost.c_str(), "{\n", "}\n"); }),
            "Path " + directory.Path("no") + " does not exist.");
  const string missing = "\"" + path + "\" : No such file or directory";
  EXPECT_EQ(MessageOf([&] { MultiSectionConfigFile(path.c_str(), true, false, true, false); }),
            "Error opening file " + missing);
  EXPECT_FALSE(std::filesystem::exists(path));
  MultiSectionConfigFile made(path.c_str(), true, true, false, false);
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(made.GetSectionCount(), 0u);

  TestFiles::Write(path, "section a {\n}\n");
  OpenSectionFile file(TokensOf('P'), path.c_str()), empty(TokensOf('P'));
  EXPECT_EQ(empty.Picture(), "^; ^");
  EXPECT_TRUE(empty.AddSection("n", false) && !empty.Save(false, path.c_str()));
  file.AddSection("b", false);
  file.ClearAll();
  EXPECT_EQ(file.Picture(), "$; $");
  file.Reload();
  EXPECT_EQ(file.Picture(), "$; *a{^}");
  EXPECT_FALSE(
      file.AttachToBuffer(("section n {\n}\n" + string(1023, 'x') + "\n").c_str(), path.c_str()));
  EXPECT_EQ(file.Picture() + file.Image(), "$; $section n {\n}\n");
  EXPECT_TRUE(file.Save(true, nullptr));
  EXPECT_EQ(TestFiles::Read(path), "section n {\n}\n");
  EXPECT_TRUE(file.AttachToBuffer("k=1\nsection c {\n}\nk=2", nullptr));
  EXPECT_EQ(file.Picture(), "*k[1]; *c{^}");
  EXPECT_FALSE(file.Save(false, path.c_str()));
  file.Reload();  // without a path nothing happens
  EXPECT_EQ(file.Picture(), "*k[1]; *c{^}");

  OpenSectionFile vanishing(TokensOf('P'), path.c_str());
  std::filesystem::remove(path);
  EXPECT_EQ(MessageOf([&] { vanishing.Reload(); }), "Error opening file " + missing);
  EXPECT_TRUE(vanishing.lines == nullptr && vanishing.sectionCursor == nullptr);
}

TEST(MultiSectionFailedAllocation, LeavesTheImageBeforeOrAfter) {
  static const string text = "k=1\n{\n}\nn\n{\na=1\n}\n{\n}\n", forty(40, 'x'), many(300, 'x');
  static string path;
  static std::unique_ptr<OpenSectionFile> file;
  using F = OpenSectionFile;
  static const struct {
    const char* name;
    void (*run)(F& f);
    int atLeast;
    bool keepsCursors = false;
  } rows[] = {
      {"construct", [](F&) { F other(TokensOf('T'), path.c_str()); }, 15},
      {"Reload", [](F& f) { f.Reload(); }, 5, true},
      {"Attach", [](F& f) { f.AttachToBuffer(text.c_str(), "new"); }, 5, true},
      {"Attach, corrupted", [](F& f) { f.AttachToBuffer("a\n{\n", "new"); }, 5, true},
      {"AddSection", [](F& f) { f.AddSection(many.c_str(), false); }, 3},
      {"AddSection, front", [](F& f) { f.AddSection(forty.c_str(), true); }, 2},
      {"InsertSection", [](F& f) { f.InsertSection(many.c_str()); }, 3},
      {"SetSectionName", [](F& f) { f.SetSectionName(many.c_str()); }, 2},
      {"DeleteSection", [](F& f) { f.DeleteSection("d"); }, 0},
      {"AddSectionEntry", [](F& f) { f.AddSectionEntry("k", many.c_str()); }, 9},
      {"SetSectionEntry", [](F& f) { f.SetSectionEntry("a", many.c_str()); }, 1},
      {"SetSectionEntry, new", [](F& f) { f.SetSectionEntry("k", forty.c_str()); }, 1},
      {"Insert", [](F& f) { f.InsertSectionEntry("k", "2", false); }, 1},
      {"Rename", [](F& f) { f.RenameSectionEntry(many.c_str()); }, 1},
  };
  TestFiles::TemporaryDirectory directory;
  path = directory.Path("file");
  TestFiles::Write(path, text);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    int failed = 0;
    for (int more = 0; more < 8; ++more) {  // so that every pool is at its brink once
      long blocks = 0;
      const auto make = [&] {
        blocks = FailingNew::LiveBlocks();
        file = std::make_unique<F>(TokensOf('T'), path.c_str());
        for (int i = 0; i < more; ++i) file->AddSection("d", true), file->AddEntry("e", "1", true);
        file->GotoSection("n");
        file->afterDelete = true;
      };
      const auto run = [&row] {
        try {
          row.run(*file);
        } catch (const ConfigException&) {  // of a text that is corrupted: all is released
        }
      };
      make();
      const string before = file->Image(), picture = file->Picture();
      run();
      const string after = file->lines != nullptr ? file->Image() : "";
      file.reset();
      failed += FailingNew::ForEachAllocation(
          [&]() -> std::function<void()> {
            make();
            return run;
          },
          [&](bool threw) {
            if (file->lines != nullptr) {
              EXPECT_EQ(file->Image(), threw ? before : after);
              EXPECT_EQ(file->Fault(), "");
              EXPECT_TRUE(!threw || file->path == path);
              EXPECT_TRUE(!threw || !row.keepsCursors || file->Picture() == picture);
              EXPECT_FALSE(file->GotoSection("k=1") && file->SetSectionName("frozen"));
            }
            file.reset();
            EXPECT_EQ(FailingNew::LiveBlocks(), blocks);
          });
    }
    EXPECT_GE(failed, row.atLeast);
  }
}

}  // namespace
