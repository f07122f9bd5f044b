#include <algorithm>

#include <kilnbase/linalg/VecPick.h>
#include <kilnbase/linalg/detail/errors.h>

namespace vxKilnBase {

namespace {

template <class T>
constexpr detail::ErrorSource kSource = {VecNames<T>::pick, VecNames<T>::pickTag};

}  // namespace

template <class T>
VecPick<T>::VecPick(const Vec<T>& vec, const Vec<int>& indices) : vec_(vec), indices_(indices) {
  assertElements();
}

template <class T>
VecPick<T>& VecPick<T>::operator=(const Vec<T>& v) {
  lengthCheck(v.length());
  const Vec<T> source = v.copy();
  const unsigned n = std::min(length(), source.length());
  for (unsigned k = 0; k < n; ++k) (*this)(static_cast<int>(k)) = source.sub(static_cast<int>(k));
  return *this;
}

template <class T>
VecPick<T>& VecPick<T>::operator=(const VecPick& pick) {
  return *this = Vec<T>(pick);
}

template <class T>
VecPick<T>& VecPick<T>::operator=(T value) {
  for (unsigned k = 0; k < length(); ++k) (*this)(static_cast<int>(k)) = value;
  return *this;
}

template <class T>
void VecPick<T>::assertElements() const {
  for (unsigned k = 0; k < length(); ++k) {
    const int index = indices_(static_cast<int>(k));
    const bool inside = index >= 0 && static_cast<unsigned>(index) < vec_.length();
    if (!inside) detail::raiseIndex(kSource<T>, index, vec_.length() - 1);
  }
}

template <class T>
void VecPick<T>::lengthCheck(unsigned n) const {
  if (length() != n) detail::raiseVectorLengths(kSource<T>, length(), n);
}

template class VecPick<double>;
template class VecPick<int>;
template class VecPick<signed char>;

}  // namespace vxKilnBase
