#include <cstddef>
#include <cstdint>

#include <kilnbase/detail/assert.h>
#include <kilnbase/util/mr_avl.h>

namespace {

// As `direction` has it.
enum Side : std::uint8_t { kNeither, kLeft, kRight };

Side opposite(Side side) {
  return side == kLeft ? kRight : kLeft;
}

Side sideOf(int order) {
  return order < 0 ? kLeft : kRight;
}

// The balance of a node that is one level higher on that side.
std::int16_t leanTo(std::uint8_t direction) {
  return direction == kRight ? 1 : -1;
}

// The left or the right link, found without a jump: nobody can foresee which way a search goes.
MR_AvlNode** linkBelow(MR_AvlNode* node, bool right) {
  char* const bytes = reinterpret_cast<char*>(node);
  return reinterpret_cast<MR_AvlNode**>(bytes + right * offsetof(MR_AvlNode, right));
}

MR_AvlNode*& child(MR_AvlNode* node, std::uint8_t side) {
  return *linkBelow(node, side == kRight);
}

// Field by field: a record may go on in the padding.
void clear(MR_AvlNode* node) {
  node->left = nullptr;
  node->right = nullptr;
  node->balance = 0;
  node->direction = 0;
}

// The child on that side takes the node's place, and the node becomes the child's child.
MR_AvlNode* rotate(MR_AvlNode* node, Side side) {
  MR_AvlNode* const up = child(node, side);
  child(node, side) = child(up, opposite(side));
  child(up, opposite(side)) = node;
  return up;
}

// A double rotation: the inner grandchild on that side takes the node's place.
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

// Rotates when the balance of the node at the link demands it; tells whether it did. It does not
// where the balances, left over from a removal without rebalancing, claim nodes that are not there.
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

// Of a tree whose balances are right.
int heightOf(const MR_AvlNode* node) {
  int height = 0;
  for (; node != nullptr; node = node->balance < 0 ? node->left : node->right) ++height;
  return height;
}

// Balances the tree at the link, both of whose subtrees are balanced. Whatever stands before it in
// post-order is balanced too, so that the first nodes to rotate are below the last rotation.
void rebalanceSubtree(MR_AvlNode*& link) {
  do {
    const int balance = heightOf(link->right) - heightOf(link->left);
    link->balance = static_cast<std::int16_t>(balance);
    if (!rebalance(link)) return;
    rebalanceSubtree(link->left);
    rebalanceSubtree(link->right);
  } while (true);
}

// The way from the root to a node, to go back on. The steps of the first levels are noted here; the
// tree has no room for deeper ones but in the link that each goes down, which holds the step before
// until it is put back (link inversion; Schorr and Waite, Comm. ACM 10, 1967). A step is the
// address of its upper node plus its side.
class Path {
 public:
  static constexpr unsigned kMostNoted = 128;

  explicit Path(unsigned noted) : noted_(noted) {}

  bool atRoot() const { return depth_ == 0; }

  void down(MR_AvlNode*& node, Side side) {
    char* const step = reinterpret_cast<char*>(node) + side;
    MR_AvlNode*& link = child(node, side);
    node = link;
    if (depth_ < noted_) {
      steps_[depth_] = step;
    } else {
      link = reinterpret_cast<MR_AvlNode*>(deepest_);
      deepest_ = step;
    }
    ++depth_;
  }

  // Tells from which side it came up.
  Side up(MR_AvlNode*& node) {
    --depth_;
    char* const step = depth_ < noted_ ? steps_[depth_] : deepest_;
    const Side side = static_cast<Side>(reinterpret_cast<std::uintptr_t>(step) & kSideBits);
    MR_AvlNode* const parent = reinterpret_cast<MR_AvlNode*>(step - side);
    if (depth_ >= noted_) {
      MR_AvlNode*& link = child(parent, side);
      deepest_ = reinterpret_cast<char*>(link);
      link = node;
    }
    node = parent;
    return side;
  }

 private:
  static constexpr std::uintptr_t kSideBits = kLeft | kRight;
  static_assert(alignof(MR_AvlNode) > kSideBits);

  const unsigned noted_;
  unsigned depth_ = 0;
  char* deepest_ = nullptr;
  char* steps_[kMostNoted];
};

// Goes round the tree from its root and back to it, until a call returns anything but 0. Calls
// `between` for each node between its subtrees and `after` behind both; the latter may put another
// node in its place.
template <class Between, class After>
int traverse(MR_AvlNode*& node, unsigned noted, Between between, After after) {
  if (node == nullptr) return 0;
  Path path(noted);
  Side done = kNeither;
  int result = 0;
  while (result == 0) {
    if (done == kNeither && node->left != nullptr) {
      path.down(node, kLeft);
      continue;
    }
    if (done != kRight) result = between(node);
    if (result == 0 && done != kRight && node->right != nullptr) {
      path.down(node, kRight);
      done = kNeither;
      continue;
    }
    if (result == 0) result = after(node);
    if (path.atRoot()) return result;
    done = path.up(node);
  }
  while (!path.atRoot()) path.up(node);
  return result;
}

int goOn(MR_AvlNode*) {
  return 0;
}

template <class Visit>
int walkInorder(MR_AvlNode* root, Visit visit) {
  return traverse(root, Path::kMostNoted, visit, goOn);
}

template <class Visit>
int walkPostorder(MR_AvlNode* root, Visit visit) {
  return traverse(root, Path::kMostNoted, goOn, visit);
}

MR_AvlNode* outermost(MR_AvlNode* node, Side side) {
  if (node == nullptr) return nullptr;
  while (child(node, side) != nullptr) node = child(node, side);
  return node;
}

// The next node on that side of the one that compares equal to the key.
MR_AvlNode* neighbour(MR_AvlNode* root, const void* key, MR_AvlCompare compare, Side side) {
  KILN_ASSERT(compare != nullptr);
  MR_AvlNode* turn = nullptr;  // the last node from which the search went away from that side
  for (MR_AvlNode* node = root; node != nullptr;) {
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

// The link that points to the node, or null when the search for it ends elsewhere.
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

// What takes the place of a node that is removed.
MR_AvlNode* joined(MR_AvlNode* left, MR_AvlNode* right) {
  if (right == nullptr) return left;
  outermost(right, kLeft)->left = left;
  return right;
}

}  // namespace

int MR_avl_insert(MR_AvlNode** root, MR_AvlNode* node, MR_AvlCompare compare) {
  if (root == nullptr || node == nullptr || compare == nullptr) return -1;
  MR_AvlNode** link = root;
  MR_AvlNode** critical = root;  // the last link on the way to a node with a balance, or the root
  while (MR_AvlNode* const at = *link) {
    if (at->balance != 0) critical = link;
    const int order = compare(node, at);
    if (order == 0) {
      if (at != node) clear(node);
      return 1;
    }
    const bool right = order > 0;
    at->direction = static_cast<std::uint8_t>(kLeft + right);
    link = linkBelow(at, right);
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
  if (root != nullptr) traverse(*root, 0, goOn, rebalanceOne);
  return 1;
}

MR_AvlNode* MR_avl_find(MR_AvlNode* root, const void* key, MR_AvlCompare compare) {
  KILN_ASSERT(compare != nullptr);
  MR_AvlNode* node = root;
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
