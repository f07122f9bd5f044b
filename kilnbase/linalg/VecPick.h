// The picks of the vector family: DoubleVecPick, IntVecPick and SCharVecPick.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/linalg/Vec.h>

namespace vxKilnBase {

/// The elements of a vector at given indices, made by `Vec::vecPick`.
///
/// Element k of the pick is element `indices(k)` of the vector. The pick views both: writing
/// through it changes the vector, and a later change of the index vector shows in the pick. Indices
/// may repeat; the last value written stays.
template <class T>
class KILNBASE_API VecPick {
 public:
  /// Shares the storage of both. Each index outside the vector raises 0x3005, from the first on.
  VecPick(const Vec<T>& vec, const Vec<int>& indices);
  VecPick(const VecPick&) = default;

  /// Each of these sets the picked elements; lengths must agree (0x300F). A source that shares
  /// storage with the pick is copied first.
  VecPick& operator=(const Vec<T>& v);
  VecPick& operator=(const VecPick& pick);
  VecPick& operator=(T value);

  T& operator()(int k) { return vec_(indices_(k)); }
  T operator()(int k) const { return vec_(indices_(k)); }
  T& operator[](int k) { return vec_(indices_(k)); }
  T operator[](int k) const { return vec_(indices_(k)); }

  unsigned length() const { return indices_.length(); }

  /// Raises 0x3005 for each index outside the vector.
  void assertElements() const;
  /// Raises 0x300F unless the length is `n`.
  void lengthCheck(unsigned n) const;

 private:
  Vec<T> vec_;
  Vec<int> indices_;
};

}  // namespace vxKilnBase
