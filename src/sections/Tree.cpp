// SPDX-License-Identifier: MIT
#include "Tree.h"

#include <memory>
#include <utility>

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
  if (!enter(&data)) return;
  if (children != nullptr) {
    for (TreeNode* child : *children) child->Traverse(enter, leave);
  }
  leave(&data);
}

template <class Data>
void Tree<Data>::TreeNode::Traverse(Callback visit) {
  if (!visit(&data)) return;
  if (children != nullptr) {
    for (TreeNode* child : *children) child->Traverse(visit);
  }
}

template <class Data>
typename Tree<Data>::TreeNode* Tree<Data>::TreeNode::AddChild(const Data& section) {
  ChildList link(1, nullptr);
  auto list = children == nullptr ? std::make_unique<ChildList>() : nullptr;
  link.front() = new TreeNode(this, section);  // the last step that may throw
  TreeNode* child = link.front();
  if (children == nullptr) children = list.release();
  children->splice(children->end(), link);
  return child;
}

template <class Data>
Data* Tree<Data>::TreeNode::GetData() {
  return &data;
}

template <class Data>
void Tree<Data>::TreeNode::CopyChildren(const TreeNode& other) {
  if (other.children == nullptr) return;
  for (const TreeNode* child : *other.children) AddChild(child->data)->CopyChildren(*child);
}

template <class Data>
void Tree<Data>::TreeNode::DeleteChildren() {
  if (children == nullptr) return;
  while (!children->empty()) {
    TreeNode* child = children->front();
    child->DeleteChildren();
    delete child;
    children->pop_front();
  }
  delete std::exchange(children, nullptr);
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
  std::swap(root.children, copies.children);
  if (root.children != nullptr) {
    for (TreeNode* child : *root.children) child->parent = &root;
  }
  return *this;  // the former children go with `copies`
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
