// The picks of the vector family: DoubleVecPick, IntVecPick and SCharVecPick.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/linalg/Vec.h>

namespace vxKilnBase {

/// The elements of a vector at given indices, made by `Vec::vecPick`.
///
/// Element k of the pick is element `indices(k)` of the vector. The pick views the vector and the
/// indices: writing to an element of the pick changes the vector, and a later change of the index
/// vector shows in the pick. Where an index repeats, the last value written stays.
///
///     DoubleVec v{5, 6, 7};
///     for (double& x : v.vecPick({2, 0})) x = -x;  // -5 6 -7
///
/// A pick is a range like a vector.
template <class T>
class KILNBASE_API VecPick {
 public:
  using value_type = T;
  using iterator = detail::PlaceIterator<detail::Picked<T>>;
  using const_iterator = detail::PlaceIterator<detail::Picked<const T>>;

  /// Shares the storage of both arguments. Each index outside the vector raises kIndexError, from
  /// the first index to the last.
  VecPick(const Vec<T>& vec, const Vec<int>& indices);
  VecPick(const VecPick&) = default;

  /// Each of these sets the picked elements. Lengths must agree (kVectorLengthsError). The source
  /// counts as it was before, also where it shares storage with the pick.
  VecPick& operator=(const Vec<T>& v);
  VecPick& operator=(const VecPick& pick);
  VecPick& operator=(T value);

  /// Element k of the pick, not checked.
  T& operator()(int k) { return vec_(indices_(k)); }
  T operator()(int k) const { return vec_(indices_(k)); }
  T& operator[](int k) { return vec_(indices_(k)); }
  T operator[](int k) const { return vec_(indices_(k)); }

  /// The number of picked elements.
  unsigned length() const { return indices_.length(); }

  /// The picked elements, in the order of the indices.
  iterator begin() { return {{vec_.begin().access(), places()}, 0}; }
  iterator end() { return begin() + length(); }
  const_iterator begin() const { return {{vec_.begin().access(), places()}, 0}; }
  const_iterator end() const { return begin() + length(); }
  const_iterator cbegin() const { return begin(); }
  const_iterator cend() const { return end(); }

  /// Raises kIndexError for each index outside the vector.
  void assertElements() const;
  /// Raises kVectorLengthsError unless the length is `n`.
  void lengthCheck(unsigned n) const;

 private:
  detail::Strided<const int> places() const { return indices_.begin().access(); }

  Vec<T> vec_;
  Vec<int> indices_;
};

}  // namespace vxKilnBase
