#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <iterator>
#include <numeric>
#include <vector>

#include <kilnbase/auto/containers/TnumberSequence.h>
#include <kilnbase/detail/assert.h>

namespace {

bool isBefore(int a, int b) {
  return a < b;
}
bool isBefore(double a, double b) {
  return a < b || (std::isnan(b) && !std::isnan(a));
}

constexpr auto kAscending = [](auto a, auto b) { return isBefore(a, b); };

template <class T>
void sortAscending(vxKilnBase::Vec<T>& v) {
  vxKilnBase::Vec<T> sorted = v.stride() == 1 ? v : v.copy();
  if (sorted.length() != v.length()) return;
  std::stable_sort(sorted.data(), sorted.data() + sorted.length(), kAscending);
  if (v.stride() != 1) v = sorted;
}

template <class T>
vxKilnBase::Vec<T> toVec(const std::vector<T>& values) {
  return vxKilnBase::Vec<T>(values.data(), static_cast<unsigned>(values.size()));
}

}  // namespace

TnumberSequence::TnumberSequence(const DoubleVec& v) : values_(v.copy()) {
  sortDoubleVecInPlace(values_);
}

TnumberSequence::TnumberSequence(double start, double step, int n)
    : values_(static_cast<unsigned>(std::max(n, 0)), start, step) {
  KILN_ASSERT(n >= 0 && !(step < 0));
  if (step < 0) sortDoubleVecInPlace(values_);
}

TnumberSequence& TnumberSequence::operator=(const TnumberSequence& other) {
  values_.reference(other.values_.copy());
  return *this;
}

int TnumberSequence::findInterval(double t, int left) const {
  int r = static_cast<int>(std::upper_bound(begin(), end(), t, kAscending) - begin()) - 1;
  if (left == 0 || r < 1) return r;
  const auto firstEqual = std::lower_bound(begin(), begin() + r, values_(r), kAscending) - begin();
  return std::max(static_cast<int>(firstEqual) - 1, 0);
}

void TnumberSequence::add(double t, int count) {
  if (count < 1 || !hasRoomFor(static_cast<unsigned>(count))) return;
  const double* place = begin() + findInterval(t, 0) + 1;
  const unsigned n = values_.length() + static_cast<unsigned>(count);
  DoubleVec grown(n);
  if (grown.length() != n) return;
  double* copies = std::copy(begin(), place, grown.data());
  std::copy(place, end(), std::fill_n(copies, count, t));
  values_.reference(grown);
}

void TnumberSequence::add(const DoubleVec& v) {
  if (!hasRoomFor(v.length())) return;
  const TnumberSequence added = v;
  const unsigned n = values_.length() + v.length();
  DoubleVec grown(n);
  if (grown.length() != n || added.values_.length() != v.length()) return;
  std::merge(begin(), end(), added.begin(), added.end(), grown.data(), kAscending);
  values_.reference(grown);
}

// Whether length + count is an int.
bool TnumberSequence::hasRoomFor(unsigned count) const {
  const bool hasRoom = count <= INT_MAX - values_.length();
  KILN_ASSERT(hasRoom);
  return hasRoom;
}

int TnumberSequence::remove(int i) {
  if (i < 0 || i >= length()) return 0;
  DoubleVec rest(values_.length() - 1);
  if (rest.length() + 1 != values_.length()) return 0;
  std::copy(begin() + i + 1, end(), std::copy(begin(), begin() + i, rest.data()));
  values_.reference(rest);
  return 1;
}

DoubleVec TnumberSequence::breakpoints() const {
  std::vector<double> distinct;
  std::unique_copy(begin(), end(), std::back_inserter(distinct));
  return toVec(distinct);
}

IntVec TnumberSequence::multiplicities() const {
  std::vector<int> counts;
  for (const double* value = begin(); value != end(); ++value) {
    if (value == begin() || *value != value[-1]) counts.push_back(0);
    ++counts.back();
  }
  return toVec(counts);
}

int TnumberSequence::whichBreakpoint(int i) const {
  if (i < 0 || i >= length()) return -1;
  return std::inner_product(begin(), begin() + i, begin() + 1, 0, std::plus<>(),
                            std::not_equal_to<>());
}

DoubleVec TnumberSequence::extra(const TnumberSequence& a, const TnumberSequence& b, double tol) {
  std::vector<double> lacking;
  const double* match = a.begin();
  for (const double* next = b.begin(); next != b.end(); ++next) {
    const double value = *next;
    const auto isNear = [=](double x) { return x == value || std::fabs(x - value) <= tol; };
    while (match != a.end() && *match < value && !isNear(*match)) ++match;
    if (match != a.end() && isNear(*match)) {
      ++match;
    } else {
      lacking.push_back(value);
    }
  }
  return toVec(lacking);
}

void TnumberSequence::sortDoubleVecInPlace(DoubleVec& v) {
  sortAscending(v);
}
void TnumberSequence::sortIntVecInPlace(IntVec& v) {
  sortAscending(v);
}

void TnumberSequence::printOn(std::ostream&) const {}
void TnumberSequence::printRaw(std::ostream&) const {}
int TnumberSequence::readRaw(std::istream&) {
  return 0;
}
