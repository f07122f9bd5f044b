#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include <vx/KernelObject.h>
#include <vx/detail/Record.h>

namespace vxgk {

namespace {

using vx::detail::fail;
using vx::detail::RecordReader;
using vx::detail::RecordWriter;
using vxLinear::Point;
using vxLinear::Point2;

constexpr vx::detail::Magic kMagic = "VXGKOBJ1";
constexpr std::int32_t kEndOfObjects = -1;

bool isFinite(double number) {
  return std::isfinite(number);
}

// Checks the knots and returns the number of poles that they are for.
std::size_t requireKnots(int degree, const vx::vector<double>& knots) {
  if (degree < 1 || degree > kMaxDegree) fail("a spline has a degree out of range");
  const std::size_t order = static_cast<std::size_t>(degree) + 1;
  if (knots.size() < 2 * order) fail("a spline has too few knots");
  const std::size_t poles = knots.size() - order;
  if (!std::all_of(knots.begin(), knots.end(), isFinite)) fail("a knot is no finite number");
  if (!std::is_sorted(knots.begin(), knots.end())) fail("the knots of a spline descend");
  for (std::size_t i = 0; i < poles; ++i) {
    if (knots[i] == knots[i + order]) fail("too many knots of a spline are equal");
  }
  if (knots[order - 1] == knots[poles]) fail("a spline has no range of parameters");
  return poles;
}

void requirePoles(std::size_t wanted, std::size_t poles, const vx::vector<double>& weights) {
  const auto isWeight = [](double weight) { return isFinite(weight) && weight > 0.0; };
  if (poles != wanted) fail("the poles of a spline do not fit its knots");
  if (!weights.empty() && weights.size() != poles) fail("a spline has a weight a pole, or none");
  if (!std::all_of(weights.begin(), weights.end(), isWeight))
    fail("a weight of a spline is no finite number above 0");
}

// The B-spline functions that are not 0 at a parameter: those of the poles first..first + degree.
struct Basis {
  Basis(int degree, const vx::vector<double>& knots, double t);

  std::size_t first;
  std::array<double, kMaxDegree + 1> values;
};

// The interval of the knots that holds the parameter, start <= t <= end; the last one that is not
// empty for the end.
std::size_t intervalOf(std::size_t degree, const vx::vector<double>& knots, double t) {
  const auto start = knots.begin() + static_cast<std::ptrdiff_t>(degree);
  const auto last = knots.end() - static_cast<std::ptrdiff_t>(degree) - 1;
  auto knot = std::upper_bound(start + 1, last, t) - 1;
  while (*knot == *(knot + 1)) --knot;
  return static_cast<std::size_t>(knot - knots.begin());
}

// The recursion of Cox and de Boor, one degree after the other: de Boor, A Practical Guide to
// Splines, chapter X.
Basis::Basis(int degree, const vx::vector<double>& knots, double t) {
  const auto p = static_cast<std::size_t>(degree);
  t = std::clamp(t, knots[p], knots[knots.size() - 1 - p]);
  const std::size_t interval = intervalOf(p, knots, t);
  first = interval - p;
  values[0] = 1.0;
  for (std::size_t d = 1; d <= p; ++d) {
    double carried = 0.0;
    for (std::size_t i = 0; i < d; ++i) {
      const double right = knots[interval + i + 1];
      const double left = knots[interval + i + 1 - d];
      const double part = values[i] / (right - left);
      values[i] = carried + (right - t) * part;
      carried = (t - left) * part;
    }
    values[d] = carried;
  }
}

void addTo(Point& sum, double factor, const Point& pole) {
  sum = {sum.x + factor * pole.x, sum.y + factor * pole.y, sum.z + factor * pole.z};
}

void addTo(Point2& sum, double factor, const Point2& pole) {
  sum = {sum.u + factor * pole.u, sum.v + factor * pole.v};
}

Point divided(const Point& sum, double by) {
  return {sum.x / by, sum.y / by, sum.z / by};
}

Point2 divided(const Point2& sum, double by) {
  return {sum.u / by, sum.v / by};
}

// The mean of poles, for splines with and without weights.
template <class Pole>
struct Mean {
  void add(double factor, const vx::vector<Pole>& poles, const vx::vector<double>& weights,
           std::size_t pole) {
    const double weighted = weights.empty() ? factor : factor * weights[pole];
    addTo(sum, weighted, poles[pole]);
    weight += weighted;
  }
  Pole result(bool isRational) const { return isRational ? divided(sum, weight) : sum; }

  Pole sum;
  double weight = 0.0;
};

template <class Pole>
void write(RecordWriter& writer, const SplineCurve<Pole>& curve) {
  writer.number<std::int32_t>(curve.degree());
  writer.array(curve.knots());
  writer.array(curve.poles());
  writer.array(curve.weights());
}

template <class SomeCurve, class Pole>
SomeCurve readCurve(RecordReader& reader) {
  const auto degree = reader.number<std::int32_t>();
  auto knots = reader.array<double>();
  auto poles = reader.array<Pole>();
  auto weights = reader.array<double>();
  return SomeCurve(degree, std::move(knots), std::move(poles), std::move(weights));
}

void write(RecordWriter& writer, const Surface::Direction& direction) {
  writer.number<std::int32_t>(direction.degree);
  writer.array(direction.knots);
}

Surface::Direction readDirection(RecordReader& reader) {
  const auto degree = reader.number<std::int32_t>();
  return {degree, reader.array<double>()};
}

void write(RecordWriter& writer, const Surface& surface) {
  write(writer, surface.u());
  write(writer, surface.v());
  writer.array(surface.poles());
  writer.array(surface.weights());
}

Surface readSurface(RecordReader& reader) {
  auto u = readDirection(reader);
  auto v = readDirection(reader);
  auto poles = reader.array<Point>();
  auto weights = reader.array<double>();
  return Surface(std::move(u), std::move(v), std::move(poles), std::move(weights));
}

template <class Part>
void writeParts(RecordWriter& writer, const vx::vector<Part>& parts);

void write(RecordWriter& writer, const TrimmedSurface::Loop& loop) {
  writeParts(writer, loop);
}

void write(RecordWriter& writer, const TrimmedSurface& face) {
  write(writer, face.surface());
  writeParts(writer, face.loops());
}

// The number of parts, and the parts.
template <class Part>
void writeParts(RecordWriter& writer, const vx::vector<Part>& parts) {
  writer.number<std::uint64_t>(parts.size());
  for (const Part& part : parts) write(writer, part);
}

// Memory is taken as the parts come.
template <class Part>
vx::vector<Part> readParts(RecordReader& reader, Part (*readPart)(RecordReader&)) {
  vx::vector<Part> parts;
  for (auto count = reader.number<std::uint64_t>(); count > 0; --count)
    parts.push_back(readPart(reader));
  return parts;
}

TrimmedSurface::Loop readLoop(RecordReader& reader) {
  return readParts<ParameterCurve>(reader, readCurve<ParameterCurve, Point2>);
}

TrimmedSurface readTrimmedSurface(RecordReader& reader) {
  Surface surface = readSurface(reader);
  auto loops = readParts<TrimmedSurface::Loop>(reader, readLoop);
  return TrimmedSurface(std::move(surface), std::move(loops));
}

void writeContent(RecordWriter& writer, const Object& object) {
  switch (object.id()) {
    case kCurve:
      return write(writer, static_cast<const Curve&>(object));
    case kSurface:
      return write(writer, static_cast<const Surface&>(object));
    case kTrimmedSurface:
      return write(writer, static_cast<const TrimmedSurface&>(object));
    case kShell:
      return writeParts(writer, static_cast<const Shell&>(object).faces());
    default:
      return writer.append(static_cast<const ForeignObject&>(object).bytes());
  }
}

std::unique_ptr<Object> parsed(int id, RecordReader& reader) {
  switch (id) {
    case kCurve:
      return std::make_unique<Curve>(readCurve<Curve, Point>(reader));
    case kSurface:
      return std::make_unique<Surface>(readSurface(reader));
    case kTrimmedSurface:
      return std::make_unique<TrimmedSurface>(readTrimmedSurface(reader));
    case kShell:
      return std::make_unique<Shell>(readParts<TrimmedSurface>(reader, readTrimmedSurface));
    default:
      return nullptr;
  }
}

// Null at the end of the objects.
std::unique_ptr<Object> read(std::FILE* file) {
  const bool isAtStart = std::ftell(file) == 0;
  const int next = std::fgetc(file);
  if (next == EOF && isAtStart && std::ferror(file) == 0) return nullptr;
  if (next != EOF) std::ungetc(next, file);
  vx::detail::Record record = vx::detail::readRecord(file, kMagic);
  RecordReader reader(record.content);
  if (record.kind == kEndOfObjects) {
    reader.requireEnd();
    if (!vx::detail::isAtEnd(file)) fail("the file goes on behind the objects");
    return nullptr;
  }
  std::unique_ptr<Object> object = parsed(record.kind, reader);
  if (object == nullptr)
    return std::make_unique<ForeignObject>(record.kind, std::move(record.content));
  reader.requireEnd();
  return object;
}

}  // namespace

Object::~Object() = default;

template <class Pole>
SplineCurve<Pole>::SplineCurve(int degree, vx::vector<double> knots, vx::vector<Pole> poles,
                               vx::vector<double> weights)
    : degree_(degree),
      knots_(std::move(knots)),
      poles_(std::move(poles)),
      weights_(std::move(weights)) {
  requirePoles(requireKnots(degree_, knots_), poles_.size(), weights_);
}

template <class Pole>
Pole SplineCurve<Pole>::at(double t) const {
  const Basis basis(degree_, knots_, t);
  Mean<Pole> mean = {};
  for (std::size_t i = 0; i <= static_cast<std::size_t>(degree_); ++i)
    mean.add(basis.values[i], poles_, weights_, basis.first + i);
  return mean.result(isRational());
}

template class SplineCurve<Point>;
template class SplineCurve<Point2>;

int Curve::id() const {
  return kCurve;
}

Surface::Surface(Direction u, Direction v, vx::vector<Point> poles, vx::vector<double> weights)
    : u_(std::move(u)), v_(std::move(v)), poles_(std::move(poles)), weights_(std::move(weights)) {
  const std::size_t inU = requireKnots(u_.degree, u_.knots);
  const std::size_t inV = requireKnots(v_.degree, v_.knots);
  requirePoles(inU * inV, poles_.size(), weights_);
}

int Surface::id() const {
  return kSurface;
}

Point Surface::at(double u, double v) const {
  const Basis inU(u_.degree, u_.knots, u);
  const Basis inV(v_.degree, v_.knots, v);
  Mean<Point> mean = {};
  for (std::size_t i = 0; i <= static_cast<std::size_t>(u_.degree); ++i) {
    const std::size_t row = (inU.first + i) * countV() + inV.first;
    for (std::size_t j = 0; j <= static_cast<std::size_t>(v_.degree); ++j)
      mean.add(inU.values[i] * inV.values[j], poles_, weights_, row + j);
  }
  return mean.result(isRational());
}

TrimmedSurface::TrimmedSurface(Surface surface, vx::vector<Loop> loops)
    : surface_(std::move(surface)), loops_(std::move(loops)) {
  for (const Loop& loop : loops_) {
    if (loop.empty()) fail("a loop of a trimmed surface has no curve");
  }
}

int TrimmedSurface::id() const {
  return kTrimmedSurface;
}

Shell::Shell(vx::vector<TrimmedSurface> faces) : faces_(std::move(faces)) {}

int Shell::id() const {
  return kShell;
}

ForeignObject::ForeignObject(int id, vx::vector<std::byte> bytes)
    : id_(id), bytes_(std::move(bytes)) {
  constexpr int kOwn[] = {kCurve, kSurface, kTrimmedSurface, kShell};
  if (id < 0 || std::find(std::begin(kOwn), std::end(kOwn), id) != std::end(kOwn))
    fail("not the kind of an object of another program");
}

int ForeignObject::id() const {
  return id_;
}

}  // namespace vxgk

vxUtil::Error vxgk_write(std::FILE* file, const vxgk::Object* object) {
  return vx::detail::errorOf([&] {
    vx::detail::RecordWriter writer;
    if (object != nullptr) vxgk::writeContent(writer, *object);
    const int kind = object != nullptr ? object->id() : vxgk::kEndOfObjects;
    vx::detail::writeRecord(file, vxgk::kMagic, kind, writer.bytes());
  });
}

vxgk::Object* vxgk_read(std::FILE* file, vxUtil::Error& error) {
  std::unique_ptr<vxgk::Object> object;
  error = vx::detail::errorOf([&] { object = vxgk::read(file); });
  return object.release();
}

void vxgk_delete(vxgk::Object* object) {
  delete object;
}

int vxgk_id_object(const vxgk::Object* object) {
  return object->id();
}
