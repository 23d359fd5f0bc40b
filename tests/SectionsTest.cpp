// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <utility>

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

// The whole state as text, `~` for null. Of a block all bytes up to the last that is not zero, so
// that remains behind a text show.
std::string Show(const char* block) {
  if (block == nullptr) return "~";
  const std::string bytes(block, 512);
  return bytes.substr(0, bytes.find_last_not_of('\0') + 1);
}
std::string Show(const ZelSectionEntry& entry) {
  return Show(entry.GetKeyName()) + "=" + Show(entry.GetValue()) + "#" + Show(entry.GetComment());
}
std::string Show(const ZelSection& section) {
  std::string image = Show(section.GetName());
  for (const ZelSectionEntry* entry : *section.GetEntryList())
    image.append(" ").append(Show(*entry));
  return image;
}
std::string Show(Node& node) {
  std::string image = Show(*node.GetData());
  if (ChildrenOf(node) == nullptr) return image;
  image += "(";
  for (Node* child : *ChildrenOf(node)) {
    image.append(Show(*child)).append(ParentOf(*child) == &node ? " " : "?");
  }
  return image + ")";
}

// Short forms, a letter for a text (`~` null, `_` empty). An entry: key, value, comment. A
// section: its name, then the key of each entry.
const char* Letter(char c) {
  static char texts[128][2];
  texts[int{c}][0] = c == '_' ? '\0' : c;
  return c == '~' ? nullptr : texts[int{c}];
}
ZelSectionEntry Entry(const char (&form)[4]) {
  return {Letter(form[0]), Letter(form[1]), Letter(form[2])};
}
ZelSection Section(const std::string& form) {
  ZelSection section(Letter(form[0]));
  for (const char key : form.substr(1)) section.AddEntry(Letter(key), "v", nullptr);
  return section;
}

template <class Record>
void CheckText(void (Record::*set)(const char*), const char* (Record::*get)() const,
               bool wipesFirst) {
  const std::string a511(511, 'a'), a512(512, 'a');
  const char* const rows[][3] = {
      // set, set again, found
      {nullptr, nullptr, nullptr},   {nullptr, "", ""},         {"abc", nullptr, "abc"},
      {nullptr, &a511[0], &a511[0]}, {"a", &a512[0], &a511[0]}, {&a512[0], "xyz", "xyz"},
  };
  for (const auto& [first, second, found] : rows) {
    Record record;
    (record.*set)(first);
    const char* block = (record.*get)();
    (record.*set)(second);
    EXPECT_EQ(Show((record.*get)()), found == nullptr ? "~" : found);
    EXPECT_TRUE(block == nullptr || (record.*get)() == block);
    if (found == nullptr || *found == '\0') continue;
    (record.*set)((record.*get)() + 1);  // its own text
    EXPECT_EQ(Show((record.*get)()), wipesFirst ? "" : found + 1);
  }
}

TEST(Records, ATextIsCutToItsBlockAndLeavesNoRemains) {
  CheckText(&ZelSectionEntry::SetKeyName, &ZelSectionEntry::GetKeyName, false);
  CheckText(&ZelSectionEntry::SetValue, &ZelSectionEntry::GetValue, false);
  CheckText(&ZelSectionEntry::SetComment, &ZelSectionEntry::GetComment, false);
  CheckText(&ZelSection::SetName, &ZelSection::GetName, true);
}

TEST(Records, EntriesAreEqualWithoutCaseAndNullIsNotEmpty) {
  static const struct {
    char form[4];
    int kind;
  } rows[] = {{"~~~", 0}, {"_~~", 1}, {"~_~", 2}, {"~~_", 3}, {"kvc", 4}, {"KVC", 4},
              {"kv~", 5}, {"kwc", 6}, {"[vc", 7}, {"{vc", 8}, {"~vc", 9}};
  for (const auto& [left, leftKind] : rows) {
    for (const auto& [right, rightKind] : rows) {
      ZelSectionEntry a = Entry(left), copy(a), b = Entry(right);
      EXPECT_EQ(copy == b, leftKind == rightKind) << Show(a) << " " << Show(b);
      b.UndoComment();
      EXPECT_EQ(Show(b), Show(Entry({right[0], right[1], '~'})));
      a = b;  // what is null in `b` stays
      EXPECT_EQ(Show(a), Show(Entry({right[0] == '~' ? left[0] : right[0],
                                     right[1] == '~' ? left[1] : right[1], left[2]})));
    }
  }
}

TEST(Sections, RandomEditsMatchAStringOfKeys) {
  std::mt19937 random(4711);
  ZelSection section("s");
  ZelSection::EntryList& list = *section.GetEntryList();
  std::string model;
  for (int step = 0; step < 1000; ++step) {
    std::size_t at = random() % (model.size() + 1);
    const bool stored = at < model.size() && random() % 2 == 0;
    const char key = stored ? model[at] : "ab~"[random() % 3];
    ZelSectionEntry fresh(Letter(key), "v", nullptr);
    ZelSectionEntry* entry = stored ? list[at] : &fresh;
    const auto position = list.begin() + static_cast<std::ptrdiff_t>(at);
    ZelSection::EntryPosition result;
    switch (random() % 4) {
      case 0:
        EXPECT_TRUE(section.AddEntry(Letter(key), "v", nullptr) && section.AddEntry(entry));
        result = section.InsertEntry(entry);
        at = model.append(3, key).size();
        break;
      case 1:
        result = section.InsertEntry(entry, position);
        model.insert(at, 1, key);
        break;
      case 2:
        result = section.RemoveEntry(position);
        model.erase(at, 1);
        break;
      default:
        at = std::min(model.find(key), model.size());
        result = section.RemoveEntry(entry);
        model.erase(at, 1);
    }
    ASSERT_EQ(static_cast<std::size_t>(result - list.begin()), at) << step;
    ASSERT_EQ(Show(section), Show(Section("s" + model))) << step;
    if (model.size() < 20) continue;
    section.ClearEntryList();
    model.clear();
  }
}

TEST(Sections, EqualityAndAssignment) {
  static const struct {
    const char *left, *right;
    bool equal;
    const char* assigned;  // left = right
  } rows[] = {{"~", "sk", false, "sk"},   {"sk", "SK", true, "SkK"}, {"skl", "slk", false, "skllk"},
              {"s", "t", false, "t"},     {"sk", "s", false, "sk"},  {"s", "sk", false, "sk"},
              {"~k", "~k", false, "~kk"}, {"sk", "~k", false, "skk"}};
  for (const auto& row : rows) {
    ZelSection left = Section(row.left), right = Section(row.right);
    EXPECT_EQ(left == right, row.equal) << row.left << " " << row.right;
    left = right;
    right.ClearEntryList();  // the copies are the target's own
    const ZelSection& same = left;
    left = same;
    EXPECT_EQ(Show(left), Show(Section(row.assigned)));
  }
}

TEST(Sections, NullEntriesAddNothingAndNullSlotsAreSkipped) {
  ZelSection section = Section("sk"), copy(section);
  EXPECT_EQ(section.InsertEntry(nullptr, section.InsertEntry(nullptr) - 1), section.EndEntry());
  EXPECT_EQ(section.RemoveEntry(static_cast<ZelSectionEntry*>(nullptr)), section.EndEntry());
  EXPECT_TRUE(!section.AddEntry(nullptr) && copy == section);
  section.GetEntryList()->insert(section.GetEntryList()->begin(), nullptr);
  EXPECT_TRUE(section == section);
  EXPECT_EQ(section.FindEntry(copy.GetEntryList()->front()), section.EndEntry() - 1);
  copy = section;
  section.RemoveEntry(section.GetEntryList()->begin());
  EXPECT_EQ(Show(section) + Show(copy), Show(Section("sk")) + Show(Section("skk")));
}

// r with an entry k and the children a and e; a has b and d, b has c.
const char* const kGrown = "r k=v#~(a l=v#~(b(c m=v#~ ) d ) e )";
void Grow(ZelSectionHolder& tree) {
  *tree.GetRootItem()->GetData() = Section("rk");
  Node* a = tree.GetRootItem()->AddChild(Section("al"));
  a->AddChild(Section("b"))->AddChild(Section("cm"));
  a->AddChild(Section("d"));
  tree.GetRootItem()->AddChild(Section("e"));
}

std::string trace, stop;
bool Enter(ZelSection* section) {
  trace += section->GetName();
  return stop != section->GetName();
}
bool Leave(ZelSection*) {
  trace += ")";
  return false;
}

TEST(Trees, AWalkIsInOrderAndARefusalSkipsOneSubtree) {
  const std::pair<const char*, const char*> rows[] = {
      {"", "rabc))d))e))|rabcde"}, {"r", "r|r"}, {"b", "rabd))e))|rabde"}};
  ZelSectionHolder tree;
  Grow(tree);
  for (const auto& [refused, expected] : rows) {
    stop = refused;
    trace.clear();
    tree.GetRootItem()->Traverse(Enter, Leave);
    trace += "|";
    tree.GetRootItem()->Traverse(Enter);
    EXPECT_EQ(trace, expected);
  }
}

TEST(Trees, ACopyIsOneLevelDeepAndAnAssignmentWhole) {
  ZelSectionHolder tree, blank, blankCopy(blank);
  Node* root = tree.GetRootItem();
  EXPECT_TRUE(tree.Empty() && blankCopy.Empty());
  EXPECT_EQ(Show(*root), "~");
  Grow(tree);
  EXPECT_EQ(ParentOf(*root), root);

  ZelSectionHolder copy(tree);
  EXPECT_EQ(Show(*copy.GetRootItem()), "r k=v#~(a l=v#~ e )");
  EXPECT_EQ(ParentOf(*copy.GetRootItem()), nullptr);

  const ZelSectionHolder& same = copy = tree;  // the former children go, the root's entries stay
  copy = same;
  EXPECT_EQ(Show(*copy.GetRootItem()), "r k=v#~" + std::string(kGrown).substr(1));
  EXPECT_FALSE(copy.DeleteAllItems() || copy.DeleteAllItems());
  EXPECT_EQ(Show(*copy.GetRootItem()), "r k=v#~ k=v#~");
  EXPECT_EQ(Show(*root), kGrown);
  tree = blank;
  EXPECT_TRUE(tree.Empty() && tree.GetRootItem() == root);

  ChildrenOf(*root) = new std::list<Node*>;  // the pointer counts, not what is in the list
  EXPECT_FALSE(tree.Empty() || ZelSectionHolder(tree).Empty());
  root->AddChild(*root->GetData());
  EXPECT_EQ(Show(*root), "r k=v#~(r k=v#~ )");
}

// What the operations below work on.
struct World {
  ZelSectionEntry full{"k", "v", "c"}, part{nullptr, "w", nullptr};
  ZelSection blank, section = Section("skl");
  ZelSectionHolder tree, small;
  Node* leaf = small.GetRootItem()->AddChild(section);
  World() { Grow(tree); }
  std::string Image() {
    return Show(full) + Show(part) + Show(blank) + Show(section) + Show(*tree.GetRootItem()) +
           Show(*small.GetRootItem());
  }
};

TEST(Records, AFailedAllocationChangesNothingAndLeaksNothing) {
  static const struct {
    int allocations;  // how many there are to fail
    void (*run)(World&);
  } rows[] = {
      {1, [](World& w) { w.part.SetKeyName("x"); }},
      {3, [](World& w) { ZelSectionEntry copy(w.full); }},
      {2, [](World& w) { w.part = w.full; }},
      {5, [](World& w) { w.blank.AddEntry("k", "v", "c"); }},
      {5, [](World& w) { w.blank.AddEntry(&w.full); }},
      {0, [](World& w) { w.section.RemoveEntry(w.section.GetEntryList()->front()); }},
      {8, [](World& w) { ZelSection copy(w.section); }},
      {8, [](World& w) { *w.tree.GetRootItem()->GetData() = w.section; }},
      {3, [](World& w) { w.leaf->AddChild(w.blank); }},                // node, list, link
      {2, [](World& w) { w.tree.GetRootItem()->AddChild(w.blank); }},  // node, link
      {16, [](World& w) { ZelSectionHolder copy(w.tree); }},
      {31, [](World& w) { w.small = w.tree; }},
  };
  for (const auto& row : rows) {
    const std::string before = World().Image();
    long live = 0;
    std::unique_ptr<World> world;
    const auto setUp = [&] {
      live = FailingNew::LiveBlocks();
      world = std::make_unique<World>();
      return [&] { row.run(*world); };
    };
    const int failures = FailingNew::ForEachAllocation(setUp, [&](bool failed) {
      EXPECT_TRUE(!failed || world->Image() == before);
      world.reset();
      EXPECT_EQ(FailingNew::LiveBlocks(), live);
    });
    EXPECT_EQ(failures, row.allocations) << "row " << &row - rows;
  }
}

}  // namespace
