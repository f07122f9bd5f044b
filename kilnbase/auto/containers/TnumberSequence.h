// Non-decreasing sequences of numbers, such as the knot vector of a spline.
#pragma once

#include <iosfwd>

#include <kilnbase/export.h>
#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/IntVec.h>

/// Numbers in ascending order. Values may repeat: a distinct value is a breakpoint, and the number
/// of its repetitions its multiplicity.
///
///     TnumberSequence knots(0.0, 1.0, 4);     // 0 1 2 3
///     knots.add(0.0, 2);                      // 0 0 0 1 2 3
///     int span = knots.findInterval(1.5, 0);  // 3: from knots(3) = 1 to knots(4) = 2
///
/// Copies are independent but for `reference`, and even then an edit gives the edited sequence
/// storage of its own. Searches take logarithmic time, edits linear time. A NaN counts as greater
/// than every number.
class KILNBASE_API TnumberSequence {
 public:
  TnumberSequence() = default;
  /// Copies the values into storage of its own.
  TnumberSequence(const TnumberSequence& other) : values_(other.values_.copy()) {}
  /// Copies the values and sorts them.
  TnumberSequence(const DoubleVec& v);  // NOLINT(google-explicit-constructor): numbers in any order
  /// The `n` values `start`, `start + step`, ... (a running sum); `step` must not be negative.
  TnumberSequence(double start, double step, int n);

  /// Copies the values, of any number, into storage of its own.
  TnumberSequence& operator=(const TnumberSequence& other);
  /// Shares the storage of `other`.
  void reference(TnumberSequence& other) { values_.reference(other.values_); }
  /// Gives this sequence storage of its own, unless nobody shares it.
  void deepenShallowCopy() { values_.deepenShallowCopy(); }

  /// The values. A vector that is copied from this one without `copy` shares their storage: writing
  /// through it must keep the order.
  const DoubleVec& data() const { return values_; }
  int length() const { return static_cast<int>(values_.length()); }
  /// The i-th value, not checked.
  double operator()(int i) const { return values_(i); }

  /// The index of the last value <= t: the start of the interval that `t` lies in, -1 below the
  /// first value. With `left` not 0, intervals include their end instead of their start: from an
  /// index of 1 or more it steps back to where the value changes (or to 0).
  int findInterval(double t, int left) const;

  /// Inserts `count` copies of `t` after the values equal to it; nothing when `count` is below 1.
  void add(double t, int count);
  /// Adds each value of `v`, which need not be in order.
  void add(const DoubleVec& v);
  /// Removes the i-th value. Returns 1, or 0 when there is none.
  int remove(int i);

  /// The distinct values, ascending.
  DoubleVec breakpoints() const;
  /// How often each of the breakpoints occurs, in their order.
  IntVec multiplicities() const;
  /// The index in `breakpoints()` of the i-th value; -1 when there is no such value. Takes time in
  /// proportion to `i`.
  int whichBreakpoint(int i) const;

  /// The values of `b` that `a` lacks, ascending: each value of `a` makes up for one value of `b`
  /// at most `tol` away, and as many as possible are made up for.
  static DoubleVec extra(const TnumberSequence& a, const TnumberSequence& b, double tol);

  /// Sorts the elements that the vector views, ascending; equal ones keep their order, NaNs come
  /// last.
  static void sortDoubleVecInPlace(DoubleVec& v);
  static void sortIntVecInPlace(IntVec& v);
  /// Sorts through a temporary view, such as a slice.
  static void sortDoubleVecInPlace(DoubleVec&& view) { sortDoubleVecInPlace(view); }
  static void sortIntVecInPlace(IntVec&& view) { sortIntVecInPlace(view); }

  /// A sequence has no text or raw form: nothing is written or read, and `readRaw` returns 0.
  void printOn(std::ostream& stream) const;
  void printRaw(std::ostream& stream) const;
  int readRaw(std::istream& stream);

 private:
  const double* begin() const { return values_.data(); }
  const double* end() const { return begin() + values_.length(); }
  bool hasRoomFor(unsigned count) const;

  DoubleVec values_;  // ascending, of stride 1
};
