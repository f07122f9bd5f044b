#include <algorithm>
#include <numeric>

#include <kilnbase/auto/containers/TtupleVector.h>
#include <kilnbase/auto/containers/detail/tuples.h>
#include <kilnbase/detail/assert.h>

using vxKilnBase::detail::isMovedFrom;
using vxKilnBase::detail::tupleElements;

namespace {

int intLength(const IntVec& indices) {
  return static_cast<int>(indices.length());
}

}  // namespace

TtupleVector::TtupleVector(int size, int points, double value)
    : size_(std::max(size, 1)), data_(tupleElements(size, points).value_or(0), value) {}

TtupleVector::TtupleVector(int size, const DoubleVec& data)
    : size_(std::max(size, 1)), data_(data) {}

void TtupleVector::copyFrom(const double* values) {
  KILN_ASSERT(values != nullptr || data_.length() == 0);
  if (values != nullptr) data_ = DoubleVec(values, data_.length());
}

void TtupleVector::copyLastOf(int size, int points, const double* const* rows) {
  size_ = size;
  const int last = std::max(size, 1) - 1;
  const int stored = std::min(points, static_cast<int>(data_.length()));
  for (int i = 0; i < stored; ++i) data_(i) = rows[i][last];
}

TtupleVector& TtupleVector::operator=(const TtupleVector& other) {
  if (size_ == other.size_ && data_.length() == other.data_.length()) {
    data_ = other.data_;
  } else {
    reference(other.copy());
  }
  return *this;
}

TtupleVector& TtupleVector::operator=(TtupleVector&& other) {
  if (!isMovedFrom(data_)) return *this = other;
  swap(*this, other);
  return *this;
}

void TtupleVector::reference(const TtupleVector& other) {
  size_ = other.size_;
  data_.reference(other.data_);
}

TtupleVector TtupleVector::of(const DoubleVec& data) const {
  TtupleVector points;
  points.size_ = size_;
  points.data_.reference(data);
  return points;
}

void TtupleVector::resize(int points) {
  if (const auto elements = tupleElements(size_, points)) data_.resize(*elements);
}

void TtupleVector::boundsCheck(int i) const {
  if (!correctIndex(i)) {
    vxKilnBase::detail::failBoundsCheck("bad index", i, "auto/containers/TtupleVector", 36);
  }
}

DoubleVec TtupleVector::component(int k) const {
  KILN_ASSERT(correctTuple(k));
  if (!correctTuple(k) || points() == 0) return {};
  return data_.slice(k, static_cast<unsigned>(points()), size_);
}

TtupleVector TtupleVector::components(int first, int last) const {
  const bool inside = last < first || (correctTuple(first) && correctTuple(last));
  KILN_ASSERT(inside);
  if (last < first || !inside) return {};
  IntVec indices(static_cast<unsigned>(last - first) + 1);
  std::iota(indices.data(), indices.data() + indices.length(), first);
  return components(indices);
}

TtupleVector TtupleVector::components(const IntVec& indices) const {
  if (indices.length() == 0) return {};
  TtupleVector chosen(intLength(indices), points(), 0.0);
  for (int k = 0; k < intLength(indices); ++k) {
    KILN_ASSERT(correctTuple(indices(k)));
    if (!correctTuple(indices(k))) return {};
    chosen.component(k) = component(indices(k));
  }
  return chosen;
}

TtupleVector TtupleVector::lPoints(int first, int last) const {
  if (last < first) return of(data_.slice(0, 0));
  boundsCheck(first);
  boundsCheck(last);
  const int count = last - first + 1;
  return of(data_.slice(first * size_, static_cast<unsigned>(count * size_)));
}

TtupleVector TtupleVector::rPoints(const IntVec& indices) const {
  TtupleVector chosen = of(DoubleVec());
  chosen.resize(intLength(indices));
  for (int k = 0; k < intLength(indices); ++k) {
    boundsCheck(indices(k));
    if (k < chosen.points()) chosen.point(k) = point(indices(k));
  }
  return chosen;
}

int TtupleVector::setPoints(int first, int last, const TtupleVector& from) {
  const TtupleVector to = lPoints(first, last);
  if (from.size_ != size_ || from.points() != to.points()) return 0;
  to.lPoints(0, to.points() - 1).data_ = from.lPoints(0, from.points() - 1).data_;
  return 1;
}

int TtupleVector::setPoints(const IntVec& indices, const TtupleVector& from) {
  if (from.size_ != size_ || from.points() != intLength(indices)) return 0;
  for (int k = 0; k < from.points(); ++k) boundsCheck(indices(k));
  const TtupleVector source = from.copy();
  for (int k = 0; k < source.points(); ++k) point(indices(k)) = source.point(k);
  return 1;
}

DoubleVec TtupleVector::vecLen() const {
  DoubleVec lengths(static_cast<unsigned>(points()));
  for (int i = 0; i < static_cast<int>(lengths.length()); ++i) lengths.sub(i) = point(i).vecLen();
  return lengths;
}

void TtupleVector::printOn(std::ostream&) const {}
void TtupleVector::printRaw(std::ostream&) const {}
int TtupleVector::readRaw(std::istream&) {
  return 0;
}
