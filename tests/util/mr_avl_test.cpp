#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <kilnbase/util/mr_avl.h>

namespace {

struct Item {
  explicit Item(int number) : key(number) { std::memset(&node, 0x5a, sizeof node); }

  MR_AvlNode node;
  int key;
};

int keyOf(const void* node) {
  return static_cast<const Item*>(node)->key;
}

// The node that is inserted or removed.
const void* subject;

int compareItems(const void* a, const void* b) {
  EXPECT_EQ(subject, a);
  return keyOf(a) - keyOf(b);
}

int compareKey(const void* key, const void* node) {
  return *static_cast<const int*>(key) - keyOf(node);
}

int insert(MR_AvlNode*& root, Item& item) {
  subject = &item;
  return MR_avl_insert(&root, &item.node, compareItems);
}

// "((left) key:balance:direction: (right))" without the blanks
std::string text(const MR_AvlNode* node) {
  std::string all;
  if (node == nullptr) return all;
  all.append("(").append(text(node->left));
  for (const int field : {keyOf(node), int{node->balance}, int{node->direction}}) {
    all.append(std::to_string(field)).append(":");
  }
  return all.append(text(node->right)).append(")");
}

// The definition of the operations, word by word: heights anew for each pass, a rotation a pass.
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

// Into a balanced tree.
int insert(MR_AvlNode*& root, Item& item) {
  MR_AvlNode** link = &root;
  while (*link != nullptr) {
    const int order = item.key - keyOf(*link);
    if (order == 0) return 1;
    (*link)->direction = order < 0 ? 1 : 2;
    link = order < 0 ? &(*link)->left : &(*link)->right;
  }
  *link = &item.node;
  item.node = {};
  balance(root);
  return 0;
}

int unlink(MR_AvlNode*& root, const Item& item) {
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

// Chains go, from the root down, always left, always right, or to the middle from both sides.
enum Chain { kLeft, kRight, kZigzag };

MR_AvlNode* chained(std::vector<Item>& items, int chain) {
  MR_AvlNode* root = nullptr;
  MR_AvlNode** link = &root;
  for (std::size_t first = 0, last = items.size(); first != last;) {
    const bool right = chain == kRight || (chain == kZigzag && (last - first) % 2 != 0);
    *link = &items[right ? first++ : --last].node;
    **link = {};
    link = right ? &(*link)->right : &(*link)->left;
  }
  return root;
}

void plainWalk(MR_AvlNode* node, bool post, std::vector<int>& keys) {
  if (node == nullptr) return;
  plainWalk(MR_avl_left(node), post, keys);
  if (!post) keys.push_back(keyOf(node));
  plainWalk(MR_avl_right(node), post, keys);
  if (post) keys.push_back(keyOf(node));
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
    const int count = 8 << seed % 5;
    std::vector<Item> ours = numbered(count);
    for (Item& item : ours) item.key /= 2;  // two of each key
    std::vector<Item> twins = ours;
    MR_AvlNode *root = nullptr, *plainRoot = nullptr;
    bool stale = false;  // the balances, after a removal without balancing
    for (int step = 0; step < 6 * count; ++step) {
      const std::size_t i = random() % static_cast<unsigned>(count);
      const unsigned choice = random() % 16;
      subject = &ours[i];
      if (choice == 15 || (choice < 9 && stale)) {
        EXPECT_EQ(1, MR_avl_balance(&root));
        plain::balance(plainRoot);
        stale = false;
      } else if (choice < 9) {
        ASSERT_EQ(plain::insert(plainRoot, twins[i]), insert(root, ours[i]));
      } else {
        const bool balancing = seed < 20 || choice < 12;
        const int result = plain::unlink(plainRoot, twins[i]);
        const auto remove = balancing ? MR_avl_remove : MR_bt_remove;
        ASSERT_EQ(result, remove(&root, &ours[i].node, compareItems));
        if (result == 0) {
          stale = !balancing;
          if (balancing) plain::balance(plainRoot);
          ASSERT_EQ(text(&twins[i].node), text(&ours[i].node)) << "the removed node has changed";
        }
      }
      ASSERT_EQ(text(plainRoot), text(root)) << "seed " << seed << ", step " << step;
    }
    for (const Item& item : ours) {
      const auto* const end = reinterpret_cast<const unsigned char*>(&item.node + 1);
      EXPECT_TRUE(std::all_of(&item.node.direction + 1, end, [](int byte) { return byte == 0x5a; }))
          << "bytes behind the fields, where a record may go on, have changed";
    }
  }
}

TEST(Avl, ChainsTooLongForTheStackAreBalancedAndWalked) {
  std::vector<Item> items = numbered(300000);
  for (const int chain : {kLeft, kRight, kZigzag}) {
    MR_AvlNode* root = chained(items, chain);
    Stop before = {0};
    std::vector<int> keys;
    EXPECT_EQ(0, MR_avl_inorder_user(root, visit, &before));
    MR_avl_balance(&root);
    EXPECT_LE(plain::measure(root), 26);
    plainWalk(root, false, keys);
    EXPECT_EQ(keys, before.keys);
    EXPECT_EQ(items.size(), before.keys.size());
  }
}

TEST(Avl, WalksStopWhereTheyAreToldAndLeaveTheTreeAsItWas) {
  std::vector<Item> items = numbered(300);  // deeper than the walks note the way
  std::vector<Item> twins = items;
  for (const int chain : {kLeft, kRight, kZigzag}) {
    MR_AvlNode *root = chained(items, chain), *plainRoot = chained(twins, chain);
    for (const bool post : {false, true}) {
      std::vector<int> keys;
      plainWalk(plainRoot, post, keys);
      const auto walk = post ? MR_avl_postorder_user : MR_avl_inorder_user;
      for (std::size_t after = 1; after <= items.size() + 1; ++after) {
        Stop stop = {after};
        EXPECT_EQ(after <= items.size() ? 7 : 0, walk(root, visit, &stop));
        ASSERT_EQ(std::vector<int>(keys.begin(), keys.begin() + std::ssize(stop.keys)), stop.keys);
        ASSERT_EQ(text(plainRoot), text(root));
      }
    }
    MR_avl_balance(&root);
    plain::balance(plainRoot);
    EXPECT_EQ(text(plainRoot), text(root));
  }
}

TEST(Avl, SearchesAndNeighboursAreThoseOfASortedSet) {
  std::mt19937 random(1);
  MR_AvlNode* root = nullptr;
  EXPECT_TRUE(!MR_avl_first(root) && !MR_avl_last(root) && !MR_avl_left(root) &&
              !MR_avl_right(root));
  std::vector<Item> items = numbered(400);
  EXPECT_EQ(-1, MR_avl_insert(nullptr, &items[0].node, compareItems));
  EXPECT_EQ(-1, MR_avl_insert(&root, nullptr, compareItems));
  EXPECT_EQ(-1, MR_avl_insert(&root, &items[0].node, nullptr));
  std::set<int> keys;
  for (int step = 0; step < 5000; ++step) {  // insertions meet stale balances
    Item& item = items[random() % 400];
    if (keys.insert(item.key).second) {
      EXPECT_EQ(0, insert(root, item));
    } else {
      subject = &item;
      EXPECT_EQ(0, MR_bt_remove(&root, &item.node, compareItems));
      keys.erase(item.key);
    }
  }
  EXPECT_EQ(7, MR_avl_inorder(root, [](MR_AvlNode*) { return 7; }));
  const auto keyOrNone = [](const MR_AvlNode* node) { return node != nullptr ? keyOf(node) : -1; };
  EXPECT_EQ(*keys.begin(), keyOrNone(MR_avl_first(root)));
  EXPECT_EQ(*keys.rbegin(), keyOrNone(MR_avl_last(root)));
  for (int key = -1; key <= 400; ++key) {
    const auto at = keys.find(key);
    const bool found = at != keys.end();
    const bool hasNext = found && std::next(at) != keys.end();
    const bool hasPrevious = found && at != keys.begin();
    EXPECT_EQ(found ? key : -1, keyOrNone(MR_avl_find(root, &key, compareKey)));
    EXPECT_EQ(hasNext ? *std::next(at) : -1, keyOrNone(MR_avl_next(root, &key, compareKey)));
    EXPECT_EQ(hasPrevious ? *std::prev(at) : -1, keyOrNone(MR_avl_prev(root, &key, compareKey)));
  }
  const auto release = [](MR_AvlNode* node) { return std::memset(node, -1, sizeof *node), 0; };
  EXPECT_EQ(0, MR_avl_postorder(root, release));
}
