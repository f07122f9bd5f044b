// Eigen's types from and to plain numbers. Everything in this folder is compiled for this
// processor.
#pragma once

#include <Eigen/Dense>

#include "Data.h"

namespace bench::eigen {

inline Eigen::VectorXd vectorOf(const Values& values) {
  return Eigen::Map<const Eigen::VectorXd>(values.data(), static_cast<Eigen::Index>(values.size()));
}

inline Eigen::MatrixXd matrixOf(const Values& values, const Shape& shape) {
  return Eigen::Map<const Eigen::MatrixXd>(values.data(), shape.rows, shape.columns);
}

inline Values valuesOf(double value) {
  return {value};
}

/// All elements; of a matrix, column by column.
inline Values valuesOf(const Eigen::VectorXd& v) {
  return Values(v.data(), v.data() + v.size());
}
inline Values valuesOf(const Eigen::MatrixXd& a) {
  return Values(a.data(), a.data() + a.size());
}

void addVectors(Suite& suite);
void addProducts(Suite& suite);
void addFactorizations(Suite& suite);
void addBoxes(Suite& suite);
void addSparse(Suite& suite);

}  // namespace bench::eigen
