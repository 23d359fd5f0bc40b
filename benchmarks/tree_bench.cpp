// SPDX-License-Identifier: MIT
// Building, walking, copying and releasing a tree of sections. Beside it the same tree of plain
// containers, with texts of their own length, and the limit: the bare allocations of a copy.
#include <benchmark/benchmark.h>

#include <cstring>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "Tree.h"

namespace {

// 1 root, kFan children, kFan grandchildren of each; kEntries entries of two texts in each.
constexpr int kFan = 32, kEntries = 4;
constexpr int kNodes = 1 + kFan + kFan * kFan;
constexpr std::size_t kBlockBytes = 512;
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

ZelSectionHolder::TreeNode* Child(ZelSectionHolder::TreeNode* node) {
  ZelSectionHolder::TreeNode* child = node->AddChild(ZelSection());
  Fill(*child->GetData());
  return child;
}
PlainNode* Child(PlainNode* node) {
  Fill(node->children.emplace_back());
  return &node->children.back();
}
template <class Node>
void Grow(Node* root) {
  for (int i = 0; i < kFan; ++i) {
    Node* child = Child(root);
    for (int j = 0; j < kFan; ++j) Child(child);
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

// Only the named step is timed; the others run while the clock stands.
template <class Tree>
void BM_Build(benchmark::State& state) {
  for (auto _ : state) {
    auto tree = std::make_unique<Tree>();
    Build(*tree);
    state.PauseTiming();
    tree.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kNodes);
}
template <class Tree>
void BM_Copy(benchmark::State& state) {
  Tree origin;
  Build(origin);
  for (auto _ : state) {
    auto tree = std::make_unique<Tree>();
    *tree = origin;  // the whole tree
    state.PauseTiming();
    tree.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kNodes);
}
template <class Tree>
void BM_Release(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto tree = std::make_unique<Tree>();
    Build(*tree);
    state.ResumeTiming();
    tree.reset();
  }
  state.SetItemsProcessed(state.iterations() * kNodes);
}
BENCHMARK(BM_Build<ZelSectionHolder>);
BENCHMARK(BM_Build<PlainNode>);
BENCHMARK(BM_Copy<ZelSectionHolder>);
BENCHMARK(BM_Copy<PlainNode>);
BENCHMARK(BM_Release<ZelSectionHolder>);
BENCHMARK(BM_Release<PlainNode>);

// The limit: the same allocations in the same order, with the blocks filled, and nothing else.
class Allocations {
 public:
  Allocations() { blocks.reserve(kNodes * (3 + 1 + 3 * kEntries)); }
  void Make() {
    for (int node = 0; node < kNodes; ++node) {
      Add(sizeof(ZelSectionHolder::TreeNode));
      Add(3 * sizeof(void*));  // its link in the parent's list
      AddText();
      Add(kEntries * sizeof(void*));
      for (int entry = 0; entry < kEntries; ++entry) {
        Add(sizeof(ZelSectionEntry));
        AddText();
        AddText();
      }
    }
  }
  void Release() { blocks.clear(); }

 private:
  char* Add(std::size_t bytes) { return blocks.emplace_back(new char[bytes]).get(); }
  void AddText() {
    const std::size_t length = std::strlen(kValue);
    char* block = Add(kBlockBytes);
    std::memcpy(block, kValue, length);
    std::memset(block + length, 0, kBlockBytes - length);
  }

  std::vector<std::unique_ptr<char[]>> blocks;
};

void BM_LimitOfCopy(benchmark::State& state) {
  Allocations allocations;
  for (auto _ : state) {
    allocations.Make();
    state.PauseTiming();
    allocations.Release();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kNodes);
}
void BM_LimitOfRelease(benchmark::State& state) {
  Allocations allocations;
  for (auto _ : state) {
    state.PauseTiming();
    allocations.Make();
    state.ResumeTiming();
    allocations.Release();
  }
  state.SetItemsProcessed(state.iterations() * kNodes);
}
BENCHMARK(BM_LimitOfCopy);
BENCHMARK(BM_LimitOfRelease);

std::size_t visited = 0;
bool Visit(ZelSection* section) {
  visited += section->GetEntryList()->size();
  return true;
}
void PlainWalk(PlainNode& node) {
  visited += node.entries.size();
  for (PlainNode& child : node.children) PlainWalk(child);
}
void BM_Walk(benchmark::State& state) {
  ZelSectionHolder tree;
  Build(tree);
  for (auto _ : state) tree.GetRootItem()->Traverse(Visit);
  benchmark::DoNotOptimize(visited);
  state.SetItemsProcessed(state.iterations() * kNodes);
}
void BM_WalkPlain(benchmark::State& state) {
  PlainNode tree;
  Build(tree);
  for (auto _ : state) PlainWalk(tree);
  benchmark::DoNotOptimize(visited);
  state.SetItemsProcessed(state.iterations() * kNodes);
}
BENCHMARK(BM_Walk);
BENCHMARK(BM_WalkPlain);

}  // namespace

BENCHMARK_MAIN();
