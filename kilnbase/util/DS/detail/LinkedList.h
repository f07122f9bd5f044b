// Linked lists as storages of structures.
#pragma once

#include <cstddef>
#include <new>

#include <kilnbase/util/DS/detail/Kind.h>
#include <kilnbase/util/DS/detail/NodeBlocks.h>

namespace vxKilnBase::detail {

struct SingleNode : Slot {
  SingleNode* next;
};

struct DoubleNode : Slot {
  DoubleNode* next;
  DoubleNode* previous;
};

template <class Node, int kTypeNumber>
struct LinkedList {
  static constexpr int kType = kTypeNumber;
  static constexpr bool kBothWays = requires(Node node) { node.previous; };

  static Slot* first(const void* data) { return data != nullptr ? ends(data).first : nullptr; }

  static Slot* last(const void* data) { return data != nullptr ? ends(data).last : nullptr; }

  static std::size_t count(const void* data) { return ends(data).nodes.count(); }

  static Slot* next(const void*, Slot* slot) { return nodeOf(slot)->next; }

  static Slot* previous(const void*, Slot* slot) requires kBothWays {
    return nodeOf(slot)->previous;
  }

  static void* make() { return new (std::nothrow) Ends; }

  static bool insert(void* data, Gap gap, void* item) {
    return insertNode(data, gap, item) != nullptr;
  }

  static Slot* remove(void* data, Slot* before, Slot* slot, Slot* later) {
    join(data, before, next(data, slot));
    ends(data).nodes.giveBack(nodeOf(slot));
    return later;
  }

  static void free(void* data) { delete static_cast<Ends*>(data); }

  // Nodes that were added one after another mostly lie side by side. Going on to `node + 1` instead
  // of to `node->next` does not wait until the link is read from memory.
  template <class Predicate>
  static Slot* firstWhere(const void* data, Predicate matches) {
    Node* node = nodeOf(first(data));
    while (node != nullptr) {
      for (;; ++node) {
        if (matches(node->item)) return node;
        if (node->next != node + 1) break;
      }
      node = node->next;
    }
    return nullptr;
  }

 protected:
  struct Ends {
    Node* first = nullptr;
    Node* last = nullptr;
    NodeBlocks<Node> nodes;
  };

  static const Ends& ends(const void* data) { return *static_cast<const Ends*>(data); }
  static Ends& ends(void* data) { return *static_cast<Ends*>(data); }

  static Node* nodeOf(Slot* slot) { return static_cast<Node*>(slot); }

  // Null when there is no memory.
  static Node* insertNode(void* data, Gap gap, void* item) {
    Node* node = ends(data).nodes.take();
    if (node == nullptr) return nullptr;
    node->item = item;
    join(data, gap.before, node);
    join(data, node, gap.after);
    return node;
  }

 private:
  // Makes two nodes neighbours. Null instead of a node stands for the end of the list.
  static void join(void* data, Slot* before, Slot* after) {
    (before != nullptr ? nodeOf(before)->next : ends(data).first) = nodeOf(after);
    if (after == nullptr) ends(data).last = nodeOf(before);
    if constexpr (kBothWays) {
      if (after != nullptr) nodeOf(after)->previous = nodeOf(before);
    }
  }
};

using SinglyLinked = LinkedList<SingleNode, DS_SLIST>;
using DoublyLinked = LinkedList<DoubleNode, DS_DLIST>;

}  // namespace vxKilnBase::detail
