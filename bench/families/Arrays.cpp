#include <memory>

#include <kilnbase/auto/containers/TdoubleArray.h>

#include "Data.h"
#include "families/Families.h"

namespace bench {

namespace {

// The same calls for both kinds of array.
struct OurArray : TdoubleArray {
  OurArray() : TdoubleArray(32) {}

  std::size_t size() const { return length(); }
  void add(double value) { addLast(value); }
  void addAll(const Values& values) { addLast(values.data(), values.size()); }
  void insertAt(std::size_t i, double value) { insert(value, i); }
  void removeFrom(std::size_t i) { removeAt(i, 1); }
};

struct StandardVector : Values {
  void add(double value) { push_back(value); }
  void addAll(const Values& values) { insert(end(), values.begin(), values.end()); }
  void insertAt(std::size_t i, double value) {
    insert(begin() + static_cast<std::ptrdiff_t>(i), value);
  }
  void removeFrom(std::size_t i) { erase(begin() + static_cast<std::ptrdiff_t>(i)); }
};

Limits limits(const Shape&) {
  return {.named = 1.1};
}

// Arrays grow by a quarter where the vector doubles: those that stay in the caches are copied more
// often, for less memory.
Limits growthLimits(const Shape& shape) {
  return {.named = shape.rows < 1000000 ? 0.0 : 1.2};
}

template <class Array>
Values valuesOf(const Array& array) {
  Values values;
  for (std::size_t i = 0; i < array.size(); ++i) values.push_back(array[i]);
  return values;
}

// `work` turns a new array and the given numbers into the result.
template <class Array, class Work>
Maker makerOf(Work work) {
  return [work](const Shape& shape) {
    const auto run = [work, numbers = gaussian(shape.rows, 1),
                      array = std::shared_ptr<Array>()]() mutable -> const Array& {
      array = std::make_shared<Array>();
      work(*array, numbers);
      return *array;
    };
    return contestant(run, [](const Array& array) { return valuesOf(array); });
  };
}

template <class Work>
void addOperation(Suite& suite, const std::string& name, std::vector<Shape> shapes,
                  Limits (*limits)(const Shape&), Work work) {
  suite.add({"array " + name,
             std::move(shapes),
             {"std::vector"},
             limits,
             makerOf<OurArray>(work),
             {{"std::vector", makerOf<StandardVector>(work)}}});
}

}  // namespace

void addArrays(Suite& suite) {
  addOperation(suite, "addLast", {{100, 1}, {10000, 1}, {1000000, 1}}, growthLimits,
               [](auto& array, const Values& numbers) {
                 for (const double number : numbers) array.add(number);
               });
  const std::vector<Shape> shapes = {{100, 1}, {1000, 1}, {10000, 1}};
  addOperation(suite, "insert in the middle", shapes, limits,
               [](auto& array, const Values& numbers) {
                 for (const double number : numbers) array.insertAt(array.size() / 2, number);
               });
  // Half of the numbers are left.
  addOperation(suite, "removeAt in the middle", shapes, limits,
               [](auto& array, const Values& numbers) {
                 array.addAll(numbers);
                 while (array.size() > numbers.size() / 2) array.removeFrom(array.size() / 2);
               });
}

}  // namespace bench
