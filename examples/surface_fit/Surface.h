// A tensor-product bicubic B-spline surface: a height over every place of a rectangle.
#pragma once

#include <kilnbase/auto/containers/TnumberSequence.h>
#include <kilnbase/linalg/DoubleGenMat.h>

#include "examples/surface_fit/Points.h"

namespace surfacefit {

/// The height at (x, y) is the sum over i and j of net(i, j) times basis function i of the knots in
/// x, at x, times function j of those in y, at y. Knots and net are in the unit of the points.
///
/// A surface does not change after it is made, so copies may share the net.
class Surface {
 public:
  /// `net` has as many rows as `xKnots` has basis functions and as many columns as `yKnots` has.
  Surface(const TnumberSequence& xKnots, const TnumberSequence& yKnots, const DoubleGenMat& net)
      : xKnots_(xKnots), yKnots_(yKnots), net_(net) {}
  Surface(const Surface&) = default;
  Surface& operator=(const Surface& other);
  ~Surface() = default;

  /// One span each way, all at one height.
  static Surface flat(const Range& xRange, const Range& yRange, double height);

  const TnumberSequence& xKnots() const { return xKnots_; }
  const TnumberSequence& yKnots() const { return yKnots_; }
  const DoubleGenMat& net() const { return net_; }

  /// Whether the other one has the same knots and the same net, bit for bit.
  bool identicalTo(const Surface& other) const;

  bool contains(double x, double y) const;
  /// The height at a place that the surface contains.
  double heightAt(double x, double y) const;

  /// The same surface with one more knot.
  Surface withXKnot(double x) const;
  Surface withYKnot(double y) const;
  /// This surface plus another over the same knots, given by its net.
  Surface plus(const DoubleGenMat& net) const;

 private:
  TnumberSequence xKnots_;
  TnumberSequence yKnots_;
  DoubleGenMat net_;
};

}  // namespace surfacefit
