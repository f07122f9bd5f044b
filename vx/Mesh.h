// Meshes: CompactMesh for triangles that are drawn or sent, TopoMesh for polygons whose neighbours
// are asked for.
//
//     vxGeom::CompactMesh mesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}});
//     if (std::FILE* file = vxOS::openFile("corner.mesh", "wb")) {
//       const vxUtil::Error error = vxGeom::meshWrite(mesh, file);
//       std::fclose(file);
//       if (error) puts(error.message().c_str());
//     }
//     vxOS::File::remove("corner.mesh");
//
// A mesh is always whole: what is made of numbers that make no mesh throws a `vxUtil::Error` that
// tells why. Coordinates may be any numbers, NaN and infinity as well: who looks for the fault in a
// mesh wants to see that mesh. The format of the files is told in docs/mesh-format.md.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include <vx/Containers.h>
#include <vx/Error.h>
#include <vx/Linear.h>
#include <vx/export.h>

namespace vxGeom {

/// Triangles over an array of vertices.
class VX_API CompactMesh {
 public:
  /// The indices of the three vertices, anticlockwise as seen from the front.
  using Triangle = std::array<std::uint32_t, 3>;

  /// A mesh of nothing.
  CompactMesh() = default;
  /// `normals` has one normal a vertex, or none at all. Throws `vxUtil::Error` for any other number
  /// of normals, and when a triangle has a vertex that is not there.
  CompactMesh(vx::vector<vxLinear::Point> vertices, vx::vector<Triangle> triangles,
              vx::vector<vxLinear::Vector> normals = {});
  CompactMesh(const CompactMesh& other) = default;
  CompactMesh(CompactMesh&& other) noexcept = default;
  CompactMesh& operator=(const CompactMesh& other) = default;
  CompactMesh& operator=(CompactMesh&& other) noexcept = default;
  virtual ~CompactMesh();

  /// As given to the constructor.
  const vx::vector<vxLinear::Point>& vertices() const { return vertices_; }
  const vx::vector<Triangle>& triangles() const { return triangles_; }
  /// One normal a vertex, of any length; or empty.
  const vx::vector<vxLinear::Vector>& normals() const { return normals_; }

  friend bool operator==(const CompactMesh&, const CompactMesh&) = default;

 private:
  vx::vector<vxLinear::Point> vertices_;
  vx::vector<Triangle> triangles_;
  vx::vector<vxLinear::Vector> normals_;
};

/// Polygons whose sides know their neighbours, as half-edges: each side of each face is a half-edge
/// from one vertex to the next, anticlockwise as seen from the front. Two faces that meet at an
/// edge have a half-edge each there, in opposite directions: the twins.
class VX_API TopoMesh {
 public:
  /// No half-edge.
  static constexpr std::uint32_t kNone = 0xffffffff;

  /// One side of a face. All members are indices.
  struct HalfEdge {
    std::uint32_t vertex = 0;    ///< Where the half-edge begins.
    std::uint32_t twin = kNone;  ///< The half-edge of the neighbour; `kNone` at the border.
    std::uint32_t next = 0;      ///< The half-edge after this one in its face.
    std::uint32_t face = 0;      ///< The face that the half-edge is a side of.

    friend bool operator==(const HalfEdge&, const HalfEdge&) = default;
  };

  /// The indices of the vertices of a face, at least three.
  using Polygon = vx::vector<std::uint32_t>;

  /// A mesh of nothing.
  TopoMesh() = default;
  /// Finds the twins. Throws `vxUtil::Error` when a polygon has fewer than three vertices or one
  /// that is not there, and when two faces go along an edge in the same direction: such faces have
  /// opposite fronts, or more than two faces meet at the edge. O(n log n) for n sides.
  TopoMesh(vx::vector<vxLinear::Point> vertices, const vx::vector<Polygon>& faces);
  /// `faces` has one half-edge of each face. Throws `vxUtil::Error` when these numbers contradict
  /// each other. O(n).
  TopoMesh(vx::vector<vxLinear::Point> vertices, vx::vector<HalfEdge> halfEdges,
           vx::vector<std::uint32_t> faces);
  TopoMesh(const TopoMesh& other) = default;
  TopoMesh(TopoMesh&& other) noexcept = default;
  TopoMesh& operator=(const TopoMesh& other) = default;
  TopoMesh& operator=(TopoMesh&& other) noexcept = default;
  virtual ~TopoMesh();

  /// As given to the constructor.
  const vx::vector<vxLinear::Point>& vertices() const { return vertices_; }
  /// All half-edges; their places are the indices of `HalfEdge`.
  const vx::vector<HalfEdge>& halfEdges() const { return halfEdges_; }
  /// One half-edge of each face.
  const vx::vector<std::uint32_t>& faces() const { return faces_; }

  /// The vertex where a half-edge ends.
  std::uint32_t endOf(std::uint32_t halfEdge) const {
    return halfEdges_[halfEdges_[halfEdge].next].vertex;
  }
  /// The vertices around a face.
  Polygon polygon(std::size_t face) const;
  /// The two vertices of each edge; an edge between two faces counts once.
  vx::vector<std::array<std::uint32_t, 2>> edges() const;

  friend bool operator==(const TopoMesh&, const TopoMesh&) = default;

 private:
  vx::vector<vxLinear::Point> vertices_;
  vx::vector<HalfEdge> halfEdges_;
  vx::vector<std::uint32_t> faces_;
};

/// Writes the mesh at the place where the file stands. The file is open for binary writing.
VX_API vxUtil::Error meshWrite(const CompactMesh& mesh, std::FILE* file);
VX_API vxUtil::Error meshWrite(const TopoMesh& mesh, std::FILE* file);

/// Reads a mesh from the place where the file stands to the end. The file is open for binary
/// reading. A file that ends too early or too late, that is damaged or holds something else is an
/// error, after which `mesh` is as before. Memory is taken as the bytes arrive.
VX_API vxUtil::Error meshRead(CompactMesh& mesh, std::FILE* file);
VX_API vxUtil::Error meshRead(TopoMesh& mesh, std::FILE* file);

}  // namespace vxGeom
