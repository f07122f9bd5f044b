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
  void insertAt(std::size_t i, double value) { insert(value, i); }
  void removeFrom(std::size_t i) { removeAt(i, 1); }
};

struct StandardVector : Values {
  void add(double value) { push_back(value); }
  void insertAt(std::size_t i, double value) {
    insert(begin() + static_cast<std::ptrdiff_t>(i), value);
  }
  void removeFrom(std::size_t i) { erase(begin() + static_cast<std::ptrdiff_t>(i)); }
};

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
void addOperation(Suite& suite, const std::string& name, std::vector<Shape> shapes, double limit,
                  Work work) {
  const auto limits = [limit](const Shape&) { return Limits{.named = limit}; };
  suite.add({"array " + name,
             std::move(shapes),
             {"std::vector"},
             limits,
             makerOf<OurArray>(work),
             {{"std::vector", makerOf<StandardVector>(work)}}});
}

}  // namespace

void addArrays(Suite& suite) {
  addOperation(suite, "addLast", {{100, 1}, {10000, 1}, {1000000, 1}}, 1.2,
               [](auto& array, const Values& numbers) {
                 for (const double number : numbers) array.add(number);
               });
  const std::vector<Shape> shapes = {{100, 1}, {1000, 1}, {10000, 1}};
  addOperation(suite, "insert in the middle", shapes, 1.1, [](auto& array, const Values& numbers) {
    for (const double number : numbers) array.insertAt(array.size() / 2, number);
  });
  // Half of the numbers are left.
  addOperation(suite, "removeAt in the middle", shapes, 1.1,
               [](auto& array, const Values& numbers) {
                 for (const double number : numbers) array.add(number);
                 while (array.size() > numbers.size() / 2) array.removeFrom(array.size() / 2);
               });
}

}  // namespace bench
