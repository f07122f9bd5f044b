// Non-decreasing sequences of numbers, such as the knot vector of a spline.
#pragma once

#include <iosfwd>

#include <kilnbase/export.h>
#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/IntVec.h>

/// Numbers in ascending order. Values may repeat. A distinct value is a breakpoint; the number of
/// its repetitions is its multiplicity.
///
///     TnumberSequence knots(0.0, 1.0, 4);    // 0 1 2 3
///     knots.add(0.0, 2);                     // 0 0 0 1 2 3
///     int r = knots.findInterval(1.5, 0);    // 3: from knots(3) = 1 to knots(4) = 2
///
/// Copies are independent. Sequences share storage after `reference`, until one of them is edited:
/// an edit gives the edited sequence storage of its own. Searches take logarithmic time, edits
/// linear time. A NaN counts as greater than every number.
class KILNBASE_API TnumberSequence {
 public:
  TnumberSequence() = default;
  /// Copies the values into storage of its own.
  TnumberSequence(const TnumberSequence& other) : values_(other.values_.copy()) {}
  /// Copies the values and sorts them.
  TnumberSequence(const DoubleVec& v);  // NOLINT(google-explicit-constructor): numbers in any order
  /// The `n` values start, start + step, ..., a running sum. `step` and `n` must not be negative.
  /// Asserted in debug builds; in release builds the values are sorted, and a negative `n` counts
  /// as 0.
  TnumberSequence(double start, double step, int n);

  /// Copies the values into storage of its own. The lengths may differ.
  TnumberSequence& operator=(const TnumberSequence& other);
  /// Shares the storage of `other`.
  void reference(TnumberSequence& other) { values_.reference(other.values_); }
  /// Gives this sequence storage of its own when its storage is shared.
  void deepenShallowCopy() { values_.deepenShallowCopy(); }

  /// The values. A vector constructed from this one shares the storage: a write to that vector must
  /// keep the order. `data().copy()` has storage of its own.
  const DoubleVec& data() const { return values_; }
  int length() const { return static_cast<int>(values_.length()); }
  /// The i-th value, not checked.
  double operator()(int i) const { return values_(i); }
  /// The values as a range of plain pointers.
  const double* begin() const { return values_.data(); }
  const double* end() const { return begin() + values_.length(); }

  /// The index r of the last value <= t, or -1 for a `t` below the first value. With `left` not 0
  /// and r >= 1 the result is the index of the last value below value r, or 0. Kept as it is: this
  /// steps back for every `t`, not only where `t` equals value r.
  [[nodiscard]] int findInterval(double t, int left) const;

  /// Inserts `count` copies of `t` after the values equal to `t`. A `count` below 1 changes
  /// nothing. The new length must be an int. Asserted in debug builds; in release builds nothing
  /// changes.
  void add(double t, int count);
  /// Adds each value of `v`, in any order. The new length must be an int. Asserted in debug builds;
  /// in release builds nothing changes.
  void add(const DoubleVec& v);
  /// Removes the i-th value and returns 1. Returns 0 when there is no such value.
  int remove(int i);

  /// The distinct values, ascending.
  [[nodiscard]] DoubleVec breakpoints() const;
  /// The multiplicity of each breakpoint, in the order of the breakpoints.
  [[nodiscard]] IntVec multiplicities() const;
  /// The index in `breakpoints()` of the i-th value, or -1 when there is no such value. Takes time
  /// proportional to `i`.
  [[nodiscard]] int whichBreakpoint(int i) const;

  /// The values of `b` that `a` lacks, ascending. Each value of `a` is paired with at most one
  /// value of `b` that is at most `tol` away. As many values as possible are paired. The result is
  /// the unpaired values of `b`.
  [[nodiscard]] static DoubleVec extra(const TnumberSequence& a, const TnumberSequence& b,
                                       double tol);

  /// Sorts the elements that the vector views, ascending. Equal elements keep their order. NaNs
  /// come last.
  static void sortDoubleVecInPlace(DoubleVec& v);
  static void sortIntVecInPlace(IntVec& v);
  /// Sorts through a temporary view, such as a slice.
  static void sortDoubleVecInPlace(DoubleVec&& view) { sortDoubleVecInPlace(view); }
  static void sortIntVecInPlace(IntVec&& view) { sortIntVecInPlace(view); }

  /// Kept as it is: nothing is written or read, and `readRaw` returns 0.
  void printOn(std::ostream& stream) const;
  void printRaw(std::ostream& stream) const;
  int readRaw(std::istream& stream);

 private:
  bool hasRoomFor(unsigned count) const;

  DoubleVec values_;  // ascending, of stride 1
};
