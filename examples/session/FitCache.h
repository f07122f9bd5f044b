// Fits that were made before, in the file cache.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <kilnbase/net/FileCache.h>

#include "examples/session/StepFiles.h"
#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Refinement.h"

namespace session {

/// A refinement and the time that it took when it was made.
struct TimedRefinement {
  surfacefit::Refinement refinement;
  double seconds;
};

/// The fits of one set of points with one set of limits, in a file cache whose daemon starts by
/// itself. Without the daemon nothing is found and nothing is kept.
///
/// A fit has a file with its figures, one for the surface of each step, and one for the mesh of
/// each kept step. Their keys begin with a digest of points, limits and version. Files that are
/// damaged, and fits that do not have the deviations from these points that they tell, count as
/// not there.
class FitCache {
 public:
  /// Makes the folder if it is missing. The points must live as long as the cache.
  FitCache(const std::filesystem::path& folder, const std::vector<surfacefit::Point>& points,
           const surfacefit::Limits& limits);

  /// What is wrong with the cache, as a sentence; empty when nothing is.
  const std::string& problem() const { return problem_; }

  /// The fit; nothing when it, or part of it, is not there.
  std::optional<TimedRefinement> find();
  /// The mesh of a step; nothing when it is not there.
  std::optional<surfacefit::Mesh> findMesh(std::size_t step);

  /// Keeps a fit and the meshes of some of its steps, unless the user or the lack of memory has
  /// stopped the fit.
  void add(const TimedRefinement& fit, const std::map<std::size_t, surfacefit::Mesh>& meshes);

  int hits() const { return hits_; }            ///< Files that were found and whole.
  int additions() const { return additions_; }  ///< Files that were added.
  int refusals() const { return refusals_; }    ///< Files that were found and damaged.

 private:
  template <class Read>
  auto read(const std::string& name, Read readFile) -> decltype(readFile(vxString::CString()));
  template <class Write>
  void write(const std::string& name, Write writeFile);
  vxString::CString keyOf(const std::string& name) const;
  bool isOfThesePoints(const surfacefit::Fit& fit) const;

  const std::vector<surfacefit::Point>& points_;
  std::string digest_;
  std::string problem_;
  vxKilnBase::FileCache cache_;
  int hits_ = 0;
  int additions_ = 0;
  int refusals_ = 0;
};

}  // namespace session
