#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <new>
#include <random>
#include <ranges>
#include <sstream>
#include <string>
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

// The keys in brackets that show the tree, each with the direction of its node.
std::string shape(const MR_AvlNode* node) {
  if (node == nullptr) return "";
  std::ostringstream text;
  text << '(' << shape(node->left) << keyOf(node) << "-<>"[node->direction] << shape(node->right);
  return text.str() + ')';
}

// Checks that the tree is balanced and that its balances say so. Returns its height.
int checkedHeight(const MR_AvlNode* node) {
  if (node == nullptr) return 0;
  const int left = checkedHeight(node->left), right = checkedHeight(node->right);
  EXPECT_EQ(right - left, node->balance);
  EXPECT_LE(std::abs(right - left), 1);
  return 1 + std::max(left, right);
}

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

TEST(Avl, RandomOperationsFollowASetAndKeepTheTreeBalanced) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    std::mt19937 random(seed);
    std::vector<Item> items = numbered(8 << seed % 5);
    for (Item& item : items) item.key /= 2;  // two of each key
    std::map<int, const MR_AvlNode*> model;
    MR_AvlNode* root = nullptr;
    bool isBalanced = true;
    for (std::size_t step = 0; step < 6 * items.size() + 200; ++step) {
      Item& item = items[random() % items.size()];
      if (seed < 40 ? step % 16 < 9 : !model.contains(item.key)) {
        const auto& [at, isNew] = model.emplace(item.key, &item.node);
        ASSERT_EQ(isNew ? 0 : 1, MR_avl_insert(&root, &item.node, compareItems));
        if (at->second != &item.node) {
          EXPECT_EQ(1, checkedHeight(&item.node)) << "not cleared";
        }
      } else {
        const bool balances = seed < 20 || (seed < 40 && random() % 2 == 0);
        const auto at = model.find(item.key);
        const bool isIn = at != model.end() && at->second == &item.node;
        const auto remove = balances ? MR_avl_remove : MR_bt_remove;
        ASSERT_EQ(isIn ? 0 : 1, remove(&root, &item.node, compareItems));
        if (isIn) model.erase(at), isBalanced = balances;
      }
      if (step % 16 == 15 && seed < 40) isBalanced = MR_avl_balance(&root) == 1;
      if (isBalanced) checkedHeight(root);
      Stop never = {0};
      MR_avl_inorder_user(root, visit, &never);
      ASSERT_TRUE(std::ranges::equal(std::views::keys(model), never.keys)) << step;
    }
    for (const Item& item : items) {
      const auto search = [&](auto how) -> const void* { return how(root, &item, compareItems); };
      const auto at = model.find(item.key);
      const bool found = at != model.end();
      EXPECT_EQ(found ? at->second : nullptr, search(MR_avl_find));
      EXPECT_EQ(found && at != --model.end() ? std::next(at)->second : nullptr,
                search(MR_avl_next));
      EXPECT_EQ(found && at != model.begin() ? std::prev(at)->second : nullptr,
                search(MR_avl_prev));
      EXPECT_EQ(0, std::memcmp(&item.node.direction + 1, "ZZZZZ", 5))
          << "bytes behind the fields, where a record may go on, have changed";
    }
    EXPECT_EQ(0, MR_avl_postorder(
                     root, [](MR_AvlNode* node) { return std::memset(node, -1, sizeof *node), 0; }))
        << "callbacks may free nodes";
  }
}

TEST(Avl, EachInsertionRotatesOnceAndARemovedNodeIsReplacedByItsRightSubtree) {
  std::vector<Item> items = numbered(10);
  MR_AvlNode* root = nullptr;
  for (const std::size_t i : {5U, 2U, 8U, 1U, 4U, 3U, 9U, 7U, 6U, 0U}) {
    MR_avl_insert(&root, &items[i].node, compareItems);
  }
  EXPECT_EQ("((((0-)1<)2<(3-))4<(((5>)6-(7<))8<(9-)))", shape(root));
  MR_bt_remove(&root, root, compareItems);
  EXPECT_EQ("((((((0-)1<)2<(3-))5>)6-(7<))8<(9-))", shape(root));
  MR_avl_balance(&root);
  EXPECT_EQ("((((0-)1<)2<(3-))5>((6-(7<))8<(9-)))", shape(root));
}

TEST(Avl, ChainsAreBalancedAndWalkedAsFarAsTold) {
  std::vector<Item> items = numbered(300);         // more levels than fit without the heap
  std::vector<Item> deepItems = numbered(300000);  // too deep for the stack
  for (const std::size_t period : {1U, 2U, 1000000U}) {
    MR_AvlNode* deepRoot = chained(deepItems, period);
    MR_avl_balance(&deepRoot);
    Stop never = {0};
    EXPECT_EQ(0, MR_avl_inorder_user(deepRoot, visit, &never));
    EXPECT_TRUE(std::ranges::equal(deepItems, never.keys, {}, &Item::key));
    EXPECT_LE(checkedHeight(deepRoot), 26);
    MR_AvlNode* root = chained(items, period);
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
    EXPECT_EQ(7, MR_avl_inorder(root, [](MR_AvlNode*) { return 7; }));
    MR_avl_balance(&root);
    checkedHeight(root);
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

TEST(Avl, MisuseIsRefused) {
  MR_AvlNode* root = nullptr;
  for (const auto end : {MR_avl_first, MR_avl_last, MR_avl_left, MR_avl_right}) {
    EXPECT_EQ(nullptr, end(root));
  }
  Item item(1);
  EXPECT_EQ(-1, MR_avl_insert(&root, &item.node, nullptr));
  EXPECT_EQ(0, MR_avl_insert(&root, &item.node, compareItems));
  EXPECT_DEBUG_DEATH(EXPECT_EQ(nullptr, MR_avl_find(root, root, nullptr)), "compare != nullptr");
  EXPECT_DEBUG_DEATH(EXPECT_EQ(1, MR_bt_remove(&root, root, nullptr)), "given");
}
