// Sequences of points of a fixed number of doubles, such as the control points of a curve.
#pragma once

#include <concepts>
#include <iosfwd>
#include <utility>

#include <kilnbase/export.h>
#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/IntVec.h>

/// A sequence of points, each a tuple of `size()` doubles, one after another in one vector.
///
///     TtupleVector curve(3, 4, 0.0);            // four points in space
///     curve[1] = DoubleVec(3, 1.0, 1.0);        // the second one: 1 2 3
///     curve.component(2) = 9.0;                 // the third component of all
///     TtupleVector middle = curve.lPoints(1, 2);  // a view of two points
///     middle[0](0) = 5.0;                       // curve[1] is now 5 2 9
///     TtupleVector flat = curve.components(0, 1);  // a copy, in the plane
///     for (DoubleVec point : flat) point *= 2.0;
///     TtupleVector square(2, {0, 0, 1, 0, 1, 1, 0, 1});  // four points in the plane
///
/// As with vectors, **copy construction shares** the elements and **assignment copies** them;
/// `copy` makes an independent sequence. Points and components are views: writing through them
/// changes the sequence. Containers hold `Owned<TtupleVector>` (Owned.h), for the reasons that
/// Vec.h tells.
///
/// An index of a point that is not there is fatal where the index is checked: it is reported
/// (`rptError`) and the process aborts. Indices of components are the caller's duty; where one is
/// wrong, what would be read is empty. Elements at the end that make no whole point are left alone.
class KILNBASE_API TtupleVector {
 public:
  /// No points, of size 0.
  TtupleVector() = default;
  /// A size below 1 is raised to 1, here and below. Kept as it is: there are size * points elements
  /// all the same, so a size below 1 makes no points. More elements than an int counts raise
  /// kOutOfMemoryError.
  TtupleVector(int size, int points, double value);
  /// Copies size * points values, point by point.
  template <std::same_as<double> Value>
  TtupleVector(int size, int points, const Value* values) : TtupleVector(size, points, 0.0) {
    copyFrom(values);
  }
  /// Shares the elements of `data`.
  TtupleVector(int size, const DoubleVec& data);
  /// Kept as it is: of `rows[i]`, which has max(size, 1) elements, the last one alone is stored, as
  /// element i of the data and not of point i. All others are 0, and `size` stays as given, even
  /// below 1.
  template <std::same_as<double> Value>
  TtupleVector(int size, int points, const Value* const* rows) : TtupleVector(size, points, 0.0) {
    copyLastOf(size, points, rows);
  }
  /// Shares the elements of `other`.
  TtupleVector(const TtupleVector& other) = default;
  /// Takes over the elements of `other`, which has no points afterwards and takes any assignment.
  TtupleVector(TtupleVector&& other) noexcept
      : size_(std::exchange(other.size_, 0)), data_(std::move(other.data_)) {}
  ~TtupleVector() = default;

  /// Copies the points. They go to where this sequence views its own when both have as many
  /// elements and points of one size, so that `v.lPoints(0, 2) = w` changes v; otherwise to new
  /// storage.
  TtupleVector& operator=(const TtupleVector& other);
  /// The same; but a sequence whose elements were moved away takes those of `other` over.
  TtupleVector& operator=(TtupleVector&& other);
  /// Shares the elements of `other`, of any number and size.
  void reference(const TtupleVector& other);
  /// Gives this sequence storage of its own, unless nobody shares it.
  void deepenShallowCopy() { data_.deepenShallowCopy(); }
  /// An independent sequence of the same points.
  [[nodiscard]] TtupleVector copy() const { return of(data_.copy()); }
  /// Changes the number of points, keeping the first ones; new ones are 0. Unless the number stays,
  /// the storage is this sequence's own afterwards.
  void resize(int points);

  /// Doubles in a point.
  int size() const { return size_; }
  /// The number of points.
  int points() const {
    return size_ < 1 ? 0 : static_cast<int>(data_.length() / static_cast<unsigned>(size_));
  }
  /// The elements of all points. A vector that is copied from this one shares them.
  const DoubleVec& data() const { return data_; }

  /// Point i as a view of its elements, not checked.
  [[nodiscard]] DoubleVec point(int i) const {
    return data_.slice(i * size_, static_cast<unsigned>(size_));
  }
  /// Point i, checked.
  DoubleVec operator()(int i) const {
    boundsCheck(i);
    return point(i);
  }
  DoubleVec operator[](int i) const { return (*this)(i); }
  /// The points as a random access range of views.
  auto begin() const {
    using Points = vxKilnBase::detail::Lines<TtupleVector, &TtupleVector::point>;
    return vxKilnBase::detail::PlaceIterator<Points>(Points(*this), 0);
  }
  auto end() const { return begin() + points(); }
  /// Unless 0 <= i < points(), reports "bad index" and aborts.
  void boundsCheck(int i) const;

  /// Component k of all points, as a view of stride `size()`.
  [[nodiscard]] DoubleVec component(int k) const;
  /// A new sequence of points that have the components `first` to `last`, both included, or those
  /// named, in that order. No components give no points, of size 0.
  [[nodiscard]] TtupleVector components(int first, int last) const;
  [[nodiscard]] TtupleVector components(const IntVec& indices) const;

  /// The points `first` to `last`, both included, as a view; none when `last` is below `first`.
  /// Checked, as are the points below.
  [[nodiscard]] TtupleVector lPoints(int first, int last) const;
  /// The same points, or those named, in that order, as a new sequence.
  [[nodiscard]] TtupleVector rPoints(int first, int last) const {
    return lPoints(first, last).copy();
  }
  [[nodiscard]] TtupleVector rPoints(const IntVec& indices) const;
  /// Copies all points of `from` to the points `first` to `last`, or those named. Returns 1, or 0
  /// when the numbers or sizes of the points differ. `from` may view this sequence.
  int setPoints(int first, int last, const TtupleVector& from);
  int setPoints(const IntVec& indices, const TtupleVector& from);

  /// The Euclidean length of each point, as a new vector.
  [[nodiscard]] DoubleVec vecLen() const;

  /// A sequence has no text or raw form: nothing is written or read, and `readRaw` returns 0.
  void printOn(std::ostream& stream) const;
  void printRaw(std::ostream& stream) const;
  int readRaw(std::istream& stream);

  /// Exchanges the two views.
  friend void swap(TtupleVector& a, TtupleVector& b) noexcept {
    std::swap(a.size_, b.size_);
    swap(a.data_, b.data_);
  }

 protected:
  /// Whether there is such a point or component.
  bool correctIndex(int i) const { return i >= 0 && i < points(); }
  bool correctTuple(int k) const { return k >= 0 && k < size_; }

 private:
  void copyFrom(const double* values);
  void copyLastOf(int size, int points, const double* const* rows);
  // Points of this size that share the elements of `data`.
  TtupleVector of(const DoubleVec& data) const;

  int size_ = 0;
  DoubleVec data_;
};
