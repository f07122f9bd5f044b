#include <kilnbase/geometry/TpostXformMatrix.h>

TpostXformMatrix& TpostXformMatrix::operator=(const T4dDblVector& v) {
  translation_ = v;
  dirty_ = 1;
  return *this;
}

TpostXformMatrix& TpostXformMatrix::operator=(const Tscale& s) {
  scale_ = s;
  dirty_ = 1;
  return *this;
}

TpostXformMatrix& TpostXformMatrix::operator=(const TunitQuaternion& q) {
  rotation_ = q;
  dirty_ = 1;
  return *this;
}

TpostXformMatrix& TpostXformMatrix::operator+=(const T4dDblVector& v) {
  translation_ += v;
  dirty_ = 1;
  return *this;
}

TpostXformMatrix& TpostXformMatrix::operator+=(const Tscale& s) {
  scale_.set(scale_.x * s.x, scale_.y * s.y, scale_.z * s.z);
  T4dDblVector d = (translationPoint() - scalePivot_) * rotation_.inverse();
  d.set(d.x * s.x, d.y * s.y, d.z * s.z);
  translation_ = scalePivot_ + d * rotation_;
  dirty_ = 1;
  return *this;
}

TpostXformMatrix& TpostXformMatrix::operator+=(const TunitQuaternion& q) {
  const T4dDblVector d = translationPoint() - rotatePivot_;
  translation_ = rotatePivot_ + d * q;
  rotation_ = q * rotation_;
  dirty_ = 1;
  return *this;
}

T4dDblMatrix TpostXformMatrix::inverse() {
  if (dirty_ == 1) {
    setToProduct(scale_, rotation_);
    postmultBy(translation_);
    dirty_ = 0;
  }
  return T4dDblMatrix::inverse();
}
