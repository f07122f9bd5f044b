#include "eigen/Eigen.h"

namespace bench::eigen {

namespace {

using Vector = Eigen::VectorXd;

struct Vectors {
  Vector a;
  Vector b;
  double s;
};

template <class Run>
void addOperation(Suite& suite, const std::string& name, Run run) {
  const auto make = [run](const Shape& shape) {
    Vectors v = {vectorOf(randomMatrix(shape, 1)), vectorOf(randomMatrix(shape, 2)), kScalar};
    return contestant([run, v]() mutable -> decltype(auto) { return run(v); },
                      [](const auto& result) { return valuesOf(result); });
  };
  suite.addPeer("vector " + name, {"Eigen", make});
}

int maxIndex(const Vector& a) {
  Eigen::Index index = 0;
  a.maxCoeff(&index);
  return static_cast<int>(index);
}

}  // namespace

void addVectors(Suite& suite) {
  addOperation(suite, "dot(a, b)", [](Vectors& v) { return v.a.dot(v.b); });
  addOperation(suite, "sum(a)", [](Vectors& v) { return v.a.sum(); });
  addOperation(suite, "maxIndex(a)", [](Vectors& v) { return maxIndex(v.a); });
  addOperation(suite, "a + b", [](Vectors& v) -> Vector { return v.a + v.b; });
  addOperation(suite, "a * b", [](Vectors& v) -> Vector { return v.a.cwiseProduct(v.b); });
  addOperation(suite, "a + s", [](Vectors& v) -> Vector { return v.a.array() + v.s; });
  addOperation(suite, "a * s", [](Vectors& v) -> Vector { return v.a * v.s; });
  addOperation(suite, "s - a", [](Vectors& v) -> Vector { return v.s - v.a.array(); });
  addOperation(suite, "a += b", [](Vectors& v) -> Vector& { return v.a += v.b; });
  addOperation(suite, "a *= s", [](Vectors& v) -> Vector& { return v.a *= v.s; });
}

}  // namespace bench::eigen
