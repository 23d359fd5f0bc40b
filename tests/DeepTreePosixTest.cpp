// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <pthread.h>

#include "Tree.h"

namespace {

constexpr int kDepth = 1000000;
constexpr std::size_t kStackBytes = std::size_t{256} * 1024;

struct Counts {
  int visited = 0, entered = 0, left = 0;
};
Counts* counts = nullptr;  // of the walk that is under way

int CountBelow(ZelSectionHolder& tree) {
  Counts own;
  counts = &own;
  tree.GetRootItem()->Traverse([](ZelSection*) { return ++counts->visited > 0; });
  tree.GetRootItem()->Traverse([](ZelSection*) { return ++counts->entered > 0; },
                               [](ZelSection*) { return ++counts->left > 0; });
  return own.entered == own.visited && own.left == own.visited ? own.visited - 1 : -1;
}

void* UseDeepTree(void* result) {
  int* belowRoot = static_cast<int*>(result);
  ZelSectionHolder tree, assigned;
  ZelSectionHolder::TreeNode* node = tree.GetRootItem();
  for (int i = 0; i < kDepth; ++i) node = node->AddChild(ZelSection());
  assigned = tree;
  assigned = tree;  // releases the former copies
  tree.DeleteAllItems();
  *belowRoot++ = CountBelow(tree);
  *belowRoot = CountBelow(assigned);
  return nullptr;
}

TEST(DeepTree, IsWalkedAssignedAndDestroyedOnASmallStack) {
  int belowRoot[2] = {-1, -1};
  pthread_attr_t small;
  pthread_attr_init(&small);
  ASSERT_EQ(pthread_attr_setstacksize(&small, kStackBytes), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &small, UseDeepTree, belowRoot), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&small);
  EXPECT_EQ(belowRoot[0], 0) << "nodes left after DeleteAllItems";
  EXPECT_EQ(belowRoot[1], kDepth) << "nodes of the assigned tree";
}

}  // namespace
