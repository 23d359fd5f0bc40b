// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TREE_H
#define ZELCONFUTILS_TREE_H

#include <list>

#include "ZelExport.h"
#include "ZelSection.h"

namespace zelconfutils {
template <class Data>
class TreeChild;
}

/// A tree of sections: one root, which always exists, and nodes below it, each with a list of
/// its own for its children. A node without children has no list. The template is made for
/// `ZelSection` alone; its members are compiled into the library. Use it as `ZelSectionHolder`.
///
/// A tree may be as deep as memory allows: nothing here needs more stack for a deeper one. A failed
/// allocation throws `std::bad_alloc` and changes nothing. No locks: one thread at a time.
template <class Data>
class ZELCONFUTILS_API Tree {
 public:
  /// One node: a section, and the nodes below it. Nodes are made by `AddChild` and belong to
  /// their parent; only the tree and the nodes themselves destroy them.
  class ZELCONFUTILS_API TreeNode {
   public:
    /// A plain function; it gets the address of a node's section, never null. True goes on below
    /// that node. It may change the section and add children, but must not delete nodes of a
    /// list that is being walked (`DeleteAllItems`, tree assignment). What it throws passes
    /// through the walk.
    using Callback = bool (*)(Data*);

    // Destroys what is below the node, then its section. Stands here since it comes first in the
    // virtual table; private, so that nobody deletes a node from under its parent.
   private:
    virtual ~TreeNode();

   public:
    /// Walks this node and those below it, siblings in order. `enter` false: neither the node's
    /// children nor `leave` are called for it, and the walk goes on with its next sibling. Else
    /// `leave` follows the children; its result is ignored. Neither callback may be null.
    /// Allocates nothing.
    virtual void Traverse(Callback enter, Callback leave);

    /// The same walk with one callback, before each node's children.
    virtual void Traverse(Callback visit);

    /// Appends a new node with a copy of `section`, which may be this node's own. The node, which
    /// this one owns: it lives until `DeleteAllItems`, an assignment to the tree or the tree's
    /// end. Never null.
    TreeNode* AddChild(const Data& section);

    /// The node's section, never null. It is part of the node and lives as long.
    Data* GetData();

    TreeNode& operator=(const TreeNode&) = delete;

   private:
    friend class Tree;
    friend class zelconfutils::TreeChild<Data>;
    using ChildList = std::list<TreeNode*>;

    TreeNode() = default;
    TreeNode(TreeNode* parent, const Data& section);
    TreeNode(const TreeNode& other);  // one level deep; no parent
    template <class Node, class Enter, class Leave>
    static void Walk(Node* top, Enter enter, Leave leave);  // over `top` and all below it
    void CopyChildren(const TreeNode& other);               // appends copies of all below `other`
    void DeleteChildren();

    TreeNode* parent = nullptr;     // of the root: itself, or null in a tree made by copying
    ChildList* children = nullptr;  // owned, as are its nodes; a leaf has none
    Data data;
  };

  /// A root with a blank section: no name, no entries.
  Tree();

  /// Copies the root's section and the root's children, with their sections in full. What is
  /// deeper is not copied: the copied children have no children. To copy a whole tree, assign it.
  Tree(const Tree& other);

  /// Destroys all nodes, from the first to the last, children before their parent.
  virtual ~Tree();

  /// Assigns the root's section with `ZelSection::operator=`, so that the entries of this root
  /// stay before the copies; destroys the nodes below this root and puts copies of all nodes below
  /// the root of `other` in their place. The root node itself stays. Assigning a tree to itself
  /// changes nothing.
  Tree& operator=(const Tree& other);

  /// The root: the same node on every call, never null. It belongs to the tree.
  TreeNode* GetRootItem();

  /// Whether the root has no child list: true until a child is added, and again after
  /// `DeleteAllItems`. The root's section does not count.
  bool Empty();

  /// Destroys all nodes below the root; the root keeps its section. Always false, also when
  /// there were nodes.
  bool DeleteAllItems();

 private:
  TreeNode root;
};

extern template class Tree<ZelSection>;

/// The tree that callers use; each operation does what that of `Tree` does.
///
///     ZelSectionHolder tree;
///     ZelSection* server = tree.GetRootItem()->AddChild(ZelSection("server"))->GetData();
///     server->AddEntry("port", "8080", nullptr);
///     tree.GetRootItem()->Traverse(PrintAndGoOn);  // bool PrintAndGoOn(ZelSection*)
class ZELCONFUTILS_API ZelSectionHolder : public Tree<ZelSection> {
 public:
  ZelSectionHolder();
  /// One level deep, as in `Tree`; `operator=` copies all.
  ZelSectionHolder(const ZelSectionHolder& other);
  ~ZelSectionHolder() override;
  /// All of the tree, as in `Tree`.
  ZelSectionHolder& operator=(const ZelSectionHolder& other);
};

#endif
