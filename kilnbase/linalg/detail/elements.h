// The elements of a strided view as a range.
#pragma once

#include <cstddef>
#include <iterator>
#include <ranges>
#include <type_traits>

namespace vxKilnBase::detail {

/// Walks elements `stride` apart. Compares places, not addresses: the stride may be 0 or negative.
template <class T>
class StridedIterator {
 public:
  using value_type = std::remove_const_t<T>;
  using difference_type = std::ptrdiff_t;

  StridedIterator() = default;
  StridedIterator(T* first, std::ptrdiff_t stride, std::ptrdiff_t place)
      : first_(first), stride_(stride), place_(place) {}

  T& operator*() const { return first_[place_ * stride_]; }
  StridedIterator& operator++() {
    ++place_;
    return *this;
  }
  StridedIterator operator++(int) {
    StridedIterator old = *this;
    ++place_;
    return old;
  }
  bool operator==(const StridedIterator& other) const { return place_ == other.place_; }

 private:
  T* first_ = nullptr;
  std::ptrdiff_t stride_ = 0;
  std::ptrdiff_t place_ = 0;
};

/// The `n` elements `stride` apart from `first` on.
template <class T>
auto elements(T* first, unsigned n, int stride) {
  using Iterator = StridedIterator<T>;
  return std::ranges::subrange(Iterator(first, stride, 0), Iterator(first, stride, n));
}

}  // namespace vxKilnBase::detail
