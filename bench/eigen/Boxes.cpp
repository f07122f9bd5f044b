#include <Eigen/Geometry>

#include "eigen/Eigen.h"

namespace bench::eigen {

namespace {

using Box = Eigen::AlignedBox3d;

Values valuesOf(const Box& box) {
  Values corners = eigen::valuesOf(Eigen::VectorXd(box.min()));
  for (const double x : eigen::valuesOf(Eigen::VectorXd(box.max()))) corners.push_back(x);
  return corners;
}

template <int kSize, class Extend>
Peer peer(Extend extend) {
  return {"Eigen", [extend](const Shape& shape) {
            using Points = Eigen::Matrix<double, kSize, Eigen::Dynamic>;
            const Points points = Eigen::Map<const Points>(
                pointsOf(shape.rows, kSize, kSize == 4).data(), kSize, shape.rows);
            const auto run = [extend, points] {
              Box box;
              for (Eigen::Index i = 0; i < points.cols(); ++i) extend(box, points.col(i));
              return box;
            };
            return contestant(run, [](const Box& box) { return valuesOf(box); });
          }};
}

}  // namespace

void addBoxes(Suite& suite) {
  suite.addPeer("box of points", peer<3>([](Box& box, const auto& point) { box.extend(point); }));
  suite.addPeer("box of rational points", peer<4>([](Box& box, const auto& point) {
                  box.extend(Eigen::Vector3d(point.hnormalized()));
                }));
}

}  // namespace bench::eigen
