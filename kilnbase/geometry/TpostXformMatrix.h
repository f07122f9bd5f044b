// Transforms that are kept as components.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/Tscale.h>
#include <kilnbase/geometry/TunitQuaternion.h>

/// A transform kept as scale S, rotation R and translation: S * R * T(translation). Its matrix is
/// composed when the inverse is asked for.
///
/// The pivots do not enter the matrix. A scale or rotation that is added moves the translation: the
/// origin of the transform is scaled or turned about the pivot.
class TpostXformMatrix : protected T4dDblMatrix {
 public:
  /// No transform, pivots at the origin.
  constexpr TpostXformMatrix() = default;
  constexpr TpostXformMatrix(const TpostXformMatrix&) = default;
  constexpr virtual ~TpostXformMatrix() {}
  constexpr TpostXformMatrix& operator=(const TpostXformMatrix&) = default;

  /// Set one component and nothing else, and make this `dirty`.
  KILNBASE_API TpostXformMatrix& operator=(const T4dDblVector& v);
  KILNBASE_API TpostXformMatrix& operator=(const Tscale& s);
  KILNBASE_API TpostXformMatrix& operator=(const TunitQuaternion& q);
  KILNBASE_API TpostXformMatrix& operator+=(const T4dDblVector& v);
  /// Multiplies the scales component by component, clamps the products, and scales the translation
  /// about the scale pivot along the rotated axes.
  KILNBASE_API TpostXformMatrix& operator+=(const Tscale& s);
  /// Turns the translation by `q` about the rotate pivot; `q` acts after the current rotation.
  KILNBASE_API TpostXformMatrix& operator+=(const TunitQuaternion& q);

  T4dDblVector translation() const { return translation_; }
  TunitQuaternion rotation() const { return rotation_; }
  Tscale scale() const { return scale_; }
  T4dDblPoint rotatePivotPoint() const { return rotatePivot_; }
  T4dDblPoint scalePivotPoint() const { return scalePivot_; }
  TpostXformMatrix& setRotatePivotPoint(const T4dDblPoint& p) {
    rotatePivot_ = p;
    return *this;
  }
  TpostXformMatrix& setScalePivotPoint(const T4dDblPoint& p) {
    scalePivot_ = p;
    return *this;
  }

  /// 1 when a component was changed since the matrix was composed, else 0.
  int dirty() const { return dirty_; }
  /// The inverse of the matrix, which is composed first when `dirty` is 1.
  KILNBASE_API T4dDblMatrix inverse();

 private:
  T4dDblPoint translationPoint() const { return T4dDblPoint::origin + translation_; }

  T4dDblVector translation_;
  TunitQuaternion rotation_;
  Tscale scale_;
  T4dDblPoint rotatePivot_;
  T4dDblPoint scalePivot_;
  int dirty_ = 0;
};
