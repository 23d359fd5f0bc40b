// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "FailingNew.h"
#include "RecordTexts.h"
#include "Tree.h"

namespace {

using Node = ZelSectionHolder::TreeNode;
using RecordTexts::Section;
using RecordTexts::Text;

std::string trace;  // of the walk under way

// As `r: k(a:() b:(c:()))`: a section, and its children in brackets.
std::string TreeText(Node* top) {
  trace.clear();
  top->Traverse(
      [](ZelSection* section) {
        if (!trace.empty() && trace.back() != '(') trace += ' ';
        trace += Text(*section);
        trace += '(';
        return true;
      },
      [](ZelSection*) {
        trace += ')';
        return false;  // is ignored
      });
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
    const char *tree, *target;
  } rows[] = {
      {"a child is appended", [](Fixture& f) { f.root->AddChild(Section("z: y")); },
       "r: k/v(a: x(b:() c:(d:())) e:() z: y())", kTarget},
      {"a child with the node's own section",
       [](Fixture& f) { f.root->AddChild(*f.root->GetData()); },
       "r: k/v(a: x(b:() c:(d:())) e:() r: k/v())", kTarget},
      {"a child below a leaf", [](Fixture& f) { f.leaf->AddChild("z"); },
       "r: k/v(a: x(b:(z:()) c:(d:())) e:())", kTarget},
      {"an assignment copies all", [](Fixture& f) { f.target = f.tree; }, kTree,
       "r: old k/v(a: x(b:() c:(d:())) e:())"},
      {"the base's assignment, too",
       [](Fixture& f) { static_cast<Tree<ZelSection>&>(f.target) = f.tree; }, kTree,
       "r: old k/v(a: x(b:() c:(d:())) e:())"},
      {"an empty tree leaves no nodes", [](Fixture& f) { f.target = ZelSectionHolder(); }, kTree,
       "t: old()"},
      {"a copy is one level deep", [](Fixture& f) { f.target = ZelSectionHolder(f.tree); }, kTree,
       "r: old k/v(a: x() e:())"},
      {"an assignment to itself changes nothing", [](Fixture& f) { f.tree = *&f.tree; }, kTree,
       kTarget},
      {"DeleteAllItems keeps the root's section", [](Fixture& f) { f.tree.DeleteAllItems(); },
       "r: k/v()", kTarget},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rule);
    trace.reserve(1000);
    const long blocks = FailingNew::LiveBlocks();
    std::optional<Fixture> fixture(std::in_place);
    FailingNew::ForEachAllocation([&] { row.call(*fixture); },
                                  [&](bool failed) {
                                    EXPECT_EQ(TreeText(fixture->root), failed ? kTree : row.tree);
                                    EXPECT_EQ(TreeText(fixture->target.GetRootItem()),
                                              failed ? kTarget : row.target);
                                    fixture.emplace();
                                  });
    fixture.reset();
    const bool leaks = FailingNew::LiveBlocks() != blocks;
    EXPECT_FALSE(leaks && !HasFailure());  // a failure holds memory, too
  }
}

TEST(Tree, ACopyIsATreeOfItsOwn) {
  Fixture f;
  ZelSectionHolder copy(f.tree);
  copy.GetRootItem()->AddChild("n")->AddChild("m");
  EXPECT_EQ(TreeText(f.root), kTree);
  f.tree.DeleteAllItems();
  EXPECT_EQ(TreeText(copy.GetRootItem()), "r: k/v(a: x() e:() n:(m:()))");
}

// The names in the order of the walk; `)` for what leaves. It does not go below c.
bool Visit(ZelSection* section) {
  trace += section->GetName();
  return trace.back() != 'c';
}
bool Leave(ZelSection* section) {
  trace.append(section->GetName()).append(")");
  return false;
}

TEST(TreeWalk, GoesFromANodeToAllBelowInOrder) {
  Fixture f;
  const auto walk = [](Node* top, bool leaves) {
    trace.clear();
    leaves ? top->Traverse(Visit, Leave) : top->Traverse(Visit);
    return trace;
  };
  EXPECT_EQ(walk(f.root, false), "rabce") << "not below the node that gives false";
  EXPECT_EQ(walk(f.root, true), "rabb)ca)ee)r)") << "nor is that node left";
  EXPECT_EQ(walk(f.a, false), "abc") << "siblings of the top are not below it";
  EXPECT_EQ(walk(f.a, true), "abb)ca)");
  EXPECT_EQ(walk(f.leaf, true), "bb)");
  f.root->GetData()->SetName("c");
  EXPECT_EQ(walk(f.root, true), "c") << "a top that gives false is called alone";
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
    return true;
  });
  EXPECT_EQ(trace, "rabxycde");
}

}  // namespace
