#include <boost/intrusive/avl_set.hpp>
#include <boost/version.hpp>

#include "families/Families.h"
#include "families/Trees.h"

namespace bench {

namespace {

namespace intrusive = boost::intrusive;

struct Record : intrusive::avl_set_base_hook<intrusive::link_mode<intrusive::normal_link>> {
  explicit Record(int value) : number(value) {}

  int number;
};

const int& numberOf(const Record& record) {
  return record.number;
}

const int& numberOf(const int& number) {
  return number;
}

class LessRecord {
 public:
  template <class A, class B>
  bool operator()(const A& a, const B& b) const {
    return less_(numberOf(a), numberOf(b));
  }

 private:
  LessNumber less_;
};

class AvlSet {
 public:
  explicit AvlSet(const std::vector<int>& numbers) : records_(numbers.begin(), numbers.end()) {}

  void clear() { set_.clear(); }
  void insert(std::size_t i) { set_.insert(records_[i]); }

  int find(int number) const { return set_.find(number, set_.value_comp())->number; }

  void walk(long long& sum) const {
    for (const Record& record : set_) sum += record.number;
  }

 private:
  std::vector<Record> records_;
  intrusive::avl_set<Record, intrusive::compare<LessRecord>, intrusive::constant_time_size<false>>
      set_;
};

}  // namespace

std::string addBoost(Suite& suite) {
  addTreePeer<AvlSet>(suite, "Boost");
  return std::string("Boost: boost::intrusive::avl_set of ") + BOOST_LIB_VERSION;
}

}  // namespace bench
