#include "examples/surface_fit/Surface.h"

#include <cstring>

#include "examples/surface_fit/Spline.h"

namespace surfacefit {

namespace {

bool sameBits(const DoubleVec& a, const DoubleVec& b) {
  return a.length() == b.length() &&
         std::memcmp(a.data(), b.data(), a.length() * sizeof(double)) == 0;
}

}  // namespace

Surface Surface::flat(const Range& xRange, const Range& yRange, double height) {
  return Surface(oneSpan(xRange), oneSpan(yRange), DoubleGenMat(kOrder, kOrder, height));
}

Surface& Surface::operator=(const Surface& other) {
  xKnots_ = other.xKnots_;
  yKnots_ = other.yKnots_;
  net_.reference(other.net_);
  return *this;
}

bool Surface::identicalTo(const Surface& other) const {
  return sameBits(xKnots_.data(), other.xKnots_.data()) &&
         sameBits(yKnots_.data(), other.yKnots_.data()) &&
         sameBits(net_.dataVec(), other.net_.dataVec());
}

bool Surface::contains(double x, double y) const {
  return domain(xKnots_).contains(x) && domain(yKnots_).contains(y);
}

double Surface::heightAt(double x, double y) const {
  const BasisValues xBasis = basisAt(xKnots_, x);
  const BasisValues yBasis = basisAt(yKnots_, y);
  double height = 0.0;
  for (int j = 0; j < kOrder; ++j) {
    double column = 0.0;
    for (int i = 0; i < kOrder; ++i)
      column += xBasis.value[i] * net_(xBasis.first + i, yBasis.first + j);
    height += yBasis.value[j] * column;
  }
  return height;
}

Surface Surface::withXKnot(double x) const {
  TnumberSequence knots(xKnots_);
  knots.add(x, 1);
  return Surface(knots, yKnots_, insertKnot(xKnots_, net_, x));
}

Surface Surface::withYKnot(double y) const {
  TnumberSequence knots(yKnots_);
  knots.add(y, 1);
  return Surface(xKnots_, knots, transpose(insertKnot(yKnots_, transpose(net_), y)));
}

Surface Surface::plus(const DoubleGenMat& net) const {
  return Surface(xKnots_, yKnots_, net_ + net);
}

}  // namespace surfacefit
