// Sorted trees of numbers, for the library's own and those of its peers.
//
// A `Tree` is made from the numbers that it is to hold, all different, and has
//     void clear()
//     void insert(std::size_t i)     inserts number i of them
//     int find(int) const     the number in the tree that equals this one
//     void walk(long long& sum) const     adds up the numbers in order
// and calls `compareNumbers` by its pointer. There are at least 100,000 insertions and searches,
// so that the processor cannot learn the ways down by heart.
#pragma once

#include <algorithm>
#include <memory>

#include "Data.h"
#include "Harness.h"

namespace bench {

using Compare = int (*)(const void*, const void*);

/// As for qsort, of two ints. No compiler sees through the pointer.
Compare compareNumbers();

/// The same, as peers from C++ want to have it.
class LessNumber {
 public:
  bool operator()(const int& a, const int& b) const { return compare_(&a, &b) < 0; }

 private:
  Compare compare_ = compareNumbers();
};

constexpr const char* kTreeInsert = "tree insert";
constexpr const char* kTreeFind = "tree find";
constexpr const char* kTreeWalk = "tree walk";

constexpr int kSteps = 100000;

template <class Tree>
std::shared_ptr<Tree> filledTree(const Shape& shape) {
  const auto tree = std::make_shared<Tree>(shuffledNumbers(shape.rows, 1));
  for (int i = 0; i < shape.rows; ++i) tree->insert(static_cast<std::size_t>(i));
  return tree;
}

template <class Tree>
double walked(const Tree& tree) {
  long long sum = 0;
  tree.walk(sum);
  return static_cast<double>(sum);
}

template <class Tree>
Contestant treeInsert(const Shape& shape) {
  std::vector<std::vector<int>> orders;
  for (int done = 0; done < kSteps; done += shape.rows) {
    orders.push_back(shuffledNumbers(shape.rows, static_cast<unsigned>(done)));
  }
  const auto tree = std::make_shared<Tree>(shuffledNumbers(shape.rows, 1));
  const auto refill = [tree, orders] {
    for (const std::vector<int>& order : orders) {
      tree->clear();
      for (const int i : order) tree->insert(static_cast<std::size_t>(i));
    }
    return tree.get();
  };
  return contestant(refill, [](const Tree* filled) { return Values{walked(*filled)}; });
}

template <class Tree>
Contestant treeFind(const Shape& shape) {
  std::vector<int> numbers = shuffledNumbers(std::max(shape.rows, kSteps), 2);
  numbers.resize(kSteps);
  for (int& number : numbers) number %= shape.rows;
  const auto findAll = [tree = filledTree<Tree>(shape), numbers] {
    long long sum = 0;
    for (const int number : numbers) sum += tree->find(number);
    return static_cast<double>(sum);
  };
  return contestant(findAll, [](double sum) { return Values{sum}; });
}

template <class Tree>
Contestant treeWalk(const Shape& shape) {
  return contestant([tree = filledTree<Tree>(shape)] { return walked(*tree); },
                    [](double sum) { return Values{sum}; });
}

template <class Tree>
void addTreePeer(Suite& suite, const std::string& name) {
  suite.addPeer(kTreeInsert, {name, treeInsert<Tree>});
  suite.addPeer(kTreeFind, {name, treeFind<Tree>});
  suite.addPeer(kTreeWalk, {name, treeWalk<Tree>});
}

}  // namespace bench
