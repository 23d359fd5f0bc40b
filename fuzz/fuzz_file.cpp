// SPDX-License-Identifier: MIT
// Flat and sectioned files, step by step beside a model. The input decides on the tokens, on the
// content, and on each step and its arguments; each allocation of each step fails once.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "../tests/FailingNew.h"
#include "../tests/FileModel.h"
#include "../tests/TestFiles.h"

namespace {

using std::size_t;
using std::string;

constexpr FileTokens kTokens[] = {
    {"", "", "", "=", "#", ""},
    {"", "", "", ":=", "#", "\t"},
    {"", "", "", " = ", "//", ""},
    {"", "", "", "\t", "#", "  "},
    {"", "", "", "=", "//", "a="},
    {"", "", "", "=", "", "#"},
    {"", "", "", "==", "#", " "},
    {"", "", "", "", "#", ""},
    {"section", "{\n", "}\n", "=", "#", ""},
    {"section", "\n{\n", "\n}\n", "=", "#", ""},
    {"", "\nBEGIN\n", "END\n", ":=", "//", "\t"},
    {"a", "\n{", "\n}", "==", ";;", ""},
    {"section", "{{", "}}", "=", "#", ""},
    {"{\n", " {\n", "}\n", " ", "#", "\t"},  // the keyword and a separator in the start token
};

// Of the content of a file; some letters stand for tokens.
constexpr const char* kPieces[] = {
    "a",  "b",   " ",  "=",  "#",   "\xA0",   "S",     "K a<",  "b<",           "<",        "a/",
    ">",  ">",   " >", "#>", " #>", "a= 1 /", "=v/",   " b=2/", "  =/",         "k=>",      "k=<",
    " /", "\r/", "/",  "/",  "0",   "0=/",    "L=>1/", "Lx==/", "\xEF\xBB\xBF", "\xFF=\x85"};

/// Decisions taken from an input, zeros behind its end.
struct Choices {
  const std::uint8_t *at, *end;
  bool More() const { return at != end; }
  size_t Below(size_t limit) {
    size_t n = 0;
    for (size_t rest = limit - 1; rest > 0 && More(); rest >>= 8) n = n << 8 | *at++;
    return n % limit;
  }
  const auto& OneOf(const auto& list) { return list[Below(std::size(list))]; }
  /// Up to `most` pieces, in which some letters stand for tokens; now and then a long run.
  string Text(size_t most, const auto& pieces, const FileTokens& t) {
    string text;
    for (size_t n = Below(most + 1); n > 0; --n) {
      const size_t rare = Below(256);
      if (rare < 3) text.append(rare == 0 ? 1000 + Below(40) : Below(60), " x"[Below(2)]);
      for (const char c : string(OneOf(pieces))) {
        const size_t token = string("KS<>=#/").find(c);
        const char* const tokens[] = {
            t.keyword, t.start + (t.start[0] == '\n'), t.start, t.stop, t.separator, t.comment,
            "\n"};
        text += token != string::npos ? tokens[token]
                                      : string(c == 'L' ? 1020 : 1, c == '0' ? '\0' : c);
      }
    }
    return text;
  }
};

void Require(bool holds, const string& what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what.c_str());
  std::abort();
}

/// One call, on a file and on its model.
template <class F>
struct Step {
  string name;    // "e." of the current section's entries, "t." of the top level
  string policy;  // c ends the stay first, s settles the section, e the walk's own cursor
  std::function<string(F& f, const char* a, const char* b)> run;
  string (FileModel::*model)(FileModel::Walk&, const string&, const string&);

  string On(FileModel& m, const string& a, const string& b) const {
    const auto has = [this](char c) { return policy.find(c) != string::npos; };
    if (has('c')) m.stay = false;
    if (has('s')) m.sections.Settle();
    m.nowhere = {{}, 0};
    auto* const inside = m.sections.IsAtRecord() ? &m.sections.Current().entries : &m.nowhere;
    auto* const walk = name[1] != '.' ? &m.sections : name[0] == 't' ? &m.top : inside;
    if (has('e')) walk->Settle();
    return (m.*model)(*walk, a, b);
  }
};

/// All that moves, reads or edits, of what a file `F` has.
template <class F>
const std::vector<Step<F>>& Steps() {
  using A = const char*;
  using C = OpenConfigFile;
  using S = OpenSectionFile;
  using M = FileModel;
  static const std::vector<Step<F>> steps = [] {
    std::vector<Step<F>> s;
    const auto add = [&s](A name, A policy, auto model, auto call) {
      if constexpr (std::is_invocable_v<decltype(call), F&, A, A>) {
        s.push_back({name, policy, [=](F& f, A a, A b) { return Told(call(f, a, b)); }, model});
      }
    };
    add("t.count", "", &M::Count, [](F& f, A, A) { return f.GetEntryCount(); });
    add("t.goto", "c", &M::Goto, [](F& f, A a, A) { return f.GotoEntry(a); });
    add("t.next", "", &M::Next, [](F& f, A, A) { return f.GotoNextEntry(); });
    add("t.prev", "c", &M::Prev, [](F& f, A, A) { return f.GotoPreviousEntry(); });
    add("t.first", "c", &M::First, [](F& f, A, A) { return f.GotoFirstEntry(); });
    add("t.last", "c", &M::Last, [](F& f, A, A) { return f.GotoLastEntry(); });
    add("t.get", "c", &M::Get, [](F& f, A a, A) { return f.Get(&F::GetEntry, a); });
    add("t.read", "e", &M::Read, [](F& f, A, A) { return f.Read(&F::GetCurrentEntry); });
    add("t.rename", "e", &M::Rename, [](F& f, A a, A) { return f.RenameEntry(a); });
    add("t.add", "c", &M::Add, [](F& f, A a, A b) { return f.AddEntry(a, b, false); });
    add("t.front", "c", &M::AddFront, [](F& f, A a, A b) { return f.AddEntry(a, b, true); });
    add("t.insert", "ce", &M::Insert, [](F& f, A a, A b) { return f.InsertEntry(a, b); });
    add("t.put", "c", &M::Put, [](F& f, A a, A b) { return f.SetEntry(a, b); });
    add("t.deletekey", "c", &M::DeleteKey, [](F& f, A a, A) { return f.DeleteEntry(a); });
    add("t.delete", "e", &M::Delete, [](F& f, A, A) { return f.DeleteCurrentEntry(); });
    add("clear", "", &M::ClearAll, [](F& f, A, A) { return f.ClearAll(), true; });
    add("t.restart", "c", &M::Restart, [](C& f, A, A) { return f.Restart(), true; });
    add("t.set", "e", &M::SetTop, [](C& f, A, A b) { return f.SetCurrentEntry(b); });
    add("next", "", &M::Next, [](S& f, A, A) { return f.GotoNextSection(); });
    add("prev", "c", &M::Prev, [](S& f, A, A) { return f.GotoPreviousSection(); });
    add("first", "c", &M::First, [](S& f, A, A) { return f.GotoFirstSection(); });
    add("last", "c", &M::Last, [](S& f, A, A) { return f.GotoLastSection(); });
    add("goto", "c", &M::Goto, [](S& f, A a, A) { return f.GotoSection(a); });
    add("count", "", &M::Count, [](S& f, A, A) { return f.GetSectionCount(); });
    add("name", "ce", &M::Name, [](S& f, A, A) { return f.Name(); });
    add("rename", "ce", &M::RenameSection, [](S& f, A a, A) { return f.SetSectionName(a); });
    add("add", "c", &M::Add,
        [](S& f, A a, A) { return *a != '\0' ? f.AddSection(a, false) : f.AddSection(0); });
    add("front", "c", &M::AddFront, [](S& f, A a, A) { return f.AddSection(a, true); });
    add("insert", "e", &M::Insert, [](S& f, A a, A) { return f.InsertSection(a); });
    add("delete", "e", &M::DeleteSection, [](S& f, A, A) { return f.DeleteSection(); });
    add("deletename", "c", &M::DeleteName, [](S& f, A a, A) { return f.DeleteSection(a); });
    add("restart", "c", &M::Restart, [](S& f, A, A) { return f.Restart(), true; });
    add("e.count", "s", &M::Count, [](S& f, A, A) { return f.GetSecEntryCount(); });
    add("e.goto", "sc", &M::Goto, [](S& f, A a, A) { return f.GotoSecEntry(a); });
    add("e.next", "s", &M::Next, [](S& f, A, A) { return f.GotoSecNextEntry(); });
    add("e.prev", "sc", &M::Prev, [](S& f, A, A) { return f.GotoSecPrevEntry(); });
    add("e.first", "sc", &M::First, [](S& f, A, A) { return f.GotoSecFirstEntry(); });
    add("e.last", "sc", &M::Last, [](S& f, A, A) { return f.GotoSecLastEntry(); });
    add("e.restart", "c", &M::Restart, [](S& f, A, A) { return f.RestartSection(), true; });
    add("e.get", "sc", &M::Get, [](S& f, A a, A) { return f.Get(&S::GetSectionEntry, a); });
    add("e.read", "sce", &M::Read, [](S& f, A, A) { return f.Read(&S::GetSecCurrentEntry); });
    add("e.set", "c", &M::Set, [](S& f, A, A b) { return f.SetSecCurrentEntry(b); });
    add("e.rename", "sce", &M::Rename, [](S& f, A a, A) { return f.RenameSectionEntry(a); });
    add("e.add", "sc", &M::Add, [](S& f, A a, A b) { return f.AddSectionEntry(a, b); });
    add("e.put", "sc", &M::Put, [](S& f, A a, A b) { return f.SetSectionEntry(a, b); });
    add("e.insert", "s", &M::InsertIn,
        [](S& f, A a, A b) { return f.InsertSectionEntry(a, b, false); });
    add("e.replace", "s", &M::Replace,
        [](S& f, A a, A b) { return f.InsertSectionEntry(a, b, true); });
    add("e.deletekey", "sc", &M::DeleteKey, [](S& f, A a, A) { return f.DeleteSectionEntry(a); });
    add("e.delete", "c", &M::Delete, [](S& f, A, A) { return f.DeleteSectionEntry(); });
    return s;
  }();
  return steps;
}

/// A file and its model, through the whole input.
template <class F>
struct Walk {
  const FileTokens& tokens;
  Choices& choices;
  F file{tokens};
  FileModel model{tokens};

  void Compare(const string& result, const string& expected, const string& context) {
    if (expected == "!" && file.lines == nullptr) return;
    Require(file.lines != nullptr, context + "\nreleased: " + result);
    const auto all = [](auto& f) { return f.Image() + "\n" + f.Picture() + "\n" + f.Capacities(); };
    const string is = result + "\n" + all(file), right = expected + "\n" + all(model);
    Require(is == right, context + "\n--\n" + is + "\n--\n" + right);
  }

  void Step() {
    static const char* const parts[] = {"a", "b", "key", " ", "\t", "=", "#", "\v", "v\xE4", "a="};
    static const string names[] = {"", "a", "b", "k", "a b", string(40, 'n')};
    static const string values[] = {
        "", "1", " 2", "3", string(40, 'v'), string(1021, 'v'), string(1022, 'v')};
    const ::Step<F>& step = choices.OneOf(Steps<F>());
    const bool odd = choices.Below(2) == 0;
    const string a = odd ? choices.Text(3, parts, tokens) : choices.OneOf(names);
    const string b = odd ? choices.Text(6, parts, tokens) : choices.OneOf(values);
    const string context = step.name + "(" + a + ", " + b + ")\n" + file.Image() + file.Picture();
    string result;
    FailingNew::ForEachAllocation(
        [&] { result = step.run(file, a.c_str(), b.c_str()); },
        [&](bool failed) { Require(!failed || file.Image() == model.Image(), context); });
    Compare(result, step.On(model, a.c_str(), b.c_str()), context);
  }

  /// Reads the file at `path` again, or takes its bytes as a text.
  void Read(string& path, string& other) {
    const string image = TestFiles::Read(path);
    const bool attaches = choices.Below(3) == 0;
    string result;
    FailingNew::ForEachAllocation(
        [&] {
          if (file.lines == nullptr) return;  // it was only the message that found no memory
          result = Outcome([&] {
            if (attaches) return Told(file.AttachToBuffer(image.c_str(), other.c_str()));
            return file.Reload(), Told(true);
          });
        },
        [&](bool failed) {
          if (!failed || file.lines == nullptr) return;
          Require(file.path == path, "path");
          Compare("", "", "put back");
          Step();  // on what has been put back
        });
    Compare(result, attaches ? model.Attach(image.c_str()) : model.Load(image), image);
    if (attaches) std::swap(path, other);
  }

  void Run() {
    string path = TestFiles::Path("file"), other = TestFiles::Path("other");
    const size_t most = choices.Below(2) == 0 ? 30 : 3;
    TestFiles::Write(path, choices.Text(most, kPieces, tokens) + tokens.stop);
    file.AttachToBuffer("", path.c_str());
    model.Attach("");
    for (Read(path, other); file.lines != nullptr && choices.More();) {
      Step();
      if (choices.Below(30) != 0) continue;
      std::filesystem::remove(path);  // or the save would wait for the disk
      Require(file.Save(choices.Below(2) == 0, nullptr), "saved");
      Require(TestFiles::Read(path) == model.Image(), "what was saved");
      Read(path, other);
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  Choices choices = {data, data + size};
  const FileTokens& tokens = choices.OneOf(kTokens);
  if (*tokens.start == '\0') Walk<OpenConfigFile>{tokens, choices}.Run();
  if (*tokens.start != '\0') Walk<OpenSectionFile>{tokens, choices}.Run();
  return 0;
}
