// Axis-aligned boxes of any dimension.
#pragma once

#include <iosfwd>

#include <kilnbase/auto/containers/TtupleMatrix.h>
#include <kilnbase/auto/containers/TtupleVector.h>
#include <kilnbase/export.h>
#include <kilnbase/linalg/DoubleVec.h>

/// An axis-aligned box: the lowest and the highest coordinates on each axis.
///
///     TtupleVector curve(3, 2, 0.0);                 // two points in space, one at the origin
///     curve[1] = DoubleVec(3, 1.0, 1.0);             // the other at (1, 2, 3)
///     TboundingBox box(curve, 0);
///     double diagonal = box.size2();                 // 14
///     int inside = box.isInside(DoubleVec(3, 0.5));  // 1
///
/// Points are tuples of coordinates. **Rational** points (a flag that is not 0) are homogeneous:
/// the component after the coordinates is the weight, by which they are divided.
///
/// A box is a value: copies are independent. Nothing orders the corners: they stand as they are
/// given, and a box that was reset and has no point yet has the minimum +1.7976931348623157e308
/// (the largest double) and the maximum -1.7976931348623157e308 on every axis. No operation reports
/// an error: where dimensions do not agree, the answer is 0 and nothing changes. A new box for
/// which there is no memory (kOutOfMemoryError) is of dimension 0.
class KILNBASE_API TboundingBox {
 public:
  /// Of dimension 0.
  TboundingBox() = default;
  /// Of dimension n (0 if below), with all coordinates 0.
  explicit TboundingBox(int n);
  /// The corners, as they are given; the longer one loses its last coordinates.
  TboundingBox(const DoubleVec& minCorner, const DoubleVec& maxCorner);
  TboundingBox(const TboundingBox& other);
  /// Takes the corners of `other` over. Afterwards `other` is of dimension 0 and takes any
  /// assignment.
  TboundingBox(TboundingBox&& other) noexcept = default;
  /// The box of the points, of the dimension of their coordinates; see `set`.
  TboundingBox(const TtupleVector& points, int rational);
  TboundingBox(const TtupleMatrix& points, int rational);
  ~TboundingBox() = default;

  /// Kept as it is: assigning a box of another dimension does nothing. Callers rely on the
  /// dimension of a box to stay. A box that was moved away takes any dimension.
  TboundingBox& operator=(const TboundingBox& other);
  TboundingBox& operator=(TboundingBox&& other);

  /// The number of coordinates of a corner.
  int boxDim() const { return static_cast<int>(minCorner_.length()); }
  /// The corners. A vector that is copied from one without `copy` views the coordinates of the box.
  const DoubleVec& minCorner() const { return minCorner_; }
  const DoubleVec& maxCorner() const { return maxCorner_; }
  /// The point halfway between the corners, new.
  [[nodiscard]] DoubleVec center() const;
  /// The longest edge; 0, with the warning kEmptyVectorError, in dimension 0.
  [[nodiscard]] double maxSize() const;
  /// The length of the diagonal, and its square; infinite where the square overflows.
  [[nodiscard]] double size() const;
  [[nodiscard]] double size2() const;

  /// Whether the point lies in the box or at most 1e-6 outside on every axis (1 or 0); 0 for a
  /// point of another dimension, 1 in dimension 0.
  [[nodiscard]] int isInside(const DoubleVec& point) const;
  /// Whether the ray from `origin` enters the box (1 or 0): always when it begins inside.
  /// Otherwise, and in three dimensions only, when origin + t * direction lies on a face, up to
  /// 1e-6 outside its edges, for some t from -1e-6 on that is below `maxParam`, or for any when
  /// `maxParam` is negative. Faces that the ray is parallel to (|direction| <= 1e-6 on their axis)
  /// do not count.
  ///
  /// Kept as it is: on the maximum faces of y and z, t must be greater than -1e-6, on the others it
  /// may be equal.
  [[nodiscard]] int intersect(const DoubleVec& origin, const DoubleVec& direction,
                              double maxParam) const;
  /// Makes `out` the part of the box from parameters `a` to `b`, axis by axis: 0 is the minimum, 1
  /// the maximum. Nothing orders or limits them. Returns 1, or 0 unless all have one dimension.
  /// `out` may be this box.
  int cut(const DoubleVec& a, const DoubleVec& b, TboundingBox& out) const;

  /// Resets the box and merges the points. Returns what `merge` does; the box is reset anyway.
  int set(const TtupleVector& points, int rational);
  int set(const TtupleMatrix& points, int rational);
  /// Widens the box to hold the points. Returns 1, or 0 when a point has too few components; those
  /// beyond the coordinates (and the weight, the first one after them) are left alone. No points
  /// leave the box as it was.
  ///
  /// Coordinates that are NaN are left out. Of rational points, weights of at most 1e-9 in
  /// magnitude count as 1, as do those whose reciprocal is at most 1e-9 away from 1.
  int merge(const TtupleVector& points, int rational);
  /// Merges all points whose elements the grid holds.
  int merge(const TtupleMatrix& points, int rational);

  /// Writes "(x, y, ...) to (x, y, ...)", with the stream's formatting.
  void printOn(std::ostream& stream) const;
  friend std::ostream& operator<<(std::ostream& stream, const TboundingBox& box) {
    box.printOn(stream);
    return stream;
  }
  /// Writes the dimension as 4 bytes, then the minimum and the maximum corner, 8 bytes (binary64) a
  /// coordinate; all little-endian. The stream must be a binary one.
  void printRaw(std::ostream& stream) const;
  /// Reads what `printRaw` wrote and takes its dimension. Returns 1, or 0, with the box as it was,
  /// when the stream ends early or the dimension is above 2^31 - 1. Memory is taken as bytes
  /// arrive.
  int readRaw(std::istream& stream);

 private:
  void emptyUnlessStored();
  bool isWithin(double x, int axis) const;
  bool isOnFace(const DoubleVec& origin, const DoubleVec& direction, double t, int axis) const;
  void reset();
  int mergeAll(const DoubleVec& elements, int pointSize, int rational);

  DoubleVec minCorner_;  // the corners are of one length, and nobody else's storage
  DoubleVec maxCorner_;
};
