// The operations of a library on arrays of values.
#pragma once

#include <algorithm>
#include <new>
#include <type_traits>

#include "Data.h"
#include "geometry/Libraries.h"

namespace bench::geometry {

std::vector<Way> ourWays();
std::vector<Way> imathWays();
std::vector<Way> glmWays();
std::vector<Way> eigenWays();

/// Allocates at the start of a cache line, so that no library is lucky.
template <class T>
struct CacheAligned {
  using value_type = T;
  CacheAligned() = default;
  template <class U>
  CacheAligned(const CacheAligned<U>&) {}  // NOLINT(google-explicit-constructor)
  T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), kLine)); }
  void deallocate(T* p, std::size_t) { ::operator delete(p, kLine); }
  bool operator==(const CacheAligned&) const { return true; }

  static constexpr std::align_val_t kLine{64};
};

template <class T>
using Array = std::vector<T, CacheAligned<T>>;

/// Makes arrays of values, each of that many random numbers.
template <int numbers, class T>
auto arraysOf(T (*make)(const double*), unsigned seed = 1) {
  return [=](int count) {
    const Values random = gaussian(numbers * count, seed);
    Array<T> array;
    for (int i = 0; i < count; ++i) array.push_back(make(random.data() + i * numbers));
    return array;
  };
}

/// A transform made of 16 numbers, row by row; the last column is (0, 0, 0, 1).
template <class T>
T transformOf(T (*make)(const double*)) {
  Values numbers = gaussian(16, 3);
  for (const std::size_t row : {0U, 1U, 2U}) numbers[4 * row + 3] = 0.0;
  numbers[15] = 1.0;
  return make(numbers.data());
}

/// Makes each element of an array anew of what library L makes of those of the operands; of several
/// elements at once only if they may be taken together.
template <class L, bool together, class Operation, class... Operand>
Contestant onArrays(Operation operation, const Array<Operand>&... operands) {
  using Result = decltype(operation(operands[0]...));
  using Results = Array<Result>;
  Results results(std::min({operands.size()...}));
  const auto run = [=]() mutable -> const Results& {
    const Operation local = operation;  // not suspected to change with the results
    for (std::size_t i = 0; i < results.size(); ++i) {
      new (&results[i]) Result(local(operands[i]...));
      if constexpr (!together) benchmark::DoNotOptimize(results[i]);
    }
    return results;
  };
  return contestant(run, [](const Results& done) {
    Values values;
    for (const auto& result : done) {
      if constexpr (std::is_same_v<Result, double>) {
        values.push_back(result);
      } else {
        L::append(values, result);
      }
    }
    return values;
  });
}

template <class L, bool together = false, class Operation, class... Arrays>
Way way(const std::string& name, Operation operation, Arrays... arrays) {
  return {name, [=](const Shape& shape) {
            return onArrays<L, together>(operation, arrays(shape.rows)...);
          }};
}

/// The ways of a library L, which has its types, how they are made of numbers and turned into them
/// again, and the operations on single values.
template <class L>
std::vector<Way> waysOf() {
  const auto matrices = arraysOf<16>(L::matrix);
  const auto points = arraysOf<3>(L::point);
  const auto vectors = arraysOf<3>(L::vector);
  const auto quaternions = arraysOf<4>(L::quaternion);
  const auto rotations =
      arraysOf<4>(+[](const double* numbers) { return L::normalised(L::quaternion(numbers)); });
  const auto transform = transformOf(L::transform);
  const auto product = [](const auto& a, const auto& b) { return L::product(a, b); };
  const auto normalised = [](const auto& a) { return L::normalised(a); };
  return {way<L>("4x4 product", product, matrices, arraysOf<16>(L::matrix, 2)),
          way<L>(
              "4x4 inverse", [](const auto& a) { return L::inverse(a); }, matrices),
          way<L>(
              "3x3 determinant", [](const auto& a) { return L::determinant(a); },
              arraysOf<16>(L::corner)),
          way<L, true>(
              "points times 4x4", [=](const auto& p) { return L::transformPoint(p, transform); },
              points),
          way<L, true>(
              "vectors times 4x4", [=](const auto& v) { return L::transformVector(v, transform); },
              vectors),
          way<L>("vector normalised", normalised, vectors),
          way<L>("quaternion product", product, quaternions, arraysOf<4>(L::quaternion, 2)),
          way<L>(
              "quaternion to 4x4", [](const auto& q) { return L::toMatrix(q); }, rotations),
          way<L>("quaternion normalised", normalised, quaternions)};
}

}  // namespace bench::geometry
