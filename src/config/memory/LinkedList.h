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

/// The neighbours of a place in a list: of a node, or of the list's end, which alone has no next.
struct LinkedListLink {
  LinkedListLink* previous;
  LinkedListLink* next;
};

template <class Element>
struct LinkedListNode : LinkedListLink {
  union {
    Element element;  // made and destroyed by the list; a node in the pool holds none
  };

  LinkedListNode() {}   // NOLINT: `= default` would be deleted by the union's member
  ~LinkedListNode() {}  // NOLINT: likewise
};

/// Storage for nodes, in slabs. Nodes that are made one after the other lie side by side, so that
/// a walk in list order streams through memory. A node that is given back is used again before a
/// slab is touched; the slabs go with the pool, or with `Reset`.
template <class Node>
class NodePool {
 public:
  /// So many nodes are going to be taken from now on, about.
  void Expect(std::size_t nodes) { slabs_.Expect(nodes * sizeof(Node)); }

  /// Ensures that the next `Take` does not throw. May throw `std::bad_alloc`.
  void Reserve() {
    if (free_ != nullptr || unused_ != unusedEnd_) return;
    const SlabChain::Room room = slabs_.Add();
    unused_ = reinterpret_cast<Node*>(room.begin);
    unusedEnd_ = unused_ + room.Bytes() / sizeof(Node);
  }

  /// A node without an element. May throw `std::bad_alloc`.
  Node* Take() {
    Reserve();
    if (free_ == nullptr) return new (unused_++) Node;
    return std::exchange(free_, static_cast<Node*>(free_->next));
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

  bool IsUnset() const { return link_ == nullptr; }
  bool IsEnd() const { return link_ != nullptr && link_->next == nullptr; }
  bool IsAtElement() const { return link_ != nullptr && link_->next != nullptr; }

  Element& operator*() const { return static_cast<Node*>(link_)->element; }
  Element* operator->() const { return &**this; }

  /// From an element to the next one, or to end.
  void StepForward() { link_ = link_->next; }
  /// To the element before; from end to the last. There must be one.
  void StepBack() { link_ = link_->previous; }

  LinkedListPosition Next() const {
    LinkedListPosition next = *this;
    next.StepForward();
    return next;
  }

  friend bool operator==(const LinkedListPosition&, const LinkedListPosition&) = default;

 private:
  friend class LinkedList<Element>;
  using Node = LinkedListNode<Element>;
  explicit LinkedListPosition(LinkedListLink* link) : link_(link) {}

  LinkedListLink* link_ = nullptr;
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
    explicit Iterator(LinkedListLink* link) : link_(link) {}
    Element& operator*() const { return static_cast<Node*>(link_)->element; }
    Iterator& operator++() {
      link_ = link_->next;
      return *this;
    }
    bool operator==(const Iterator&) const = default;

   private:
    friend class LinkedList;
    LinkedListLink* link_;
  };

  LinkedList() : LinkedList(std::make_shared<Pool>()) {}
  explicit LinkedList(std::shared_ptr<Pool> pool) : pool_(std::move(pool)) {}
  LinkedList(const LinkedList&) = delete;
  LinkedList& operator=(const LinkedList&) = delete;
  ~LinkedList() {
    DestroyElements();
    if (pool_.use_count() > 1) GiveNodes();
  }

  std::size_t Count() const { return count_; }
  bool IsEmpty() const { return count_ == 0; }
  Iterator begin() const { return Iterator(first_); }
  Iterator end() const { return Iterator(&end_); }
  const std::shared_ptr<Pool>& GetPool() const { return pool_; }

  Position First() { return Position(first_); }
  Position Last() { return Position(IsEmpty() ? &end_ : end_.previous); }
  Position End() { return Position(&end_); }
  Position PositionOf(Iterator iterator) { return Position(iterator.link_); }

  /// So many elements are going to be inserted from now on, about.
  void Expect(std::size_t elements) { pool_->Expect(elements); }

  /// Ensures that the next insertion does not throw for want of a node.
  void Reserve() { pool_->Reserve(); }

  /// Makes an element before `position`, which may be end. Throws `std::bad_alloc`, and then
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
    LinkedListLink* const next = position.link_;
    node->next = next;
    node->previous = next->previous;
    (node->previous != nullptr ? node->previous->next : first_) = node;
    next->previous = node;
    ++count_;
    return Position(node);
  }

  template <class... Arguments>
  Position Append(Arguments&&... arguments) {
    return Insert(End(), std::forward<Arguments>(arguments)...);
  }

  /// Moves all elements of `other`, a list on the same pool, after the last one. Positions that
  /// were taken from `other` are void.
  void TakeAll(LinkedList& other) noexcept {
    if (other.IsEmpty()) return;
    other.first_->previous = end_.previous;
    (end_.previous != nullptr ? end_.previous->next : first_) = other.first_;
    end_.previous = other.end_.previous;
    end_.previous->next = &end_;
    count_ += other.count_;
    other.Forget();
  }

  /// Removes the element at `position`; the result is the position after it.
  Position Erase(Position position) noexcept {
    Node* const node = static_cast<Node*>(position.link_);
    LinkedListLink* const next = node->next;
    (node->previous != nullptr ? node->previous->next : first_) = next;
    next->previous = node->previous;
    --count_;
    node->element.~Element();
    pool_->Give(node, node);
    return Position(next);
  }

  void Clear() noexcept {
    DestroyElements();
    if (pool_.use_count() == 1) {
      pool_->Reset();
    } else {
      GiveNodes();
    }
    Forget();
  }

 private:
  void DestroyElements() noexcept {
    if constexpr (!std::is_trivially_destructible_v<Element>) {
      for (Element& element : *this) element.~Element();
    }
  }

  void GiveNodes() noexcept {
    if (count_ != 0) pool_->Give(static_cast<Node*>(first_), static_cast<Node*>(end_.previous));
  }

  // The nodes are somebody else's now.
  void Forget() noexcept {
    first_ = &end_;
    end_.previous = nullptr;
    count_ = 0;
  }

  std::shared_ptr<Pool> pool_;
  mutable LinkedListLink end_{nullptr, nullptr};  // its `previous` is the last node
  LinkedListLink* first_ = &end_;
  std::size_t count_ = 0;
};

}  // namespace Configuration

#endif
