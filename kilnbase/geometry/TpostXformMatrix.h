// Transforms that are kept as components.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/Tscale.h>
#include <kilnbase/geometry/TunitQuaternion.h>

/// A transform kept as scale S, rotation R and translation. Its matrix is S * R * T(translation),
/// where T(v) is the translation by v. `inverse` composes the matrix.
///
/// The pivots are no part of the matrix. Adding a scale or a rotation also scales or turns the
/// translation about the pivot.
class TpostXformMatrix : protected T4dDblMatrix {
 public:
  /// No transform, pivots at the origin.
  constexpr TpostXformMatrix() = default;
  constexpr TpostXformMatrix(const TpostXformMatrix&) = default;
  constexpr virtual ~TpostXformMatrix() {}
  constexpr TpostXformMatrix& operator=(const TpostXformMatrix&) = default;

  /// Stores the component and sets `dirty` to 1, as every operation on components does. The other
  /// components stay unchanged.
  KILNBASE_API TpostXformMatrix& operator=(const T4dDblVector& v);
  KILNBASE_API TpostXformMatrix& operator=(const Tscale& s);
  KILNBASE_API TpostXformMatrix& operator=(const TunitQuaternion& q);
  KILNBASE_API TpostXformMatrix& operator+=(const T4dDblVector& v);
  /// Multiplies the scales component by component and clamps the products. Scales the translation
  /// about the scale pivot, along the rotated axes.
  KILNBASE_API TpostXformMatrix& operator+=(const Tscale& s);
  /// Sets the rotation to q * rotation, where the current rotation acts first. Turns the
  /// translation by `q` about the rotate pivot.
  KILNBASE_API TpostXformMatrix& operator+=(const TunitQuaternion& q);

  /// The components as they are stored.
  [[nodiscard]] T4dDblVector translation() const { return translation_; }
  [[nodiscard]] TunitQuaternion rotation() const { return rotation_; }
  [[nodiscard]] Tscale scale() const { return scale_; }
  [[nodiscard]] T4dDblPoint rotatePivotPoint() const { return rotatePivot_; }
  [[nodiscard]] T4dDblPoint scalePivotPoint() const { return scalePivot_; }
  /// Store the pivot. The matrix does not change, so `dirty` stays unchanged.
  TpostXformMatrix& setRotatePivotPoint(const T4dDblPoint& p) {
    rotatePivot_ = p;
    return *this;
  }
  TpostXformMatrix& setScalePivotPoint(const T4dDblPoint& p) {
    scalePivot_ = p;
    return *this;
  }

  /// 1 when a component has changed since the matrix was composed, else 0.
  int dirty() const { return dirty_; }
  /// Composes the matrix when `dirty` is 1, which clears `dirty`. Returns the inverse of the
  /// matrix.
  KILNBASE_API T4dDblMatrix inverse();

  /// Writes "translation (x, y, z), rotation (w, x, y, z), scale (x, y, z)".
  friend KILNBASE_API std::ostream& operator<<(std::ostream& stream, const TpostXformMatrix& xform);

 private:
  T4dDblPoint translationPoint() const { return T4dDblPoint::origin + translation_; }

  T4dDblVector translation_;
  TunitQuaternion rotation_;
  Tscale scale_;
  T4dDblPoint rotatePivot_;
  T4dDblPoint scalePivot_;
  int dirty_ = 0;
};
