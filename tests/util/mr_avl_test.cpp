#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include <kilnbase/util/mr_avl.h>

namespace {

struct Item {
  explicit Item(int number = 0) : key(number) { std::memset(&node, 0x5a, sizeof node); }

  MR_AvlNode node;
  int key;
};

int keyOf(const void* node) {
  return static_cast<const Item*>(node)->key;
}

int compareItems(const void* a, const void* b) {
  return keyOf(a) - keyOf(b);
}

int compareKey(const void* key, const void* node) {
  return *static_cast<const int*>(key) - keyOf(node);
}

// "(left) key:balance:direction (right)"
std::string text(const MR_AvlNode* node) {
  if (node == nullptr) return "";
  const std::string left = node->left != nullptr ? "(" + text(node->left) + ") " : "";
  const std::string right = node->right != nullptr ? " (" + text(node->right) + ")" : "";
  return left + std::to_string(keyOf(node)) + ":" + std::to_string(node->balance) + ":" +
         std::to_string(node->direction) + right;
}

// The definition of the operations, word by word: heights anew for each pass, a rotation a pass.
namespace plain {

int height(const MR_AvlNode* node) {
  return node == nullptr ? 0 : 1 + std::max(height(node->left), height(node->right));
}

void setBalances(MR_AvlNode* node) {
  if (node == nullptr) return;
  setBalances(node->left);
  setBalances(node->right);
  node->balance = static_cast<std::int16_t>(height(node->right) - height(node->left));
}

bool rotateLeftHeavy(MR_AvlNode*& link) {
  MR_AvlNode *const n = link, *const l = n->left;
  if (l == nullptr) return false;
  MR_AvlNode* const g = l->right;
  if (l->balance == -1) {
    n->left = l->right, l->right = n, link = l;
    n->balance = l->balance = 0;
  } else if (g != nullptr) {
    l->right = g->left, n->left = g->right, g->left = l, g->right = n, link = g;
    n->balance = g->balance == -1 ? 1 : 0;
    l->balance = g->balance == 1 ? -1 : 0;
    g->balance = 0;
  }
  return true;
}

bool rotateRightHeavy(MR_AvlNode*& link) {
  MR_AvlNode *const n = link, *const r = n->right;
  if (r == nullptr) return false;
  MR_AvlNode* const g = r->left;
  if (r->balance == 1) {
    n->right = r->left, r->left = n, link = r;
    n->balance = r->balance = 0;
  } else if (g != nullptr) {
    r->left = g->right, n->right = g->left, g->right = r, g->left = n, link = g;
    n->balance = g->balance == 1 ? -1 : 0;
    r->balance = g->balance == -1 ? 1 : 0;
    g->balance = 0;
  }
  return true;
}

bool rotate(MR_AvlNode*& link) {
  if (link->balance < -1) return rotateLeftHeavy(link);
  return link->balance > 1 && rotateRightHeavy(link);
}

bool rotateFirst(MR_AvlNode*& link) {
  return link != nullptr && (rotateFirst(link->left) || rotateFirst(link->right) || rotate(link));
}

void balance(MR_AvlNode*& root) {
  do setBalances(root);
  while (rotateFirst(root));
}

int insert(MR_AvlNode*& root, MR_AvlNode* node) {
  node->left = node->right = nullptr;
  node->balance = node->direction = 0;
  MR_AvlNode **link = &root, **critical = &root;
  while (*link != nullptr) {
    if ((*link)->balance != 0) critical = link;
    const int order = compareItems(node, *link);
    if (order == 0) return 1;
    (*link)->direction = order < 0 ? 1 : 2;
    link = order < 0 ? &(*link)->left : &(*link)->right;
  }
  *link = node;
  if (root == node) return 0;
  MR_AvlNode* below = *critical;
  const auto goDown = [&] { below = below->direction == 1 ? below->left : below->right; };
  below->balance = static_cast<std::int16_t>(below->balance + (below->direction == 2 ? 1 : -1));
  for (goDown(); below != node; goDown()) below->balance = below->direction == 2 ? 1 : -1;
  rotate(*critical);
  return 0;
}

int unlink(MR_AvlNode*& root, const MR_AvlNode* node) {
  MR_AvlNode** link = &root;
  while (*link != node) {
    if (*link == nullptr || compareItems(node, *link) == 0) return 1;
    link = compareItems(node, *link) < 0 ? &(*link)->left : &(*link)->right;
  }
  *link = node->right != nullptr ? node->right : node->left;
  if (node->right == nullptr) return 0;
  MR_AvlNode* leftmost = node->right;
  while (leftmost->left != nullptr) leftmost = leftmost->left;
  leftmost->left = node->left;
  return 0;
}

}  // namespace plain

// The same items twice, for the operations and for their definition.
class Twins {
 public:
  explicit Twins(int count) {
    for (int i = 0; i < count; ++i) {
      ours_.emplace_back(i / 2);  // two of each key
      plain_.emplace_back(i / 2);
    }
  }

  void insert(std::size_t i) {
    if (in_.count(i) != 0) return;
    const int result = MR_avl_insert(&root_, &ours_[i].node, compareItems);
    EXPECT_EQ(plain::insert(plainRoot_, &plain_[i].node), result);
    if (result == 0) in_.insert(i);
  }

  void remove(std::size_t i, bool balancing) {
    const MR_AvlNode before = ours_[i].node;
    const auto remove = balancing ? MR_avl_remove : MR_bt_remove;
    const int result = remove(&root_, &ours_[i].node, compareItems);
    EXPECT_EQ(in_.erase(i) != 0 ? 0 : 1, result);
    const auto fields = [](const MR_AvlNode& node) {
      return std::tuple(node.left, node.right, node.balance, node.direction);
    };
    EXPECT_TRUE(result != 0 || fields(before) == fields(ours_[i].node));
    EXPECT_EQ(plain::unlink(plainRoot_, &plain_[i].node), result);
    if (balancing && result == 0) plain::balance(plainRoot_);
  }

  void balance() {
    EXPECT_EQ(1, MR_avl_balance(&root_));
    plain::balance(plainRoot_);
  }

  void expectSame() const {
    ASSERT_EQ(text(plainRoot_), text(root_));
    for (const Item& item : ours_) {
      const auto* const end = reinterpret_cast<const unsigned char*>(&item.node + 1);
      ASSERT_TRUE(std::all_of(&item.node.direction + 1, end, [](int byte) { return byte == 0x5a; }))
          << "bytes behind the fields, where a record may go on, have changed";
    }
  }

 private:
  std::vector<Item> ours_, plain_;
  MR_AvlNode *root_ = nullptr, *plainRoot_ = nullptr;
  std::set<std::size_t> in_;
};

// Links items[first, last) to a tree; `pick` chooses the root of each range.
template <class Pick>
MR_AvlNode* treeOf(std::vector<Item>& items, int first, int last, const Pick& pick) {
  if (first == last) return nullptr;
  const int root = pick(first, last);
  MR_AvlNode* const node = &items[static_cast<std::size_t>(root)].node;
  node->left = treeOf(items, first, root, pick);
  node->right = treeOf(items, root + 1, last, pick);
  return node;
}

std::vector<Item> numbered(int count) {
  std::vector<Item> items;
  for (int i = 0; i < count; ++i) items.emplace_back(i);
  return items;
}

// Chains go, from the root down, always left, always right, or to the middle from both sides.
enum class Chain { left, right, zigzag };

MR_AvlNode* chained(std::vector<Item>& items, Chain chain) {
  MR_AvlNode* root = nullptr;
  MR_AvlNode** link = &root;
  for (std::size_t first = 0, last = items.size(); first != last;) {
    const bool right = chain == Chain::right || (chain == Chain::zigzag && (last - first) % 2 != 0);
    MR_AvlNode* const node = &items[right ? first++ : --last].node;
    node->left = node->right = nullptr;
    *link = node;
    link = right ? &node->right : &node->left;
  }
  return root;
}

int append(MR_AvlNode* node, void* user) {
  static_cast<std::vector<int>*>(user)->push_back(keyOf(node));
  return 0;
}

std::vector<int> inorder(MR_AvlNode* root) {
  std::vector<int> keys;
  EXPECT_EQ(0, MR_avl_inorder_user(root, append, &keys));
  return keys;
}

}  // namespace

TEST(Avl, RandomOperationsGiveTheDefinedTrees) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    std::mt19937 random(seed);
    const int count = 8 << seed % 5;
    Twins twins(count);
    const bool mixed = seed >= 20;  // balances are stale after a removal without balancing
    for (int step = 0; step < 6 * count; ++step) {
      const std::size_t i = random() % static_cast<unsigned>(count);
      const unsigned choice = random() % 16;
      if (choice < 9) twins.insert(i);
      if (choice >= 9 && choice < 15) twins.remove(i, !mixed || choice < 12);
      if (choice == 15) twins.balance();
      ASSERT_NO_FATAL_FAILURE(twins.expectSame()) << "seed " << seed << ", step " << step;
    }
  }
}

TEST(Avl, EqualKeysAndNullsAreRefused) {
  Item one(1), two(2), three(3), otherOne(1);
  MR_AvlNode* root = nullptr;
  EXPECT_EQ(-1, MR_avl_insert(nullptr, &one.node, compareItems));
  EXPECT_EQ(-1, MR_avl_insert(&root, nullptr, compareItems));
  EXPECT_EQ(-1, MR_avl_insert(&root, &one.node, nullptr));
  for (Item* item : {&three, &one, &two}) {
    EXPECT_EQ(0, MR_avl_insert(&root, &item->node, compareItems));
  }
  EXPECT_EQ("(1:0:2) 2:0:0 (3:0:1)", text(root));
  EXPECT_EQ(1, MR_avl_insert(&root, &two.node, compareItems)) << "the root itself";
  EXPECT_EQ(1, MR_avl_insert(&root, &otherOne.node, compareItems));
  EXPECT_EQ(1, MR_avl_remove(&root, &otherOne.node, compareItems));
  EXPECT_EQ("(1:0:2) 2:0:1 (3:0:1)", text(root));
  EXPECT_EQ(0, MR_avl_remove(&root, &two.node, compareItems));
  EXPECT_EQ("(1:0:2) 3:-1:1", text(root));
}

TEST(Avl, ALevelChildIsRaisedByItsInnerChild) {
  std::vector<Item> items = numbered(6);
  MR_AvlNode* root = nullptr;
  for (const std::size_t i : {4, 2, 5, 1, 3}) {
    MR_avl_insert(&root, &items[i].node, compareItems);
  }
  MR_avl_remove(&root, &items[5].node, compareItems);
  EXPECT_EQ("((1:0:0) 2:-1:2) 3:-1:0 (4:0:1)", text(root));
}

TEST(Avl, AnyShapeIsBalancedAsDefined) {
  for (int seed = 0; seed < 3000; ++seed) {
    std::mt19937 random(static_cast<unsigned>(seed));
    const int count = seed % 40;
    // Roots near an end make high trees.
    const auto pick = [&](int first, int last) {
      const int size = last - first, width = 1 + seed % 7;
      const int step = static_cast<int>(random() % static_cast<unsigned>(std::min(size, width)));
      return random() % 2 != 0 ? first + step : last - 1 - step;
    };
    std::vector<Item> items = numbered(count), twins = items;
    MR_AvlNode* root = treeOf(items, 0, count, pick);
    random.seed(static_cast<unsigned>(seed));
    MR_AvlNode* plainRoot = treeOf(twins, 0, count, pick);
    ASSERT_EQ(text(plainRoot), text(root));
    MR_avl_balance(&root);
    plain::balance(plainRoot);
    ASSERT_EQ(text(plainRoot), text(root));
  }
}

TEST(Avl, ChainsTooLongForTheStackAreBalancedAndWalked) {
  std::vector<Item> items = numbered(300000);
  for (const Chain chain : {Chain::left, Chain::right, Chain::zigzag}) {
    MR_AvlNode* root = chained(items, chain);
    std::vector<int> post;
    EXPECT_EQ(0, MR_avl_postorder_user(root, append, &post));
    EXPECT_EQ(keyOf(root), post.back());
    const std::vector<int> keys = inorder(root);
    EXPECT_EQ(items.size(), keys.size());
    MR_avl_balance(&root);
    EXPECT_LE(plain::height(root), 26);
    EXPECT_EQ(keys, inorder(root));
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
  }
}

TEST(Avl, WalksStopWhereTheyAreToldAndLeaveTheTreeAsItWas) {
  struct Stop {
    std::size_t after;
    std::vector<int> keys;
  };
  const auto visit = [](MR_AvlNode* node, void* user) {
    Stop& stop = *static_cast<Stop*>(user);
    stop.keys.push_back(keyOf(node));
    return stop.keys.size() == stop.after ? 7 : 0;
  };
  std::vector<Item> items = numbered(300);  // deeper than the walks note the way
  for (const Chain chain : {Chain::left, Chain::right, Chain::zigzag}) {
    MR_AvlNode* const root = chained(items, chain);
    const std::string before = text(root);
    for (const auto walk : {MR_avl_inorder_user, MR_avl_postorder_user}) {
      Stop all = {0, {}};
      EXPECT_EQ(0, walk(root, visit, &all));
      ASSERT_EQ(items.size(), all.keys.size());
      for (std::size_t after = 1; after <= items.size(); ++after) {
        Stop stop = {after, {}};
        EXPECT_EQ(7, walk(root, visit, &stop));
        all.keys.resize(items.size());
        ASSERT_TRUE(std::equal(stop.keys.begin(), stop.keys.end(), all.keys.begin()));
        ASSERT_EQ(after, stop.keys.size());
        ASSERT_EQ(before, text(root));
      }
    }
  }
}

TEST(Avl, APostorderWalkMayFreeTheNodes) {
  static int freed;
  freed = 0;
  for (const int count : {0, 1, 100}) {
    MR_AvlNode* root = nullptr;
    for (int key = 0; key < count; ++key) {
      MR_avl_insert(&root, &(new Item(key))->node, compareItems);
    }
    const auto release = [](MR_AvlNode* node) {
      delete reinterpret_cast<Item*>(node);
      return ++freed, 0;
    };
    EXPECT_EQ(0, MR_avl_postorder(root, release));
  }
  EXPECT_EQ(101, freed);
}

TEST(Avl, SearchesAndNeighboursAreThoseOfASortedSet) {
  std::mt19937 random(1);
  std::vector<Item> items;
  for (int i = 0; i < 200; ++i) items.emplace_back(static_cast<int>(random() % 400));
  MR_AvlNode* root = nullptr;
  std::set<int> keys;
  EXPECT_EQ(nullptr, MR_avl_first(root));
  EXPECT_EQ(nullptr, MR_avl_last(root));
  for (Item& item : items) {
    MR_avl_insert(&root, &item.node, compareItems);
    keys.insert(item.key);
  }
  const auto keyOrNone = [](const MR_AvlNode* node) { return node != nullptr ? keyOf(node) : -1; };
  EXPECT_EQ(*keys.begin(), keyOf(MR_avl_first(root)));
  EXPECT_EQ(*keys.rbegin(), keyOf(MR_avl_last(root)));
  for (int key = -1; key <= 400; ++key) {
    const auto at = keys.find(key);
    const bool found = at != keys.end();
    const bool hasNext = found && std::next(at) != keys.end();
    const bool hasPrevious = found && at != keys.begin();
    EXPECT_EQ(found ? key : -1, keyOrNone(MR_avl_find(root, &key, compareKey)));
    EXPECT_EQ(hasNext ? *std::next(at) : -1, keyOrNone(MR_avl_next(root, &key, compareKey)));
    EXPECT_EQ(hasPrevious ? *std::prev(at) : -1, keyOrNone(MR_avl_prev(root, &key, compareKey)));
  }
}
