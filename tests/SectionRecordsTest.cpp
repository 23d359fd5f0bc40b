// SPDX-License-Identifier: MIT
// The scenarios of section records and of their tree, and what does not fit into one.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "FailingNew.h"
#include "Scenarios.h"
#include "Tree.h"

namespace {

using Scenarios::ResultText;

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

// The text of a tree for that of an entry or a section.
std::string Whole(const std::string& text) {
  const std::string section = text.find(':') == text.npos ? "~: " + text : text;
  return section.ends_with(')') ? section : section + "()";
}

// A tree made of its text, and the records in it that calls go to.
struct Fixture {
  explicit Fixture(const std::string& text) {
    std::istringstream rest(Whole(text));
    Fill(node, rest);
    if (!section->GetEntryList()->empty()) entry = section->GetEntryList()->front();
  }
  ZelSection::EntryPosition At(int index) { return section->GetEntryList()->begin() + index; }
  // The text of the node and of what is below it, but not below a section with the text `stopAt`.
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
  Fixture* other = nullptr;          // made of what a call takes

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
  // Of the walk under way, with room for each: to grow between scenarios would look like a leak.
  static inline std::string trace = std::string(1000, ' '), stop;
};

std::string ResultText(Fixture&, Node*) { return ""; }
std::string ResultText(Fixture&, const ZelSectionHolder&) { return ""; }
std::string ResultText(Fixture& on, ZelSection::ConstEntryPosition position) {
  if (position == on.section->EndEntry()) return "end";
  return std::to_string(position - on.At(0));
}

const std::vector<Scenarios::Call<Fixture>> kCalls = {
    SCENARIO_CALL(entry->SetKeyName(text)),
    SCENARIO_CALL(entry->SetValue(text)),
    SCENARIO_CALL(entry->SetValue(on.entry->GetValue() + 2)),
    SCENARIO_CALL(entry->SetComment(text)),
    SCENARIO_CALL(entry->UndoComment()),
    SCENARIO_CALL(entry->operator=(*on.other->entry)),
    SCENARIO_CALL(entry->operator=(ZelSectionEntry(*on.other->entry))),
    SCENARIO_CALL(entry->operator=(*on.entry)),
    SCENARIO_CALL(entry->operator==(*on.other->entry)),
    SCENARIO_CALL(section->SetName(text)),
    SCENARIO_CALL(section->SetName(on.section->GetName())),
    SCENARIO_CALL(section->AddEntry(on.entry->GetKeyName(), nullptr, text)),
    SCENARIO_CALL(section->AddEntry(on.other->entry)),
    SCENARIO_CALL(section->AddEntry(on.entry)),
    SCENARIO_CALL(section->InsertEntry(on.other->entry)),
    SCENARIO_CALL(section->InsertEntry(on.other->entry, on.At(number))),
    SCENARIO_CALL(section->RemoveEntry(on.other->entry)),
    SCENARIO_CALL(section->RemoveEntry(*on.At(number))),
    SCENARIO_CALL(section->RemoveEntry(on.At(number))),
    SCENARIO_CALL(section->FindEntry(on.other->entry)),
    SCENARIO_CALL(section->ClearEntryList()),
    SCENARIO_CALL(section->operator=(*on.other->section)),
    SCENARIO_CALL(section->operator=(*on.section)),
    SCENARIO_CALL(section->operator==(*on.other->section)),
    SCENARIO_CALL(section->operator==(*on.section)),
    SCENARIO_CALL(node->AddChild(*on.other->section)),
    SCENARIO_CALL(node->AddChild(*on.node->GetData())),
    SCENARIO_CALL(Walk(text)),
    SCENARIO_CALL(tree.Empty()),
    SCENARIO_CALL(tree.DeleteAllItems()),
    SCENARIO_CALL(tree.operator=(on.other->tree)),
    SCENARIO_CALL(tree.operator=(ZelSectionHolder(on.other->tree))),
    SCENARIO_CALL(tree.operator=(on.tree))};

// `RECORDS | CALL = RESULT | RECORDS AFTERWARDS`, which are as before where an allocation fails.
void Run(Scenarios::Scanner& line, Scenarios::Scanner) {
  static std::string before, given;
  struct Pair : Fixture {
    Pair() : Fixture(before) { other = &argument; }
    Fixture argument = Fixture(given);
  };
  before = line.Text();
  line.Need("|");
  Scenarios::Literals literals;
  const auto& call = line.TakeCall(kCalls, literals);
  const Scenarios::Arguments with(literals);
  const std::string result = line.Take("=") ? line.Column() : "";
  const std::string after = line.Take("|") ? line.Text() : before;
  given = with.text;
  const std::string other = Fixture(given).Text();
  std::string said;
  FailingNew::ForEachAllocationOn<Pair>(
      [&](Pair& on) { said = call.run(on, Given(given), with.number); },
      [&](Pair& on, bool failed) {
        Compare("text", Quoted(Whole(failed ? before : after)), Quoted(on.Text()));
        Compare("argument", other, on.argument.Text());
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
