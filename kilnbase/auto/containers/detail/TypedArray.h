// Arrays of elements of one type, on top of the arrays of elements of one size.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

#include <kilnbase/auto/containers/TobjArray.h>

namespace vxKilnBase::detail {

/// Typed calls on top of `Base`, which is Tarray or TobjArray. The results are those of `Base`.
template <class Base, class T>
class TypedArray : public Base {
  static_assert(alignof(T) <= alignof(std::max_align_t));
  static_assert(std::is_base_of_v<TobjArray, Base> || std::is_trivially_copyable_v<T>);

 public:
  /// The type of the elements.
  using Element = T;
  /// What the operations return.
  using Result = typename Base::Result;

  /// An empty array, which grows by so many elements.
  explicit constexpr TypedArray(std::size_t sizeIncrement) noexcept
      : Base(sizeof(T), sizeIncrement) {}

  /// Adds an element, which may be one of this array.
  // NOLINTNEXTLINE(performance-unnecessary-value-param): may be ours
  Result addLast(T element) { return insert(std::move(element), this->length()); }
  /// Adds `count` elements, which may be elements of this array.
  Result addLast(const T* elements, std::size_t count) requires std::copy_constructible<T> {
    return this->insertElement(elements, this->length(), count);
  }
  Result addLast(std::nullptr_t, std::size_t) = delete;
  /// Inserts before `index`, or at the end when `index` lies beyond it.
  // NOLINTNEXTLINE(performance-unnecessary-value-param): may be ours
  Result insert(T element, std::size_t index) {
    const std::size_t place = std::min(index, this->length());
    if (this->insertSlots(place, 1)) (*this)[place] = std::move(element);
    return Result(0);
  }

  /// Sets `index` to the first place of `element` and returns 0. For an absent element sets `index`
  /// to the length and returns `kNotFound`. Bytes are compared: 0.0 and -0.0 differ, and a NaN is
  /// found.
  long find(const T& element, std::size_t& index) const requires std::is_trivially_copyable_v<T> {
    return this->findElement(static_cast<const void*>(&element), index);
  }
  /// Removes `element` from its first place and returns 0. Returns `kNotFound` for an absent
  /// element. Bytes are compared as in `find`.
  long remove(const T& element) requires std::is_trivially_copyable_v<T> {
    return this->removeElement(static_cast<const void*>(&element));
  }

  /// Element i, not checked. Valid until the array grows.
  T& element(std::size_t i) { return elements()[i]; }
  const T& element(std::size_t i) const { return elements()[i]; }
  T& operator[](std::size_t i) { return elements()[i]; }
  const T& operator[](std::size_t i) const { return elements()[i]; }
  /// The last element, not checked: the array must not be empty.
  T* last() { return elements() + this->length() - 1; }
  const T* last() const { return elements() + this->length() - 1; }

  /// The elements as a range of plain pointers, valid until the array grows.
  T* begin() { return elements(); }
  T* end() { return elements() + this->length(); }
  const T* begin() const { return elements(); }
  const T* end() const { return elements() + this->length(); }

  /// Adds the elements of `other`, which may be this array.
  Result catenate(const TypedArray& other) requires std::copy_constructible<T> {
    return addLast(other.elements(), other.length());
  }
  /// Replaces the elements by copies of those of `other`. The growth step stays unchanged.
  Result copy(const TypedArray& other) requires std::copy_constructible<T> {
    return this->copyElements(0, other.elements(), other.length());
  }
  Result copyTo(TypedArray& other) const requires std::copy_constructible<T> {
    return other.copy(*this);
  }

 private:
  T* elements() const { return reinterpret_cast<T*>(this->block()); }
};

/// An array of objects of type T, which must be default constructible and movable. A new element
/// without a value is T(). Elements that cannot be copied are moved where others are copied.
template <class T>
class TypedObjArray : public TypedArray<TobjArray, T> {
 public:
  using TypedArray<TobjArray, T>::TypedArray;
  ~TypedObjArray() override { this->changePhysicalSizeTo(0); }

 protected:
  void construct(std::size_t first, std::size_t count) override {
    std::uninitialized_value_construct_n(at(this->block()) + first, count);
  }
  void destruct(std::size_t first, std::size_t count) override {
    std::destroy_n(at(this->block()) + first, count);
  }
  void destroy(char* elements, std::size_t count) override { std::destroy_n(at(elements), count); }
  void initialize(char* to, char* from, std::size_t count) override {
    if constexpr (std::copy_constructible<T>) {
      std::uninitialized_copy_n(at(from), count, at(to));
    } else {
      transfer(to, from, count);
    }
  }
  void shuffle(std::size_t first, int distance, std::size_t count) override {
    T* const begin = at(this->block()) + first;
    T* const end = begin + count;
    if (distance < 0) {
      std::move(begin, end, begin + distance);
    } else {
      std::move_backward(begin, end, end + distance);
    }
  }
  void transfer(char* to, char* from, std::size_t count) override {
    std::uninitialized_move_n(at(from), count, at(to));
  }

 private:
  static T* at(char* elements) { return reinterpret_cast<T*>(elements); }
};

}  // namespace vxKilnBase::detail
