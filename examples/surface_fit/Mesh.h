// A surface as triangles, and files of them.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "examples/surface_fit/Coverage.h"
#include "examples/surface_fit/Surface.h"

namespace surfacefit {

/// Triangles with common corners, counter-clockwise seen from above.
struct Mesh {
  std::vector<Point> vertices;
  std::vector<std::array<int, 3>> triangles;  ///< Indices of corners, from 0.
};

/// The part of the surface that is covered: four by four squares of two triangles a span, without
/// those that have a corner outside.
Mesh meshOf(const Surface& surface, const Coverage& coverage);

/// The kinds of mesh files.
enum class MeshFormat { kObj, kPly, kStl };

/// The kind that the ending of a file name stands for: .obj, .ply or .stl, in capitals or not.
/// Throws InputError for any other.
MeshFormat meshFormatOf(const std::string& fileName);

/// The content of a file of the mesh. OBJ is text with as many digits as the numbers need; PLY is
/// binary, little-endian, with double coordinates; STL is binary with single precision.
std::string meshText(const Mesh& mesh, MeshFormat format);

/// Throws InputError when the format has too few digits for points like these: when it would move
/// one by more than a tenth of the tolerance.
void requirePrecision(MeshFormat format, const std::vector<Point>& points, double tolerance);

}  // namespace surfacefit
