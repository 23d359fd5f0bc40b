// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <pthread.h>

#include "Tree.h"

namespace {

constexpr int kDepth = 1000000;
constexpr std::size_t kStackBytes = std::size_t{256} * 1024;
int visited, entered, left;

void* UseDeepTree(void*) {
  ZelSectionHolder tree, assigned;
  ZelSectionHolder::TreeNode* node = tree.GetRootItem();
  for (int i = 0; i < kDepth; ++i) node = node->AddChild(ZelSection());
  assigned = tree;
  assigned = tree;  // releases the former copies
  tree.DeleteAllItems();
  assigned.GetRootItem()->Traverse([](ZelSection*) { return ++visited > 0; });
  assigned.GetRootItem()->Traverse([](ZelSection*) { return ++entered > 0; },
                                   [](ZelSection*) { return ++left > 0; });
  return nullptr;
}

TEST(DeepTree, IsWalkedAssignedAndDestroyedOnASmallStack) {
  pthread_attr_t small;
  pthread_attr_init(&small);
  ASSERT_EQ(pthread_attr_setstacksize(&small, kStackBytes), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &small, UseDeepTree, nullptr), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&small);
  EXPECT_EQ(visited, kDepth + 1);
  EXPECT_EQ(entered, kDepth + 1);
  EXPECT_EQ(left, kDepth + 1);
}

}  // namespace
