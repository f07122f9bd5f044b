#include <algorithm>

#include <vx/Mesh.h>
#include <vx/detail/Record.h>

namespace vxGeom {

namespace {

using vx::detail::fail;
using vx::detail::RecordReader;
using vx::detail::RecordWriter;
using vxLinear::Point;
using vxLinear::Vector;
using vxUtil::Error;

constexpr vx::detail::Magic kMagic = "VXMESH 1";

enum Kind : std::int32_t {
  kCompactMesh = 1,
  kTopoMesh = 2,
};

using HalfEdge = TopoMesh::HalfEdge;
using Polygon = TopoMesh::Polygon;

void requireCount(std::size_t count) {
  if (count >= TopoMesh::kNone) fail("a mesh of too many parts");
}

void requireIndex(std::uint32_t index, std::size_t count, const char* why) {
  if (index >= count) fail(why);
}

// The half-edges of all polygons, polygon by polygon, without twins.
vx::vector<HalfEdge> sidesOf(const vx::vector<Polygon>& faces) {
  vx::vector<HalfEdge> sides;
  for (std::size_t face = 0; face < faces.size(); ++face) {
    const std::size_t first = sides.size();
    requireCount(first + faces[face].size());
    for (const std::uint32_t vertex : faces[face]) {
      const auto next = static_cast<std::uint32_t>(sides.size() + 1);
      sides.push_back({vertex, TopoMesh::kNone, next, static_cast<std::uint32_t>(face)});
    }
    if (sides.size() > first) sides.back().next = static_cast<std::uint32_t>(first);
  }
  return sides;
}

// A half-edge under the vertices where it begins and ends.
struct Way {
  std::uint64_t vertices;
  std::uint32_t halfEdge;

  friend bool operator<(const Way& a, const Way& b) { return a.vertices < b.vertices; }
};

std::uint64_t key(std::uint32_t from, std::uint32_t to) {
  return std::uint64_t{from} << 32 | to;
}

void linkTwins(vx::vector<HalfEdge>& sides) {
  vx::vector<Way> ways;
  for (std::uint32_t i = 0; i < sides.size(); ++i)
    ways.push_back({key(sides[i].vertex, sides[sides[i].next].vertex), i});
  std::sort(ways.begin(), ways.end());
  for (std::size_t i = 0; i < ways.size(); ++i) {
    if (i > 0 && !(ways[i - 1] < ways[i])) fail("two faces go along an edge in the same direction");
    HalfEdge& side = sides[ways[i].halfEdge];
    const Way back = {key(sides[side.next].vertex, side.vertex), 0};
    const auto twin = std::lower_bound(ways.begin(), ways.end(), back);
    if (twin != ways.end() && !(back < *twin)) side.twin = twin->halfEdge;
  }
}

// The first half-edge of each polygon.
vx::vector<std::uint32_t> firstSidesOf(const vx::vector<Polygon>& faces) {
  vx::vector<std::uint32_t> firsts;
  std::size_t next = 0;
  for (const Polygon& face : faces) {
    firsts.push_back(static_cast<std::uint32_t>(next));
    next += face.size();
  }
  return firsts;
}

vx::vector<HalfEdge> halfEdgesOf(const vx::vector<Polygon>& faces) {
  vx::vector<HalfEdge> sides = sidesOf(faces);
  linkTwins(sides);
  return sides;
}

// What each half-edge says of others must hold there, too.
void requireSides(const vx::vector<HalfEdge>& sides, std::size_t vertices, std::size_t faces) {
  for (const HalfEdge& side : sides) {
    requireIndex(side.vertex, vertices, "a half-edge begins at a vertex that is not there");
    requireIndex(side.next, sides.size(), "a half-edge has no next one");
    requireIndex(side.face, faces, "a half-edge has a face that is not there");
  }
  for (std::uint32_t i = 0; i < sides.size(); ++i) {
    const HalfEdge& side = sides[i];
    const std::uint32_t end = sides[side.next].vertex;
    if (end == side.vertex) fail("a half-edge ends where it begins");
    if (side.twin == TopoMesh::kNone) continue;
    requireIndex(side.twin, sides.size(), "a half-edge has a twin that is not there");
    const HalfEdge& twin = sides[side.twin];
    if (twin.twin != i || twin.vertex != end) fail("two half-edges are no twins");
  }
}

// Each face must be a ring of its own half-edges, and no half-edge may be left over.
void requireRings(const vx::vector<HalfEdge>& sides, const vx::vector<std::uint32_t>& faces) {
  std::size_t inRings = 0;
  for (std::uint32_t face = 0; face < faces.size(); ++face) {
    requireIndex(faces[face], sides.size(), "a face begins with a half-edge that is not there");
    std::size_t count = 0;
    std::uint32_t side = faces[face];
    do {
      if (sides[side].face != face || ++count > sides.size()) fail("a face is no ring");
      side = sides[side].next;
    } while (side != faces[face]);
    if (count < 3) fail("a face has fewer than three vertices");
    inRings += count;
  }
  if (inRings != sides.size()) fail("a half-edge is in no face");
}

template <class Mesh>
Error read(Mesh& mesh, std::FILE* file, Kind kind, Mesh (*parse)(RecordReader&)) {
  return vx::detail::errorOf([&] {
    const vx::detail::Record record = vx::detail::readRecord(file, kMagic);
    if (record.kind != kind) fail("the file holds a mesh of another kind");
    RecordReader reader(record.content);
    Mesh parsed = parse(reader);
    reader.requireEnd();
    if (!vx::detail::isAtEnd(file)) fail("the file goes on behind the mesh");
    mesh = std::move(parsed);
  });
}

template <class... Arrays>
Error write(std::FILE* file, Kind kind, const Arrays&... arrays) {
  return vx::detail::errorOf([&] {
    RecordWriter writer;
    (writer.array(arrays), ...);
    vx::detail::writeRecord(file, kMagic, kind, writer.bytes());
  });
}

}  // namespace

CompactMesh::CompactMesh(vx::vector<Point> vertices, vx::vector<Triangle> triangles,
                         vx::vector<Vector> normals)
    : vertices_(std::move(vertices)),
      triangles_(std::move(triangles)),
      normals_(std::move(normals)) {
  requireCount(vertices_.size());
  requireCount(triangles_.size());
  if (!normals_.empty() && normals_.size() != vertices_.size())
    fail("a mesh has as many normals as vertices, or none");
  for (const Triangle& triangle : triangles_) {
    for (const std::uint32_t vertex : triangle)
      requireIndex(vertex, vertices_.size(), "a triangle has a vertex that is not there");
  }
}

CompactMesh::~CompactMesh() = default;

TopoMesh::TopoMesh(vx::vector<Point> vertices, const vx::vector<Polygon>& faces)
    : TopoMesh(std::move(vertices), halfEdgesOf(faces), firstSidesOf(faces)) {}

TopoMesh::TopoMesh(vx::vector<Point> vertices, vx::vector<HalfEdge> halfEdges,
                   vx::vector<std::uint32_t> faces)
    : vertices_(std::move(vertices)), halfEdges_(std::move(halfEdges)), faces_(std::move(faces)) {
  requireCount(vertices_.size());
  requireCount(halfEdges_.size());
  requireSides(halfEdges_, vertices_.size(), faces_.size());
  requireRings(halfEdges_, faces_);
}

TopoMesh::~TopoMesh() = default;

TopoMesh::Polygon TopoMesh::polygon(std::size_t face) const {
  Polygon vertices;
  std::uint32_t side = faces_[face];
  do {
    vertices.push_back(halfEdges_[side].vertex);
    side = halfEdges_[side].next;
  } while (side != faces_[face]);
  return vertices;
}

vx::vector<std::array<std::uint32_t, 2>> TopoMesh::edges() const {
  vx::vector<std::array<std::uint32_t, 2>> found;
  for (std::uint32_t i = 0; i < halfEdges_.size(); ++i) {
    if (i < halfEdges_[i].twin) found.push_back({halfEdges_[i].vertex, endOf(i)});
  }
  return found;
}

Error meshWrite(const CompactMesh& mesh, std::FILE* file) {
  return write(file, kCompactMesh, mesh.vertices(), mesh.triangles(), mesh.normals());
}

Error meshWrite(const TopoMesh& mesh, std::FILE* file) {
  return write(file, kTopoMesh, mesh.vertices(), mesh.halfEdges(), mesh.faces());
}

Error meshRead(CompactMesh& mesh, std::FILE* file) {
  return read<CompactMesh>(mesh, file, kCompactMesh, [](RecordReader& reader) {
    auto vertices = reader.array<Point>();
    auto triangles = reader.array<CompactMesh::Triangle>();
    auto normals = reader.array<Vector>();
    return CompactMesh(std::move(vertices), std::move(triangles), std::move(normals));
  });
}

Error meshRead(TopoMesh& mesh, std::FILE* file) {
  return read<TopoMesh>(mesh, file, kTopoMesh, [](RecordReader& reader) {
    auto vertices = reader.array<Point>();
    auto halfEdges = reader.array<HalfEdge>();
    auto faces = reader.array<std::uint32_t>();
    return TopoMesh(std::move(vertices), std::move(halfEdges), std::move(faces));
  });
}

}  // namespace vxGeom
