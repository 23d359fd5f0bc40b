// SPDX-License-Identifier: MIT
#include "Tree.h"

#include <iterator>
#include <memory>
#include <utility>

namespace zelconfutils {

/// Every node but a root: it knows its place in its parent's list. So all that goes through a tree
/// gets on and back up without recursion, as a tree may be deeper than the stack, and without
/// memory.
template <class Data>
class TreeChild final : public Tree<Data>::TreeNode {
 public:
  using Node = typename Tree<Data>::TreeNode;
  using Place = typename std::list<Node*>::iterator;

  TreeChild(Node* owner, const Data& section, Place link) : Node(owner, section), place(link) {}

  static Place Next(const Node* node) {
    return std::next(static_cast<const TreeChild*>(node)->place);
  }

 private:
  const Place place;
};

}  // namespace zelconfutils

template <class Data>
Tree<Data>::TreeNode::TreeNode(TreeNode* owner, const Data& section)
    : parent(owner), data(section) {}

// By way of the blank node: from there on the destructor releases what a throw leaves.
template <class Data>
Tree<Data>::TreeNode::TreeNode(const TreeNode& other) : TreeNode() {
  if (other.children != nullptr) {
    children = new ChildList;
    for (const TreeNode* child : *other.children) AddChild(child->data);
  }
  data = other.data;
}

template <class Data>
Tree<Data>::TreeNode::~TreeNode() {
  DeleteChildren();
}

template <class Data>
void Tree<Data>::TreeNode::Traverse(Callback enter, Callback leave) {
  Walk(
      this, [enter](TreeNode* node) { return enter(&node->data); },
      [leave](TreeNode* node) { leave(&node->data); });
}

template <class Data>
void Tree<Data>::TreeNode::Traverse(Callback visit) {
  Walk(
      this, [visit](TreeNode* node) { return visit(&node->data); }, [](TreeNode*) {});
}

template <class Data>
typename Tree<Data>::TreeNode* Tree<Data>::TreeNode::AddChild(const Data& section) {
  ChildList link(1, nullptr);
  auto list = children == nullptr ? std::make_unique<ChildList>() : nullptr;
  using Child = zelconfutils::TreeChild<Data>;
  TreeNode* child = new Child(this, section, link.begin());  // the last step that may throw
  link.front() = child;
  if (children == nullptr) children = list.release();
  children->splice(children->end(), link);
  return child;
}

template <class Data>
Data* Tree<Data>::TreeNode::GetData() {
  return &data;
}

// A callback may add nodes: what is below a node, and what follows it, is asked after the call.
template <class Data>
template <class Node, class Enter, class Leave>
void Tree<Data>::TreeNode::Walk(Node* top, Enter enter, Leave leave) {
  if (!enter(top)) return;
  Node* owner = top;  // of the list that is being walked
  typename ChildList::iterator at, end;
  const auto goBelow = [&](Node* node) {
    owner = node;
    at = node->children->begin();
    end = node->children->end();
  };
  if (top->children != nullptr) goBelow(top);
  for (;;) {
    if (at == end) {
      leave(owner);
      if (owner == top) return;
      at = zelconfutils::TreeChild<Data>::Next(owner);
      owner = owner->parent;
      end = owner->children->end();
    } else if (Node* const node = *at; !enter(node)) {
      ++at;
    } else if (node->children != nullptr) {
      goBelow(node);
    } else {
      leave(node);
      ++at;
    }
  }
}

template <class Data>
void Tree<Data>::TreeNode::CopyChildren(const TreeNode& other) {
  TreeNode* copy = this;
  const auto enter = [&](const TreeNode* node) {
    if (node != &other) copy = copy->AddChild(node->data);
    return true;
  };
  const auto leave = [&](const TreeNode*) { copy = copy->parent; };
  Walk(&other, enter, leave);  // at last `copy` is this node's parent
}

// A node is deleted when it has no children any more: its own destructor comes back at once.
template <class Data>
void Tree<Data>::TreeNode::DeleteChildren() {
  if (children == nullptr) return;
  for (TreeNode* owner = this;;) {
    if (owner->children->empty()) {
      delete std::exchange(owner->children, nullptr);
      if (owner == this) return;
      owner = owner->parent;
    } else if (TreeNode* const child = owner->children->front(); child->children != nullptr) {
      owner = child;
    } else {
      delete child;
      owner->children->pop_front();
    }
  }
}

template <class Data>
Tree<Data>::Tree() {
  root.parent = &root;
}

template <class Data>
Tree<Data>::Tree(const Tree& other) : root(other.root) {}

template <class Data>
Tree<Data>::~Tree() = default;

template <class Data>
Tree<Data>& Tree<Data>::operator=(const Tree& other) {
  if (this == &other) return *this;
  TreeNode copies;
  copies.CopyChildren(other.root);
  root.data = other.root.data;  // the last step that may throw
  root.DeleteChildren();
  root.children = std::exchange(copies.children, nullptr);
  if (root.children != nullptr) {
    for (TreeNode* child : *root.children) child->parent = &root;
  }
  return *this;
}

template <class Data>
typename Tree<Data>::TreeNode* Tree<Data>::GetRootItem() {
  return &root;
}

template <class Data>
bool Tree<Data>::Empty() {
  return root.children == nullptr;
}

template <class Data>
bool Tree<Data>::DeleteAllItems() {
  root.DeleteChildren();
  return false;
}

template class Tree<ZelSection>;

ZelSectionHolder::ZelSectionHolder() = default;
ZelSectionHolder::ZelSectionHolder(const ZelSectionHolder& other) = default;
ZelSectionHolder::~ZelSectionHolder() = default;
ZelSectionHolder& ZelSectionHolder::operator=(const ZelSectionHolder& other) = default;
