#include <new>

#include <kilnbase/util/DS/detail/Kind.h>

namespace {

using vxKilnBase::detail::Gap;
using vxKilnBase::detail::Slot;

struct SingleNode {
  void* item;
  SingleNode* next;
};

struct DoubleNode {
  void* item;
  DoubleNode* next;
  DoubleNode* previous;
};

template <class Node, int kTypeNumber>
struct LinkedList {
  static constexpr int kType = kTypeNumber;

  static Slot first(const void* data) {
    return data != nullptr ? slotOf(ends(data).first) : nullptr;
  }

  static Slot last(const void* data) { return data != nullptr ? slotOf(ends(data).last) : nullptr; }

  static Slot next(const void*, Slot slot) { return slotOf(nodeOf(slot)->next); }

  static Slot previous(const void* data, Slot slot) {
    if constexpr (kBothWays) {
      return slotOf(nodeOf(slot)->previous);
    } else {
      Slot before = nullptr;
      for (Slot at = first(data); at != slot; at = next(data, at)) before = at;
      return before;
    }
  }

  static bool insert(void*& data, Gap gap, void* item) {
    if (data == nullptr) data = new (std::nothrow) Ends{};
    Node* node = data != nullptr ? new (std::nothrow) Node{} : nullptr;
    if (node == nullptr) return false;
    node->item = item;
    join(data, gap.before, slotOf(node));
    join(data, slotOf(node), gap.after);
    return true;
  }

  static Slot remove(void* data, Slot before, Slot slot, Slot later) {
    join(data, before, next(data, slot));
    delete nodeOf(slot);
    return later;
  }

  static void clear(void*& data) {
    for (Slot slot = first(data); slot != nullptr;) {
      const Slot later = next(data, slot);
      delete nodeOf(slot);
      slot = later;
    }
    delete static_cast<Ends*>(data);
    data = nullptr;
  }

 private:
  static constexpr bool kBothWays = requires(Node node) { node.previous; };

  struct Ends {
    Node* first;
    Node* last;
  };

  static const Ends& ends(const void* data) { return *static_cast<const Ends*>(data); }

  static Node* nodeOf(Slot slot) { return reinterpret_cast<Node*>(slot); }
  static Slot slotOf(Node* node) { return reinterpret_cast<Slot>(node); }

  // Makes two nodes neighbours; null stands for the list's end on that side.
  static void join(void* data, Slot before, Slot after) {
    Ends& ends = *static_cast<Ends*>(data);
    (before != nullptr ? nodeOf(before)->next : ends.first) = nodeOf(after);
    if (after == nullptr) ends.last = nodeOf(before);
    if constexpr (kBothWays) {
      if (after != nullptr) nodeOf(after)->previous = nodeOf(before);
    }
  }
};

using SinglyLinked = LinkedList<SingleNode, DS_SLIST>;
using DoublyLinked = LinkedList<DoubleNode, DS_DLIST>;

}  // namespace

DS_DEFINE_KIND(dlist, DoublyLinked, nullptr)
DS_DEFINE_KIND(slist, SinglyLinked, nullptr)
