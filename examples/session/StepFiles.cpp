#include "examples/session/StepFiles.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <sstream>
#include <utility>

#include <vx/File.h>

#include "examples/surface_fit/NumberText.h"
#include "examples/surface_fit/Spline.h"

namespace session {

namespace {

using surfacefit::kOrder;
using surfacefit::numberText;
using surfacefit::Point;
using surfacefit::Surface;
using vxString::CString;

constexpr std::string_view kHead = "kiln session fit 1\n";
constexpr std::string_view kSumHead = "sum ";

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File open(const CString& path, const char* mode) {
  return {vxOS::openFile(path.view(), mode), &std::fclose};
}

// Whether the bytes have reached the system.
bool close(File file) {
  return std::fclose(file.release()) == 0;
}

vx::vector<double> valuesOf(const TnumberSequence& knots) {
  const double* const values = knots.data().data();
  return {values, values + knots.length()};
}

TnumberSequence knotsOf(const vxgk::Surface::Direction& direction) {
  return TnumberSequence(
      DoubleVec(direction.knots.data(), static_cast<unsigned>(direction.knots.size())));
}

// Where the poles of the identity x(t) = t lie.
double poleAt(const TnumberSequence& knots, int i) {
  return (knots(i + 1) + knots(i + 2) + knots(i + 3)) / 3.0;
}

Surface graphOf(const vxgk::Surface& surface) {
  const auto columns = static_cast<int>(surface.countV());
  DoubleGenMat net(static_cast<unsigned>(surface.countU()), static_cast<unsigned>(columns));
  for (int i = 0; i < static_cast<int>(surface.countU()); ++i)
    for (int j = 0; j < columns; ++j)
      net(i, j) = surface.poles()[static_cast<std::size_t>(i) * surface.countV() + j].z;
  return {knotsOf(surface.u()), knotsOf(surface.v()), net};
}

void writeStep(const StepFigures& step, std::ostream& text) {
  const surfacefit::Deviation& largest = step.deviation.largest;
  text << step.unknowns << ' ' << step.equations << ' ' << step.determined;
  for (const double value : {step.deviation.rms, largest.value, largest.x, largest.y, step.seconds})
    text << ' ' << numberText(value);
  text << '\n';
}

void readStep(std::istream& text, StepFigures& step) {
  surfacefit::Deviation& largest = step.deviation.largest;
  text >> step.unknowns >> step.equations >> step.determined >> step.deviation.rms >>
      largest.value >> largest.x >> largest.y >> step.seconds;
}

}  // namespace

vxgk::Surface kernelSurface(const Surface& surface) {
  const TnumberSequence& x = surface.xKnots();
  const TnumberSequence& y = surface.yKnots();
  vx::vector<vxLinear::Point> poles;
  for (int i = 0; i < surfacefit::basisSize(x); ++i)
    for (int j = 0; j < surfacefit::basisSize(y); ++j)
      poles.push_back({poleAt(x, i), poleAt(y, j), surface.net()(i, j)});
  return {{kOrder - 1, valuesOf(x)}, {kOrder - 1, valuesOf(y)}, std::move(poles)};
}

bool writeSurface(const Surface& surface, const CString& path) {
  File file = open(path, "wb");
  const vxgk::Surface object = kernelSurface(surface);
  return file && !vxgk_write(file.get(), &object) && !vxgk_write(file.get(), nullptr) &&
         close(std::move(file));
}

std::optional<Surface> readSurface(const CString& path) {
  const File file = open(path, "rb");
  if (!file) return std::nullopt;
  vxUtil::Error error;
  const std::unique_ptr<vxgk::Object, void (*)(vxgk::Object*)> object(vxgk_read(file.get(), error),
                                                                      &vxgk_delete);
  const auto* const surface = dynamic_cast<const vxgk::Surface*>(object.get());
  if (error || !surface || surface->u().degree != kOrder - 1 || surface->v().degree != kOrder - 1)
    return std::nullopt;
  return graphOf(*surface);
}

bool writeMesh(const surfacefit::Mesh& mesh, const CString& path) {
  vx::vector<vxLinear::Point> vertices;
  for (const Point& v : mesh.vertices) vertices.push_back({v.x, v.y, v.z});
  vx::vector<vxGeom::CompactMesh::Triangle> triangles;
  for (const auto& [a, b, c] : mesh.triangles)
    triangles.push_back({static_cast<std::uint32_t>(a), static_cast<std::uint32_t>(b),
                         static_cast<std::uint32_t>(c)});
  File file = open(path, "wb");
  return file &&
         !vxGeom::meshWrite(vxGeom::CompactMesh(std::move(vertices), std::move(triangles)),
                            file.get()) &&
         close(std::move(file));
}

std::optional<surfacefit::Mesh> readMesh(const CString& path) {
  const File file = open(path, "rb");
  vxGeom::CompactMesh compact;
  if (!file || vxGeom::meshRead(compact, file.get())) return std::nullopt;
  surfacefit::Mesh mesh;
  for (const vxLinear::Point& v : compact.vertices()) mesh.vertices.push_back({v.x, v.y, v.z});
  for (const auto& [a, b, c] : compact.triangles())
    mesh.triangles.push_back({static_cast<int>(a), static_cast<int>(b), static_cast<int>(c)});
  return mesh;
}

std::string figuresText(const FitFigures& figures) {
  std::ostringstream text;
  text << kHead << figures.steps.size() << ' ' << figures.best << ' '
       << static_cast<int>(figures.stop) << ' ' << numberText(figures.seconds) << '\n';
  for (const StepFigures& step : figures.steps) writeStep(step, text);
  return text.str().append(kSumHead).append(digestOf(text.view())).append("\n");
}

// The sum holds, so the lines are as they were written; they are checked all the same.
std::optional<FitFigures> readFigures(const std::string& text) {
  const std::size_t end = text.rfind(kSumHead);
  if (!text.starts_with(kHead) || end == std::string::npos ||
      text.substr(end) != std::string(kSumHead) + digestOf(text.substr(0, end)) + "\n")
    return std::nullopt;
  std::istringstream lines(text.substr(kHead.size(), end - kHead.size()));
  std::size_t count = 0;
  int stop = 0;
  FitFigures figures = {};
  lines >> count >> figures.best >> stop >> figures.seconds;
  figures.stop = static_cast<surfacefit::Stop>(stop);
  for (StepFigures step = {}; lines && figures.steps.size() < count;) {
    readStep(lines, step);
    figures.steps.push_back(step);
  }
  return lines && figures.best < count ? std::optional(figures) : std::nullopt;
}

std::string digestOf(std::string_view bytes) {
  std::uint64_t sum = 0xcbf29ce484222325;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(sum));
  return text;
}

}  // namespace session
