#include <array>
#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <utility>

#include <kilnbase/util/DS/detail/Kind.h>

namespace {

using vxKilnBase::detail::Gap;
using vxKilnBase::detail::gapInOrder;
using vxKilnBase::detail::Slot;

enum Side { kLeft = 0, kRight = 1 };

Side opposite(Side side) {
  return side == kLeft ? kRight : kLeft;
}

struct Node : Slot {
  Node* parent;
  std::array<Node*, 2> children;
  std::uint32_t priority;
};

// A treap (R. Seidel and C. R. Aragon, "Randomized search trees", Algorithmica 16, 1996): the items
// are in order from left to right, and no node has a smaller priority than its children. Random
// priorities keep the depth logarithmic whatever the order of adding.
struct Tree : Node {  // The node above the root, which is its left child.
  std::array<Node*, 2> ends;
  std::size_t count;
  std::uint32_t random = 2463534242U;
  DS_Comparator comparator;  // What `consistent` is about; null for nothing.
  bool consistent;           // So far, all answers were those of one order of all items.
};

Node* nodeOf(Slot* slot) {
  return static_cast<Node*>(slot);
}

Tree* treeOf(void* data) {
  return static_cast<Tree*>(data);
}

Side sideOf(const Node* node) {
  return node->parent->children[kLeft] == node ? kLeft : kRight;
}

void attach(Node* parent, Side side, Node* child) {
  parent->children[side] = child;
  if (child != nullptr) child->parent = parent;
}

// Lets a node and its parent change places, keeping the order.
void rotateUp(Node* node) {
  Node* parent = node->parent;
  const Side side = sideOf(node);
  attach(parent->parent, sideOf(parent), node);
  attach(parent, side, node->children[opposite(side)]);
  attach(node, opposite(side), parent);
}

// The next node in order towards that side, of a node that is not the last one there.
Node* neighbour(Node* node, Side side) {
  if (Node* child = node->children[side]; child != nullptr) {
    while (child->children[opposite(side)] != nullptr) child = child->children[opposite(side)];
    return child;
  }
  while (sideOf(node) == side) node = node->parent;
  return node->parent;
}

// Xorshift (G. Marsaglia, "Xorshift RNGs", Journal of Statistical Software 8, 2003).
std::uint32_t nextRandom(std::uint32_t& state) {
  state ^= state << 13;
  state ^= state >> 17;
  state ^= state << 5;
  return state;
}

struct BinaryTree {
  static constexpr int kType = DS_BINTREE;

  static Slot* first(const void* data) { return end(data, kLeft); }
  static Slot* last(const void* data) { return end(data, kRight); }
  static Slot* next(const void* data, Slot* slot) { return step(data, slot, kRight); }
  static Slot* previous(const void* data, Slot* slot) { return step(data, slot, kLeft); }

  // The promised place is found by asking in order. Under a comparator that orders the items and
  // answers -1, 0 or 1 a binary search finds the same one.
  static Gap place(void* data, DS_Comparator comparator, void* item) {
    if (first(data) == nullptr) return {};
    Tree& tree = *treeOf(data);
    if (tree.comparator != comparator) {
      tree.comparator = comparator;
      tree.consistent = !isConstant(comparator) && isInOrder(tree);
    }
    if (tree.consistent && tree.count < kProbation) tree.consistent = isMonotone(tree, item);
    if (tree.consistent && tree.count >= kProbation) {
      if (const std::optional<Gap> gap = search(tree, item)) return *gap;
      tree.consistent = false;
    }
    return gapInOrder<BinaryTree>(data, comparator, item);
  }

  static void reordered(Slot* slot) {
    Node* node = nodeOf(slot);
    while (node->parent != nullptr) node = node->parent;
    Tree& tree = *static_cast<Tree*>(node);
    tree.comparator = nullptr;
    tree.consistent = false;
  }

  static void* make() { return new (std::nothrow) Tree(); }

  static bool insert(void* data, Gap gap, void* item) {
    Node* node = new (std::nothrow) Node{};
    if (node == nullptr) return false;
    Tree& tree = *treeOf(data);
    node->item = item;
    node->priority = nextRandom(tree.random);
    insertLeaf(tree, gap, node);
    while (node->parent != &tree && node->parent->priority < node->priority) rotateUp(node);
    ++tree.count;
    return true;
  }

  static Slot* remove(void* data, Slot* before, Slot* slot, Slot* later) {
    Tree& tree = *treeOf(data);
    Node* node = nodeOf(slot);
    if (node == tree.ends[kLeft]) tree.ends[kLeft] = nodeOf(next(data, slot));
    if (node == tree.ends[kRight]) tree.ends[kRight] = nodeOf(before);
    unlink(node);
    --tree.count;
    return later;
  }

  static void free(void* data) {
    if (data == nullptr) return;
    Node* top = treeOf(data);
    for (Node* node = top; node != nullptr;) {
      Node*& branch = node->children[node->children[kLeft] != nullptr ? kLeft : kRight];
      if (branch != nullptr) {
        node = std::exchange(branch, nullptr);
      } else {
        Node* parent = node->parent;
        if (node != top) delete node;
        node = parent;
      }
    }
    delete treeOf(data);
  }

 private:
  // The number of items up to which a comparator is asked about all of them and its answers are
  // compared. One that does not order items, or has other answers, shows it here.
  static constexpr std::size_t kProbation = 32;

  static Slot* end(const void* data, Side side) {
    return data != nullptr ? static_cast<const Tree*>(data)->ends[side] : nullptr;
  }

  static Slot* step(const void* data, Slot* slot, Side side) {
    return slot == end(data, side) ? nullptr : neighbour(nodeOf(slot), side);
  }

  // One side of the gap is free.
  static void insertLeaf(Tree& tree, Gap gap, Node* node) {
    Node* before = nodeOf(gap.before);
    Node* after = nodeOf(gap.after);
    if (before == nullptr) tree.ends[kLeft] = node;
    if (after == nullptr) tree.ends[kRight] = node;
    if (before != nullptr && before->children[kRight] == nullptr) {
      attach(before, kRight, node);
    } else {
      attach(after != nullptr ? after : &tree, kLeft, node);
    }
  }

  static void unlink(Node* node) {
    while (node->children[kLeft] != nullptr && node->children[kRight] != nullptr) {
      const bool leftIsHigher = node->children[kLeft]->priority > node->children[kRight]->priority;
      rotateUp(node->children[leftIsHigher ? kLeft : kRight]);
    }
    Node* child = node->children[node->children[kLeft] != nullptr ? kLeft : kRight];
    attach(node->parent, sideOf(node), child);
    delete node;
  }

  static bool isConstant(DS_Comparator comparator) {
    return comparator == nullptr || comparator == Ds_fifo_comparator ||
           comparator == Ds_filo_comparator;
  }

  // Whether an item that equals one end compares with the other as that end does. One that equals
  // items which differ, as a NaN does among numbers, does not.
  static bool fitsEnds(const Tree& tree, const Slot* slot) {
    const Slot* const front = first(&tree);
    const Slot* const back = last(&tree);
    const int toFront = tree.comparator(slot, front), toBack = tree.comparator(slot, back);
    return (toFront != 0 || toBack == tree.comparator(front, back)) &&
           (toBack != 0 || toFront == tree.comparator(back, front));
  }

  // Whether no item is less than the one before it, by answers of 0 and 1.
  static bool isInOrder(const Tree& tree) {
    Slot* slot = first(&tree);
    for (Slot* later = next(&tree, slot); later != nullptr; later = next(&tree, later)) {
      const int answer = tree.comparator(later, slot);
      if ((answer != 0 && answer != 1) || !fitsEnds(tree, later)) return false;
      slot = later;
    }
    return true;
  }

  // Whether the answers about an item go from 1 by way of 0 to -1 along the order.
  static bool isMonotone(const Tree& tree, void* item) {
    const Slot added{item};
    if (!fitsEnds(tree, &added)) return false;
    int least = 1;
    for (Slot* slot = first(&tree); slot != nullptr; slot = next(&tree, slot)) {
      const int answer = tree.comparator(&added, slot);
      if (answer > least || answer < -1) return false;
      least = answer;
    }
    return true;
  }

  // The gap by binary search; nothing when the comparator answers anything but -1, 0 and 1. One
  // that answers with differences shows it best at the front, which is asked first.
  static std::optional<Gap> search(const Tree& tree, void* item) {
    const Slot added{item};
    Slot* const front = first(&tree);
    int answer = tree.comparator(&added, front);
    if (!fitsEnds(tree, &added)) return std::nullopt;
    if (answer == 0 || answer == -1) return Gap{nullptr, front};
    Gap gap{};
    Node* node = tree.children[kLeft];
    while (node != nullptr && answer <= 1 && answer >= -1) {
      answer = tree.comparator(&added, node);
      (answer == 1 ? gap.before : gap.after) = node;
      node = node->children[answer == 1 ? kRight : kLeft];
    }
    if (answer > 1 || answer < -1) return std::nullopt;
    return gap;
  }
};

}  // namespace

DS_DEFINE_KIND(bintree, BinaryTree, nullptr)
