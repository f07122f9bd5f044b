#include "eigen/Eigen.h"
#include "families/Families.h"

namespace bench {

std::string addEigen(Suite& suite) {
  eigen::addVectors(suite);
  eigen::addProducts(suite);
  eigen::addFactorizations(suite);
  eigen::addBoxes(suite);
  eigen::addSparse(suite);
  return "Eigen: " + std::to_string(EIGEN_WORLD_VERSION) + "." +
         std::to_string(EIGEN_MAJOR_VERSION) + "." + std::to_string(EIGEN_MINOR_VERSION) +
         ", compiled for this processor (" + Eigen::SimdInstructionSetsInUse() + ")";
}

}  // namespace bench
