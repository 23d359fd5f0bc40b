// SPDX-License-Identifier: MIT
// The scenarios of section records and of their tree, and what does not fit into one.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "Scenarios.h"
#include "Tree.h"

namespace {

using Node = ZelSectionHolder::TreeNode;

const char* Given(const std::string& text) { return text == "~" ? nullptr : text.c_str(); }

ZelSectionEntry Entry(const std::string& text) {
  std::istringstream parts(text + "/~/~");
  std::string key, value, comment;
  std::getline(std::getline(std::getline(parts, key, '/'), value, '/'), comment, '/');
  return {Given(key), Given(value), Given(comment)};
}

// All that the block holds up to the last byte that is not zero: remains of another text show.
std::string Text(const char* block) {
  if (block == nullptr) return "~";
  const std::string bytes(block, 512);
  return bytes.substr(0, bytes.find_last_not_of('\0') + 1);
}
std::string Text(const ZelSectionEntry& entry) {
  std::string text = Text(entry.GetKeyName()) + '/' + Text(entry.GetValue()) + '/';
  text += Text(entry.GetComment());
  while (text.ends_with("/~")) text.resize(text.size() - 2);
  return text;
}
std::string Text(const ZelSection& section) {
  std::string text = Text(section.GetName()) + ':';
  for (const auto* entry : *section.GetEntryList()) {
    text.append(" ").append(entry == nullptr ? "null" : Text(*entry));
  }
  return text;
}

// A tree made of its text, and the records in it that calls go to.
struct Fixture {
  explicit Fixture(const std::string& text) {
    std::istringstream rest(text.find(':') == text.npos ? "~: " + text : text);
    Fill(node, rest);
    if (!section->GetEntryList()->empty()) entry = section->GetEntryList()->front();
  }
  ZelSection::EntryPosition At(int index) { return section->GetEntryList()->begin() + index; }
  // The text of what is below the node, but not below the section with the text `stop`.
  std::string Walk(const std::string& stopAt) const {
    trace.clear();
    stop = stopAt;
    node->Traverse(Enter, Leave);
    return trace;
  }
  std::string Text() {
    node = tree.GetRootItem();
    return Walk("");
  }

  ZelSectionHolder tree;
  Node* node = tree.GetRootItem();  // or the one with that name
  ZelSection* section = tree.GetRootItem()->GetData();
  ZelSectionEntry* entry = nullptr;  // the first one of the section

 private:
  void Fill(Node* at, std::istringstream& rest) {
    std::string name, word;
    std::getline(rest, word, '(');
    std::istringstream words(word);
    std::getline(words, name, ':');
    at->GetData()->SetName(Given(name));
    while (words >> word) {
      at->GetData()->GetEntryList()->push_back(word == "null" ? nullptr
                                                              : new ZelSectionEntry(Entry(word)));
    }
    if (name == "node") node = at;
    for (char next; rest >> next && next != ')';) {
      rest.putback(next);
      Fill(at->AddChild(ZelSection()), rest);
    }
  }
  static bool Enter(ZelSection* at) {
    if (!trace.empty() && trace.back() != '(') trace += ' ';
    trace += ::Text(*at);
    if (::Text(*at) == stop) return false;
    trace += '(';
    return true;
  }
  static bool Leave(ZelSection*) {
    trace += ')';
    return false;  // is ignored
  }
  static inline std::string trace = std::string(1000, ' '), stop;  // of the walk under way
};

struct Arguments {
  const char* text;
  int index;
  Fixture other;
};

std::string ResultText(Fixture&, bool result) { return result ? "true" : "false"; }
std::string ResultText(Fixture&, const std::string& result) { return result; }
std::string ResultText(Fixture&, Node*) { return ""; }
std::string ResultText(Fixture&, const ZelSectionHolder&) { return ""; }
std::string ResultText(Fixture& on, ZelSection::ConstEntryPosition position) {
  if (position == on.section->EndEntry()) return "end";
  return std::to_string(position - on.At(0));
}

struct Call {
  std::string text, (*run)(Fixture&on, Arguments&with);
};
#define CALL(call)                                                 \
  {                                                                \
#call, [](auto& on, auto& with) -> std::string {                 \
      [[maybe_unused]] auto& [text, index, other] = with;   \
      if constexpr (std::is_void_v<decltype(on.call)>) {             \
        on.call;                                                     \
        return "";                                                   \
      } else {                                                       \
        return ResultText(on, on.call);                              \
      }                                                              \
    } \
  }
const std::vector<Call> kCalls = {CALL(entry->SetKeyName(text)),
                                  CALL(entry->SetValue(text)),
                                  CALL(entry->SetValue(on.entry->GetValue() + 2)),
                                  CALL(entry->SetComment(text)),
                                  CALL(entry->UndoComment()),
                                  CALL(entry->operator=(*other.entry)),
                                  CALL(entry->operator=(ZelSectionEntry(*other.entry))),
                                  CALL(entry->operator=(*on.entry)),
                                  CALL(entry->operator==(*other.entry)),
                                  CALL(section->SetName(text)),
                                  CALL(section->SetName(on.section->GetName())),
                                  CALL(section->AddEntry(on.entry->GetKeyName(), nullptr, text)),
                                  CALL(section->AddEntry(other.entry)),
                                  CALL(section->AddEntry(on.entry)),
                                  CALL(section->InsertEntry(other.entry)),
                                  CALL(section->InsertEntry(other.entry, on.At(index))),
                                  CALL(section->RemoveEntry(other.entry)),
                                  CALL(section->RemoveEntry(*on.At(index))),
                                  CALL(section->RemoveEntry(on.At(index))),
                                  CALL(section->FindEntry(other.entry)),
                                  CALL(section->ClearEntryList()),
                                  CALL(section->operator=(*other.section)),
                                  CALL(section->operator=(*on.section)),
                                  CALL(section->operator==(*other.section)),
                                  CALL(section->operator==(*on.section)),
                                  CALL(node->AddChild(*other.section)),
                                  CALL(node->AddChild(*on.node->GetData())),
                                  CALL(Walk(text)),
                                  CALL(tree.Empty()),
                                  CALL(tree.DeleteAllItems()),
                                  CALL(tree.operator=(other.tree)),
                                  CALL(tree.operator=(ZelSectionHolder(other.tree))),
                                  CALL(tree.operator=(on.tree))};

// `RECORDS | CALL = RESULT | RECORDS AFTERWARDS`, which are as before where an allocation fails.
void Run(Scenarios::Scanner& line, Scenarios::Scanner) {
  static std::string before;
  struct OfText : Fixture {
    OfText() : Fixture(before) {}
  };
  before = line.Text();
  line.Need("|");
  Scenarios::Literals literals;
  const Call& call = line.TakeCall(kCalls, literals);
  const std::string result = line.Take("=") ? line.Column() : "";
  const std::string after = line.Take("|") ? line.Text() : before;
  const int index = std::atoi(literals["index"].c_str());
  literals.erase("index");
  const std::string given = literals.empty() ? "" : literals.begin()->second;
  Arguments with = {Given(given), index, Fixture(given)};
  std::string said;
  FailingNew::ForEachAllocationOn<OfText>(
      [&](Fixture& on) { said = call.run(on, with); },
      [&](Fixture& on, bool failed) {
        Compare("text", Quoted(Fixture(failed ? before : after).Text()), Quoted(on.Text()));
        Compare("other text", Quoted(Fixture(given).Text()), Quoted(with.other.Text()));
        if (!failed) Compare("result", result, std::exchange(said, ""));
      });
}

const bool kRules = Scenarios::Register("SectionRecords", "records.txt", Run);

TEST(SectionEntry, ATextKeepsItsBlock) {
  ZelSectionEntry entry = Entry("k/v");
  const ZelSectionEntry other = Entry("k/w");
  const char* const value = entry.GetValue();
  const std::string wide(511, 'a');
  const auto change = [&] {
    entry.SetValue(wide.c_str());
    entry = other;
  };
  EXPECT_EQ(FailingNew::ForEachAllocation(change, [](bool) {}), 0);
  EXPECT_EQ(entry.GetValue(), value);
}

TEST(TreeWalk, VisitsWhatACallbackAdds) {
  static Fixture made("r:(a:(node:() c:(d:())) e:())");
  static std::string names;
  made.tree.GetRootItem()->Traverse([](ZelSection* section) {
    names += section->GetName();
    if (names == "ranode") made.node->AddChild("x");   // below the node
    if (names == "ranodex") made.node->AddChild("y");  // after the node
    return names.back() != 'c';
  });
  EXPECT_EQ(names, "ranodexyce") << "not below the node that gives false";
}

// No call goes down by recursion: the stack has no room for it.
TEST(TreeWalk, ReachesTheBottomOfADeepTree) {
  constexpr int kDepth = 1000000;
  static int entered = 0, left = 0;
  ZelSectionHolder tree, assigned;
  Node* node = tree.GetRootItem();
  for (int i = 0; i < kDepth; ++i) node = node->AddChild(ZelSection());
  assigned = tree;
  assigned = tree;  // releases the former copies
  tree.DeleteAllItems();
  assigned.GetRootItem()->Traverse([](ZelSection*) { return ++entered > 0; },
                                   [](ZelSection*) { return ++left > 0; });
  EXPECT_EQ(entered, kDepth + 1);
  EXPECT_EQ(left, kDepth + 1);
}

}  // namespace
