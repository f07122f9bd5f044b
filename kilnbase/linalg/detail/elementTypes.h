// What the numeric families compute with.
#pragma once

namespace vxKilnBase::detail {

template <class T>
struct ElementTypes {
  using Sum = int;
  using Wrapping = unsigned;
};
template <>
struct ElementTypes<double> {
  using Sum = double;
  using Wrapping = double;
};

/// What sums and products of elements are counted in.
template <class T>
using SumOf = typename ElementTypes<T>::Sum;

/// What elements are added and multiplied in: integers as unsigned, so that they wrap around.
template <class T>
using Wrapping = typename ElementTypes<T>::Wrapping;

}  // namespace vxKilnBase::detail
