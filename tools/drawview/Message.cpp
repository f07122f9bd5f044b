#include "tools/drawview/Message.h"

#include <array>
#include <bit>
#include <string_view>
#include <type_traits>

#include "tools/drawview/Text.h"
#include "tools/drawview/Triangles.h"

namespace drawview {

using vxKilnBase::KilnDebugDrawFrame;
using vxLinear::Point;

namespace {

// Numbers go into the payload as the machine stores them.
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(Point) == 3 * sizeof(double) && sizeof(vxLinear::Vector) == sizeof(Point));
static_assert(sizeof(vxLinear::Point2) == 2 * sizeof(double));
static_assert(sizeof(vxLinear::ParamLine) == 2 * sizeof(Point));

class TooLong {};

// The header, which grows from its start to its end, and the payload to which it refers.
class Writer {
 public:
  explicit Writer(std::uint64_t mostBytes) : mostBytes_(mostBytes) {}

  void text(std::string_view json) {
    header_ += json;
    checkSize();
  }
  void field(std::string_view name) { text(jsonString(name) + ":"); }
  void field(std::string_view name, std::string_view json) {
    field(name);
    text(json);
    text(",");
  }

  // An array of the payload that grows until it has its reference in the header.
  template <class Number>
  class Array {
   public:
    explicit Array(Writer& writer) : writer_(writer), start_(writer.payload_.size()) {}

    template <class Item>
    void add(const Item& item) {
      static_assert(std::is_trivially_copyable_v<Item> && sizeof(Item) % sizeof(Number) == 0);
      writer_.payload_.append(reinterpret_cast<const char*>(&item), sizeof item);
      writer_.checkSize();
    }

    void end() {
      std::string& payload = writer_.payload_;
      const std::size_t count = (payload.size() - start_) / sizeof(Number);
      payload.resize((payload.size() + 7) / 8 * 8);
      writer_.text("{\"offset\":" + std::to_string(start_) + ",\"count\":" + std::to_string(count) +
                   "}");
    }

   private:
    Writer& writer_;
    std::size_t start_;
  };

  // A field whose value is an array of the items.
  template <class Number, class Items>
  void array(std::string_view name, const Items& items) {
    field(name);
    Array<Number> array(*this);
    for (const auto& item : items) array.add(item);
    array.end();
    text(",");
  }

  // A list in the header, each item as `write` writes it.
  template <class Items, class Write>
  void list(const Items& items, Write write) {
    text("[");
    bool isFirst = true;
    for (const auto& item : items) {
      if (!isFirst) text(",");
      isFirst = false;
      write(item);
    }
    text("]");
  }

  void beginObject() { text("{"); }
  // Every field leaves a comma behind.
  void endObject() {
    if (header_.back() == ',') header_.pop_back();
    text("}");
  }

  std::string finish() {
    header_.append(7 - (header_.size() + 3) % 8, ' ');
    const auto size = static_cast<std::uint32_t>(header_.size());
    std::string message;
    message.reserve(sizeof size + header_.size() + payload_.size());
    message.append(reinterpret_cast<const char*>(&size), sizeof size);
    message += header_;
    return message += payload_;
  }

 private:
  void checkSize() const {
    constexpr std::size_t kEnds = 16;  // length and padding
    if (header_.size() + payload_.size() + kEnds > mostBytes_) throw TooLong();
  }

  std::uint64_t mostBytes_;
  std::string header_;
  std::string payload_;
};

const char* boolText(bool value) {
  return value ? "true" : "false";
}

// Each pole, with its weight behind it when there are weights.
template <class Pole>
void writePoles(Writer& out, const vx::vector<Pole>& poles, const vx::vector<double>& weights) {
  out.field("poles");
  Writer::Array<double> array(out);
  for (std::size_t i = 0; i < poles.size(); ++i) {
    array.add(poles[i]);
    if (!weights.empty()) array.add(weights[i]);
  }
  array.end();
  out.text(",");
}

template <class Pole>
void writeCurve(Writer& out, const vxgk::SplineCurve<Pole>& curve) {
  out.beginObject();
  out.field("degree", std::to_string(curve.degree()));
  out.field("rational", boolText(curve.isRational()));
  out.array<double>("knots", curve.knots());
  writePoles(out, curve.poles(), curve.weights());
  out.endObject();
}

void writeSurface(Writer& out, const vxgk::Surface& surface) {
  out.beginObject();
  out.field("degreeU", std::to_string(surface.u().degree));
  out.field("degreeV", std::to_string(surface.v().degree));
  out.field("countU", std::to_string(surface.countU()));
  out.field("countV", std::to_string(surface.countV()));
  out.field("rational", boolText(surface.isRational()));
  out.array<double>("knotsU", surface.u().knots);
  out.array<double>("knotsV", surface.v().knots);
  writePoles(out, surface.poles(), surface.weights());
  out.endObject();
}

void writeTrimmedSurface(Writer& out, const vxgk::TrimmedSurface& trimmed) {
  out.beginObject();
  out.field("surface");
  writeSurface(out, trimmed.surface());
  out.text(",");
  out.field("loops");
  out.list(trimmed.loops(), [&](const vxgk::TrimmedSurface::Loop& loop) {
    out.list(loop, [&](const vxgk::ParameterCurve& curve) { writeCurve(out, curve); });
  });
  out.endObject();
}

void writeCompactMesh(Writer& out, const vxGeom::CompactMesh& mesh) {
  out.beginObject();
  out.array<double>("vertices", mesh.vertices());
  out.array<double>("normals", mesh.normals());
  out.array<std::uint32_t>("triangles", mesh.triangles());
  out.endObject();
}

void writeTopoMesh(Writer& out, const vxGeom::TopoMesh& mesh) {
  out.beginObject();
  out.array<double>("vertices", mesh.vertices());
  out.array<double>("normals", vx::vector<Point>());
  out.field("triangles");
  Writer::Array<std::uint32_t> triangles(out);
  for (std::size_t face = 0; face < mesh.faces().size(); ++face)
    for (const Triangle& each : trianglesOf(mesh.polygon(face), mesh.vertices()))
      triangles.add(each);
  triangles.end();
  out.text(",");
  out.array<std::uint32_t>("edges", mesh.edges());
  out.endObject();
}

void writeLabels(Writer& out, const vx::list<KilnDebugDrawFrame::Label>& labels) {
  out.field("labels");
  out.beginObject();
  out.field("at");
  Writer::Array<double> places(out);
  for (const KilnDebugDrawFrame::Label& label : labels) places.add(label.at);
  places.end();
  out.text(",");
  out.field("texts");
  out.list(labels, [&](const KilnDebugDrawFrame::Label& label) {
    out.text(jsonString(label.text.view()));
  });
  out.endObject();
  out.text(",");
}

// A list of objects of the kind `Kind`, whose lists in a frame hold `Object`.
template <class Kind, class Object, class Write>
void writeObjects(Writer& out, std::string_view name, const vx::list<Object*>& objects,
                  Write write) {
  out.field(name);
  out.list(objects, [&](const Object* object) { write(out, static_cast<const Kind&>(*object)); });
  out.text(",");
}

void writeShell(Writer& out, const vxgk::Shell& shell) {
  out.list(shell.faces(),
           [&](const vxgk::TrimmedSurface& face) { writeTrimmedSurface(out, face); });
}

void writeFrame(Writer& out, const KilnDebugDrawFrame& frame, const MessageStamp& stamp) {
  out.beginObject();
  out.field("name", jsonString(frame.name.view()));
  out.field("number", std::to_string(stamp.number));
  out.field("time", std::to_string(stamp.milliseconds));
  out.field("marks");
  out.list(frame.marks, [&](const KilnDebugDrawFrame::Mark& mark) {
    out.list(std::array{mark.type, mark.index},
             [&](int number) { out.text(std::to_string(number)); });
  });
  out.text(",");
  out.array<double>("points", frame.points);
  out.array<double>("lines", frame.lines);
  writeLabels(out, frame.labels);
  writeObjects<vxgk::Curve>(out, "curves", frame.curves, writeCurve<Point>);
  writeObjects<vxgk::Surface>(out, "surfaces", frame.surfaces, writeSurface);
  writeObjects<vxgk::TrimmedSurface>(out, "trimmedSurfaces", frame.trimmedSurfaces,
                                     writeTrimmedSurface);
  writeObjects<vxgk::Shell>(out, "shells", frame.shells, writeShell);
  writeObjects<vxGeom::CompactMesh>(out, "compactMeshes", frame.compactMeshes, writeCompactMesh);
  writeObjects<vxGeom::TopoMesh>(out, "topoMeshes", frame.topoMeshes, writeTopoMesh);
  out.endObject();
}

}  // namespace

std::optional<std::string> encodeMessage(const KilnDebugDrawFrame& frame, const MessageStamp& stamp,
                                         std::uint64_t mostBytes) {
  try {
    Writer out(mostBytes);
    writeFrame(out, frame, stamp);
    return out.finish();
  } catch (const TooLong&) {
    return std::nullopt;
  }
}

}  // namespace drawview
