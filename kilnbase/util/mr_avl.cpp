#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

#include <kilnbase/detail/assert.h>
#include <kilnbase/util/mr_avl.h>
#include <kilnbase/util/mr_status.h>

namespace {

// The values of `direction`.
enum Side : std::uint8_t { kLeft = 1, kRight = 2 };

Side opposite(Side side) {
  return side == kLeft ? kRight : kLeft;
}

Side sideOf(int order) {
  return order < 0 ? kLeft : kRight;
}

// The balance of a node that is one level higher on that side, found without a jump.
std::int16_t leanTo(std::uint8_t direction) {
  return static_cast<std::int16_t>(2 * direction - (kLeft + kRight));
}

// The left or the right link, found without a jump, since a processor cannot predict which way a
// search goes.
MR_AvlNode** linkBelow(MR_AvlNode* node, bool right) {
  char* const bytes = reinterpret_cast<char*>(node);
  return reinterpret_cast<MR_AvlNode**>(bytes + right * offsetof(MR_AvlNode, right));
}

MR_AvlNode*& child(MR_AvlNode* node, std::uint8_t side) {
  return *linkBelow(node, side == kRight);
}

// Picks one of two nodes, in registers alone and without a jump.
MR_AvlNode* pick(MR_AvlNode* left, MR_AvlNode* right, bool isRight) {
  const auto mask = -static_cast<std::uintptr_t>(isRight);
  const auto leftBits = std::bit_cast<std::uintptr_t>(left);
  const auto rightBits = std::bit_cast<std::uintptr_t>(right);
  return std::bit_cast<MR_AvlNode*>(leftBits ^ ((leftBits ^ rightBits) & mask));
}

// Field by field, since the bytes behind `direction` may belong to the record.
void clear(MR_AvlNode* node) {
  node->left = nullptr;
  node->right = nullptr;
  node->balance = 0;
  node->direction = 0;
}

// The child on the given side takes the place of the node, and the node becomes a child of it.
MR_AvlNode* rotate(MR_AvlNode* node, Side side) {
  MR_AvlNode* const up = child(node, side);
  child(node, side) = child(up, opposite(side));
  child(up, opposite(side)) = node;
  return up;
}

// A double rotation: the inner grandchild on the given side takes the place of the node.
MR_AvlNode* rotateTwice(MR_AvlNode* node, Side side) {
  MR_AvlNode* const near = child(node, side);
  MR_AvlNode* const inner = child(near, opposite(side));
  const int lean = leanTo(side);
  node->balance = inner->balance == lean ? leanTo(opposite(side)) : std::int16_t{0};
  near->balance = inner->balance == -lean ? leanTo(side) : std::int16_t{0};
  inner->balance = 0;
  child(node, side) = rotate(near, opposite(side));
  return rotate(node, side);
}

// Rotates at the link if the balance of the node there is beyond -1 to 1; returns whether it did.
// After a removal without rebalancing a balance may claim nodes that are not there; then nothing is
// rotated.
bool rebalance(MR_AvlNode*& link) {
  MR_AvlNode* const node = link;
  if (node->balance >= -1 && node->balance <= 1) return false;
  const Side higher = sideOf(node->balance);
  MR_AvlNode* const near = child(node, higher);
  if (near == nullptr) return false;
  if (near->balance == leanTo(higher)) {
    node->balance = 0;
    near->balance = 0;
    link = rotate(node, higher);
    return true;
  }
  if (child(near, opposite(higher)) == nullptr) return false;
  link = rotateTwice(node, higher);
  return true;
}

// The height of a tree whose balances are right.
int heightOf(const MR_AvlNode* node) {
  int height = 0;
  for (; node != nullptr; node = node->balance < 0 ? node->left : node->right) ++height;
  return height;
}

// Balances the tree at the link, both subtrees of which are balanced. After a rotation only nodes
// below the link can be out of balance, and they come before its node in post-order.
void rebalanceSubtree(MR_AvlNode*& link) {
  do {
    const int balance = heightOf(link->right) - heightOf(link->left);
    link->balance = static_cast<std::int16_t>(balance);
    if (!rebalance(link)) return;
    rebalanceSubtree(link->left);
    rebalanceSubtree(link->right);
  } while (true);
}

// The links from the root down to a node. The first 128, more than the levels of any balanced tree,
// stand in the object itself; a longer path moves to the heap.
class Path {
 public:
  bool isEmpty() const { return depth_ == 0; }
  MR_AvlNode** last() const { return links_[depth_ - 1]; }
  MR_AvlNode** pop() { return links_[--depth_]; }

  // False when there is no memory.
  bool push(MR_AvlNode** link) {
    if (depth_ == room_ && !grow()) return false;
    links_[depth_++] = link;  // NOLINT(clang-analyzer-cplusplus.NewDelete): room_ is never 0
    return true;
  }

 private:
  bool grow() {
    std::unique_ptr<MR_AvlNode**[]> larger(new (std::nothrow) MR_AvlNode**[2 * room_]);
    if (larger == nullptr) return false;
    std::copy_n(links_, depth_, larger.get());
    heap_ = std::move(larger);
    links_ = heap_.get();
    room_ *= 2;
    return true;
  }

  MR_AvlNode** own_[128];
  std::unique_ptr<MR_AvlNode**[]> heap_;
  MR_AvlNode*** links_ = own_;
  std::size_t room_ = std::size(own_);
  std::size_t depth_ = 0;
};

// Calls `visit` for each node, after its left and before its right subtree, until a call returns
// anything but 0. Returns that, or 0 at the end, or MR_MEMORY_FAULT.
template <class Visit>
int walkInorder(MR_AvlNode* root, Visit visit) {
  Path path;
  for (MR_AvlNode** link = &root;;) {
    for (; *link != nullptr; link = &(*link)->left) {
      if (!path.push(link)) return MR_MEMORY_FAULT;
    }
    if (path.isEmpty()) return 0;
    MR_AvlNode* const node = *path.pop();
    if (const int result = visit(node); result != 0) return result;
    link = &node->right;
  }
}

MR_AvlNode*& firstChild(MR_AvlNode* node) {
  return node->left != nullptr ? node->left : node->right;
}

// Calls `visit` for the link to each node, after both subtrees of the node, and returns as
// `walkInorder` does. `visit` may free the node or put another one into the link.
template <class Visit>
int walkPostorder(MR_AvlNode*& root, Visit visit) {
  Path path;
  MR_AvlNode* none = nullptr;
  for (MR_AvlNode** link = &root;;) {
    for (; *link != nullptr; link = &firstChild(*link)) {
      if (!path.push(link)) return MR_MEMORY_FAULT;
    }
    if (path.isEmpty()) return 0;
    MR_AvlNode** const done = path.pop();
    if (const int result = visit(*done); result != 0) return result;
    const bool wasLeft = !path.isEmpty() && done == &(*path.last())->left;
    link = wasLeft ? &(*path.last())->right : &none;
  }
}

MR_AvlNode* outermost(MR_AvlNode* node, Side side) {
  if (node == nullptr) return nullptr;
  while (child(node, side) != nullptr) node = child(node, side);
  return node;
}

// The next node on the given side of the node that compares equal to the key.
MR_AvlNode* neighbour(MR_AvlNode* root, const void* key, MR_AvlCompare compare, Side side) {
  KILN_ASSERT(compare != nullptr);
  MR_AvlNode* turn = nullptr;  // the last node from which the search went to the other side
  for (MR_AvlNode* node = compare != nullptr ? root : nullptr; node != nullptr;) {
    const int order = compare(key, node);
    if (order == 0) {
      MR_AvlNode* const next = child(node, side);
      return next != nullptr ? outermost(next, opposite(side)) : turn;
    }
    const Side way = sideOf(order);
    if (way != side) turn = node;
    node = child(node, way);
  }
  return nullptr;
}

// The link that points to the node; null when the search ends at an equal node or at none.
MR_AvlNode** linkTo(MR_AvlNode** root, const MR_AvlNode* node, MR_AvlCompare compare) {
  MR_AvlNode** link = root;
  while (*link != node) {
    if (*link == nullptr) return nullptr;
    const int order = compare(node, *link);
    if (order == 0) return nullptr;
    link = &child(*link, sideOf(order));
  }
  return link;
}

// The tree that takes the place of a removed node with these subtrees.
MR_AvlNode* joined(MR_AvlNode* left, MR_AvlNode* right) {
  if (right == nullptr) return left;
  outermost(right, kLeft)->left = left;
  return right;
}

}  // namespace

int MR_avl_insert(MR_AvlNode** root, MR_AvlNode* node, MR_AvlCompare compare) {
  if (root == nullptr || node == nullptr || compare == nullptr) return -1;
  MR_AvlNode** link = root;
  MR_AvlNode** critical = root;  // the last link on the way whose node has a balance other than 0
  for (MR_AvlNode* at = *root; at != nullptr;) {
    // Reading both children starts while the comparator decides between them.
    MR_AvlNode* const left = at->left;
    MR_AvlNode* const right = at->right;
    __builtin_prefetch(left);
    __builtin_prefetch(right);
    if (at->balance != 0) critical = link;
    const int order = compare(node, at);
    if (order == 0) {
      if (at != node) clear(node);
      return 1;
    }
    const bool goesRight = order > 0;
    at->direction = static_cast<std::uint8_t>(kLeft + goesRight);
    link = linkBelow(at, goesRight);
    at = pick(left, right, goesRight);
  }
  clear(node);
  *link = node;
  for (MR_AvlNode* at = *critical; at != node; at = child(at, at->direction)) {
    at->balance = static_cast<std::int16_t>(at->balance + leanTo(at->direction));
  }
  rebalance(*critical);
  return 0;
}

int MR_avl_remove(MR_AvlNode** root, MR_AvlNode* node, MR_AvlCompare compare) {
  const int result = MR_bt_remove(root, node, compare);
  if (result == 0) MR_avl_balance(root);
  return result;
}

int MR_bt_remove(MR_AvlNode** root, MR_AvlNode* node, MR_AvlCompare compare) {
  const bool given = root != nullptr && node != nullptr && compare != nullptr;
  KILN_ASSERT(given);
  MR_AvlNode** const link = given ? linkTo(root, node, compare) : nullptr;
  if (link == nullptr) return 1;
  *link = joined(node->left, node->right);
  return 0;
}

int MR_avl_balance(MR_AvlNode** root) {
  KILN_ASSERT(root != nullptr);
  const auto rebalanceOne = [](MR_AvlNode*& link) {
    rebalanceSubtree(link);
    return 0;
  };
  return root == nullptr || walkPostorder(*root, rebalanceOne) == 0 ? 1 : 0;
}

MR_AvlNode* MR_avl_find(MR_AvlNode* root, const void* key, MR_AvlCompare compare) {
  KILN_ASSERT(compare != nullptr);
  MR_AvlNode* node = compare != nullptr ? root : nullptr;
  while (node != nullptr) {
    const int order = compare(key, node);
    if (order == 0) break;
    node = *linkBelow(node, order > 0);
  }
  return node;
}

MR_AvlNode* MR_avl_first(MR_AvlNode* root) {
  return outermost(root, kLeft);
}

MR_AvlNode* MR_avl_last(MR_AvlNode* root) {
  return outermost(root, kRight);
}

MR_AvlNode* MR_avl_next(MR_AvlNode* root, const void* key, MR_AvlCompare compare) {
  return neighbour(root, key, compare, kRight);
}

MR_AvlNode* MR_avl_prev(MR_AvlNode* root, const void* key, MR_AvlCompare compare) {
  return neighbour(root, key, compare, kLeft);
}

MR_AvlNode* MR_avl_left(MR_AvlNode* node) {
  return node != nullptr ? node->left : nullptr;
}

MR_AvlNode* MR_avl_right(MR_AvlNode* node) {
  return node != nullptr ? node->right : nullptr;
}

int MR_avl_inorder(MR_AvlNode* root, MR_AvlVisit visit) {
  return walkInorder(root, visit);
}

int MR_avl_inorder_user(MR_AvlNode* root, MR_AvlVisitUser visit, void* user) {
  return walkInorder(root, [=](MR_AvlNode* node) { return visit(node, user); });
}

int MR_avl_postorder(MR_AvlNode* root, MR_AvlVisit visit) {
  return walkPostorder(root, visit);
}

int MR_avl_postorder_user(MR_AvlNode* root, MR_AvlVisitUser visit, void* user) {
  return walkPostorder(root, [=](MR_AvlNode* node) { return visit(node, user); });
}
