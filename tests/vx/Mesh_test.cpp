#include <gtest/gtest.h>

#include <vx/Mesh.h>

#include "tests/support/Geometry.h"

namespace {

using kilntest::compactMesh;
using kilntest::fileOf;
using kilntest::forged;
using kilntest::topoMesh;
using vxGeom::CompactMesh;
using vxGeom::TopoMesh;
using vxUtil::Error;

constexpr std::uint32_t kNone = TopoMesh::kNone;

template <class Mesh>
Error readMesh(const std::string& bytes, Mesh& mesh) {
  Error error;
  kilntest::withFile(bytes, [&](std::FILE* file) { error = vxGeom::meshRead(mesh, file); });
  return error;
}

template <class Mesh>
void expectRefused(const std::string& bytes, const char* why = "") {
  Mesh mesh = {{{7, 7, 7}}, {}};
  const Mesh before = mesh;
  const Error error = readMesh(bytes, mesh);
  EXPECT_NE(error.code(), 0) << why;
  EXPECT_TRUE(error.message().contains(why)) << error.message().c_str();
  EXPECT_EQ(mesh, before);
}

TEST(Mesh, FileOfATriangleHasTheseBytes) {
  const CompactMesh mesh({{1, 0, 0}, {0, 2, 0}, {0, 0, 0}}, {{0, 1, 2}});
  std::string bytes("VXMESH 1\1\0\0\0\0\0\0\0\x6c\0\0\0\0\0\0\0********\3\0\0\0\0\0\0\0", 40);
  const std::string zeros(72, '\0');
  bytes += zeros + std::string("\1\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\2\0\0\0\0\0\0\0\0\0\0\0", 28);
  bytes = forged(bytes, 40, 1.0);
  EXPECT_EQ(fileOf(mesh), forged(bytes, 72, 2.0));
}

TEST(Mesh, ComesBackFromAFile) {
  CompactMesh compact;
  EXPECT_EQ(readMesh(fileOf(compactMesh()), compact).code(), 0);
  EXPECT_EQ(compact, compactMesh());
  TopoMesh topo;
  EXPECT_EQ(readMesh(fileOf(topoMesh()), topo).code(), 0);
  EXPECT_EQ(topo, topoMesh());
}

TEST(Mesh, DamageAndTruncationAreToldAtEveryByte) {
  for (const std::string& file : kilntest::damaged(fileOf(compactMesh())))
    expectRefused<CompactMesh>(file);
  for (const std::string& file : kilntest::damaged(fileOf(topoMesh())))
    expectRefused<TopoMesh>(file);
}

TEST(Mesh, FilesThatLieAreRefused) {
  const std::string compact = fileOf(compactMesh()), topo = fileOf(topoMesh());
  expectRefused<TopoMesh>(compact, "another kind");
  expectRefused<CompactMesh>(fileOf(kilntest::objects()), "something else");
  for (const std::uint64_t count :
       {std::uint64_t{11}, std::uint64_t{1} << 40, std::uint64_t{1} << 61, ~std::uint64_t{0}})
    expectRefused<CompactMesh>(forged(compact, 32, count), "too short");
  expectRefused<CompactMesh>(forged(compact, 16, std::uint64_t{1} << 60).substr(0, 64),
                             "too early");
  expectRefused<CompactMesh>(forged(compact, 32 + 8 + 72 + 8, 3), "vertex that is not there");
  expectRefused<TopoMesh>(forged(topo, 32 + 8 + 120 + 8, 5), "vertex that is not there");
}

TEST(Mesh, ContradictionsThrow) {
  EXPECT_THROW(CompactMesh({{0, 0, 0}}, {{0, 0, 1}}), Error);
  EXPECT_THROW(CompactMesh({{0, 0, 0}}, {}, {{0, 0, 1}, {0, 0, 1}}), Error);
  const std::vector<std::vector<TopoMesh::Polygon>> polygons = {
      {{}}, {{0}}, {{0, 1}}, {{0, 0, 1}}, {{0, 1, 5}}, {{0, 1, 2}, {0, 1, 3}}, {{0, 1, 2}, {}}};
  for (const auto& faces : polygons)
    EXPECT_THROW(TopoMesh(topoMesh().vertices(), faces), Error) << ::testing::PrintToString(faces);
  using Sides = std::vector<TopoMesh::HalfEdge>;
  const std::vector<void (*)(Sides&, std::vector<std::uint32_t>&)> changes = {
      [](Sides& sides, auto&) { sides[0].vertex = 5; },
      [](Sides& sides, auto&) { sides[0].vertex = 1; },
      [](Sides& sides, auto&) {
        sides[0].vertex = 4;
        sides[3].twin = 0;
      },
      [](Sides& sides, auto&) { sides[0].next = 7; },
      [](Sides& sides, auto&) { sides[0].next = 2; },
      [](Sides& sides, auto&) { sides[3].next = 1; },
      [](Sides& sides, auto&) { std::swap(sides[0].next, sides[4].next); },
      [](Sides& sides, auto&) { sides[0].face = 2; },
      [](Sides& sides, auto&) { sides[0].face = 1; },
      [](Sides& sides, auto&) { sides[0].twin = 7; },
      [](Sides& sides, auto&) { sides[0].twin = 0; },
      [](Sides& sides, auto&) {
        sides[0].twin = 2;
        sides[2].twin = 0;
      },
      [](Sides& sides, auto&) { sides[1].twin = kNone; },
      [](Sides&, auto& faces) { faces[0] = 7; },
      [](Sides&, auto& faces) { faces[0] = 4; },
      [](Sides&, auto& faces) { faces.pop_back(); },
      [](Sides&, auto& faces) { faces.push_back(0); },
  };
  for (std::size_t i = 0; i < changes.size(); ++i) {
    Sides sides = topoMesh().halfEdges();
    std::vector<std::uint32_t> faces = topoMesh().faces();
    changes[i](sides, faces);
    EXPECT_THROW(TopoMesh(topoMesh().vertices(), sides, faces), Error) << i;
  }
}

TEST(Mesh, TwinsEdgesAndPolygonsFollowFromFaces) {
  const TopoMesh mesh = topoMesh();
  const std::vector<std::uint32_t> twins = {kNone, 5, kNone, kNone, kNone, 1, kNone};
  for (std::uint32_t i = 0; i < twins.size(); ++i) EXPECT_EQ(mesh.halfEdges()[i].twin, twins[i]);
  EXPECT_EQ(mesh.polygon(1), (TopoMesh::Polygon{4, 2, 1}));
  EXPECT_EQ(mesh.edges().size(), 6U);
  EXPECT_EQ(mesh.edges()[1], (std::array<std::uint32_t, 2>{1, 2}));
}

}  // namespace
