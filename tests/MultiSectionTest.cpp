// SPDX-License-Identifier: MIT
// Tables are texts: a row is a line, its columns are parted by " | ", and `/` is a line feed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "ConfigException.h"
#include "FileModel.h"
#include "TestFiles.h"

namespace {

using Configuration::MultiSectionConfigFile;
using Configuration::MultiSectionFile;
using std::size_t;
using std::string;

// `P` the preset, `T` two lines, `B` no line feeds, `I` with a prefix, `K` with an odd keyword,
// `F` a flat file.
FileTokens TokensOf(char letter) {
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
template <class F>
string Rerun(F& file, const string& script) {
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
    for (const auto& step : Steps<F>()) {
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
    const FileTokens tokens = TokensOf(row[0][0]);
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

// What the operations do to the cursors and the flag: the model's word, said once by hand.
TEST(MultiSectionCursors, AreLeftWhereTheOperationsPutThem) {
  ForEachRow(R"(
restart=- next=1 next=1 next=0 next=0 prev=1 prev=1 prev=0 | ^x[1]y[2]; *a{^p[1]q[2]}b{^r[3]}
delete=1 next=1 t.next=1 | x[1]*y[2]; *b{^r[3]}
restart=- delete=1 delete=0 delete=! count=0 next=0 | ^x[1]y[2]; $
last=1 next=0 insert:n=1 addfront:=1 | *x[1]y[2]; *{^}a{^p[1]q[2]}b{^r[3]}n{^}
e.next=1 next=1 e.next=1 goto:a=1 e.next=1 | *x[1]y[2]; *a{p[1]*q[2]}b{*r[3]}
e.first=1 t.delete=1 e.next=1 e.next=1 | *y[2]; *a{p[1]*q[2]}b{^r[3]}
e.set:9=0 e.delete=0 e.read=1p,1 e.set:9=2 | *x[1]y[2]; *a{*p[9]q[2]}b{^r[3]}
e.insert:k,v=1 e.last=1 e.insert:l,w=1 | *x[1]y[2]; *a{k[v]p[1]*l[w]q[2]}b{^r[3]}
delete=1 delete=0 e.add:k,v=0 e.put:k,v=0 e.set:v=0 e.deletekey:k=0 | *x[1]y[2]; $
e.add:a,@1021=0 e.insert:a,@1021=0 e.put:a,@1021=0 t.add:a,@1021=0 | *x[1]y[2]; *a{*p[1]q[2]}b{^r[3]}
e.add:a,@1020=1 e.put:p,@2000=2 e.rename:w=0 e.put:p,5=2 e.rename:w=1 e.deletekey:a=1 | *x[1]y[2]; *a{w[5]q[2]$}b{^r[3]}+
t.last=1 t.next=0 t.insert:k,v=1 | x[1]y[2]k[v]$; *a{^p[1]q[2]}b{^r[3]}
)",
             [](const Row& row) {
               OpenSectionFile file(TokensOf('P'));
               file.Take("x=1\nsection a {\np=1\nq=2\n}\nsection b {\nr=3\n}\ny=2\n");
               EXPECT_EQ(Rerun(file, row[0]), row[0]);
               EXPECT_EQ(file.Picture(), row[1]);
             });
}

TEST(Edits, ChangeTheirOwnLinesAlone) {
  const auto check = [](auto&& file, const Row& row) {
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
F | a = 1  / | t.put:a,22=2 t.put:a,22=1 | a =22  /
F | a=1 | t.put:a,2=2 t.add:b,2=1 | a=2b=2/
F | # head/a=1/# mid/c=3/ | t.insert:b,2=1 t.last=1 t.insert:d,4=1 | b=2/# head/a=1/# mid/d=4/c=3/
F | # only/ | t.insert:b,2=1 | b=2/# only/
F |   name  = v/ | t.rename:x=1 |   x  = v/
F | =v/   =w/ | t.rename:x=1 | x=v/   =w/
F |    =w/ | t.rename:x=1 |  x  =w/
F | #a/a=1/#b/ | t.delete=1 t.set:2=0 | #a/#b/
F |  a	=1 /#/ | t.set:1=1 t.set:a_longer_value_moves_the_text_of_a_line=2 |  a	=a longer value moves the text of a line /#/
)",
             [&check](const Row& row) {
               const FileTokens tokens = TokensOf(row[0][0]);
               if (row[0] == "F") return check(OpenConfigFile(tokens), row);
               check(OpenSectionFile(tokens), row);
             });
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
  using Configuration::ConfigFile;
  ForEachRow(table, [](const Row& row) {
    MultiSectionConfigFile sectioned("k= v\nsection abc {\nk= v\n}\n", false, true, false, true);
    ConfigFile flat("k= v\n", false, false, true, "=", "#", nullptr);
    std::istringstream parts(row[0]);
    string call;
    size_t size = 0;
    parts >> call >> size;
    const auto expect = [&](auto& file, auto current, auto get) {
      string key(2, '~'), value(4, '~');
      char* const keyBuffer = size == 0 ? nullptr : key.data();
      const size_t result = call == "name"      ? sectioned.GetSectionName(value.data(), size)
                            : call == "current" ? (file.*current)(keyBuffer, size, value.data(), 4)
                                                : (file.*get)(call.c_str(), value.data(), size);
      string told = Told(result) + " " + (call == "current" ? key : "") + value;
      std::replace(told.begin(), told.end(), '\0', '_');
      EXPECT_EQ(told, row[1]);
    };
    using F = MultiSectionFile;
    expect(sectioned, &F::GetSecCurrentEntry, &F::GetSectionEntry);
    expect(sectioned, &F::GetCurrentEntry, &F::GetEntry);
    expect(flat, &ConfigFile::GetCurrentEntry, &ConfigFile::GetEntry);
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

}  // namespace
