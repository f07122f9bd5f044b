// A vector or matrix that a container may hold.
#pragma once

#include <concepts>
#include <initializer_list>
#include <utility>

namespace vxKilnBase {

/// A vector or matrix that is an ordinary value: a copy has elements of its own, and assignment
/// replaces the elements and the size.
///
/// Vectors and matrices are views: a copy shares the elements, and assignment writes into the
/// elements that the target has. Algorithms that move the elements of a container need the
/// opposite. Hold `Owned<DoubleVec>` instead of `DoubleVec` in containers:
///
///     std::vector<vxKilnBase::Owned<DoubleVec>> rows;
///     for (unsigned n = 3; n > 0; --n) rows.push_back(DoubleVec(n, 0.0, 1.0));
///     std::ranges::sort(rows, {}, [](const DoubleVec& row) { return row.length(); });
///     rows.erase(rows.begin());
///     DoubleVec first = rows[0];  // a view of 0 1
///
/// An Owned is a view in all other respects, and may be given to any function that takes one. A
/// view made of an Owned keeps the elements alive; moving the Owned, but not copying it, leaves
/// them to both. Assignment through a reference to the view copies elements as ever. Moving costs a
/// few words; copying, one block of storage.
template <class View>
requires requires(View& view) {
  { view.copy() } -> std::same_as<View>;
  view.reference(view);
}
class Owned : public View {
 public:
  /// Without elements.
  Owned() = default;
  /// The elements of `view`: those of a temporary that has them for itself are taken over, any
  /// other are copied.
  Owned(View view) : View(std::move(view)) {  // NOLINT(google-explicit-constructor)
    View::deepenShallowCopy();
  }
  /// These elements; of a matrix, these rows.
  Owned(std::initializer_list<typename View::Element> elements) requires
      std::constructible_from<View, std::initializer_list<typename View::Element>>
      : View(elements) {}
  Owned(std::initializer_list<std::initializer_list<typename View::Element>> rows) requires
      std::constructible_from<View,
                              std::initializer_list<std::initializer_list<typename View::Element>>>
      : View(rows) {}
  Owned(const Owned& other) : Owned(static_cast<const View&>(other)) {}
  Owned(Owned&& other) noexcept = default;
  ~Owned() = default;

  /// Takes the elements and the size of `other`. What this held before goes on living in its views.
  Owned& operator=(Owned other) noexcept {
    swap(static_cast<View&>(*this), static_cast<View&>(other));
    return *this;
  }
};

}  // namespace vxKilnBase
