#include "examples/surface_fit/Mesh.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <sstream>

#include "examples/surface_fit/InputError.h"
#include "examples/surface_fit/NumberText.h"

namespace surfacefit {

namespace {

constexpr int kSquaresPerSpan = 4;

constexpr int kNoVertex = -1;

// The breakpoints, and between neighbours evenly spaced places.
std::vector<double> samplesOf(const TnumberSequence& knots) {
  const DoubleVec ends = knots.breakpoints();
  std::vector<double> samples;
  for (int i = 0; i + 1 < static_cast<int>(ends.length()); ++i)
    for (int k = 0; k < kSquaresPerSpan; ++k)
      samples.push_back(ends(i) + (ends(i + 1) - ends(i)) * k / kSquaresPerSpan);
  samples.push_back(ends(static_cast<int>(ends.length()) - 1));
  return samples;
}

// Appends the bytes of a number, the lowest first.
template <class Number>
void append(Number number, std::string& bytes) {
  static_assert(std::endian::native == std::endian::little);
  const auto all = std::bit_cast<std::array<char, sizeof(Number)>>(number);
  bytes.append(all.data(), all.size());
}

std::string objText(const Mesh& mesh) {
  std::ostringstream text;
  for (const Point& v : mesh.vertices)
    text << "v " << numberText(v.x) << " " << numberText(v.y) << " " << numberText(v.z) << "\n";
  for (const auto& [a, b, c] : mesh.triangles)
    text << "f " << a + 1 << " " << b + 1 << " " << c + 1 << "\n";
  return text.str();
}

std::string plyText(const Mesh& mesh) {
  std::string text = "ply\nformat binary_little_endian 1.0\nelement vertex " +
                     std::to_string(mesh.vertices.size()) +
                     "\nproperty double x\nproperty double y\nproperty double z\nelement face " +
                     std::to_string(mesh.triangles.size()) +
                     "\nproperty list uchar int vertex_indices\nend_header\n";
  for (const Point& v : mesh.vertices)
    for (const double coordinate : {v.x, v.y, v.z}) append(coordinate, text);
  for (const auto& triangle : mesh.triangles) {
    append(std::uint8_t{3}, text);
    for (const int corner : triangle) append(std::int32_t{corner}, text);
  }
  return text;
}

// The normal is left to the reader, who finds it from the corners: 0 says so.
std::string stlText(const Mesh& mesh) {
  std::string text = "surface_fit";
  text.resize(80);
  append(static_cast<std::uint32_t>(mesh.triangles.size()), text);
  for (const auto& triangle : mesh.triangles) {
    for (int k = 0; k < 3; ++k) append(0.0F, text);
    for (const int corner : triangle) {
      const Point& v = mesh.vertices[corner];
      for (const double coordinate : {v.x, v.y, v.z}) append(static_cast<float>(coordinate), text);
    }
    append(std::uint16_t{0}, text);
  }
  return text;
}

}  // namespace

Mesh meshOf(const Surface& surface, const Coverage& coverage) {
  const std::vector<double> xs = samplesOf(surface.xKnots());
  const std::vector<double> ys = samplesOf(surface.yKnots());
  Mesh mesh;
  std::vector<int> below;  // the vertices of the row before
  for (const double y : ys) {
    std::vector<int> row;
    for (const double x : xs) {
      const bool covered = coverage.covers(x, y);
      row.push_back(covered ? static_cast<int>(mesh.vertices.size()) : kNoVertex);
      if (covered) mesh.vertices.push_back({x, y, surface.heightAt(x, y)});
    }
    for (std::size_t i = 0; i + 1 < below.size(); ++i) {
      const int a = below[i];
      const int b = below[i + 1];
      const int c = row[i + 1];
      const int d = row[i];
      if (std::min({a, b, c, d}) == kNoVertex) continue;
      mesh.triangles.push_back({a, b, c});
      mesh.triangles.push_back({a, c, d});
    }
    below = row;
  }
  return mesh;
}

MeshFormat meshFormatOf(const std::string& fileName) {
  std::string ending = fileName.substr(std::min(fileName.rfind('.'), fileName.size()));
  for (char& c : ending)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  if (ending == ".obj") return MeshFormat::kObj;
  if (ending == ".ply") return MeshFormat::kPly;
  if (ending == ".stl") return MeshFormat::kStl;
  throw InputError("cannot tell the kind of the mesh '" + fileName +
                   "'; give a name that ends in .obj, .ply or .stl");
}

std::string meshText(const Mesh& mesh, MeshFormat format) {
  switch (format) {
    case MeshFormat::kObj:
      return objText(mesh);
    case MeshFormat::kPly:
      return plyText(mesh);
    case MeshFormat::kStl:
      return stlText(mesh);
  }
  return "";
}

void requirePrecision(MeshFormat format, const std::vector<Point>& points, double tolerance) {
  if (format != MeshFormat::kStl) return;
  double largest = 0.0;
  for (const Point& p : points)
    largest = std::max({largest, std::abs(p.x), std::abs(p.y), std::abs(p.z)});
  const double moved = 0.5 * std::numeric_limits<float>::epsilon() * largest;
  if (moved > 0.1 * tolerance)
    throw InputError("STL has single precision, which would move corners by up to " +
                     numberText(moved) + "; export to .obj or .ply");
}

}  // namespace surfacefit
