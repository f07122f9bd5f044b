#include <algorithm>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <random>
#include <set>
#include <vector>

#include <kilnbase/util/mr_avl.h>
#include <kilnbase/util/mr_status.h>

namespace {

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

// Requests for more bytes than this are refused.
std::size_t largestPiece = kNoLimit;
bool wasRefused = false;

}  // namespace

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  wasRefused = wasRefused || bytes > largestPiece;
  return bytes > largestPiece ? nullptr : ::operator new[](bytes);
}

namespace {

struct Item {
  explicit Item(int number) : key(number) { std::memset(&node, 0x5a, sizeof node); }

  MR_AvlNode node;
  int key;
};

int keyOf(const void* node) {
  return static_cast<const Item*>(node)->key;
}

int compareItems(const void* a, const void* b) {
  return keyOf(a) - keyOf(b);
}

// The fields of all nodes, each node before its subtrees, and -1 for each missing subtree.
std::vector<int> shape(const MR_AvlNode* node) {
  if (node == nullptr) return {-1};
  std::vector<int> all = {keyOf(node), node->balance, node->direction};
  for (const MR_AvlNode* child : {node->left, node->right}) {
    std::ranges::copy(shape(child), std::back_inserter(all));
  }
  return all;
}

// The operations as they are defined: each pass measures all heights and rotates once at most.
namespace plain {

// Returns the height and sets the balances.
int measure(MR_AvlNode* node) {
  if (node == nullptr) return 0;
  const int left = measure(node->left), right = measure(node->right);
  node->balance = static_cast<std::int16_t>(right - left);
  return 1 + std::max(left, right);
}

bool rotateFirst(MR_AvlNode*& link) {
  MR_AvlNode* const n = link;
  if (n == nullptr) return false;
  if (rotateFirst(n->left) || rotateFirst(n->right)) return true;
  if (n->balance >= -1 && n->balance <= 1) return false;
  const bool right = n->balance > 0;
  const auto higher = right ? &MR_AvlNode::right : &MR_AvlNode::left;
  const auto lower = right ? &MR_AvlNode::left : &MR_AvlNode::right;
  MR_AvlNode *const c = n->*higher, *const g = c->*lower;
  if (c->balance == (right ? 1 : -1)) {
    n->*higher = g, c->*lower = n, link = c;
  } else {
    c->*lower = g->*higher, n->*higher = g->*lower, g->*higher = c, g->*lower = n, link = g;
  }
  return true;
}

void balance(MR_AvlNode*& root) {
  do measure(root);
  while (rotateFirst(root));
}

// Inserts into a balanced tree.
int insert(MR_AvlNode*& root, Item& item) {
  MR_AvlNode** link = &root;
  while (*link != nullptr) {
    const int order = item.key - keyOf(*link);
    if (order == 0 && *link != &item.node) item.node = {};
    if (order == 0) return 1;
    (*link)->direction = order < 0 ? 1 : 2;
    link = order < 0 ? &(*link)->left : &(*link)->right;
  }
  *link = &item.node;
  item.node = {};
  balance(root);
  return 0;
}

int unlink(MR_AvlNode*& root, Item& item) {
  MR_AvlNode** link = &root;
  while (*link != &item.node) {
    if (*link == nullptr || keyOf(*link) == item.key) return 1;
    link = item.key < keyOf(*link) ? &(*link)->left : &(*link)->right;
  }
  *link = item.node.right != nullptr ? item.node.right : item.node.left;
  if (item.node.right != nullptr) MR_avl_first(item.node.right)->left = item.node.left;
  return 0;
}

}  // namespace plain

std::vector<Item> numbered(int count) {
  std::vector<Item> items;
  for (int i = 0; i < count; ++i) items.emplace_back(i);
  return items;
}

// A chain whose steps go to the right, but for every `period`-th, which goes to the left.
MR_AvlNode* chained(std::vector<Item>& items, std::size_t period) {
  MR_AvlNode* root = nullptr;
  MR_AvlNode** link = &root;
  for (std::size_t first = 0, last = items.size(); first != last;) {
    const bool right = (last - first) % period != 0;
    *link = &items[right ? first++ : --last].node;
    **link = {};
    link = right ? &(*link)->right : &(*link)->left;
  }
  return root;
}

struct Stop {
  std::size_t after;
  std::vector<int> keys = {};
};

int visit(MR_AvlNode* node, void* user) {
  Stop& stop = *static_cast<Stop*>(user);
  stop.keys.push_back(keyOf(node));
  return stop.keys.size() == stop.after ? 7 : 0;
}

}  // namespace

TEST(Avl, RandomOperationsGiveTheDefinedTrees) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    std::mt19937 random(seed);
    std::vector<Item> ours = numbered(8 << seed % 5);
    for (Item& item : ours) item.key /= 2;  // two of each key
    std::vector<Item> twins = ours;
    MR_AvlNode *root = nullptr, *plainRoot = nullptr;
    for (std::size_t step = 0; step < 6 * ours.size(); ++step) {
      const std::size_t i = random() % ours.size();
      const bool inserting = step % 16 < 9, balancing = seed < 20 || random() % 2 == 0;
      const auto change = inserting ? MR_avl_insert : balancing ? MR_avl_remove : MR_bt_remove;
      const int result = (inserting ? plain::insert : plain::unlink)(plainRoot, twins[i]);
      ASSERT_EQ(result, change(&root, &ours[i].node, compareItems));
      if (result == 0 && change == MR_avl_remove) plain::balance(plainRoot);
      if (result == 0 || inserting) {
        ASSERT_EQ(shape(&twins[i].node), shape(&ours[i].node)) << "the given node";
      }
      ASSERT_EQ(shape(plainRoot), shape(root)) << "seed " << seed << ", step " << step;
      if (step % 16 != 15) continue;
      EXPECT_EQ(1, MR_avl_balance(&root));
      plain::balance(plainRoot);
    }
    for (const Item& item : ours) {
      EXPECT_EQ(0, std::memcmp(&item.node.direction + 1, "ZZZZZ", 5))
          << "bytes behind the fields, where a record may go on, have changed";
    }
  }
}

TEST(Avl, ChainsAreBalancedAndWalkedAsFarAsTold) {
  static MR_AvlNode* root;
  std::vector<Item> items = numbered(300);         // more levels than fit without the heap
  std::vector<Item> deepItems = numbered(300000);  // too deep for the stack
  for (const std::size_t period : {1U, 2U, 1000000U}) {
    MR_AvlNode* deepRoot = chained(deepItems, period);
    MR_avl_balance(&deepRoot);
    Stop never = {0};
    EXPECT_EQ(0, MR_avl_inorder_user(deepRoot, visit, &never));
    EXPECT_TRUE(std::ranges::equal(deepItems, never.keys, {}, &Item::key));
    EXPECT_LE(plain::measure(deepRoot), 26);
    root = chained(items, period);
    std::vector<int> keys;
    for (auto* at = root; at; at = at->left ? at->left : at->right) keys.push_back(keyOf(at));
    std::ranges::reverse(keys);
    for (const auto walk : {MR_avl_postorder_user, MR_avl_inorder_user}) {
      for (const std::size_t after : {1UL, 128UL, 299UL, 300UL, 301UL}) {
        Stop stop = {after};
        EXPECT_EQ(after <= items.size() ? 7 : 0, walk(root, visit, &stop));
        ASSERT_EQ(std::vector<int>(keys.begin(), keys.begin() + std::ssize(stop.keys)), stop.keys);
      }
      std::ranges::sort(keys);
    }
    for (const auto walk : {MR_avl_postorder, MR_avl_inorder}) {
      EXPECT_EQ(0, walk(root,
                        [](MR_AvlNode* node) {
                          return MR_avl_find(root, node, compareItems) == node ? 0 : 1;
                        }))
          << "callbacks may search";
    }
    plain::balance(root);
    const std::vector<int> balanced = shape(root);
    root = chained(items, period);
    MR_avl_balance(&root);
    EXPECT_EQ(balanced, shape(root));
  }
}

TEST(Avl, StaysASearchTreeWhenThereIsNoMemoryToWalkIt) {
  std::vector<Item> items = numbered(300), fewItems = numbered(128);
  MR_AvlNode *root = chained(items, 2), *lowRoot = chained(fewItems, 2);
  largestPiece = 0;
  const auto goOn = [](MR_AvlNode*) { return 0; };
  EXPECT_EQ(0, MR_avl_postorder(lowRoot, goOn)) << "128 levels take no memory";
  const int inorder = MR_avl_inorder(root, goOn), postorder = MR_avl_postorder(root, goOn);
  const int balanced = MR_avl_balance(&root);
  largestPiece = kNoLimit;
  if (!wasRefused) GTEST_SKIP() << "the library has an allocator of its own";
  EXPECT_EQ(MR_MEMORY_FAULT, inorder);
  EXPECT_EQ(MR_MEMORY_FAULT, postorder);
  EXPECT_EQ(0, balanced);
  Stop never = {0};
  EXPECT_EQ(0, MR_avl_inorder_user(root, visit, &never));
  EXPECT_TRUE(std::ranges::equal(items, never.keys, {}, &Item::key));
}

TEST(Avl, SearchesAndNeighboursAreThoseOfASortedSet) {
  std::mt19937 random(1);
  MR_AvlNode* root = nullptr;
  for (const auto end : {MR_avl_first, MR_avl_last, MR_avl_left, MR_avl_right}) {
    EXPECT_EQ(nullptr, end(root));
  }
  std::vector<Item> items = numbered(400);
  EXPECT_EQ(-1, MR_avl_insert(nullptr, &items[0].node, compareItems));
  EXPECT_EQ(-1, MR_avl_insert(&root, nullptr, compareItems));
  EXPECT_EQ(-1, MR_avl_insert(&root, &items[0].node, nullptr));
  std::set<int> keys;
  for (int step = 0; step < 5000; ++step) {  // balances are not kept up to date
    Item& item = items[random() % (step < 1000 ? 4 : 400)];
    const bool isNew = keys.insert(item.key).second;
    EXPECT_EQ(0, (isNew ? MR_avl_insert : MR_bt_remove)(&root, &item.node, compareItems));
    if (!isNew) keys.erase(item.key);
  }
  EXPECT_EQ(7, MR_avl_inorder(root, [](MR_AvlNode*) { return 7; }));
  for (const auto search : {MR_avl_find, MR_avl_next, MR_avl_prev}) {
    EXPECT_DEBUG_DEATH(EXPECT_EQ(nullptr, search(root, root, nullptr)), "compare != nullptr");
  }
  EXPECT_DEBUG_DEATH(EXPECT_EQ(1, MR_bt_remove(&root, root, nullptr)), "given");
  const auto keyOrNone = [](const MR_AvlNode* node) { return node != nullptr ? keyOf(node) : -1; };
  EXPECT_EQ(*keys.begin(), keyOrNone(MR_avl_first(root)));
  EXPECT_EQ(*keys.rbegin(), keyOrNone(MR_avl_last(root)));
  for (const Item& item : items) {
    const auto search = [&](auto how) { return keyOrNone(how(root, &item, compareItems)); };
    const auto at = keys.find(item.key);
    const bool found = at != keys.end();
    EXPECT_EQ(found ? item.key : -1, search(MR_avl_find));
    EXPECT_EQ(found && at != --keys.end() ? *std::next(at) : -1, search(MR_avl_next));
    EXPECT_EQ(found && at != keys.begin() ? *std::prev(at) : -1, search(MR_avl_prev));
  }
  const auto release = [](MR_AvlNode* node) { return std::memset(node, -1, sizeof *node), 0; };
  EXPECT_EQ(0, MR_avl_postorder(root, release));
}
