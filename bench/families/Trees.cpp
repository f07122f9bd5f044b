#include "families/Trees.h"

#include <set>

#include <kilnbase/util/mr_avl.h>

#include "families/Families.h"

namespace bench {

namespace {

struct Record {
  MR_AvlNode node;
  int number;
};

const int* numberOf(const void* node) {
  return &static_cast<const Record*>(node)->number;
}

int compareRecords(const void* a, const void* b) {
  return (*numberOf(a) > *numberOf(b)) - (*numberOf(a) < *numberOf(b));
}

int compareToRecord(const void* number, const void* record) {
  const int a = *static_cast<const int*>(number);
  const int b = *numberOf(record);
  return (a > b) - (a < b);
}

int addNumber(MR_AvlNode* node, void* sum) {
  *static_cast<long long*>(sum) += *numberOf(node);
  return 0;
}

class Ours {
 public:
  explicit Ours(const std::vector<int>& numbers) {
    for (const int number : numbers) records_.push_back({{}, number});
  }

  void clear() { root_ = nullptr; }
  void insert(std::size_t i) { MR_avl_insert(&root_, &records_[i].node, compareRecords); }

  int find(int number) const { return *numberOf(MR_avl_find(root_, &number, compareToRecord)); }

  void walk(long long& sum) const { MR_avl_inorder_user(root_, addNumber, &sum); }

 private:
  std::vector<Record> records_;
  MR_AvlNode* root_ = nullptr;
};

class StandardSet {
 public:
  explicit StandardSet(std::vector<int> numbers) : numbers_(std::move(numbers)) {}

  void clear() { set_.clear(); }
  void insert(std::size_t i) { set_.insert(numbers_[i]); }

  int find(int number) const { return *set_.find(number); }

  void walk(long long& sum) const {
    for (const int number : set_) sum += number;
  }

 private:
  std::vector<int> numbers_;
  std::set<int, LessNumber> set_;
};

int compareInts(const void* a, const void* b) {
  const int x = *static_cast<const int*>(a);
  const int y = *static_cast<const int*>(b);
  return (x > y) - (x < y);
}

}  // namespace

Compare compareNumbers() {
  Compare compare = compareInts;
  benchmark::DoNotOptimize(compare);
  return compare;
}

void addTrees(Suite& suite) {
  const std::vector<Shape> shapes = {{1000, 1}, {100000, 1}, {1000000, 1}};
  const std::vector<std::string> all = {"Boost", "std::set", "GTree"};
  const auto limits = [](const Shape&) { return Limits{.named = 1.0}; };
  suite.add({kTreeInsert, shapes, all, limits, treeInsert<Ours>, {}});
  suite.add({kTreeFind, shapes, all, limits, treeFind<Ours>, {}});
  suite.add({kTreeWalk, shapes, {"std::set"}, limits, treeWalk<Ours>, {}});
  addTreePeer<StandardSet>(suite, "std::set");
}

}  // namespace bench
