#include <kilnbase/linalg/vecmath.h>

#include "families/Families.h"
#include "families/Ours.h"
#include "peers/PlainLoops.h"

namespace bench {

namespace {

struct Vectors {
  DoubleVec a;
  DoubleVec b;
  double s;
};

const std::vector<Shape> kShapes = {{10, 1}, {1000, 1}, {100000, 1}};

Limits limits(const Shape& shape) {
  return {.named = shape.rows <= 10 ? 1.0 : 1.1};
}

template <class Run, class Data>
Contestant vectorContestant(Run run, Data data) {
  return contestant([run, data]() mutable -> decltype(auto) { return run(data); },
                    [](const auto& result) { return valuesOf(result); });
}

template <class Run>
void addOperation(Suite& suite, const std::string& name, Run run) {
  const auto ours = [run](const Shape& shape) {
    return vectorContestant(
        run, Vectors{vectorOf(randomMatrix(shape, 1)), vectorOf(randomMatrix(shape, 2)), kScalar});
  };
  suite.add({"vector " + name, kShapes, {"Eigen"}, limits, ours, {}});
}

// Two vectors whose elements stand `stride` apart in longer arrays.
struct StridedArrays {
  StridedArrays(const Shape& shape, int distance)
      : n(shape.rows), stride(distance), a(gaussian(3 * n, 1)), b(gaussian(3 * n, 2)) {}

  int start() const { return stride < 0 ? 3 * n - 1 : 0; }

  int n;
  int stride;
  Values a;
  Values b;
};

Values valuesOf(const StridedArrays& v) {
  const double* const first = v.a.data() + v.start();
  Values values;
  for (int i = 0; i < v.n; ++i) values.push_back(first[i * v.stride]);
  return values;
}

// The vectors are views into longer ones, and the peer walks through the same distances.
template <class Run, class Loop>
void addStrided(Suite& suite, const std::string& name, int stride, Run run, Loop loop) {
  const auto ours = [run, stride](const Shape& shape) {
    const StridedArrays arrays(shape, stride);
    const auto view = [&](const Values& all) {
      return vectorOf(all).slice(arrays.start(), static_cast<unsigned>(arrays.n), stride);
    };
    return vectorContestant(run, Vectors{view(arrays.a), view(arrays.b), kScalar});
  };
  const auto plain = [loop, stride](const Shape& shape) {
    return vectorContestant(loop, StridedArrays(shape, stride));
  };
  const std::string strided = "vector " + name + ", stride " + std::to_string(stride);
  suite.add({strided, kShapes, {"loop"}, limits, ours, {{"loop", plain}}});
}

double* firstOf(Values& all, const StridedArrays& v) {
  return all.data() + v.start();
}

}  // namespace

void addVectors(Suite& suite) {
  addOperation(suite, "dot(a, b)", [](Vectors& v) { return dot(v.a, v.b); });
  addOperation(suite, "sum(a)", [](Vectors& v) { return sum(v.a); });
  addOperation(suite, "maxIndex(a)", [](Vectors& v) { return maxIndex(v.a); });
  addOperation(suite, "a + b", [](Vectors& v) { return v.a + v.b; });
  addOperation(suite, "a * b", [](Vectors& v) { return v.a * v.b; });
  addOperation(suite, "a + s", [](Vectors& v) { return v.a + v.s; });
  addOperation(suite, "a * s", [](Vectors& v) { return v.a * v.s; });
  addOperation(suite, "s - a", [](Vectors& v) { return v.s - v.a; });
  addOperation(suite, "a += b", [](Vectors& v) -> DoubleVec& { return v.a += v.b; });
  addOperation(suite, "a *= s", [](Vectors& v) -> DoubleVec& { return v.a *= v.s; });
  for (const int stride : {3, -1}) {
    addStrided(
        suite, "dot(a, b)", stride, [](Vectors& v) { return dot(v.a, v.b); },
        [](StridedArrays& v) { return plainDot(v.n, firstOf(v.a, v), firstOf(v.b, v), v.stride); });
    addStrided(
        suite, "sum(a)", stride, [](Vectors& v) { return sum(v.a); },
        [](StridedArrays& v) { return plainSum(v.n, firstOf(v.a, v), v.stride); });
    addStrided(
        suite, "a += b", stride, [](Vectors& v) -> DoubleVec& { return v.a += v.b; },
        [](StridedArrays& v) -> StridedArrays& {
          plainAdd(v.n, firstOf(v.a, v), firstOf(v.b, v), v.stride);
          return v;
        });
  }
}

}  // namespace bench
