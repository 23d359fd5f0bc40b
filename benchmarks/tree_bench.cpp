// SPDX-License-Identifier: MIT
// Building, walking, copying and releasing a tree of sections, per node, beside the same tree of
// plain containers with texts of their own length.
#include <benchmark/benchmark.h>

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "Tree.h"

namespace {

// 1 root, kFan children, kFan grandchildren of each; kEntries entries of two texts in each.
constexpr int kFan = 32, kEntries = 4;
constexpr int kNodes = 1 + kFan + kFan * kFan;
const char* const kName = "a section's name";
const char* const kKey = "a_usual_key";
const char* const kValue = "a value of usual length, 40 bytes or so";

struct PlainEntry {
  std::string key, value, comment;
};
struct PlainNode {
  std::string name;
  std::vector<PlainEntry> entries;
  std::list<PlainNode> children;
};

void Fill(ZelSection& section) {
  section.SetName(kName);
  for (int i = 0; i < kEntries; ++i) section.AddEntry(kKey, kValue, nullptr);
}
void Fill(PlainNode& node) {
  node.name = kName;
  for (int i = 0; i < kEntries; ++i) node.entries.push_back({kKey, kValue, {}});
}

ZelSectionHolder::TreeNode* AddChild(ZelSectionHolder::TreeNode* node) {
  ZelSectionHolder::TreeNode* child = node->AddChild(ZelSection());
  Fill(*child->GetData());
  return child;
}
PlainNode* AddChild(PlainNode* node) {
  Fill(node->children.emplace_back());
  return &node->children.back();
}

template <class Node>
void Grow(Node* root) {
  for (int i = 0; i < kFan; ++i) {
    Node* child = AddChild(root);
    for (int j = 0; j < kFan; ++j) AddChild(child);
  }
}
void Build(ZelSectionHolder& tree) {
  Fill(*tree.GetRootItem()->GetData());
  Grow(tree.GetRootItem());
}
void Build(PlainNode& root) {
  Fill(root);
  Grow(&root);
}

std::size_t visited = 0;
bool Visit(ZelSection* section) {
  visited += section->GetEntryList()->size();
  return true;
}
void Visit(PlainNode& node) {
  visited += node.entries.size();
  for (PlainNode& child : node.children) Visit(child);
}
void WalkAll(ZelSectionHolder& tree) { tree.GetRootItem()->Traverse(Visit); }
void WalkAll(PlainNode& root) { Visit(root); }

void Report(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * kNodes); }

template <class Tree>
void BuildAndRelease(benchmark::State& state) {
  for (auto _ : state) {
    Tree tree;
    Build(tree);
  }
  Report(state);
}

template <class Tree>
void CopyAndRelease(benchmark::State& state) {
  Tree origin;
  Build(origin);
  for (auto _ : state) {
    Tree tree;
    tree = origin;  // the whole tree
  }
  Report(state);
}

template <class Tree>
void Walk(benchmark::State& state) {
  Tree tree;
  Build(tree);
  for (auto _ : state) WalkAll(tree);
  benchmark::DoNotOptimize(visited);
  Report(state);
}

BENCHMARK(BuildAndRelease<ZelSectionHolder>);
BENCHMARK(BuildAndRelease<PlainNode>);
BENCHMARK(CopyAndRelease<ZelSectionHolder>);
BENCHMARK(CopyAndRelease<PlainNode>);
BENCHMARK(Walk<ZelSectionHolder>);
BENCHMARK(Walk<PlainNode>);

}  // namespace

BENCHMARK_MAIN();
