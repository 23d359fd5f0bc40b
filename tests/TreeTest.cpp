// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "FailingNew.h"
#include "RecordTexts.h"
#include "Tree.h"

namespace {

using Node = ZelSectionHolder::TreeNode;
using RecordTexts::Section;
using RecordTexts::Text;

std::string trace, stop;  // of the walk under way

// Writes `r: k/v(a:() b:(c:()))`: a section, and what is below it in brackets. Not below `stop`.
bool Enter(ZelSection* section) {
  if (!trace.empty() && trace.back() != '(') trace += ' ';
  trace += Text(*section);
  if (Text(*section) == stop) return false;
  trace += '(';
  return true;
}
bool Leave(ZelSection*) {
  trace += ')';
  return false;  // is ignored
}

std::string TreeText(Node* top, const char* stopAt = "") {
  trace.clear();
  stop = stopAt;
  top->Traverse(Enter, Leave);
  return trace;
}

struct Fixture {
  ZelSectionHolder tree, target;
  Node *root = tree.GetRootItem(), *a = nullptr, *leaf = nullptr;
  Fixture() {
    *root->GetData() = Section("r: k/v");
    a = root->AddChild(Section("a: x"));
    leaf = a->AddChild(Section("b:"));
    a->AddChild(Section("c:"))->AddChild(Section("d:"));
    root->AddChild(Section("e:"));
    *target.GetRootItem()->GetData() = Section("t: old");
    target.GetRootItem()->AddChild(Section("f:"))->AddChild(Section("g:"));
  }
};
const char kTree[] = "r: k/v(a: x(b:() c:(d:())) e:())";
const char kTarget[] = "t: old(f:(g:()))";

TEST(Tree, IsEmptyWithoutAChild) {
  ZelSectionHolder tree;
  EXPECT_EQ(TreeText(tree.GetRootItem()), "~:()") << "a new tree is a blank root";
  EXPECT_TRUE(tree.Empty() && ZelSectionHolder(tree).Empty());
  EXPECT_EQ(Text(*tree.GetRootItem()->AddChild(Section("a: k"))->GetData()), "a: k");
  EXPECT_FALSE(tree.Empty() || ZelSectionHolder(tree).Empty());
  EXPECT_FALSE(tree.DeleteAllItems()) << "false in every case";
  EXPECT_TRUE(tree.Empty());
}

// Where an allocation fails, both trees are as before.
TEST(Tree, CallsOnATree) {
  static const struct {
    const char* rule;
    void (*call)(Fixture&);
    const char *tree, *target = kTarget;
  } rows[] = {
      {"a child is appended", [](Fixture& f) { f.root->AddChild(Section("z: y")); },
       "r: k/v(a: x(b:() c:(d:())) e:() z: y())"},
      {"a child with the node's own section",
       [](Fixture& f) { f.leaf->AddChild(*f.leaf->GetData()); },
       "r: k/v(a: x(b:(b:()) c:(d:())) e:())"},
      {"an assignment copies all", [](Fixture& f) { f.target = f.tree; }, kTree,
       "r: old k/v(a: x(b:() c:(d:())) e:())"},
      {"an empty tree leaves no nodes", [](Fixture& f) { f.target = ZelSectionHolder(); }, kTree,
       "t: old()"},
      {"an assignment to itself changes nothing", [](Fixture& f) { f.tree = *&f.tree; }, kTree},
      {"DeleteAllItems keeps the root's section", [](Fixture& f) { f.tree.DeleteAllItems(); },
       "r: k/v()"},
      {"a copy is one level deep", [](Fixture& f) { f.target = ZelSectionHolder(f.tree); }, kTree,
       "r: old k/v(a: x() e:())"},
  };
  trace.reserve(1000);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rule);
    FailingNew::ForEachAllocationOn<Fixture>(row.call, [&row](Fixture& f, bool failed) {
      EXPECT_EQ(TreeText(f.root), failed ? kTree : row.tree);
      EXPECT_EQ(TreeText(f.target.GetRootItem()), failed ? kTarget : row.target);
    });
  }
}

TEST(TreeWalk, GoesFromANodeToAllBelowInOrder) {
  Fixture f;
  EXPECT_EQ(TreeText(f.root, "c:"), "r: k/v(a: x(b:() c:) e:())") << "not below, and not left";
  EXPECT_EQ(TreeText(f.a), "a: x(b:() c:(d:()))") << "siblings of the top are not below it";
  EXPECT_EQ(TreeText(f.leaf), "b:()");
  EXPECT_EQ(TreeText(f.root, "r: k/v"), "r: k/v") << "a top that gives false is called alone";
}

TEST(TreeWalk, VisitsWhatACallbackAdds) {
  static Node* grown;
  Fixture f;
  grown = f.leaf;
  trace.clear();
  f.root->Traverse([](ZelSection* section) {
    trace += section->GetName();
    if (trace == "rab") grown->AddChild("x");   // below the node
    if (trace == "rabx") grown->AddChild("y");  // after the node
    return trace.back() != 'c';
  });
  EXPECT_EQ(trace, "rabxyce") << "not below the node that gives false";
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
