// The data that all contestants work on, and what their factorizations must agree on.
#pragma once

#include "Harness.h"

namespace bench {

/// The scalar of vector operations: multiplied by it over and over, a vector keeps its size.
inline constexpr double kScalar = -1.0;

/// Independent normally distributed numbers, the same for the same count and seed.
Values gaussian(int count, unsigned seed);

/// The numbers from 0 on in random order, the same for the same count and seed.
std::vector<int> shuffledNumbers(int count, unsigned seed);

/// The elements of a random matrix, column by column.
Values randomMatrix(const Shape& shape, unsigned seed = 1);

/// The elements of a random symmetric matrix, both sides of the diagonal.
Values symmetricMatrix(const Shape& shape);

/// Random points of `size` components, one after another; the last one is a weight above 1 if they
/// are rational.
Values pointsOf(int count, int size, bool areRational);

/// The elements of a sparse matrix, column by column, all columns with as many.
struct SparseColumns {
  int perColumn;
  std::vector<int> rows;  ///< Ascending in each column.
  Values values;
};

/// A random sparse matrix, of 10^6 elements from 10,000 columns up, and of 10 a column below.
SparseColumns sparseColumns(const Shape& shape);

/// The elements of a symmetric positive definite matrix whose condition does not grow with n.
Values positiveDefinite(int n);

/// Right-hand sides, and the matrices of systems with as many rows: a square one, and one of 50
/// columns.
Values rightHandSides(const Shape& shape);
Values squareMatrixFor(const Shape& rightHandSides);
Values tallMatrixFor(const Shape& rightHandSides);

/// P Rᵀ R Pᵀ w for a fixed random w: whatever the signs of the rows of R and the order that
/// pivoting chose, this is AᵀA w for A P = Q R, and A w for Pᵀ A P = Rᵀ R.
///
/// R is the n by n upper triangle in column-major storage, `order` the column of A that stands at
/// each place of R, counted from `firstColumn`; empty when nothing was exchanged.
Values gramTimesRandom(const double* r, int ldr, int n, const std::vector<int>& order = {},
                       int firstColumn = 1);

/// The n singular values of an m by n matrix, m >= n, followed by U S Vᵀ w for a fixed random w. U
/// is m by n, column-major, and V is given by its element (0, 0) and the distances between its rows
/// and its columns.
Values spectrumAndProduct(const double* s, const Shape& shape, const double* u, const double* v,
                          int rowStride, int columnStride);

}  // namespace bench
