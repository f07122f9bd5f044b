// Transforms that are kept as a matrix and as components.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/Tscale.h>
#include <kilnbase/geometry/TunitQuaternion.h>

/// A transform kept as a matrix, which it is, and as its components: translation, rotation, scale
/// and the pivots of rotation and scale. The components compose to
///
///     T(scalePivotOffset) * S * T(scalePivotTranslation + rotatePivotOffset) * R
///         * T(rotatePivotTranslation + translation)
///
/// where T(v) moves by v: as a point meets them, move by minus the scale pivot, scale, move back,
/// move by minus the rotate pivot, rotate, move back, translate.
///
/// Assigning a component changes the components alone: the matrix stays what it was last set to,
/// and `dirty` is 1 until a matrix is assigned. `composed` and `inverse` are those of the
/// components, with the clamped scale: scales nearer to 0 than 0.0001, which a matrix may have, are
/// composed as 0.0001. The matrix operations that are inherited change the matrix alone.
///
///     TxformMatrix xform(matrix);
///     xform.setRotatePivotPoint(centre);    // changes nothing
///     xform += turn;                        // turns about that centre
///     p.postmultBy(xform.composed());
class KILNBASE_API TxformMatrix : public T4dDblMatrix {
 public:
  /// No transform.
  constexpr TxformMatrix() = default;
  /// Takes the matrix and extracts the components. All pivots are 0, and a mirroring matrix has a
  /// negative z scale. Row vectors of length 0 give NaN components.
  TxformMatrix(const T4dDblMatrix& m);
  TxformMatrix& operator=(const T4dDblMatrix& m);

  /// Stores the scale. Moves back exactly from the scale pivot, which drops what kept the transform
  /// in place when that was set.
  TxformMatrix& operator=(const Tscale& s);
  /// Stores the rotation, and likewise moves back exactly from the rotate pivot.
  TxformMatrix& operator=(const TunitQuaternion& q);
  /// A rotation is of unit length: normalise first.
  TxformMatrix& operator=(const Tquaternion& q) = delete;
  /// Sets the translation such that the origin of the composed transform is at v * S * R.
  TxformMatrix& operator=(const T4dDblVector& v);
  /// Moves, before scale and rotation, by `v`.
  TxformMatrix& operator+=(const T4dDblVector& v);
  /// Multiplies the scales component by component. The products are not clamped.
  TxformMatrix& operator+=(const Tscale& s);
  /// Turns by `q` before the current rotation.
  TxformMatrix& operator+=(const TunitQuaternion& q);

  /// The translation brought back through rotation and scale: with all pivots at 0 the vector that
  /// was assigned.
  T4dDblVector translation() const;
  TunitQuaternion rotation() const { return rotation_; }
  Tscale scale() const { return scale_; }
  T4dDblPoint scalePivotPoint() const;
  /// The rotate pivot in the untransformed space.
  T4dDblPoint rotatePivotPoint() const;
  /// Set the pivots, Cartesian points of the untransformed space, and leave the composed transform
  /// where it is.
  TxformMatrix& setScalePivotPoint(const T4dDblPoint& p);
  TxformMatrix& setRotatePivotPoint(const T4dDblPoint& p);

  /// 1 when a component was changed since a matrix was assigned, else 0.
  int dirty() const { return dirty_; }
  T4dDblMatrix composed() const;
  T4dDblMatrix inverse() const;

 protected:
  /// Sets the components from the matrix; `dirty` stays.
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
