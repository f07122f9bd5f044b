#include "examples/session/FitCache.h"

#include <cstdint>
#include <fstream>
#include <sstream>

#include <kilnbase/version.h>
#include <vx/File.h>

#include "examples/surface_fit/NumberText.h"
#include "examples/surface_fit/OutputFiles.h"

namespace session {

namespace {

using surfacefit::Fit;
using surfacefit::Limits;
using surfacefit::Point;
using surfacefit::Stop;
using vxString::CString;

// What the cache may hold: a few dozen fits like that of the demo.
constexpr int kMostFiles = 2000;
constexpr std::int64_t kMostBytes = std::int64_t{256} << 20;

constexpr const char* kFigures = "figures";

std::string surfaceName(std::size_t step) {
  return "surface/" + std::to_string(step);
}

std::string meshName(std::size_t step) {
  return "mesh/" + std::to_string(step);
}

std::string digestOfInput(const std::vector<Point>& points, const Limits& limits) {
  std::ostringstream text;
  text << kilnbaseVersion() << ' ' << surfacefit::numberText(limits.tolerance) << ' '
       << limits.maxUnknowns << ' ' << limits.maxSpans << ' ' << limits.maxSteps << ' ';
  text.write(reinterpret_cast<const char*>(points.data()),
             static_cast<std::streamsize>(points.size() * sizeof(Point)));
  return digestOf(text.view());
}

std::optional<FitFigures> readFigureFile(const CString& path) {
  const std::u8string name(path.view().begin(), path.view().end());
  std::ifstream file(std::filesystem::path(name), std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return readFigures(text.str());
}

bool writeFigureFile(const FitFigures& figures, const CString& path) {
  const std::u8string name(path.view().begin(), path.view().end());
  std::ofstream file(std::filesystem::path(name), std::ios::binary);
  file << figuresText(figures);
  file.close();
  return file.good();
}

}  // namespace

FitCache::FitCache(const std::filesystem::path& folder, const std::vector<Point>& points,
                   const Limits& limits)
    : points_(points), digest_(digestOfInput(points, limits)) {
  surfacefit::makeFolder(folder);
  const std::u8string name = folder.u8string();
  const CString path(std::string_view(reinterpret_cast<const char*>(name.data()), name.size()));
  if (const vxUtil::Error error = cache_.initialize(path, kMostFiles, kMostBytes))
    problem_ = error.message().c_str();
}

CString FitCache::keyOf(const std::string& name) const {
  return CString((digest_ + "/" + name).c_str());
}

//! [read]
template <class Read>
auto FitCache::read(const std::string& name, Read readFile) -> decltype(readFile(CString())) {
  const auto item = cache_.find(keyOf(name));
  if (!item) return std::nullopt;
  auto content = readFile(item->getPath());
  ++(content ? hits_ : refusals_);
  if (!content) cache_.remove(item);
  return content;
}
//! [read]

template <class Write>
void FitCache::write(const std::string& name, Write writeFile) {
  const CString path = cache_.generatePath();
  if (path.isEmpty()) return;
  if (!writeFile(path))
    vxOS::File::remove(path);
  else if (cache_.add(keyOf(name), path))
    ++additions_;
}

// The largest deviation of the best surface, bit for bit: of other points the surface has another.
bool FitCache::isOfThesePoints(const Fit& fit) const {
  const auto x = surfacefit::extent(points_, &Point::x);
  const auto y = surfacefit::extent(points_, &Point::y);
  if (!fit.surface.contains(x.low, y.low) || !fit.surface.contains(x.high, y.high)) return false;
  const auto found = surfacefit::summarize(points_, deviations(fit.surface, points_));
  return found.largest.value == fit.deviation.largest.value && found.rms == fit.deviation.rms;
}

std::optional<TimedRefinement> FitCache::find() {
  const auto figures = read(kFigures, readFigureFile);
  if (!figures) return std::nullopt;
  TimedRefinement result{{{}, figures->best, figures->stop}, figures->seconds};
  for (const StepFigures& step : figures->steps) {
    const auto surface = read(surfaceName(result.refinement.steps.size()), readSurface);
    if (!surface) return std::nullopt;
    result.refinement.steps.push_back(
        {{*surface, step.unknowns, step.equations, step.determined, step.deviation}, step.seconds});
  }
  return isOfThesePoints(result.refinement.bestFit()) ? std::optional(result) : std::nullopt;
}

std::optional<surfacefit::Mesh> FitCache::findMesh(std::size_t step) {
  return read(meshName(step), readMesh);
}

// The figures come last: where they are, the surfaces are as well.
void FitCache::add(const TimedRefinement& fit,
                   const std::map<std::size_t, surfacefit::Mesh>& meshes) {
  const auto& [steps, best, stop] = fit.refinement;
  if (!problem_.empty() || stop == Stop::kByUser || stop == Stop::kOutOfMemory) return;
  FitFigures figures{{}, best, stop, fit.seconds};
  for (const auto& [step, seconds] : steps) {
    write(surfaceName(figures.steps.size()),
          [&surface = step.surface](const CString& path) { return writeSurface(surface, path); });
    figures.steps.push_back(
        {step.unknowns, step.equations, step.determined, step.deviation, seconds});
  }
  for (const auto& [step, mesh] : meshes)
    write(meshName(step), [&mesh = mesh](const CString& path) { return writeMesh(mesh, path); });
  write(kFigures, [&figures](const CString& path) { return writeFigureFile(figures, path); });
}

}  // namespace session
