// The elements of views as ranges: iterators over the places of a view.
#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <span>  // with the categories of iterators, and std::reverse_iterator
#include <type_traits>
#include <utility>

namespace vxKilnBase::detail {

template <class Range, class T>
concept ContiguousRangeOf = std::convertible_to<const Range&, std::span<const T>>;

/// Walks the places 0, 1, 2, ... of a view; the element at a place is what `Access` gives for it.
/// Compares places, not addresses: neighbours may share an address or lie in descending order.
template <class Access>
class PlaceIterator {
 public:
  using reference = std::invoke_result_t<const Access&, std::ptrdiff_t>;
  using value_type = std::remove_cvref_t<reference>;
  using pointer = std::add_pointer_t<reference>;
  using difference_type = std::ptrdiff_t;
  using iterator_concept = std::random_access_iterator_tag;
  /// Iterators of the older kind must refer to elements that exist by themselves.
  using iterator_category =
      std::conditional_t<std::is_reference_v<reference>, std::random_access_iterator_tag,
                         std::input_iterator_tag>;

  PlaceIterator() = default;
  PlaceIterator(const Access& access, std::ptrdiff_t place) : access_(access), place_(place) {}
  /// An iterator of elements that may be written is one of elements that may be read.
  template <class Other>
  requires(!std::same_as<Other, Access> && std::convertible_to<Other, Access>)
      PlaceIterator(const PlaceIterator<Other>& other)  // NOLINT(google-explicit-constructor)
      : access_(other.access()), place_(other.place()) {}

  const Access& access() const { return access_; }
  std::ptrdiff_t place() const { return place_; }

  reference operator*() const { return access_(place_); }
  pointer operator->() const requires std::is_reference_v<reference> { return &**this; }
  reference operator[](std::ptrdiff_t n) const { return access_(place_ + n); }

  PlaceIterator& operator+=(std::ptrdiff_t n) {
    place_ += n;
    return *this;
  }
  PlaceIterator& operator-=(std::ptrdiff_t n) { return *this += -n; }
  PlaceIterator& operator++() { return *this += 1; }
  PlaceIterator& operator--() { return *this -= 1; }
  PlaceIterator operator++(int) { return {access_, place_++}; }
  PlaceIterator operator--(int) { return {access_, place_--}; }
  friend PlaceIterator operator+(PlaceIterator i, std::ptrdiff_t n) { return i += n; }
  friend PlaceIterator operator+(std::ptrdiff_t n, PlaceIterator i) { return i += n; }
  friend PlaceIterator operator-(PlaceIterator i, std::ptrdiff_t n) { return i -= n; }
  friend std::ptrdiff_t operator-(const PlaceIterator& a, const PlaceIterator& b) {
    return a.place_ - b.place_;
  }
  friend bool operator==(const PlaceIterator& a, const PlaceIterator& b) {
    return a.place_ == b.place_;
  }
  friend auto operator<=>(const PlaceIterator& a, const PlaceIterator& b) {
    return a.place_ <=> b.place_;
  }

 private:
  Access access_ = {};
  std::ptrdiff_t place_ = 0;
};

/// The places from `first` up to `last`.
template <class Iterator>
struct Range {
  Iterator first;
  Iterator last;

  Iterator begin() const { return first; }
  Iterator end() const { return last; }
};

/// The first `n` places.
template <class Access>
Range<PlaceIterator<Access>> places(const Access& access, std::ptrdiff_t n) {
  return {{access, 0}, {access, n}};
}

/// Elements `stride` apart; the stride may be 0 or negative.
template <class T>
struct Strided {
  T* first = nullptr;
  std::ptrdiff_t stride = 0;

  T& operator()(std::ptrdiff_t place) const { return first[place * stride]; }
  operator Strided<const T>() const  // NOLINT(google-explicit-constructor)
      requires(!std::is_const_v<T>) {
    return {first, stride};
  }
};

/// The elements that a list of indices names.
template <class T>
struct Picked {
  Strided<T> elements;
  Strided<const int> indices;

  T& operator()(std::ptrdiff_t place) const { return elements(indices(place)); }
  operator Picked<const T>() const  // NOLINT(google-explicit-constructor)
      requires(!std::is_const_v<T>) {
    return {elements, indices};
  }
};

/// The rows or columns of a matrix, which `line` makes views of.
template <class Matrix, auto line>
class Lines {
 public:
  Lines() = default;
  explicit Lines(const Matrix& matrix) : matrix_(matrix) {}
  Lines(const Lines&) = default;
  /// Rebinds: assignment of matrices would copy their elements.
  Lines& operator=(const Lines& other) {
    matrix_.reference(other.matrix_);
    return *this;
  }

  auto operator()(std::ptrdiff_t place) const { return (matrix_.*line)(static_cast<int>(place)); }

 private:
  Matrix matrix_;
};

/// The `n` elements `stride` apart from `first` on.
template <class T>
auto elements(T* first, unsigned n, int stride) {
  return places(Strided<T>{first, stride}, n);
}

}  // namespace vxKilnBase::detail

/// The iterators live on when the range is gone.
template <class Iterator>
inline constexpr bool std::ranges::enable_borrowed_range<vxKilnBase::detail::Range<Iterator>> =
    true;
