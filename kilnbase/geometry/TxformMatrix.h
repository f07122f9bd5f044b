// Transforms that are kept as a matrix and as components.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/Tscale.h>
#include <kilnbase/geometry/TunitQuaternion.h>

/// A transform kept as a matrix, which is the base class, and as components: translation, rotation
/// R, scale S, and the pivots of rotation and scale. The components compose to T(a)*S*T(b)*R*T(c).
/// Here T(v) is the translation by v, and
/// - a = scalePivotOffset,
/// - b = scalePivotTranslation + rotatePivotOffset,
/// - c = rotatePivotTranslation + translation.
///
/// So a point is moved by minus the scale pivot, scaled, moved back, moved by minus the rotate
/// pivot, rotated, moved back, translated.
///
/// Kept as it is: the matrix and the components can disagree. Setting or adding a component leaves
/// the matrix unchanged and sets `dirty` to 1. Only assigning a matrix sets `dirty` to 0. The
/// inherited operations change the matrix alone. `composed` and `inverse` use the components alone;
/// they clamp the scale, so scales between -0.0001 and 0.0001 act as 0.0001.
///
///     TxformMatrix xform(Tscale(2, 2, 2));
///     xform.setRotatePivotPoint(T4dDblPoint(1, 0, 0, 1));    // moves nothing
///     TunitQuaternion turn;
///     turn.setToPivotAxis(Tangle(90.0).radians(), T4dDblVector(0, 0, 1));
///     xform += turn;                                         // turns about the pivot
///     T3dDblPoint p(1, 0, 0);
///     p.postmultBy(xform.composed());                        // (2, 0, 0)
class KILNBASE_API TxformMatrix : public T4dDblMatrix {
 public:
  /// No transform.
  constexpr TxformMatrix() = default;
  /// Copies the matrix and extracts the components. All pivots become 0. A mirroring matrix gives a
  /// negative z scale. A row (of the upper left 3x3) of length 0 gives NaN components.
  TxformMatrix(const T4dDblMatrix& m);
  TxformMatrix& operator=(const T4dDblMatrix& m);

  /// Stores the scale and sets scalePivotTranslation := -scalePivotOffset. This drops what
  /// `setScalePivotPoint` added to keep the transform in place.
  TxformMatrix& operator=(const Tscale& s);
  /// Stores the rotation and sets rotatePivotTranslation := -rotatePivotOffset. This drops what
  /// `setRotatePivotPoint` added to keep the transform in place.
  TxformMatrix& operator=(const TunitQuaternion& q);
  /// Deleted: a rotation is of unit length. Use `q.normalize()`.
  TxformMatrix& operator=(const Tquaternion& q) = delete;
  /// Sets the translation so that the composed transform maps the origin to v * S * R.
  TxformMatrix& operator=(const T4dDblVector& v);
  /// Adds v * S * R to the translation: moves by `v` before scale and rotation.
  TxformMatrix& operator+=(const T4dDblVector& v);
  /// Multiplies the scales component by component. Kept as it is: the products are not clamped.
  TxformMatrix& operator+=(const Tscale& s);
  /// Sets the rotation to rotation * q, where `q` acts first.
  TxformMatrix& operator+=(const TunitQuaternion& q);

  /// The translation, mapped back through rotation and scale. With all pivots at 0 this is the
  /// assigned vector.
  [[nodiscard]] T4dDblVector translation() const;
  /// The components as they are stored.
  [[nodiscard]] TunitQuaternion rotation() const { return rotation_; }
  [[nodiscard]] Tscale scale() const { return scale_; }
  /// The scale pivot in the untransformed space.
  [[nodiscard]] T4dDblPoint scalePivotPoint() const;
  /// The rotate pivot in the untransformed space.
  [[nodiscard]] T4dDblPoint rotatePivotPoint() const;
  /// Set a pivot, which must be a Cartesian point of the untransformed space. The composed
  /// transform does not change.
  TxformMatrix& setScalePivotPoint(const T4dDblPoint& p);
  TxformMatrix& setRotatePivotPoint(const T4dDblPoint& p);

  /// 1 when a component has changed since a matrix was assigned, else 0.
  int dirty() const { return dirty_; }
  /// The transform that the components compose to, and its inverse.
  [[nodiscard]] T4dDblMatrix composed() const;
  [[nodiscard]] T4dDblMatrix inverse() const;

 protected:
  /// Sets the components from the matrix. `dirty` stays unchanged.
  void extractVectorsFromMatrix();

 private:
  T4dDblMatrix scaleAboutPivot() const;
  T4dDblMatrix composedWithoutTranslation() const;
  T4dDblMatrix undoneRotationAndScale() const;

  T4dDblVector translation_;
  TunitQuaternion rotation_;
  Tscale scale_;
  T4dDblVector rotatePivotTranslation_;
  T4dDblVector rotatePivotOffset_;
  T4dDblVector scalePivotTranslation_;
  T4dDblVector scalePivotOffset_;
  int dirty_ = 0;
};
