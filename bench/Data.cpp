#include "Data.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace bench {

namespace {

constexpr unsigned kProbeSeed = 99;

std::size_t at(int i, int j, int leadingDimension) {
  return static_cast<std::size_t>(j) * static_cast<std::size_t>(leadingDimension) +
         static_cast<std::size_t>(i);
}

// Place of column j of the triangle in the factored matrix.
std::size_t placeOf(int j, const std::vector<int>& order, int firstColumn) {
  const auto place = static_cast<std::size_t>(j);
  return order.empty() ? place : static_cast<std::size_t>(order[place] - firstColumn);
}

}  // namespace

Values gaussian(int count, unsigned seed) {
  std::mt19937_64 generator(seed);
  std::normal_distribution<double> normal;
  Values values(static_cast<std::size_t>(count));
  for (double& value : values) value = normal(generator);
  return values;
}

std::vector<int> shuffledNumbers(int count, unsigned seed) {
  std::vector<int> numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), 0);
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(seed));
  return numbers;
}

Values randomMatrix(const Shape& shape, unsigned seed) {
  return gaussian(shape.rows * shape.columns, seed);
}

Values symmetricMatrix(const Shape& shape) {
  Values elements = randomMatrix(shape);
  const auto n = static_cast<std::size_t>(shape.rows);
  for (std::size_t j = 0; j < n; ++j) {
    for (std::size_t i = j + 1; i < n; ++i) elements[j * n + i] = elements[i * n + j];
  }
  return elements;
}

Values pointsOf(int count, int size, bool areRational) {
  Values values = gaussian(count * size, 1);
  const auto n = static_cast<std::size_t>(size);
  for (std::size_t i = n - 1; areRational && i < values.size(); i += n) {
    values[i] = 1.0 + std::fabs(values[i]);
  }
  return values;
}

// Each element stands at a random place in its part of the column.
SparseColumns sparseColumns(const Shape& shape) {
  const int perColumn = shape.columns < 10000 ? 10 : 1000000 / shape.columns;
  SparseColumns a = {perColumn, {}, gaussian(perColumn * shape.columns, 1)};
  const int part = shape.rows / perColumn;
  std::mt19937 generator(3);
  for (int k = 0; k < perColumn * shape.columns; ++k) {
    a.rows.push_back(k % perColumn * part +
                     static_cast<int>(generator() % static_cast<unsigned>(part)));
  }
  return a;
}

// The symmetric part of a Gaussian matrix has its eigenvalues within √(2n) of zero, nearly always.
Values positiveDefinite(int n) {
  const Values g = gaussian(n * n, 1);
  Values a(g.size());
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) a[at(i, j, n)] = 0.5 * (g[at(i, j, n)] + g[at(j, i, n)]);
    a[at(j, j, n)] += 2.0 * std::sqrt(n) + 2.0;
  }
  return a;
}

Values rightHandSides(const Shape& shape) {
  return randomMatrix(shape, 2);
}

Values squareMatrixFor(const Shape& rightHandSides) {
  return positiveDefinite(rightHandSides.rows);
}

Values tallMatrixFor(const Shape& rightHandSides) {
  return randomMatrix({rightHandSides.rows, 50});
}

Values gramTimesRandom(const double* r, int ldr, int n, const std::vector<int>& order,
                       int firstColumn) {
  const Values w = gaussian(n, kProbeSeed);
  Values rw(w.size(), 0.0);
  for (int j = 0; j < n; ++j) {
    const double factor = w[placeOf(j, order, firstColumn)];
    for (int i = 0; i <= j; ++i) rw[static_cast<std::size_t>(i)] += r[at(i, j, ldr)] * factor;
  }
  Values gram(w.size(), 0.0);
  for (int j = 0; j < n; ++j) {
    double& sum = gram[placeOf(j, order, firstColumn)];
    for (int i = 0; i <= j; ++i) sum += r[at(i, j, ldr)] * rw[static_cast<std::size_t>(i)];
  }
  return gram;
}

Values spectrumAndProduct(const double* s, const Shape& shape, const double* u, const double* v,
                          int rowStride, int columnStride) {
  const int n = shape.columns;
  const Values w = gaussian(n, kProbeSeed);
  Values result(s, s + n);
  result.resize(w.size() + static_cast<std::size_t>(shape.rows), 0.0);
  double* const product = result.data() + n;
  for (int k = 0; k < n; ++k) {
    double component = 0.0;
    for (int i = 0; i < n; ++i) {
      component += v[i * rowStride + k * columnStride] * w[static_cast<std::size_t>(i)];
    }
    for (int i = 0; i < shape.rows; ++i) product[i] += u[at(i, k, shape.rows)] * s[k] * component;
  }
  return result;
}

}  // namespace bench
