// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "FailingNew.h"
#include "Tree.h"

namespace {

using Node = ZelSectionHolder::TreeNode;

// The fields have no accessors; an explicit instantiation may name what is private.
Node* ParentOf(Node& node);
std::list<Node*>*& ChildrenOf(Node& node);
template <auto kParent, auto kChildren>
struct Fields {
  friend Node* ParentOf(Node& node) { return node.*kParent; }
  friend std::list<Node*>*& ChildrenOf(Node& node) { return node.*kChildren; }
};
template struct Fields<&Node::parent, &Node::children>;

// All that there is as text, `~` for null. Of a block all bytes up to the last that is not zero, so
// that remains behind a text show.
std::string Show(const char* block) {
  if (block == nullptr) return "~";
  const std::string bytes(block, 512);
  return bytes.substr(0, bytes.find_last_not_of('\0') + 1);
}
std::string Show(const ZelSectionEntry* entry) {
  if (entry == nullptr) return "~";
  return Show(entry->GetKeyName()) + Show(entry->GetValue()) + Show(entry->GetComment());
}
std::string Show(const ZelSection& section) {
  std::string image = Show(section.GetName());
  for (const ZelSectionEntry* entry : *section.GetEntryList())
    image.append(" ").append(Show(entry));
  return image;
}
std::string Show(Node& node, const Node* parent) {
  std::string image = ParentOf(node) == parent ? "" : "?";
  image += Show(*node.GetData());
  if (ChildrenOf(node) == nullptr) return image;
  image += "(";
  for (Node* child : *ChildrenOf(node)) image += Show(*child, &node);
  return image + ")";
}

// A letter for the name and for the key of each entry.
ZelSection Section(const std::string& form) {
  ZelSection section(form.substr(0, 1).c_str());
  for (const char key : form.substr(1)) section.AddEntry(std::string(1, key).c_str(), "", nullptr);
  return section;
}

bool Equal(const char* form, const char* otherForm) { return Section(form) == Section(otherForm); }

// A walk that goes through all but what is below `d`.
std::string trace;
bool Enter(ZelSection* section) {
  trace += section->GetName();
  return trace.back() != 'd';
}
bool Leave(ZelSection*) {
  trace += ")";
  return false;
}

// What the operations work on, and in `told` what they tell.
struct World {
  std::string a512 = std::string(512, 'a');
  ZelSectionEntry full{"k", "vwx", "c"}, part{nullptr, "w", nullptr};
  ZelSection some = Section("sklk"), blank;
  ZelSectionHolder tree, small, bare;
  Node *root = tree.GetRootItem(), *leaf = small.GetRootItem()->AddChild(blank);
  std::ptrdiff_t told = 0;

  World() {
    some.GetEntryList()->insert(At(1), nullptr);
    *root->GetData() = Section("rk");
    Node* a = root->AddChild(Section("a"));
    a->AddChild(Section("b"));
    a->AddChild(Section("d"))->AddChild(Section("c"));
    root->AddChild(Section("e"));
    ChildrenOf(*bare.GetRootItem()) = new std::list<Node*>;
    trace.clear();
  }
  ZelSection::EntryPosition At(int i) { return some.GetEntryList()->begin() + i; }
  void Tell(ZelSection::ConstEntryPosition position) { told = position - At(0); }
  std::vector<std::string> Image() {
    Node& other = *small.GetRootItem();
    return {Show(&full),       Show(&part),         Show(some), Show(blank),
            Show(*root, root), Show(other, &other), trace,      std::to_string(told)};
  }
};
enum Object { kFull, kPart, kSome, kBlank, kTree, kSmall, kTrace, kTold };

TEST(Records, EachOperationDoesItsOwnAndAFailedAllocationChangesNothing) {
  static const struct {
    void (*run)(World&);
    Object object;  // the one that changes
    std::string image;
    int told = 0;
  } rows[] = {
      {[](World& w) { w.part.SetKeyName("x"); }, kPart, "xw~"},
      {[](World& w) { w.part.SetValue(nullptr); }, kPart, "~w~"},
      {[](World& w) { w.part.SetValue(""); }, kPart, "~~"},
      {[](World& w) { w.part.SetComment(&w.a512[0]); }, kPart, "~w" + std::string(511, 'a')},
      {[](World& w) { w.full.SetValue("s"); }, kFull, "ksc"},
      {[](World& w) { w.full.SetValue(w.full.GetValue() + 1); }, kFull, "kwxc"},
      {[](World& w) { w.full.UndoComment(); }, kFull, "kvwx~"},
      {[](World& w) { w.part.UndoComment(); }, kPart, "~w~"},
      {[](World& w) { w.part = w.full; }, kPart, "kvwxc"},
      {[](World& w) { w.full = w.part; }, kFull, "kwc"},
      {[](World& w) { w.full = ZelSectionEntry("x", nullptr, "y"); }, kFull, "xvwxy"},
      {[](World& w) { w.part = ZelSectionEntry(w.full); }, kPart, "kvwxc"},
      {[](World& w) { w.told = w.full == ZelSectionEntry("K", "VWx", "C"); }, kTold, "1"},
      {[](World& w) { w.told = w.full == ZelSectionEntry("l", "vwx", "c"); }, kTold, "0"},
      {[](World& w) { w.told = w.full == ZelSectionEntry("k", "vw", "c"); }, kTold, "0"},
      {[](World& w) { w.told = w.full == ZelSectionEntry("k", "vwx", ""); }, kTold, "0"},
      {[](World& w) { w.told = w.part == ZelSectionEntry(nullptr, "w", nullptr); }, kTold, "1"},
      {[](World& w) { w.told = w.part == ZelSectionEntry("", "w", nullptr); }, kTold, "0"},

      {[](World& w) { w.blank.SetName("x"); }, kBlank, "x"},
      {[](World& w) { w.some.SetName(nullptr); }, kSome, "s k~ ~ l~ k~"},
      {[](World& w) { w.some.SetName(w.some.GetName()); }, kSome, " k~ ~ l~ k~"},
      {[](World& w) { w.told = w.blank.AddEntry("x", nullptr, "y"); }, kBlank, "~ x~y", 1},
      {[](World& w) { w.told = w.blank.AddEntry(&w.full); }, kBlank, "~ kvwxc", 1},
      {[](World& w) { w.told = w.some.AddEntry(nullptr); }, kTold, "0"},
      {[](World& w) { w.Tell(w.some.InsertEntry(*w.At(0))); }, kSome, "s k~ ~ l~ k~ k~", 5},
      {[](World& w) { w.Tell(w.some.InsertEntry(&w.part, w.At(1))); }, kSome, "s k~ ~w~ ~ l~ k~",
       1},
      {[](World& w) { w.Tell(w.some.InsertEntry(nullptr, w.At(0))); }, kTold, "4"},
      {[](World& w) { w.Tell(w.some.RemoveEntry(w.At(0))); }, kSome, "s ~ l~ k~", 0},
      {[](World& w) { w.Tell(w.some.RemoveEntry(w.At(1))); }, kSome, "s k~ l~ k~", 1},
      {[](World& w) { w.Tell(w.some.RemoveEntry(w.some.EndEntry())); }, kTold, "4"},
      {[](World& w) { w.Tell(w.some.RemoveEntry(*w.At(3))); }, kSome, "s ~ l~ k~", 0},
      {[](World& w) { w.Tell(w.some.RemoveEntry(&w.full)); }, kTold, "4"},
      {[](World& w) { w.Tell(w.some.FindEntry(*w.At(2))); }, kTold, "2"},
      {[](World& w) { w.Tell(w.some.FindEntry(nullptr)); }, kTold, "4"},
      {[](World& w) { w.some.ClearEntryList(); }, kSome, "s"},
      {[](World& w) { w.blank = w.some; }, kBlank, "s k~ l~ k~"},
      {[](World& w) { w.blank = ZelSection(w.some); }, kBlank, "s k~ l~ k~"},
      {[](World& w) { w.some = Section("tx"); }, kSome, "t k~ ~ l~ k~ x~"},
      {[](World& w) { w.some = w.blank; }, kTold, "0"},
      {[](World& w) { w.told = w.some == w.some; }, kTold, "1"},
      {[](World& w) { w.told = Equal("sk", "SK"); }, kTold, "1"},
      {[](World& w) { w.told = Equal("sk", "tk"); }, kTold, "0"},
      {[](World& w) { w.told = Equal("sk", "sl"); }, kTold, "0"},
      {[](World& w) { w.told = Equal("sk", "s"); }, kTold, "0"},
      {[](World& w) { w.told = Equal("s", "sk"); }, kTold, "0"},
      {[](World& w) { w.told = Equal("sAZaz", "sazAZ"); }, kTold, "1"},
      {[](World& w) { w.told = Equal("s[", "s{") + Equal("s@", "s`"); }, kTold, "0"},
      {[](World& w) { w.told = Equal("s\xC4", "s\xE4"); }, kTold, "0"},
      {[](World& w) { w.told = w.blank == w.blank; }, kTold, "0"},
      {[](World& w) { w.told = w.blank == ZelSection(""); }, kTold, "0"},

      {[](World& w) { w.leaf->AddChild(w.some); }, kSmall, "~(~(s k~ l~ k~))"},
      {[](World& w) { w.root->AddChild(*w.root->GetData()); }, kTree, "r k~(a(bd(c))er k~)"},
      {[](World& w) { w.small = ZelSectionHolder(w.tree); }, kSmall, "r k~(ae)"},
      {[](World& w) { w.small = w.tree; }, kSmall, "r k~(a(bd(c))e)"},
      {[](World& w) { w.tree = w.small; }, kTree, "r k~(~)"},
      {[](World& w) { w.told = w.tree.DeleteAllItems(); }, kTree, "r k~"},
      {[](World& w) { w.told = w.bare.Empty() + ZelSectionHolder(w.bare).Empty(); }, kTold, "0"},
      {[](World& w) { w.told = ZelSectionHolder().Empty(); }, kTold, "1"},
      {[](World& w) { w.told = !ParentOf(*ZelSectionHolder(w.tree).GetRootItem()); }, kTold, "1"},
      {[](World& w) { w.root->Traverse(Enter, Leave); }, kTrace, "rab)d)e))"},
      {[](World& w) { w.root->Traverse(Enter); }, kTrace, "rabde"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const std::vector<std::string> before = World().Image();
    std::vector<std::string> after = before;
    after[kTold] = std::to_string(row.told);
    after[row.object] = row.image;
    FailingNew::ForEachAllocationOn<World>(row.run, [&](World& world, bool failed) {
      EXPECT_EQ(world.Image(), failed ? before : after);
    });
  }
}

TEST(Records, BlocksAreMadeOnceAndNothingForAnAssignmentToItself) {
  const auto assign = [](World& w) {
    w.full = w.part;
    w.some = *&w.some;
    w.tree = *&w.tree;
  };
  EXPECT_EQ(FailingNew::ForEachAllocationOn<World>(assign, [](World&, bool) {}), 0);
}

}  // namespace
