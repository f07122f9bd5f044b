#include <kilnbase/util/mr_linklist.h>

#include "Data.h"
#include "families/Families.h"

namespace bench {

namespace {

struct Record {
  MR_LinkNode link;
  int number;
};

int numberOf(const void* node) {
  return node != nullptr ? static_cast<const Record*>(node)->number : -1;
}

std::int32_t compareRecords(const void* a, const void* b) {
  return (numberOf(a) > numberOf(b)) - (numberOf(a) < numberOf(b));
}

void plainInsertSorted(MR_LinkList& list, MR_LinkNode* node, MR_LinkCompare compare) {
  MR_LinkNode* before = nullptr;
  MR_LinkNode* after = list.head;
  while (after != nullptr && compare(node, after) > 0) {
    before = after;
    after = after->next;
  }
  node->prev = before;
  node->next = after;
  (before != nullptr ? before->next : list.head) = node;
  if (after != nullptr) after->prev = node;
}

void plainMergeSorted(MR_LinkList& list, MR_LinkNode* chain, MR_LinkCompare compare) {
  for (MR_LinkNode* next; chain != nullptr; chain = next) {
    next = chain->next;
    plainInsertSorted(list, chain, compare);
  }
}

// The even numbers in order, and a chain of random numbers to go between them.
class SortedList {
 public:
  explicit SortedList(const Shape& shape) {
    for (int i = 0; i < shape.rows; ++i) records_.push_back({{}, 2 * i});
    for (const int i : shuffledNumbers(shape.rows, 1)) {
      if (static_cast<int>(chain_.size()) < shape.columns) chain_.push_back({{}, 2 * i + 1});
    }
    link();
  }

  /// Puts everything back to where it was.
  void link() {
    list.head = linked(records_);
    chain = linked(chain_);
  }

  MR_LinkList list = {};
  MR_LinkNode* chain = nullptr;

 private:
  static MR_LinkNode* linked(std::vector<Record>& records) {
    MR_LinkNode* next = nullptr;
    for (auto record = records.rbegin(); record != records.rend(); ++record) {
      record->link = {nullptr, next};
      if (next != nullptr) next->prev = &record->link;
      next = &record->link;
    }
    return next;
  }

  std::vector<Record> records_;
  std::vector<Record> chain_;
};

// A record that goes to the middle of the list, and out of it again.
template <class Insert>
Maker insertsWith(Insert insert) {
  return [insert](const Shape& shape) {
    const auto lists = std::make_shared<SortedList>(shape);
    const auto record = std::make_shared<Record>(Record{{}, shape.rows});
    const auto run = [insert, lists, record] {
      MR_LinkNode* const node = &record->link;
      insert(lists->list, node);
      const double before = numberOf(node->prev);
      MR_ll_remove(&lists->list, node);
      return before;
    };
    return contestant(run, [](double before) { return Values{before}; });
  };
}

template <class Merge>
Maker mergesWith(Merge merge) {
  return [merge](const Shape& shape) {
    const auto lists = std::make_shared<SortedList>(shape);
    const auto run = [merge, lists] {
      lists->link();
      merge(lists->list, lists->chain);
      return lists->list.head;
    };
    return contestant(run, [](const MR_LinkNode* node) {
      Values numbers;
      for (; node != nullptr; node = node->next) numbers.push_back(numberOf(node));
      return numbers;
    });
  };
}

}  // namespace

void addLists(Suite& suite) {
  MR_LinkCompare compare = compareRecords;
  benchmark::DoNotOptimize(compare);
  const auto limits = [](const Shape&) { return Limits{.named = 1.0}; };
  const auto insert = [compare](MR_LinkList& list, MR_LinkNode* node) {
    MR_ll_insert_sorted(&list, node, compare);
  };
  const auto plainInsert = [compare](MR_LinkList& list, MR_LinkNode* node) {
    plainInsertSorted(list, node, compare);
  };
  suite.add({"list insert sorted",
             {{1000, 1}, {100000, 1}, {1000000, 1}},
             {"loop"},
             limits,
             insertsWith(insert),
             {{"loop", insertsWith(plainInsert)}}});
  const auto merge = [compare](MR_LinkList& list, MR_LinkNode* chain) {
    MR_ll_merge_sorted(&list, chain, nullptr, nullptr, compare);
  };
  const auto plainMerge = [compare](MR_LinkList& list, MR_LinkNode* chain) {
    plainMergeSorted(list, chain, compare);
  };
  suite.add({"list merge sorted",
             {{1000, 1000}, {100000, 10}, {1000000, 10}},
             {"loop"},
             limits,
             mergesWith(merge),
             {{"loop", mergesWith(plainMerge)}}});
}

}  // namespace bench
