// The types that the numeric families compute in.
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

/// The type of sums and products of all elements.
template <class T>
using SumOf = typename ElementTypes<T>::Sum;

/// The type in which elements are added and multiplied: unsigned for integers, which wrap around.
template <class T>
using Wrapping = typename ElementTypes<T>::Wrapping;

}  // namespace vxKilnBase::detail
