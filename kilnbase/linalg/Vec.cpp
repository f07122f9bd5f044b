#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <istream>
#include <limits>
#include <ostream>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <kilnbase/linalg/Vec.h>
#include <kilnbase/linalg/VecPick.h>
#include <kilnbase/linalg/detail/counts.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/linpack/dnrm2.h>

namespace vxKilnBase {

template <>
int Vec<double>::numberPerLine = 5;
template <>
int Vec<int>::numberPerLine = 5;
template <>
int Vec<signed char>::numberPerLine = 5;

namespace {

template <class T>
constexpr detail::ErrorSource kSource = {VecNames<T>::vec, VecNames<T>::vecTag};

template <class T>
bool within(T difference, T tolerance) {
  return difference <= tolerance && difference >= -tolerance;
}

// Whether |x - value| <= tolerance. Integers do not overflow; a NaN never passes.
template <class T>
auto nearTo(T value, T tolerance) {
  using Wide = std::conditional_t<std::is_integral_v<T>, long long, T>;
  return [=](T x) {
    return within(static_cast<Wide>(x) - static_cast<Wide>(value), static_cast<Wide>(tolerance));
  };
}

// Takes `word`, in letters of either case, from the stream. Takes nothing when other text follows.
bool takeWord(std::istream& stream, std::string_view word) {
  for (std::size_t taken = 0; taken < word.size(); ++taken) {
    if (std::tolower(stream.peek()) != word[taken]) {
      for (; taken > 0; --taken) stream.unget();
      return false;
    }
    stream.get();
  }
  return true;
}

// Reads one element.
bool readElement(std::istream& stream, int& value) {
  return static_cast<bool>(stream >> value);
}

// The standard library prints infinities and NaN but does not read them.
bool readElement(std::istream& stream, double& value) {
  const int sign = (stream >> std::ws).peek();
  const bool hasSign = sign == '-' || sign == '+';
  if (hasSign) stream.get();
  if (takeWord(stream, "inf")) {
    value = std::numeric_limits<double>::infinity();
  } else if (takeWord(stream, "nan")) {
    value = std::numeric_limits<double>::quiet_NaN();
  } else {
    if (hasSign) stream.unget();
    return static_cast<bool>(stream >> value);
  }
  if (sign == '-') value = -value;
  return true;
}

// A signed char is read as a number.
bool readElement(std::istream& stream, signed char& value) {
  int number = 0;
  if (!(stream >> number)) return false;
  value = static_cast<signed char>(number);
  if (value != number) stream.setstate(std::ios::failbit);
  return !stream.fail();
}

// Whether another element may follow. Takes the closing bracket.
bool moreElements(std::istream& stream, bool bracketed) {
  if (!bracketed) return true;
  if ((stream >> std::ws).peek() != ']') return stream.good();
  stream.get();
  return false;
}

bool takeOpeningBracket(std::istream& stream) {
  if ((stream >> std::ws).peek() != '[') return false;
  stream.get();
  return true;
}

}  // namespace

// --- Making and rebinding

template <class T>
Vec<T>::Vec() : Vec(0U) {}

template <class T>
Vec<T>::Vec(unsigned n, T value) : Vec(n) {
  *this = value;
}

template <class T>
unsigned Vec<T>::lengthOf(std::size_t count) {
  return detail::elementCount(count);
}

template <class T>
void Vec<T>::copyFrom(const T* values) {
  if (npts_ != 0) std::memcpy(begin_, values, npts_ * sizeof(T));
}

template <class T>
Vec<T>::Vec(const VecPick<T>& pick) : Vec(pick.length()) {
  for (unsigned k = 0; k < npts_; ++k) begin_[k] = pick(static_cast<int>(k));
}

template <class T>
Vec<T>& Vec<T>::operator=(const Vec& v) {
  if (isMovedFrom()) {
    reference(v.copy());
    return *this;
  }
  lengthCheck(v.npts_);
  const unsigned n = std::min(npts_, v.npts_);
  if (n == 0) return *this;
  if (step_ == 1 && v.step_ == 1) {
    std::memmove(begin_, v.begin_, n * sizeof(T));
  } else {
    const Vec source = block_ == v.block_ ? v.copy() : v;
    const auto elements = detail::elements(source.begin_, std::min(n, source.npts_), source.step_);
    std::ranges::copy(elements, detail::elements(begin_, n, step_).begin());
  }
  return *this;
}

template <class T>
Vec<T>& Vec<T>::operator=(const VecPick<T>& pick) {
  return *this = Vec(pick);
}

template <class T>
Vec<T>& Vec<T>::operator=(T value) {
  if (step_ == 1) {
    std::fill_n(begin_, npts_, value);
  } else {
    for (T& element : *this) element = value;
  }
  return *this;
}

template <class T>
void Vec<T>::reference(const Vec& v) {
  v.block_->acquire();
  RWBlock::release(block_);
  block_ = v.block_;
  begin_ = v.begin_;
  npts_ = v.npts_;
  step_ = v.step_;
}

template <class T>
Vec<T> Vec<T>::copy() const {
  Vec result(npts_);
  if (result.npts_ == npts_) result = *this;
  return result;
}

template <class T>
void Vec<T>::deepenShallowCopy() {
  if (!isDeep()) reference(copy());
}

template <class T>
void Vec<T>::reshape(unsigned n) {
  if (n != npts_) reference(Vec(n));
}

template <class T>
void Vec<T>::resize(unsigned n) {
  if (n == npts_) return;
  Vec result(n);
  const unsigned kept = std::min(npts_, result.npts_);
  result.slice(0, kept) = slice(0, kept);
  std::fill_n(result.begin_ + kept, result.npts_ - kept, T(0));
  reference(result);
}

// --- Checks

template <class T>
void Vec<T>::raiseIndex(int i) const {
  detail::raiseIndex(kSource<T>, i, npts_ - 1);
}

template <class T>
void Vec<T>::raiseLength(unsigned n) const {
  detail::raiseVectorLengths(kSource<T>, npts_, n);
}

template <class T>
void Vec<T>::sliceCheck(int start, unsigned n, int stride) const {
  if (n == 0) return;
  const unsigned span = (n - 1) * static_cast<unsigned>(stride);
  const int last = static_cast<int>(static_cast<unsigned>(start) + span);
  const auto inside = [this](int i) { return i >= 0 && static_cast<unsigned>(i) < npts_; };
  if (!inside(start) || !inside(last)) {
    detail::raiseSlice(kSource<T>, start, n, stride, npts_);
  }
}

template <class T>
void Vec<T>::strideCheck() const {
  if (step_ != 1) detail::raiseStride(kSource<T>);
}

template <class T>
void Vec<T>::emptyErr(const char* function) const {
  detail::raiseEmptyVector(kSource<T>, function);
}

// --- Text

template <class T>
void Vec<T>::printOn(std::ostream& stream) const {
  if (numberPerLine < 1) numberPerLine = 5;
  const auto perLine = static_cast<unsigned>(numberPerLine);
  const bool oneLine = perLine >= npts_;
  stream << (oneLine ? "[ " : "[\n");
  for (unsigned i = 0; i < npts_; ++i) {
    if (i != 0) stream << (i % perLine == 0 ? '\n' : ' ');
    stream << +(*this)(static_cast<int>(i));
  }
  stream << (oneLine ? " ]" : "\n]");
}

template <class T>
void Vec<T>::scanFrom(std::istream& stream) {
  const bool bracketed = takeOpeningBracket(stream);
  unsigned count = 0;
  std::vector<T> rest;  // elements beyond the length of this vector
  for (T value; moreElements(stream, bracketed) && readElement(stream, value);) {
    if (count < npts_) {
      (*this)(static_cast<int>(count++)) = value;
    } else {
      rest.push_back(value);
    }
  }
  const auto total = static_cast<unsigned>(count + rest.size());
  if (total != npts_) resize(total);
  if (total == npts_ && !rest.empty()) std::ranges::copy(rest, begin_ + count);
}

template <class T>
int Vec<T>::setFormatting(int n) {
  return std::exchange(numberPerLine, n);
}

// --- Queries

template <class T>
template <class Predicate>
Vec<int> Vec<T>::indicesWhere(Predicate predicate) const {
  Vec<int> indices(static_cast<unsigned>(std::ranges::count_if(*this, predicate)));
  unsigned found = 0;
  int i = 0;
  for (const T& element : *this) {
    if (found < indices.length() && predicate(element)) indices.data()[found++] = i;
    ++i;
  }
  return indices;
}

template <class T>
unsigned Vec<T>::countValue(T value, T tolerance) const {
  return static_cast<unsigned>(std::ranges::count_if(*this, nearTo(value, tolerance)));
}

template <class T>
int Vec<T>::isEqual(T value, T tolerance) const {
  return std::ranges::all_of(*this, nearTo(value, tolerance));
}

template <class T>
Vec<int> Vec<T>::lessIndex(T value) const {
  return indicesWhere([value](T x) { return x < value; });
}

template <class T>
Vec<int> Vec<T>::valueIndex(T value, T tolerance) const {
  return indicesWhere(nearTo(value, tolerance));
}

template <class T>
Vec<int> Vec<T>::nonValueIndex(T value, T tolerance) const {
  return indicesWhere([isNear = nearTo(value, tolerance)](T x) { return !isNear(x); });
}

template <class T>
VecPick<T> Vec<T>::vecPick(const Vec<int>& indices) const {
  return VecPick<T>(*this, indices);
}

template <class T>
bool Vec<T>::operator==(const Vec& v) const {
  return std::equal(begin(), end(), v.begin(), v.end());
}

double detail::euclideanNorm(const Vec<double>& v) {
  return linpack::dnrm2(v.length(), v.data(), v.stride());
}

template class Vec<double>;
template class Vec<int>;
template class Vec<signed char>;

}  // namespace vxKilnBase
