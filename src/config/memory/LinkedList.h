// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MEMORY_LINKED_LIST_H
#define ZELCONFUTILS_MEMORY_LINKED_LIST_H

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "config/memory/SlabChain.h"

namespace Configuration {

template <class Element>
struct LinkedListNode {
  LinkedListNode* previous;
  LinkedListNode* next;
  union {
    Element element;  // made and destroyed by the list; a node in the pool holds none
  };

  LinkedListNode() {}   // NOLINT: `= default` would be deleted by the union's member
  ~LinkedListNode() {}  // NOLINT: likewise
};

/// Storage for nodes, cut from slabs. Nodes that are made one after the other lie one behind the
/// other, so that a walk in list order streams through memory. A node that is given back is used
/// again before a slab is touched; the slabs go with the pool, or with `Reset`.
template <class Node>
class NodePool {
 public:
  /// Sees to it that the next `Take` does not throw. May throw `std::bad_alloc`.
  void Reserve() {
    if (free_ != nullptr || unused_ != unusedEnd_) return;
    const SlabChain::Room room = slabs_.Add();
    unused_ = reinterpret_cast<Node*>(room.begin);
    unusedEnd_ = unused_ + static_cast<std::size_t>(room.end - room.begin) / sizeof(Node);
  }

  /// A node without an element. May throw `std::bad_alloc`.
  Node* Take() {
    Reserve();
    if (free_ == nullptr) return new (unused_++) Node;
    return std::exchange(free_, free_->next);
  }

  /// Takes back the nodes linked from `first` to `last`, their elements destroyed.
  void Give(Node* first, Node* last) noexcept {
    last->next = free_;
    free_ = first;
  }

  /// Releases all storage. No node may be in use.
  void Reset() noexcept {
    slabs_.Reset();
    free_ = unused_ = unusedEnd_ = nullptr;
  }

 private:
  SlabChain slabs_;
  Node* free_ = nullptr;
  Node* unused_ = nullptr;
  Node* unusedEnd_ = nullptr;
};

template <class Element>
class LinkedList;

/// A position in a list, with three states: unset (it refers to no list; all such positions are
/// equal), at an element, and end (one past the last element). It stays valid until its very
/// element is erased. In an empty list the first position is end.
template <class Element>
class LinkedListPosition {
 public:
  LinkedListPosition() = default;

  bool IsUnset() const { return list_ == nullptr; }
  bool IsEnd() const { return list_ != nullptr && node_ == nullptr; }
  bool IsAtElement() const { return node_ != nullptr; }

  Element& operator*() const { return node_->element; }
  Element* operator->() const { return &node_->element; }

  /// From an element to the next one, or to end.
  void StepForward() { node_ = node_->next; }
  /// To the element in front; from end to the last. There must be one.
  void StepBack() { node_ = node_ != nullptr ? node_->previous : list_->last_; }

  LinkedListPosition Next() const {
    LinkedListPosition next = *this;
    next.StepForward();
    return next;
  }

  friend bool operator==(const LinkedListPosition&, const LinkedListPosition&) = default;

 private:
  friend class LinkedList<Element>;
  using Node = LinkedListNode<Element>;
  LinkedListPosition(LinkedList<Element>* list, Node* node) : list_(list), node_(node) {}

  LinkedList<Element>* list_ = nullptr;
  Node* node_ = nullptr;
};

/// A doubly linked list with its count, on nodes from a pool that several lists may share.
template <class Element>
class LinkedList {
 public:
  using Node = LinkedListNode<Element>;
  using Pool = NodePool<Node>;
  using Position = LinkedListPosition<Element>;

  /// Forward iteration for whole passes; `Position` is what is kept.
  class Iterator {
   public:
    explicit Iterator(Node* node) : node_(node) {}
    Element& operator*() const { return node_->element; }
    Iterator& operator++() {
      node_ = node_->next;
      return *this;
    }
    bool operator==(const Iterator&) const = default;

   private:
    friend class LinkedList;
    Node* node_;
  };

  LinkedList() : LinkedList(std::make_shared<Pool>()) {}
  explicit LinkedList(std::shared_ptr<Pool> pool) : pool_(std::move(pool)) {}
  LinkedList(const LinkedList&) = delete;
  LinkedList& operator=(const LinkedList&) = delete;
  ~LinkedList() {
    DestroyElements();
    if (first_ != nullptr && pool_.use_count() > 1) pool_->Give(first_, last_);
  }

  std::size_t Count() const { return count_; }
  bool IsEmpty() const { return count_ == 0; }
  Iterator begin() const { return Iterator(first_); }
  Iterator end() const { return Iterator(nullptr); }
  const std::shared_ptr<Pool>& GetPool() const { return pool_; }

  Position First() { return {this, first_}; }
  Position Last() { return {this, last_}; }
  Position End() { return {this, nullptr}; }
  Position PositionOf(Iterator iterator) { return {this, iterator.node_}; }

  /// Sees to it that the next insertion does not throw for want of a node.
  void Reserve() { pool_->Reserve(); }

  /// Makes an element in front of `position`, which may be end. Throws `std::bad_alloc`, and then
  /// nothing has changed.
  template <class... Arguments>
  Position Insert(Position position, Arguments&&... arguments) {
    Node* node = pool_->Take();
    try {
      new (&node->element) Element{std::forward<Arguments>(arguments)...};
    } catch (...) {
      pool_->Give(node, node);
      throw;
    }
    node->next = position.node_;
    node->previous = node->next != nullptr ? node->next->previous : last_;
    (node->previous != nullptr ? node->previous->next : first_) = node;
    (node->next != nullptr ? node->next->previous : last_) = node;
    ++count_;
    return {this, node};
  }

  template <class... Arguments>
  Position Append(Arguments&&... arguments) {
    return Insert(End(), std::forward<Arguments>(arguments)...);
  }

  /// Moves all elements of `other`, a list on the same pool, after the last one. Positions that
  /// were taken from `other` are void.
  void TakeAll(LinkedList& other) noexcept {
    if (other.IsEmpty()) return;
    other.first_->previous = last_;
    (last_ != nullptr ? last_->next : first_) = std::exchange(other.first_, nullptr);
    last_ = std::exchange(other.last_, nullptr);
    count_ += std::exchange(other.count_, 0);
  }

  /// Removes the element at `position`; the result is the position behind it.
  Position Erase(Position position) noexcept {
    Node* node = position.node_;
    Node* behind = node->next;
    (node->previous != nullptr ? node->previous->next : first_) = behind;
    (behind != nullptr ? behind->previous : last_) = node->previous;
    --count_;
    node->element.~Element();
    pool_->Give(node, node);
    return {this, behind};
  }

  void Clear() noexcept {
    DestroyElements();
    if (pool_.use_count() == 1) {
      pool_->Reset();
    } else if (first_ != nullptr) {
      pool_->Give(first_, last_);
    }
    first_ = last_ = nullptr;
    count_ = 0;
  }

 private:
  friend class LinkedListPosition<Element>;

  void DestroyElements() noexcept {
    if constexpr (!std::is_trivially_destructible_v<Element>) {
      for (Element& element : *this) element.~Element();
    }
  }

  std::shared_ptr<Pool> pool_;
  Node* first_ = nullptr;
  Node* last_ = nullptr;
  std::size_t count_ = 0;
};

}  // namespace Configuration

#endif
