#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <limits>
#include <ostream>
#include <utility>
#include <vector>

#include <kilnbase/auto/containers/detail/tuples.h>
#include <kilnbase/geometry/TboundingBox.h>
#include <kilnbase/linalg/vecmath.h>

using vxKilnBase::detail::isMovedFrom;

namespace {

constexpr double kTolerance = 1e-6;  // of positions and ray parameters
constexpr double kLeastWeight = 1e-9;
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

unsigned asLength(int n) {
  return static_cast<unsigned>(std::max(n, 0));
}

// The first elements, as many as both have, in storage of their own.
DoubleVec firstOf(const DoubleVec& v, const DoubleVec& other) {
  return v.slice(0, std::min(v.length(), other.length())).copy();
}

int coordinates(int pointSize, int rational) {
  return std::max(pointSize, 0) - (rational == 0 ? 0 : 1);
}

// --- Merging: comparisons are written so that a NaN changes nothing.

void widen(double& low, double& high, double x) {
  low = x < low ? x : low;
  high = x > high ? x : high;
}

struct Points {
  const double* first;
  std::ptrdiff_t count;
  std::ptrdiff_t size;
};

struct Corners {
  double* low;
  double* high;
  int n;
};

// Points of kSize components, several at a time, so that the comparisons of one need not wait for
// those of the one before.
template <int kSize>
void mergePlain(const Points& points, const Corners& box) {
  constexpr int kAtATime = 12 / kSize;  // 6 registers of 2 doubles for the minima, 6 for the maxima
  constexpr int kWidth = kAtATime * kSize;
  double lows[kWidth];
  double highs[kWidth];
  std::fill_n(lows, kWidth, kInfinity);
  std::fill_n(highs, kWidth, -kInfinity);
  const double* x = points.first;
  std::ptrdiff_t left = points.count;
  for (; left >= kAtATime; left -= kAtATime, x += kWidth) {
    for (int j = 0; j < kWidth; ++j) widen(lows[j], highs[j], x[j]);
  }
  for (int j = 0; j < left * kSize; ++j) widen(lows[j], highs[j], x[j]);
  for (int j = 0; j < kWidth; ++j) {
    const int k = j % kSize;
    if (k >= box.n) continue;
    box.low[k] = std::min(box.low[k], lows[j]);
    box.high[k] = std::max(box.high[k], highs[j]);
  }
}

double factorOf(double weight) {
  const double factor = std::fabs(weight) > kLeastWeight ? 1.0 / weight : 1.0;
  return std::fabs(factor - 1.0) <= kLeastWeight ? 1.0 : factor;
}

template <int kDim>
void mergeRational(const Points& points, const Corners& box) {
  double low[kDim];
  double high[kDim];
  std::copy_n(box.low, kDim, low);
  std::copy_n(box.high, kDim, high);
  const double* p = points.first;
  for (std::ptrdiff_t i = 0; i < points.count; ++i, p += points.size) {
    const double factor = factorOf(p[kDim]);
    for (int k = 0; k < kDim; ++k) widen(low[k], high[k], p[k] * factor);
  }
  std::copy_n(low, kDim, box.low);
  std::copy_n(high, kDim, box.high);
}

template <bool kRational>
void mergeOfAnySize(const Points& points, const Corners& box) {
  const double* p = points.first;
  for (std::ptrdiff_t i = 0; i < points.count; ++i, p += points.size) {
    const double factor = kRational ? factorOf(p[box.n]) : 1.0;
    for (int k = 0; k < box.n; ++k) widen(box.low[k], box.high[k], p[k] * factor);
  }
}

using Merge = void (*)(const Points&, const Corners&);

Merge plainMerge(int size) {
  constexpr Merge kMerges[] = {mergePlain<1>, mergePlain<2>, mergePlain<3>, mergePlain<4>};
  return size >= 1 && size <= 4 ? kMerges[size - 1] : mergeOfAnySize<false>;
}

Merge rationalMerge(int n) {
  constexpr Merge kMerges[] = {mergeRational<1>, mergeRational<2>, mergeRational<3>};
  return n >= 1 && n <= 3 ? kMerges[n - 1] : mergeOfAnySize<true>;
}

// --- Raw form

constexpr int kDimensionBytes = 4;
constexpr int kCoordinateBytes = 8;

void writeNumber(std::ostream& stream, std::uint64_t number, int bytes) {
  for (int i = 0; i < bytes; ++i) stream.put(static_cast<char>(number >> (8 * i) & 0xFF));
}

std::uint64_t readNumber(std::istream& stream, int bytes) {
  std::uint64_t number = 0;
  for (int i = 0; i < bytes; ++i) {
    number |= std::uint64_t{static_cast<unsigned char>(stream.get())} << (8 * i);
  }
  return number;
}

void writeCorner(std::ostream& stream, const DoubleVec& corner) {
  for (int k = 0; k < static_cast<int>(corner.length()); ++k) {
    writeNumber(stream, std::bit_cast<std::uint64_t>(corner(k)), kCoordinateBytes);
  }
}

void printCorner(std::ostream& stream, const DoubleVec& corner) {
  stream << "(";
  for (int k = 0; k < static_cast<int>(corner.length()); ++k) {
    stream << (k == 0 ? "" : ", ") << corner(k);
  }
  stream << ")";
}

}  // namespace

TboundingBox::TboundingBox(int n) : minCorner_(asLength(n), 0.0), maxCorner_(asLength(n), 0.0) {
  emptyUnlessStored();
}

TboundingBox::TboundingBox(const DoubleVec& minCorner, const DoubleVec& maxCorner)
    : minCorner_(firstOf(minCorner, maxCorner)), maxCorner_(firstOf(maxCorner, minCorner)) {
  emptyUnlessStored();
}

TboundingBox::TboundingBox(const TboundingBox& other)
    : minCorner_(other.minCorner_.copy()), maxCorner_(other.maxCorner_.copy()) {
  emptyUnlessStored();
}

// Makes the dimension 0 if one of the corners did not get its storage.
void TboundingBox::emptyUnlessStored() {
  if (minCorner_.length() == maxCorner_.length()) return;
  minCorner_.reference(DoubleVec());
  maxCorner_.reference(DoubleVec());
}

TboundingBox::TboundingBox(const TtupleVector& points, int rational)
    : TboundingBox(coordinates(points.size(), rational)) {
  set(points, rational);
}

TboundingBox::TboundingBox(const TtupleMatrix& points, int rational)
    : TboundingBox(coordinates(points.size(), rational)) {
  set(points, rational);
}

TboundingBox& TboundingBox::operator=(const TboundingBox& other) {
  if (isMovedFrom(minCorner_)) return *this = TboundingBox(other);
  if (other.boxDim() != boxDim()) return *this;
  minCorner_ = other.minCorner_;
  maxCorner_ = other.maxCorner_;
  return *this;
}

TboundingBox& TboundingBox::operator=(TboundingBox&& other) {
  if (!isMovedFrom(minCorner_)) return *this = other;
  minCorner_ = std::move(other.minCorner_);
  maxCorner_ = std::move(other.maxCorner_);
  return *this;
}

DoubleVec TboundingBox::center() const {
  return (minCorner_ + maxCorner_) * 0.5;
}

double TboundingBox::maxSize() const {
  return maxValue(maxCorner_ - minCorner_);
}

double TboundingBox::size() const {
  return std::sqrt(size2());
}

double TboundingBox::size2() const {
  const DoubleVec diagonal = maxCorner_ - minCorner_;
  return dot(diagonal, diagonal);
}

int TboundingBox::isInside(const DoubleVec& point) const {
  if (point.length() != minCorner_.length()) return 0;
  for (int k = 0; k < boxDim(); ++k) {
    if (!isWithin(point(k), k)) return 0;
  }
  return 1;
}

// Whether a coordinate lies between the corners, or close to them.
bool TboundingBox::isWithin(double x, int axis) const {
  return minCorner_(axis) - kTolerance <= x && x <= maxCorner_(axis) + kTolerance;
}

int TboundingBox::intersect(const DoubleVec& origin, const DoubleVec& direction,
                            double maxParam) const {
  if (origin.length() != minCorner_.length() || direction.length() != minCorner_.length()) return 0;
  if (isInside(origin) != 0) return 1;
  if (boxDim() != 3) return 0;
  for (int axis = 0; axis < 3; ++axis) {
    if (std::fabs(direction(axis)) <= kTolerance) continue;
    for (const DoubleVec* corner : {&minCorner_, &maxCorner_}) {
      const double t = ((*corner)(axis)-origin(axis)) / direction(axis);
      const bool isAhead = corner == &maxCorner_ && axis > 0 ? t > -kTolerance : t >= -kTolerance;
      const bool isNear = maxParam < 0.0 || t < maxParam;
      if (isAhead && isNear && isOnFace(origin, direction, t, axis)) return 1;
    }
  }
  return 0;
}

// Whether origin + t * direction, which lies on a face across the axis, lies between its edges.
bool TboundingBox::isOnFace(const DoubleVec& origin, const DoubleVec& direction, double t,
                            int axis) const {
  for (int k = 0; k < 3; ++k) {
    if (k != axis && !isWithin(origin(k) + t * direction(k), k)) return false;
  }
  return true;
}

int TboundingBox::cut(const DoubleVec& a, const DoubleVec& b, TboundingBox& out) const {
  const unsigned n = minCorner_.length();
  if (a.length() != n || b.length() != n || out.minCorner_.length() != n) return 0;
  const DoubleVec extent = maxCorner_ - minCorner_;
  const DoubleVec low = minCorner_ + a * extent;
  const DoubleVec high = minCorner_ + b * extent;
  out.minCorner_ = low;
  out.maxCorner_ = high;
  return 1;
}

void TboundingBox::reset() {
  minCorner_ = kLargest;
  maxCorner_ = -kLargest;
}

int TboundingBox::set(const TtupleVector& points, int rational) {
  reset();
  return merge(points, rational);
}

int TboundingBox::set(const TtupleMatrix& points, int rational) {
  reset();
  return merge(points, rational);
}

int TboundingBox::merge(const TtupleVector& points, int rational) {
  return mergeAll(points.data(), points.size(), rational);
}

int TboundingBox::merge(const TtupleMatrix& points, int rational) {
  return mergeAll(points.data(), points.size(), rational);
}

// Merges points that stand one after another.
int TboundingBox::mergeAll(const DoubleVec& elements, int pointSize, int rational) {
  if (pointSize < boxDim() + (rational == 0 ? 0 : 1)) return 0;
  if (pointSize < 1) return 1;
  const DoubleVec x = elements.stride() == 1 ? elements : elements.copy();
  if (x.length() != elements.length()) return 0;
  const Merge merged = rational == 0 ? plainMerge(pointSize) : rationalMerge(boxDim());
  merged({x.data(), x.length() / asLength(pointSize), pointSize},
         {minCorner_.data(), maxCorner_.data(), boxDim()});
  return 1;
}

void TboundingBox::printOn(std::ostream& stream) const {
  printCorner(stream, minCorner_);
  stream << " to ";
  printCorner(stream, maxCorner_);
}

void TboundingBox::printRaw(std::ostream& stream) const {
  writeNumber(stream, minCorner_.length(), kDimensionBytes);
  writeCorner(stream, minCorner_);
  writeCorner(stream, maxCorner_);
}

int TboundingBox::readRaw(std::istream& stream) {
  const std::uint64_t n = readNumber(stream, kDimensionBytes);
  if (!stream || n > INT_MAX) return 0;
  std::vector<double> coordinates;
  while (coordinates.size() < 2 * n) {
    const double coordinate = std::bit_cast<double>(readNumber(stream, kCoordinateBytes));
    if (!stream) return 0;
    coordinates.push_back(coordinate);
  }
  const unsigned length = static_cast<unsigned>(n);
  const DoubleVec low(coordinates.data(), length);
  const DoubleVec high(coordinates.data() + n, length);
  if (low.length() != length || high.length() != length) return 0;
  minCorner_.reference(low);
  maxCorner_.reference(high);
  return 1;
}
