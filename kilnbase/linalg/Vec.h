// The vector family: DoubleVec, IntVec and SCharVec are Vec<double>, Vec<int> and Vec<signed char>.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <span>
#include <type_traits>
#include <utility>

#include <kilnbase/export.h>
#include <kilnbase/linalg/RWBlock.h>
#include <kilnbase/linalg/detail/arithmetic.h>
#include <kilnbase/linalg/detail/elements.h>

namespace vxKilnBase {

template <class T>
class VecPick;

namespace detail {

KILNBASE_API double euclideanNorm(const Vec<double>& v);

}  // namespace detail

/// The names and tags of the classes of a family in numeric errors, and the element type into which
/// vectors of the family convert.
template <class T>
struct VecNames;

template <>
struct VecNames<double> {
  using Wider = void;
  static constexpr const char* vec = "DoubleVec";
  static constexpr const char* pick = "DoubleVecPick";
  static constexpr const char* genMat = "DoubleGenMat";
  static constexpr std::uint16_t vecTag = 0x900E;
  static constexpr std::uint16_t pickTag = 0x900D;
};

template <>
struct VecNames<int> {
  using Wider = double;
  static constexpr const char* vec = "IntVec";
  static constexpr const char* pick = "IntVecPick";
  static constexpr const char* genMat = "IntGenMat";
  static constexpr std::uint16_t vecTag = 0x9018;
  static constexpr std::uint16_t pickTag = 0x9017;
};

template <>
struct VecNames<signed char> {
  using Wider = int;
  static constexpr const char* vec = "SCharVec";
  static constexpr const char* pick = "SCharVecPick";
  static constexpr std::uint16_t vecTag = 0x9024;
  static constexpr std::uint16_t pickTag = 0x9023;
};

/// A one-dimensional array: a strided view onto counted storage.
///
/// A vector is a block of storage, a start in the block, a length and a stride. **Copy construction
/// shares the storage**, and so do `slice`, `reference`, `reverse`, and the rows and columns of
/// matrices: writing through one view shows in all. **Assignment copies elements** into the storage
/// that the target already views, also from temporaries, and the lengths must agree. `copy` and
/// `deepenShallowCopy` make a vector independent; the results of arithmetic are independent.
///
///     DoubleVec v(10, 0.0, 1.0);          // 0 1 2 ... 9
///     DoubleVec even = v.slice(0, 5, 2);  // a view: 0 2 4 6 8
///     even = 7.0;                         // v is now 7 1 7 3 7 5 7 7 7 9
///     DoubleVec own = v.copy();           // independent of v
///
/// **Braces list elements**, as with std::vector: `DoubleVec{3, 1}` has the elements 3 and 1,
/// `DoubleVec(3, 1.0)` three elements 1. Assigning a list of one number sets all elements, as
/// assigning the number does. The decompositions solve for lists, `lu.solve({4, 4})`; where else a
/// vector or a matrix may be meant, a list needs its type: `product(a, DoubleVec{1, 2})`.
///
/// A vector is a random access range over its elements, with any stride, for `for` and standard
/// algorithms. Of a const vector the elements can only be read. Iterators, like `data` and `span`,
/// hold no reference to the storage.
///
///     DoubleVec v{3, 1, 2};
///     std::ranges::sort(v);                            // 1 2 3
///     for (double& x : v.slice(0, 2, 2)) x = -x;       // -1 2 -3
///     const double least = *std::ranges::min_element(v);
///     std::vector<double> values(v.begin(), v.end());  // copied, and back
///     DoubleVec own(values);
///
/// **In containers** hold `Owned<DoubleVec>` (Owned.h). Algorithms that only move elements (sort,
/// rotate, swap, insert) are right with plain vectors too, because a vector whose view was moved
/// away takes any assignment. `erase`, `remove` and `unique` assign to vectors that are alive,
/// which copies elements, into whatever else views them, and fails where the lengths differ:
///
///     std::vector<DoubleVec> columns = {DoubleVec(2, 1.0), DoubleVec(2, 5.0)};
///     DoubleVec view = columns[0];
///     columns.erase(columns.begin());  // view is now 5 5
///
/// Index, length, slice and stride errors are raised through MathError.h. When the handler returns,
/// the operation goes on: with the access as asked for, and after a mismatch of lengths with the
/// elements that both vectors have (a new vector has 0 beyond them). A vector for which there was
/// no storage (kOutOfMemoryError) is empty. Integer arithmetic wraps around.
///
/// Element i lies `i * stride()` elements after the start, a product taken in 32-bit arithmetic. A
/// vector, and every view of its storage, is for one thread at a time.
template <class T>
class KILNBASE_API Vec {
 public:
  /// The type of the elements.
  using Element = T;
  using value_type = T;
  using iterator = detail::PlaceIterator<detail::Strided<T>>;
  using const_iterator = detail::PlaceIterator<detail::Strided<const T>>;

  /// Elements on a line when printing, for all vectors of this element type. Values below 1 are
  /// replaced by 5 at the next print.
  static int numberPerLine;

  /// Length 0.
  Vec();
  /// `n` elements, not initialised.
  explicit Vec(unsigned n)
      : begin_(static_cast<T*>(RWBlock::create(n, sizeof(T), block_))),
        npts_(begin_ == nullptr ? 0 : n),
        step_(1) {}
  /// `n` elements, all `value`.
  explicit Vec(unsigned n, T value);
  /// `n` elements: `start`, then each the one before it plus `increment` (a running sum).
  template <std::same_as<double> Number = T>
  explicit Vec(unsigned n, std::type_identity_t<Number> start,
               std::type_identity_t<Number> increment)
      : Vec(n) {
    for (T& element : *this) {
      element = start;
      start += increment;
    }
  }
  /// Copies `n` values.
  template <std::same_as<T> Value>
  explicit Vec(const Value* values, unsigned n) : Vec(n) {
    copyFrom(values);
  }
  /// These elements.
  Vec(std::initializer_list<T> elements) : Vec(std::span<const T>(elements)) {}
  /// Copies the elements of a contiguous range of T: a std::span, std::vector, std::array or array.
  template <detail::ContiguousRangeOf<T> Range>
  explicit Vec(const Range& elements) : Vec(lengthOf(std::span<const T>(elements).size())) {
    copyFrom(std::span<const T>(elements).data());
  }
  /// A view of the same elements; nothing is copied.
  Vec(const Vec& other)
      : block_(other.block_), begin_(other.begin_), npts_(other.npts_), step_(other.step_) {
    block_->acquire();
  }
  /// Takes the view of `other` over. Afterwards `other` is empty and takes any assignment.
  Vec(Vec&& other) noexcept : block_(RWBlock::movedFrom()), begin_(nullptr), npts_(0), step_(1) {
    exchange(other);
  }
  /// A new vector of the picked elements.
  Vec(const VecPick<T>&
          pick);  // NOLINT(google-explicit-constructor): a pick is a vector to callers
  ~Vec() { RWBlock::release(block_); }

  /// Copies the elements of `v`. The lengths must agree. Where the views overlap, `v` counts as it
  /// was before.
  Vec& operator=(const Vec& v);
  /// The same; but a vector whose view was moved away takes the view of `v` over.
  Vec& operator=(Vec&& v) {
    if (!isMovedFrom()) return *this = v;
    exchange(v);
    return *this;
  }
  /// Copies the picked elements. The lengths must agree.
  Vec& operator=(const VecPick<T>& pick);
  /// Sets every element.
  Vec& operator=(T value);

  /// Makes this vector a view of the elements of `v`, of any length.
  void reference(const Vec& v);
  /// A new vector of stride 1 with the same elements.
  [[nodiscard]] Vec copy() const;
  [[nodiscard]] Vec deepCopy() const { return copy(); }
  /// Copies the elements into storage of this vector's own, stride 1, unless they have it already.
  void deepenShallowCopy();
  /// Whether nobody else views the elements, of stride 1 from the start of the storage on, so that
  /// `deepenShallowCopy` does nothing.
  [[nodiscard]] bool isDeep() const {
    return block_->refs < 2 && step_ == 1 && begin_ == block_->data;
  }
  /// Changes the length. Another length loses the elements; the new ones are not initialised.
  void reshape(unsigned n);
  /// Changes the length, keeping the first elements; new ones are 0. Another length gives this
  /// vector storage of its own; the same length leaves a view a view.
  void resize(unsigned n);

  /// Element i, checked.
  T& operator[](int i) {
    boundsCheck(i);
    return begin_[offset(i)];
  }
  T operator[](int i) const {
    boundsCheck(i);
    return begin_[offset(i)];
  }
  /// Element i, not checked.
  T& operator()(int i) { return begin_[offset(i)]; }
  T operator()(int i) const { return begin_[offset(i)]; }
  /// Element i of the storage from the start on, not checked. Kept as it is: **the stride does not
  /// count**, which callers rely on as the fast path for vectors of stride 1.
  T& sub(int i) { return begin_[i]; }
  T sub(int i) const { return begin_[i]; }

  /// The first element.
  T* data() { return begin_; }
  const T* data() const { return begin_; }
  /// The elements as contiguous memory, which lives as long as a vector views it. Compilers make
  /// vector instructions of loops over spans, but rarely of loops over strides. Raises kStrideError
  /// and gives none unless the stride is 1.
  [[nodiscard]] std::span<T> span() { return {begin_, contiguousLength()}; }
  [[nodiscard]] std::span<const T> span() const { return {begin_, contiguousLength()}; }
  /// The number of elements.
  unsigned length() const { return npts_; }
  /// Distance between neighbours, in elements; negative in a reversed view.
  int stride() const { return step_; }
  /// A view of `n` elements from `start` on, `stride` elements of this vector apart. Not checked:
  /// call `sliceCheck` first where the arguments may be bad.
  [[nodiscard]] Vec slice(int start, unsigned n, int stride = 1) const {
    return Vec(*this, start, n, stride);
  }

  /// The elements, first to last; those of a matrix that are stored, column by column.
  iterator begin() { return {{begin_, step_}, 0}; }
  iterator end() { return {{begin_, step_}, npts_}; }
  const_iterator begin() const { return {{begin_, step_}, 0}; }
  const_iterator end() const { return {{begin_, step_}, npts_}; }
  const_iterator cbegin() const { return begin(); }
  const_iterator cend() const { return end(); }
  /// The elements, last to first.
  auto rbegin() { return std::reverse_iterator(end()); }
  auto rend() { return std::reverse_iterator(begin()); }
  auto rbegin() const { return std::reverse_iterator(end()); }
  auto rend() const { return std::reverse_iterator(begin()); }
  auto crbegin() const { return rbegin(); }
  auto crend() const { return rend(); }

  /// Raises kIndexError unless 0 <= i < length.
  void boundsCheck(int i) const {
    if (static_cast<unsigned>(i) >= npts_ || i < 0) raiseIndex(i);
  }
  /// Raises kVectorLengthsError unless the length is `n`.
  void lengthCheck(unsigned n) const {
    if (npts_ != n) raiseLength(n);
  }
  /// Raises kSliceError unless the slice lies in this vector, as an empty slice always does. The
  /// last index is computed modulo 2^32 and then taken as signed.
  void sliceCheck(int start, unsigned n, int stride) const;
  /// Raises kStrideError unless the stride is 1.
  void strideCheck() const;
  /// Raises the warning kEmptyVectorError in the name of `function`.
  void emptyErr(const char* function) const;

  /// Writes the elements between "[" and "]", `numberPerLine` on a line, with the stream's
  /// formatting; signed characters as numbers.
  void printOn(std::ostream& stream) const;
  /// Reads "[", elements and "]"; without the bracket, elements until the stream fails. Doubles may
  /// be "inf" and "nan", with a sign. The numbers go into the existing elements first, and the
  /// vector takes the length that was read.
  void scanFrom(std::istream& stream);
  /// Sets `numberPerLine` and returns the old value.
  static int setFormatting(int n);

  /// Number of elements with |x - value| <= tolerance.
  [[nodiscard]] unsigned countValue(T value, T tolerance) const;
  /// Whether all elements have |x - value| <= tolerance (1 or 0; 1 for an empty vector).
  [[nodiscard]] int isEqual(T value, T tolerance) const;
  /// Indices of the elements with x < value, ascending.
  [[nodiscard]] Vec<int> lessIndex(T value) const;
  /// Indices of the elements with |x - value| <= tolerance, ascending.
  [[nodiscard]] Vec<int> valueIndex(T value, T tolerance) const;
  /// Indices of all other elements, ascending.
  [[nodiscard]] Vec<int> nonValueIndex(T value, T tolerance) const;
  /// A view of the elements at these indices. Each index outside the vector raises kIndexError.
  [[nodiscard]] VecPick<T> vecPick(const Vec<int>& indices) const;

  // Members that one element type alone has are templates, so that each program compiles its own:
  // compilers do not agree on the names that constraints give to exported members.

  /// As countValue(0, tolerance) and its like.
  template <std::same_as<double> Number = T>
  [[nodiscard]] unsigned countZero(double tolerance) const {
    return countValue(0.0, tolerance);
  }
  template <std::same_as<double> Number = T>
  [[nodiscard]] int isZero(double tolerance) const {
    return isEqual(0.0, tolerance);
  }
  template <std::same_as<double> Number = T>
  [[nodiscard]] Vec<int> zeroIndex(double tolerance) const {
    return valueIndex(0.0, tolerance);
  }
  template <std::same_as<double> Number = T>
  [[nodiscard]] Vec<int> nonZeroIndex(double tolerance) const {
    return nonValueIndex(0.0, tolerance);
  }
  /// Sets every element with |x| <= tolerance to 0.
  template <std::same_as<double> Number = T>
  void clampZero(double tolerance) {
    for (T& x : *this) x = (x < 0.0 ? -x : x) <= tolerance ? 0.0 : x;
  }
  /// A new vector of f(x) for every element x.
  template <std::same_as<double> Number = T>
  [[nodiscard]] Vec apply(double (*f)(double)) const {
    Vec result(npts_);
    const_iterator x = begin();
    for (T& y : result) y = f(*x++);
    return result;
  }
  /// The Euclidean norm; 0 for an empty vector. The squares neither overflow nor underflow.
  template <std::same_as<double> Number = T>
  [[nodiscard]] double vecLen() const {
    return detail::euclideanNorm(*this);
  }
  /// Scales to norm 1 and returns 1. A vector whose norm is not greater than 0 stays: returns 0.
  template <std::same_as<double> Number = T>
  int normalise() {
    const double norm = vecLen();
    if (!(norm > 0.0)) return 0;
    *this *= 1.0 / norm;
    return 1;
  }

  /// The same numbers as doubles, of ints; as ints, of signed chars.
  template <std::same_as<typename VecNames<T>::Wider> Number>
  operator Vec<Number>() const {  // NOLINT(google-explicit-constructor)
    Vec<Number> result(npts_);
    const_iterator x = begin();
    for (Number& y : result) y = *x++;
    return result;
  }

  /// Element by element, in place.
  Vec& operator+=(const Vec& v) { return change<kAdd>(v); }
  Vec& operator-=(const Vec& v) { return change<kSubtract>(v); }
  Vec& operator*=(const Vec& v) { return change<kMultiply>(v); }
  Vec& operator/=(const Vec& v) { return change<kDivide>(v); }
  Vec& operator+=(T x) { return change<kAdd>(x); }
  Vec& operator-=(T x) { return change<kSubtract>(x); }
  Vec& operator*=(T x) { return change<kMultiply>(x); }
  Vec& operator/=(T x) { return change<kDivide>(x); }
  /// Adds 1 to every element.
  Vec& operator++() { return *this += T(1); }
  /// Subtracts 1 from every element.
  Vec& operator--() { return *this -= T(1); }

  /// Element by element; vectors of different lengths are unequal, empty ones equal.
  bool operator==(const Vec& v) const;

  /// Element by element; the result is a new vector. A zero divisor of integers raises
  /// kDivisionByZeroError, and gives 0 when the handler returns.
  friend Vec operator+(const Vec& a, const Vec& b) { return detail::combine<T, kAdd>(a, b); }
  friend Vec operator-(const Vec& a, const Vec& b) { return detail::combine<T, kSubtract>(a, b); }
  friend Vec operator*(const Vec& a, const Vec& b) { return detail::combine<T, kMultiply>(a, b); }
  friend Vec operator/(const Vec& a, const Vec& b) { return detail::combine<T, kDivide>(a, b); }
  friend Vec operator+(const Vec& a, T b) { return detail::combine<T, kAdd>(a, b); }
  friend Vec operator-(const Vec& a, T b) { return detail::combine<T, kSubtract>(a, b); }
  friend Vec operator*(const Vec& a, T b) { return detail::combine<T, kMultiply>(a, b); }
  friend Vec operator/(const Vec& a, T b) { return detail::combine<T, kDivide>(a, b); }
  friend Vec operator+(T a, const Vec& b) { return detail::combine<T, kAdd>(a, b); }
  friend Vec operator-(T a, const Vec& b) { return detail::combine<T, kSubtract>(a, b); }
  friend Vec operator*(T a, const Vec& b) { return detail::combine<T, kMultiply>(a, b); }
  friend Vec operator/(T a, const Vec& b) { return detail::combine<T, kDivide>(a, b); }
  friend Vec operator-(const Vec& a) { return a * T(-1); }
  friend Vec operator+(const Vec& a) { return a.copy(); }

  /// Exchanges two vectors, or two objects of a class derived from Vec, with all that they consist
  /// of. Copies no element.
  template <std::derived_from<Vec> V>
  requires std::is_nothrow_move_constructible_v<V>
  friend void swap(V& a, V& b) noexcept {
    V other(std::move(a));
    a = std::move(b);
    b = std::move(other);
  }

  /// As `printOn` and `scanFrom`.
  friend std::ostream& operator<<(std::ostream& stream, const Vec& v) {
    v.printOn(stream);
    return stream;
  }
  friend std::istream& operator>>(std::istream& stream, Vec& v) {
    v.scanFrom(stream);
    return stream;
  }

 protected:
  /// Whether the view was moved away.
  bool isMovedFrom() const noexcept { return block_ == RWBlock::movedFrom(); }
  /// Exchanges the views.
  void exchange(Vec& v) noexcept {
    std::swap(block_, v.block_);
    std::swap(begin_, v.begin_);
    std::swap(npts_, v.npts_);
    std::swap(step_, v.step_);
  }

  /// The distance of element i from the start, in elements.
  int offset(int i) const {
    return static_cast<int>(static_cast<unsigned>(i) * static_cast<unsigned>(step_));
  }

 private:
  template <class>
  friend class GenMat;

  // A view of `n` elements of `v`.
  Vec(const Vec& v, int start, unsigned n, int stride)
      : block_(v.block_), begin_(v.begin_ + v.offset(start)), npts_(n), step_(v.offset(stride)) {
    block_->acquire();
  }
  // A view of a block.
  Vec(RWBlock* block, T* begin, unsigned n, int stride)
      : block_(block), begin_(begin), npts_(n), step_(stride) {
    block_->acquire();
  }

  using enum detail::Operation;
  template <detail::Operation operation>
  Vec& change(const Vec& v) {
    detail::change<T, operation>(*this, v, block_ == v.block_);
    return *this;
  }
  template <detail::Operation operation>
  Vec& change(T x) {
    detail::change<T, operation>(*this, x, false);
    return *this;
  }

  // A number of elements as a length; 0, with kOutOfMemoryError, for 2^32 and more.
  static unsigned lengthOf(std::size_t count);
  void copyFrom(const T* values);
  std::size_t contiguousLength() const {
    strideCheck();
    return step_ == 1 ? npts_ : 0;
  }
  void raiseIndex(int i) const;
  void raiseLength(unsigned n) const;
  template <class Predicate>
  Vec<int> indicesWhere(Predicate predicate) const;

  RWBlock* block_;  // never null
  T* begin_;
  unsigned npts_;
  int step_;
};

template <>
KILNBASE_API int Vec<double>::numberPerLine;
template <>
KILNBASE_API int Vec<int>::numberPerLine;
template <>
KILNBASE_API int Vec<signed char>::numberPerLine;

}  // namespace vxKilnBase
