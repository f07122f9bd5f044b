#include "examples/surface_fit/Fit.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "examples/surface_fit/BandedLeastSquares.h"
#include "examples/surface_fit/Spline.h"

namespace surfacefit {

namespace {

static_assert(kBandBlocks == kOrder);

// The coefficients are determined when no combination of them changes the heights at the points by
// less than this part of the mean change by a single one. The scaled basis is well conditioned
// where there are points; what is so weak belongs to functions that points touch at the rim of
// their support only, and would carry the deviations of these points a hundredfold into ground
// without points.
constexpr double kRankTolerance = 1e-2;

// The damping where they are not. A fifth keeps noise of points beside a hole from growing into the
// hole, and takes next to nothing from what points determine: with noise of 3 around a disc without
// points, heights in the disc are off by 9 (rms); with a hundredth, by 55.
constexpr double kDamping = 2e-1;

// So many equations are set up at a time.
constexpr std::size_t kEquationsAtATime = 128;

// The basis of one direction and how it is found for a point. The functions are divided by the
// square roots of the lengths of their supports: so scaled, a basis is well conditioned for any
// knots. Source: C. de Boor, A Practical Guide to Splines, chapter XI.
class Direction {
 public:
  Direction(const TnumberSequence& knots, double Point::*coordinate)
      : knots_(knots), coordinate_(coordinate), scales_(basisSize(knots)) {
    for (int i = 0; i < size(); ++i) scales_(i) = 1.0 / std::sqrt(knots(i + kOrder) - knots(i));
  }

  int size() const { return basisSize(knots_); }
  // Groups of four consecutive functions that are not 0 at one place.
  int groups() const { return size() - (kOrder - 1); }
  int groupAt(const Point& point) const { return basisAt(knots_, point.*coordinate_).first; }
  std::array<double, kOrder> at(const Point& point) const {
    auto [first, value] = basisAt(knots_, point.*coordinate_);
    for (int i = 0; i < kOrder; ++i) value[i] *= scales_(first + i);
    return value;
  }
  double scale(int i) const { return scales_(i); }

 private:
  const TnumberSequence& knots_;
  double Point::*coordinate_;
  DoubleVec scales_;
};

DoubleGenMat leadingRows(const DoubleGenMat& matrix, int rows) {
  DoubleGenMat result(rows, matrix.cols());
  for (int j = 0; j < static_cast<int>(matrix.cols()); ++j)
    result.col(j) = matrix.col(j).slice(0, rows);
  return result;
}

// The least-squares system of a net. Its unknowns are numbered along `inner`, the direction with
// fewer coefficients, then along `outer`; a block has those of one function of `outer`.
class SplineSystem {
 public:
  SplineSystem(const std::vector<Point>& points, const Surface& surface);

  BandedTriangle triangle(const DoubleVec& rightSide,
                          const std::function<bool()>& interrupted) const;
  DoubleGenMat net(const DoubleVec& unknowns) const;

 private:
  // A point and the cell, of outer and inner group, where it lies.
  struct Place {
    int cell;
    int point;
  };
  using Places = std::vector<Place>::const_iterator;

  Places endOfCell(int outerGroup, int innerGroup) const;
  DoubleGenMat equations(Places begin, Places end, const DoubleVec& rightSide) const;
  void addCell(int outerGroup, int innerGroup, const DoubleVec& rightSide, BandedQr& qr) const;
  void addStrip(int outerGroup, const DoubleVec& rightSide, BandedQr& qr) const;

  const std::vector<Point>& points_;
  bool xIsInner_;
  Direction inner_;
  Direction outer_;
  std::vector<Place> places_;  // cell by cell
};

SplineSystem::SplineSystem(const std::vector<Point>& points, const Surface& surface)
    : points_(points),
      xIsInner_(surface.net().rows() <= surface.net().cols()),
      inner_(xIsInner_ ? Direction{surface.xKnots(), &Point::x}
                       : Direction{surface.yKnots(), &Point::y}),
      outer_(xIsInner_ ? Direction{surface.yKnots(), &Point::y}
                       : Direction{surface.xKnots(), &Point::x}) {
  places_.reserve(points.size());
  for (const Point& point : points)
    places_.push_back({outer_.groupAt(point) * inner_.groups() + inner_.groupAt(point),
                       static_cast<int>(places_.size())});
  std::sort(places_.begin(), places_.end(), [](const Place& a, const Place& b) {
    return a.cell != b.cell ? a.cell < b.cell : a.point < b.point;
  });
}

SplineSystem::Places SplineSystem::endOfCell(int outerGroup, int innerGroup) const {
  const int cell = outerGroup * inner_.groups() + innerGroup;
  return std::partition_point(places_.begin(), places_.end(),
                              [cell](const Place& place) { return place.cell <= cell; });
}

// Equations of points of one cell: the unknowns along `outer`, then along `inner`.
DoubleGenMat SplineSystem::equations(Places begin, Places end, const DoubleVec& rightSide) const {
  DoubleGenMat result(static_cast<unsigned>(end - begin), kOrder * kOrder + 1);
  int row = 0;
  for (Places place = begin; place != end; ++place) {
    const Point& point = points_[place->point];
    const auto inner = inner_.at(point);
    const auto outer = outer_.at(point);
    for (int i = 0; i < kOrder; ++i)
      for (int j = 0; j < kOrder; ++j) result(row, i * kOrder + j) = inner[i] * outer[j];
    result(row++, kOrder * kOrder) = rightSide(place->point);
  }
  return result;
}

void SplineSystem::addCell(int outerGroup, int innerGroup, const DoubleVec& rightSide,
                           BandedQr& qr) const {
  const Places end = endOfCell(outerGroup, innerGroup);
  for (Places begin = endOfCell(outerGroup, innerGroup - 1); begin != end;) {
    const Places next = begin + std::min<std::ptrdiff_t>(end - begin, kEquationsAtATime);
    qr.add(equations(begin, next, rightSide));
    begin = next;
  }
}

// Adds the equations of all points of one outer group. They are first made into a triangle of their
// own, along `inner` with blocks of four unknowns, so that `qr` gets no more than four equations
// for each function of `inner`.
void SplineSystem::addStrip(int outerGroup, const DoubleVec& rightSide, BandedQr& qr) const {
  const int width = inner_.size();
  DoubleGenMat strip(kOrder * width, qr.columns(), 0.0);
  int rows = 0;
  BandedQr stripQr(kOrder);
  for (int i = 0; i < width; ++i) {
    if (i < inner_.groups()) addCell(outerGroup, i, rightSide, stripQr);
    const DoubleGenMat finished = stripQr.next();
    for (int row = 0; row < static_cast<int>(finished.rows()); ++row, ++rows) {
      for (int k = 0; k < kOrder * kOrder && i + k / kOrder < width; ++k)
        strip(rows, k % kOrder * width + i + k / kOrder) = finished(row, k);
      strip(rows, kOrder * width) = finished(row, kOrder * kOrder);
    }
  }
  if (rows > 0) qr.add(leadingRows(strip, rows));
}

BandedTriangle SplineSystem::triangle(const DoubleVec& rightSide,
                                      const std::function<bool()>& interrupted) const {
  BandedTriangle result(inner_.size());
  BandedQr qr(inner_.size());
  for (int j = 0; j < outer_.size(); ++j) {
    if (interrupted && interrupted()) throw Interrupted();
    if (j < outer_.groups()) addStrip(j, rightSide, qr);
    result.append(qr.next());
  }
  return result;
}

DoubleGenMat SplineSystem::net(const DoubleVec& unknowns) const {
  DoubleGenMat result(unknowns, inner_.size(), outer_.size());
  for (int j = 0; j < outer_.size(); ++j)
    for (int i = 0; i < inner_.size(); ++i) result(i, j) *= inner_.scale(i) * outer_.scale(j);
  return xIsInner_ ? result : transpose(result);
}

}  // namespace

Fit fitSurface(const std::vector<Point>& points, const Surface& start,
               const std::function<bool()>& interrupted) {
  const SplineSystem system(points, start);
  const auto [correction, determined] = solveLeastSquares(
      system.triangle(deviations(start, points), interrupted), kRankTolerance, kDamping);
  const Surface surface = start.plus(system.net(correction));
  return {surface, static_cast<int>(correction.length()), static_cast<int>(points.size()),
          determined, summarize(points, deviations(surface, points))};
}

}  // namespace surfacefit
