#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

#include <vx/KernelObject.h>

#include "tests/support/Geometry.h"

namespace {

using kilntest::fileOf;
using vxgk::Curve;
using vxgk::ParameterCurve;
using vxgk::Surface;
using vxLinear::Point;
using vxUtil::Error;

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

using Objects = std::vector<std::unique_ptr<vxgk::Object>>;

Error read(const std::string& bytes, Objects& objects) {
  Error error;
  kilntest::withFile(bytes, [&](std::FILE* file) {
    while (vxgk::Object* object = vxgk_read(file, error)) objects.emplace_back(object);
  });
  return error;
}

// A file of no bytes holds no objects.
TEST(KernelObject, ComesBackFromAFileAndDamageIsToldAtEveryByte) {
  Objects sent = kilntest::objects(), received, others, shell;
  sent.push_back(std::make_unique<vxgk::ForeignObject>(5, std::vector(9, std::byte{3})));
  EXPECT_EQ(read(fileOf(sent), received).code(), 0);
  EXPECT_EQ(fileOf(received), fileOf(sent));
  EXPECT_EQ(vxgk_id_object(received[4].get()), 5);
  EXPECT_EQ(dynamic_cast<const Curve&>(*received[0]), kilntest::quarter());
  EXPECT_EQ(dynamic_cast<const vxgk::Shell&>(*received[3]).faces(),
            (std::vector{kilntest::trimmedSurface(), kilntest::trimmedSurface()}));
  for (const std::string& file : kilntest::damaged(fileOf(sent)))
    EXPECT_EQ(read(file, others).code() != 0, !file.empty()) << file.size();
  shell.push_back(std::make_unique<vxgk::Shell>(std::vector{kilntest::trimmedSurface()}));
  for (const std::uint64_t faces : {std::uint64_t{0}, std::uint64_t{2}, ~std::uint64_t{0}})
    EXPECT_NE(read(kilntest::forged(fileOf(shell), 32, faces), others).code(), 0) << faces;
}

TEST(KernelObject, NumbersThatMakeNoSplineThrow) {
  const std::vector<double> knots = {0, 0, 0, 1, 1, 1};
  struct Case {
    int degree;
    std::vector<double> knots;
    std::size_t poles;
    std::vector<double> weights;
  };
  const std::vector<Case> cases = {
      {0, {0, 1, 2, 3}, 3, {}},
      {vxgk::kMaxDegree + 1, std::vector<double>(66, 0.0), 33, {}},
      {2, {}, 0, {}},
      {2, {0, 0, 1, 1, 1}, 2, {}},
      {2, knots, 4, {}},
      {2, {0, 0, 0, 1, kInfinity, kInfinity}, 3, {}},
      {2, {0, 0, 1, 0.5, 1, 1}, 3, {}},
      {2, {0, 0, 0, 0, 1, 1}, 3, {}},
      {1, {0, 1, 1, 2}, 2, {}},
      {2, knots, 3, {1, 1}},
      {2, knots, 3, {1, 0, 1}},
      {2, knots, 3, {1, kInfinity, 1}},
  };
  const auto poles = [](std::size_t count) { return std::vector<Point>(count); };
  for (const Case& c : cases)
    EXPECT_THROW(Curve(c.degree, c.knots, poles(c.poles), c.weights), Error) << &c - cases.data();
  EXPECT_THROW(Surface({1, {0, 0, 1, 1}}, {2, knots}, poles(3)), Error);
  EXPECT_THROW(Surface({1, {0}}, {2, knots}, poles(3)), Error);
  EXPECT_THROW(vxgk::TrimmedSurface(kilntest::surface(), {{}}), Error);
  for (const int id : {-1, 11, 20, 27, 28}) EXPECT_THROW(vxgk::ForeignObject(id, {}), Error) << id;
}

TEST(KernelObject, RationalQuarterIsAPieceOfACircle) {
  const Curve curve = kilntest::quarter();
  for (double t = 0.0; t <= 1.0; t += 1.0 / 64) {
    const Point p = curve.at(t);
    EXPECT_NEAR(std::hypot(p.x, p.y), 1.0, 4 * kEpsilon) << t;
  }
  EXPECT_EQ(curve.at(-1.0), (Point{1, 0, 0}));
  EXPECT_EQ(curve.at(2.0), (Point{0, 1, 0}));
  EXPECT_TRUE(std::isnan(curve.at(std::nan("")).x));
  const Curve loose(1, {0, 1, 1, 2, 2}, {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
  EXPECT_EQ(loose.at(0.0), loose.at(loose.start()));
}

// The function x(t) = t has the means of `degree` knots as its poles (Greville).
TEST(KernelObject, SplinesReproduceTheirParameter) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> step(0.0, 1.0);
  for (int degree = 1; degree <= vxgk::kMaxDegree; ++degree) {
    const auto p = static_cast<std::size_t>(degree);
    std::vector<double> knots = {0.0};
    while (knots.size() < 3 * p + 2)
      knots.push_back(knots.back() +
                      (random() % 3 == 0 && knots.size() % p != 0 ? 0.0 : step(random)));
    std::vector<vxLinear::Point2> poles;
    for (std::size_t i = 0; i + p + 1 < knots.size(); ++i) {
      double sum = 0.0;
      for (std::size_t k = 1; k <= p; ++k) sum += knots[i + k];
      poles.push_back({sum / degree, -sum / degree});
    }
    const ParameterCurve curve(degree, knots, poles);
    for (int i = 0; i <= 40; ++i) {
      const double t = curve.start() + (curve.end() - curve.start()) * i / 40;
      EXPECT_NEAR(curve.at(t).u, t, 4 * degree * kEpsilon * knots.back()) << degree << " " << t;
      EXPECT_EQ(curve.at(t).v, -curve.at(t).u);
    }
  }
}

TEST(KernelObject, SurfaceIsACurveOfCurves) {
  const Surface surface = kilntest::surface();
  for (const double u : {0.0, 0.25, 1.0}) {
    for (const double v : {0.0, 0.375, 1.0}) {
      const double z = 8 * v * (1 - v) / (1 + 2 * v * (1 - v));
      EXPECT_NEAR(surface.at(u, v).x, u, 4 * kEpsilon);
      EXPECT_NEAR(surface.at(u, v).z, z, 4 * kEpsilon);
    }
  }
}

}  // namespace
