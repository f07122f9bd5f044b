#include <kilnbase/geometry/TxformMatrix.h>

namespace {

T4dDblMatrix move(const T4dDblVector& v) {
  return v;
}

T4dDblMatrix turn(const TunitQuaternion& q) {
  return q;
}

// Unlike `Tscale::inverse`, this does not clamp the reciprocals of large scales.
T4dDblMatrix undo(const Tscale& s) {
  T4dDblMatrix m = s;
  for (short i = 0; i < 3; ++i) m(i, i) = 1.0 / m(i, i);
  return m;
}

}  // namespace

TxformMatrix::TxformMatrix(const T4dDblMatrix& m) : T4dDblMatrix(m) {
  extractVectorsFromMatrix();
}

TxformMatrix& TxformMatrix::operator=(const T4dDblMatrix& m) {
  return *this = TxformMatrix(m);
}

TxformMatrix& TxformMatrix::operator=(const Tscale& s) {
  scalePivotTranslation_ = -scalePivotOffset_;
  scale_ = s;
  dirty_ = 1;
  return *this;
}

TxformMatrix& TxformMatrix::operator=(const TunitQuaternion& q) {
  rotatePivotTranslation_ = -rotatePivotOffset_;
  rotation_ = q;
  dirty_ = 1;
  return *this;
}

TxformMatrix& TxformMatrix::operator=(const T4dDblVector& v) {
  const T4dDblMatrix chain = composedWithoutTranslation();
  T4dDblVector origin;
  origin = chain;
  translation_ = v * chain - origin;
  dirty_ = 1;
  return *this;
}

TxformMatrix& TxformMatrix::operator+=(const T4dDblVector& v) {
  translation_ += v * composedWithoutTranslation();
  dirty_ = 1;
  return *this;
}

TxformMatrix& TxformMatrix::operator+=(const Tscale& s) {
  scale_.x *= s.x;
  scale_.y *= s.y;
  scale_.z *= s.z;
  dirty_ = 1;
  return *this;
}

TxformMatrix& TxformMatrix::operator+=(const TunitQuaternion& q) {
  rotation_ = rotation_ * q;
  dirty_ = 1;
  return *this;
}

T4dDblVector TxformMatrix::translation() const {
  return translation_ * undoneRotationAndScale();
}

T4dDblPoint TxformMatrix::scalePivotPoint() const {
  return T4dDblPoint::origin + -scalePivotOffset_;
}

T4dDblPoint TxformMatrix::rotatePivotPoint() const {
  return T4dDblPoint::origin * (move(-rotatePivotOffset_) * move(-scalePivotTranslation_) *
                                undo(scale_) * move(-scalePivotOffset_));
}

TxformMatrix& TxformMatrix::setScalePivotPoint(const T4dDblPoint& p) {
  scalePivotTranslation_ = undo(scale_) * move(p) * scaleAboutPivot();
  scalePivotOffset_ = -T4dDblVector(p);
  dirty_ = 1;
  return *this;
}

TxformMatrix& TxformMatrix::setRotatePivotPoint(const T4dDblPoint& p) {
  const T4dDblVector pivot = p * scaleAboutPivot();
  rotatePivotTranslation_ = turn(rotation_.inverse()) * move(pivot) * move(rotatePivotOffset_) *
                            turn(rotation_) * move(rotatePivotTranslation_);
  rotatePivotOffset_ = -pivot;
  dirty_ = 1;
  return *this;
}

T4dDblMatrix TxformMatrix::composed() const {
  return composedWithoutTranslation() * move(translation_);
}

T4dDblMatrix TxformMatrix::inverse() const {
  return move(-(rotatePivotTranslation_ + translation_)) * undoneRotationAndScale();
}

T4dDblMatrix TxformMatrix::scaleAboutPivot() const {
  return move(scalePivotOffset_) * T4dDblMatrix(scale_) * move(scalePivotTranslation_);
}

T4dDblMatrix TxformMatrix::composedWithoutTranslation() const {
  return scaleAboutPivot() * move(rotatePivotOffset_) * turn(rotation_) *
         move(rotatePivotTranslation_);
}

T4dDblMatrix TxformMatrix::undoneRotationAndScale() const {
  return turn(rotation_.inverse()) * move(-(scalePivotTranslation_ + rotatePivotOffset_)) *
         undo(scale_) * move(-scalePivotOffset_);
}

void TxformMatrix::extractVectorsFromMatrix() {
  T4dDblMatrix frame = *this;
  const auto axis = [&](std::size_t r) {
    return T4dDblVector(frame[r][0], frame[r][1], frame[r][2]);
  };
  double lengths[3];
  for (std::size_t r = 0; r < 3; ++r) {
    lengths[r] = axis(r).length();
    for (int c = 0; c < 3; ++c) frame[r][c] /= lengths[r];
  }
  if (axis(2).dotProduct(axis(0).crossProduct(axis(1))) < 0.0) {
    lengths[2] = -lengths[2];
    for (int c = 0; c < 3; ++c) frame[2][c] = -frame[2][c];
  }
  scale_.x = lengths[0];
  scale_.y = lengths[1];
  scale_.z = lengths[2];
  rotation_ = frame;
  translation_ = *this;
  rotatePivotTranslation_ = T4dDblVector::identity;
  rotatePivotOffset_ = T4dDblVector::identity;
  scalePivotTranslation_ = T4dDblVector::identity;
  scalePivotOffset_ = T4dDblVector::identity;
}
