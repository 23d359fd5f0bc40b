// SPDX-License-Identifier: MIT
// The scenarios of section records and of their tree, and what does not fit into one.
#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "FailingNew.h"
#include "Scenarios.h"
#include "Tree.h"

namespace {

using Scenarios::ResultText;

using Node = ZelSectionHolder::TreeNode;

const char* Given(const std::string& text) { return text == "~" ? nullptr : text.c_str(); }

ZelSectionEntry* NewEntry(const std::string& text) {
  if (text == "null") return nullptr;
  std::istringstream parts(text + "/~/~");
  std::string key, value, comment;
  std::getline(std::getline(std::getline(parts, key, '/'), value, '/'), comment, '/');
  return new ZelSectionEntry(Given(key), Given(value), Given(comment));
}

// All that the block holds up to the last byte that is not zero: remains of another text show.
std::string Text(const char* block) {
  if (block == nullptr) return "~";
  const std::string bytes(block, 512);
  return bytes.substr(0, bytes.find_last_not_of('\0') + 1);
}
std::string Text(const ZelSectionEntry* entry) {
  if (entry == nullptr) return "null";
  std::string text = Text(entry->GetKeyName()) + '/' + Text(entry->GetValue()) + '/';
  text += Text(entry->GetComment());
  while (text.ends_with("/~")) text.resize(text.size() - 2);
  return text;
}
std::string Text(const ZelSection& section) {
  std::string text = section.GetName() == nullptr ? "" : Text(section.GetName()) + ':';
  for (const auto* entry : *section.GetEntryList()) {
    text += (text.empty() ? "" : " ") + Text(entry);
  }
  return text;
}

// A tree made of its text, and the records in it that calls go to.
struct Records {
  explicit Records(const std::string& text) {
    std::vector<Node*> path = {node};
    std::istringstream words(text);
    for (std::string word; words >> word;) {
      if (const std::size_t level = word.find_first_not_of('>'); level > 0) {
        path.resize(level);
        path.push_back(path.back()->AddChild(ZelSection()));
        word.erase(0, level);
      }
      ZelSection& last = *path.back()->GetData();
      if (word == "node:") node = path.back();
      if (word.ends_with(':')) last.SetName(word.substr(0, word.size() - 1).c_str());
      if (!word.ends_with(':')) last.GetEntryList()->push_back(NewEntry(word));
    }
    if (!section->GetEntryList()->empty()) entry = section->GetEntryList()->front();
  }
  ZelSection::EntryPosition At(int index) { return section->GetEntryList()->begin() + index; }
  // The text of the node and of what is below it, but not below a section with the text `stopAt`.
  std::string Walk(const std::string& stopAt) const {
    trace.clear();
    stop = stopAt;
    depth = 0;
    const auto enter = [](ZelSection* at) {
      const std::string text = ::Text(*at);
      trace.append(trace.empty() ? "" : " ").append(depth, '>').append(text);
      if (text == stop) return false;
      ++depth;
      return true;
    };
    const auto leave = [](ZelSection*) {
      --depth;
      return false;  // is ignored
    };
    node->Traverse(enter, leave);
    return depth == 0 ? trace : trace + " (not left)";
  }
  std::string Text() {
    node = tree.GetRootItem();
    return Walk("nowhere");
  }

  ZelSectionHolder tree;
  Node* node = tree.GetRootItem();  // or the one with that name
  ZelSection* section = tree.GetRootItem()->GetData();
  ZelSectionEntry* entry = nullptr;  // the first one of the section

 private:
  // Of the walk under way, with room for each: to grow in a scenario would look like a leak.
  static inline std::string trace = std::string(1000, ' '), stop;
  static inline std::size_t depth = 0;
};

// The records of a row, and what its call takes.
struct Fixture : Records {
  Fixture(const std::string& before, const std::string& given) : Records(before), other(given) {}
  Records other;
};

std::string ResultText(Fixture&, Node*) { return ""; }
std::string ResultText(Fixture&, const ZelSectionHolder&) { return ""; }
std::string ResultText(Fixture& on, ZelSection::ConstEntryPosition position) {
  if (position == on.section->EndEntry()) return "end";
  return std::to_string(position - on.At(0));
}

const std::vector<Scenarios::Call<Fixture>> kCalls = {
    SCENARIO_CALL(entry->SetKeyName(text)),
    SCENARIO_CALL(entry->SetKeyName(nullptr)),
    SCENARIO_CALL(entry->SetValue(text)),
    SCENARIO_CALL(entry->SetValue(nullptr)),
    SCENARIO_CALL(entry->SetValue(on.entry->GetValue() + 2)),
    SCENARIO_CALL(entry->SetComment(text)),
    SCENARIO_CALL(entry->SetComment(nullptr)),
    SCENARIO_CALL(entry->UndoComment()),
    SCENARIO_CALL(entry->operator=(*on.other.entry)),
    SCENARIO_CALL(entry->operator=(ZelSectionEntry(*on.other.entry))),
    SCENARIO_CALL(entry->operator=(*on.entry)),
    SCENARIO_CALL(entry->operator==(*on.other.entry)),
    SCENARIO_CALL(section->SetName(text)),
    SCENARIO_CALL(section->SetName(nullptr)),
    SCENARIO_CALL(section->SetName(on.section->GetName())),
    SCENARIO_CALL(section->AddEntry(on.entry->GetKeyName(), nullptr, text)),
    SCENARIO_CALL(section->AddEntry(on.other.entry)),
    SCENARIO_CALL(section->InsertEntry(on.other.entry)),
    SCENARIO_CALL(section->InsertEntry(on.other.entry, on.At(number))),
    SCENARIO_CALL(section->RemoveEntry(on.other.entry)),
    SCENARIO_CALL(section->RemoveEntry(*on.At(number))),
    SCENARIO_CALL(section->RemoveEntry(on.At(number))),
    SCENARIO_CALL(section->FindEntry(on.other.entry)),
    SCENARIO_CALL(section->ClearEntryList()),
    SCENARIO_CALL(section->operator=(*on.other.section)),
    SCENARIO_CALL(section->operator=(*on.section)),
    SCENARIO_CALL(section->operator==(*on.other.section)),
    SCENARIO_CALL(node->AddChild(*on.other.section)),
    SCENARIO_CALL(node->AddChild(*on.node->GetData())),
    SCENARIO_CALL(Walk(text)),
    SCENARIO_CALL(tree.Empty()),
    SCENARIO_CALL(tree.DeleteAllItems()),
    SCENARIO_CALL(tree.operator=(on.other.tree)),
    SCENARIO_CALL(tree.operator=(ZelSectionHolder(on.other.tree))),
    SCENARIO_CALL(tree.operator=(on.tree))};

// `RECORDS | CALL = RESULT | RECORDS AFTERWARDS`, which are as before where an allocation fails.
void Run(Scenarios::Scanner& line, Scenarios::Scanner) {
  Scenarios::Arguments with;
  const std::string before = line.Text();
  line.Need("|");
  const auto& call = line.TakeCall(kCalls, with);
  const std::string result = line.Take("=") ? line.Column() : "";
  const std::string after = line.Take("|") ? line.Text() : before;
  std::optional<Fixture> on(std::in_place, before, with.text);
  FailingNew::ForEachAllocation([&] { Compare("result", result, call.run(*on, with)); },
                                [&](bool failed) {
                                  Compare("records", Quoted(failed ? before : after),
                                          Quoted(on->Text()));
                                  on.emplace(before, with.text);
                                });
}

const bool kRules = Scenarios::Register("SectionRecords", "records.txt", Run);

TEST(SectionEntry, ATextKeepsItsBlock) {
  ZelSectionEntry entry("k", "v", nullptr);
  const char* const value = entry.GetValue();
  entry.SetValue(std::string(511, 'a').c_str());
  entry = ZelSectionEntry("k", "w", nullptr);
  EXPECT_EQ(entry.GetValue(), value);
}

TEST(TreeWalk, VisitsWhatACallbackAdds) {
  static Records made("r: >a: >>node: >>c: >>>d: >e:");
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
