#include <array>
#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>

#include <kilnbase/util/DS/detail/LinkedList.h>

namespace {

using vxKilnBase::detail::Gap;
using vxKilnBase::detail::gapInOrder;
using vxKilnBase::detail::LinkedList;
using vxKilnBase::detail::Slot;

enum Side { kLeft = 0, kRight = 1 };

Side opposite(Side side) {
  return side == kLeft ? kRight : kLeft;
}

// `next` and `previous` are the neighbours in order.
struct Node : Slot {
  Node* next;
  Node* previous;
  Node* parent;
  std::array<Node*, 2> children;
  std::uint32_t priority;
};

Side sideOf(const Node* node) {
  return node->parent->children[kLeft] == node ? kLeft : kRight;
}

void attach(Node* parent, Side side, Node* child) {
  parent->children[side] = child;
  if (child != nullptr) child->parent = parent;
}

// Lets a node and its parent change places; the order of the items stays.
void rotateUp(Node* node) {
  Node* parent = node->parent;
  const Side side = sideOf(node);
  attach(parent->parent, sideOf(parent), node);
  attach(parent, side, node->children[opposite(side)]);
  attach(node, opposite(side), parent);
}

// Xorshift (G. Marsaglia, "Xorshift RNGs", Journal of Statistical Software 8, 2003).
std::uint32_t nextRandom(std::uint32_t& state) {
  state ^= state << 13;
  state ^= state >> 17;
  state ^= state << 5;
  return state;
}

// A treap (R. Seidel and C. R. Aragon, "Randomized search trees", Algorithmica 16, 1996) over a
// linked list: the items are in order from left to right, and no node has a smaller priority than
// its children. Random priorities keep the depth logarithmic whatever the order of adding.
struct BinaryTree : LinkedList<Node, DS_BINTREE> {
  // The gap that `gapInOrder` finds: by binary search while the items are in the comparator's
  // order.
  static Gap place(void* data, DS_Comparator comparator, void* item) {
    Tree& tree = treeOf(data);
    const bool isInOrder = first(data) == nullptr || tree.order == comparator;
    tree.order = isInOrder && comparator != Ds_fifo_comparator ? comparator : nullptr;
    if (tree.order != nullptr) {
      if (const std::optional<Gap> gap = search(tree, item)) return *gap;
      tree.order = nullptr;
    }
    return gapInOrder<BinaryTree>(data, comparator, item);
  }

  static void reordered(Slot* slot, DS_Comparator comparator) {
    Node* node = nodeOf(slot);
    while (node->parent != nullptr) node = node->parent;
    static_cast<Tree*>(node)->order = comparator;
  }

  static void* make() { return static_cast<Ends*>(new (std::nothrow) Tree()); }

  static bool insert(void* data, Gap gap, void* item) {
    Node* node = insertNode(data, gap, item);
    if (node == nullptr) return false;
    Tree& tree = treeOf(data);
    node->children = {};
    node->priority = nextRandom(tree.random);
    attachLeaf(tree, nodeOf(gap.before), nodeOf(gap.after), node);
    while (node->parent != &tree && node->parent->priority < node->priority) rotateUp(node);
    return true;
  }

  static Slot* remove(void* data, Slot* before, Slot* slot, Slot* later) {
    detach(nodeOf(slot));
    return LinkedList::remove(data, before, slot, later);
  }

  static void free(void* data) {
    if (data != nullptr) delete &treeOf(data);
  }

 private:
  // The tree itself is a node whose left child is the root.
  struct Tree : Ends, Node {
    std::uint32_t random = 2463534242U;
    DS_Comparator order;  // All items are in the order of this comparator; null for none.
  };

  static Tree& treeOf(void* data) { return static_cast<Tree&>(ends(data)); }

  // One of the two neighbours has no child on the side of the gap.
  static void attachLeaf(Tree& tree, Node* before, Node* after, Node* node) {
    if (before != nullptr && before->children[kRight] == nullptr) {
      attach(before, kRight, node);
    } else {
      attach(after != nullptr ? after : &tree, kLeft, node);
    }
  }

  static void detach(Node* node) {
    while (node->children[kLeft] != nullptr && node->children[kRight] != nullptr) {
      const bool leftIsHigher = node->children[kLeft]->priority > node->children[kRight]->priority;
      rotateUp(node->children[leftIsHigher ? kLeft : kRight]);
    }
    Node* child = node->children[node->children[kLeft] != nullptr ? kLeft : kRight];
    attach(node->parent, sideOf(node), child);
  }

  // Nothing when the comparator answers more than 1. Only exactly 1 counts as greater, so such an
  // answer puts an item in front of a lesser one, and the items are in no order from then on. The
  // front is asked first: a comparator that answers with differences of integers gives itself away
  // there before the items lose their order.
  static std::optional<Gap> search(const Tree& tree, void* item) {
    const Slot added{item};
    Node* const front = tree.first;
    int answer = front != nullptr ? tree.order(&added, front) : 1;
    if (answer < 1) return Gap{nullptr, front};
    Gap gap{};
    Node* node = tree.children[kLeft];
    while (node != nullptr && answer <= 1) {
      answer = tree.order(&added, node);
      (answer == 1 ? gap.before : gap.after) = node;
      node = node->children[answer == 1 ? kRight : kLeft];
    }
    if (answer > 1) return std::nullopt;
    return gap;
  }
};

}  // namespace

DS_DEFINE_KIND(bintree, BinaryTree, nullptr)
