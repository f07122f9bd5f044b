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

template <class Mesh>
void expectToldAtEveryByte(const Mesh& written) {
  Mesh mesh;
  EXPECT_EQ(readMesh(fileOf(written), mesh).code(), 0);
  EXPECT_EQ(mesh, written);
  for (const std::string& file : kilntest::damaged(fileOf(written))) expectRefused<Mesh>(file);
}

TEST(Mesh, ComesBackFromAFileAndDamageIsToldAtEveryByte) {
  expectToldAtEveryByte(compactMesh());
  expectToldAtEveryByte(topoMesh());
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
  using Side = TopoMesh::HalfEdge;
  struct Change {
    std::size_t side;
    std::uint32_t Side::*field;
    std::uint32_t value;
  };
  const auto vertex = &Side::vertex, twin = &Side::twin, next = &Side::next, face = &Side::face;
  const std::vector<std::vector<Change>> changes = {{{0, vertex, 5}},
                                                    {{0, vertex, 1}},
                                                    {{0, next, 7}},
                                                    {{0, next, 2}},
                                                    {{3, next, 1}},
                                                    {{0, face, 2}},
                                                    {{0, face, 1}},
                                                    {{0, twin, 7}},
                                                    {{0, twin, 0}},
                                                    {{1, twin, kNone}},
                                                    {{0, vertex, 4}, {3, twin, 0}},
                                                    {{0, next, 5}, {4, next, 1}},
                                                    {{0, twin, 2}, {2, twin, 0}}};
  for (const auto& change : changes) {
    std::vector<Side> sides = topoMesh().halfEdges();
    for (const auto& [side, field, value] : change) sides[side].*field = value;
    EXPECT_THROW(TopoMesh(topoMesh().vertices(), sides, topoMesh().faces()), Error)
        << &change - changes.data();
  }
  for (const std::vector<std::uint32_t>& faces :
       std::vector<std::vector<std::uint32_t>>{{7, 4}, {4, 4}, {0}, {0, 4, 0}})
    EXPECT_THROW(TopoMesh(topoMesh().vertices(), topoMesh().halfEdges(), faces), Error)
        << faces.size();
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
