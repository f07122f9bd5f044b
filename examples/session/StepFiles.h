// The files in which the cache keeps a fit: its surfaces, its meshes, and its figures.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <vx/KernelObject.h>
#include <vx/Mesh.h>
#include <vx/String.h>

#include "examples/surface_fit/Mesh.h"
#include "examples/surface_fit/Refinement.h"

namespace session {

/// The surface as the geometry kernel has it, with x and y as parameters. The poles lie over the
/// means of three neighbouring knots, so that the kernel's surface is the same graph.
vxgk::Surface kernelSurface(const surfacefit::Surface& surface);

/// A whole file of the surface, which replaces what is at `path`. False when it cannot be written.
bool writeSurface(const surfacefit::Surface& surface, const vxString::CString& path);
/// The surface of such a file, bit for bit; nothing for a file that is damaged or something else.
std::optional<surfacefit::Surface> readSurface(const vxString::CString& path);

/// The same for meshes.
bool writeMesh(const surfacefit::Mesh& mesh, const vxString::CString& path);
std::optional<surfacefit::Mesh> readMesh(const vxString::CString& path);

/// What is known of a step beside its surface.
struct StepFigures {
  int unknowns;
  int equations;
  int determined;
  surfacefit::DeviationSummary deviation;
  double seconds;
};

/// A refinement without its surfaces.
struct FitFigures {
  std::vector<StepFigures> steps;  ///< At least one.
  std::size_t best;                ///< The index of a step.
  surfacefit::Stop stop;
  double seconds;  ///< That the whole refinement took.
};

/// Lines of text, the last of which is a sum of the others.
std::string figuresText(const FitFigures& figures);
/// Nothing for a text that is damaged or something else.
std::optional<FitFigures> readFigures(const std::string& text);

/// The hash FNV-1a of 64 bits (Fowler, Noll, Vo) as 16 hexadecimal digits.
std::string digestOf(std::string_view bytes);

}  // namespace session
