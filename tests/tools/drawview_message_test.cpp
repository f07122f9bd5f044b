#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "tools/drawview/Message.h"
#include "tools/drawview/Text.h"
#include "tools/drawview/Triangles.h"

namespace {

using drawview::Triangle;
using vxKilnBase::KilnDebugDrawFrame;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string headerOf(const std::string& message) {
  std::uint32_t size = 0;
  std::memcpy(&size, message.data(), sizeof size);
  return message.substr(sizeof size, size);
}

template <class Number>
std::vector<Number> payloadOf(const std::string& message, std::size_t offset, std::size_t count) {
  std::vector<Number> numbers(count);
  const std::size_t start = 4 + headerOf(message).size() + offset;
  std::memcpy(numbers.data(), message.data() + start, count * sizeof(Number));
  return numbers;
}

// One of each kind, with numbers that are not finite and texts that are markup.
struct OneOfEach {
  vxgk::Curve curve{1, {0, 0, 1, 1}, {{0, 0, 0}, {kInfinity, 2, 0}}, {1, 2}};
  vxgk::Surface surface{
      {1, {0, 0, 1, 1}}, {1, {0, 0, 2, 2}}, {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 5}}};
  vxgk::TrimmedSurface trimmed{surface, {{{1, {0, 0, 1, 1}, {{0, 0}, {1, 1}}}}}};
  vxgk::Shell shell{{trimmed}};
  vxGeom::CompactMesh compact{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}, {{0, 0, 1}, {}, {}}};
  vxGeom::TopoMesh topo{{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2, 3}}};
  KilnDebugDrawFrame frame;

  OneOfEach() {
    frame.name = "</script>\"\xff";
    frame.marks.push_back({KilnDebugDrawFrame::kLabels, -1});
    frame.points.push_back({1, -0.0, kInfinity});
    frame.lines.push_back({{1, 2, 3}, {4, 5, 6}});
    frame.labels.push_back({{7, 8, 9}, "a\n\\"});
    frame.curves.push_back(&curve);
    frame.surfaces.push_back(&surface);
    frame.trimmedSurfaces.push_back(&trimmed);
    frame.shells.push_back(&shell);
    frame.compactMeshes.push_back(&compact);
    frame.topoMeshes.push_back(&topo);
  }
};

// The references of a surface and of the trimmed surface of it, from offset `o` on.
std::string surfaceText(int o) {
  const auto ref = [](int offset, int count) {
    return "{\"offset\":" + std::to_string(offset) + ",\"count\":" + std::to_string(count) + "}";
  };
  return "{\"degreeU\":1,\"degreeV\":1,\"countU\":2,\"countV\":2,\"rational\":false,\"knotsU\":" +
         ref(o, 4) + ",\"knotsV\":" + ref(o + 32, 4) + ",\"poles\":" + ref(o + 64, 12) + "}";
}
std::string trimmedText(int o) {
  return "{\"surface\":" + surfaceText(o) +
         ",\"loops\":[[{\"degree\":1,\"rational\":false,\"knots\":{\"offset\":" +
         std::to_string(o + 160) +
         ",\"count\":4},\"poles\":{\"offset\":" + std::to_string(o + 192) + ",\"count\":4}}]]}";
}

TEST(DrawviewMessage, HoldsOneOfEach) {
  const OneOfEach one;
  const std::string message = drawview::encodeMessage(one.frame, {12, 1790000000000}, 4096).value();
  EXPECT_EQ(headerOf(message).size() % 8, 4u);
  EXPECT_THAT(headerOf(message),
              testing::StartsWith(
                  R"({"name":"\u003c/script\u003e\"�","number":12,"time":1790000000000,)"
                  R"("marks":[[2,-1]],"points":{"offset":0,"count":3},)"
                  R"("lines":{"offset":24,"count":6},"labels":{"at":{"offset":72,"count":3},)"
                  R"("texts":["a\u000a\\"]},"curves":[{"degree":1,"rational":true,)"
                  R"("knots":{"offset":96,"count":4},"poles":{"offset":128,"count":8}}],)"));
  EXPECT_THAT(headerOf(message),
              testing::HasSubstr(
                  "\"surfaces\":[" + surfaceText(192) + "],\"trimmedSurfaces\":[" +
                  trimmedText(352) + "],\"shells\":[[" + trimmedText(576) +
                  "]],\"compactMeshes\":[{\"vertices\":{\"offset\":800,\"count\":9},\"normals\":"
                  "{\"offset\":872,\"count\":9},\"triangles\":{\"offset\":944,\"count\":3}}],"
                  "\"topoMeshes\":[{\"vertices\":{\"offset\":960,\"count\":12},\"normals\":"
                  "{\"offset\":1056,\"count\":0},\"triangles\":{\"offset\":1056,\"count\":6},"
                  "\"edges\":{\"offset\":1080,\"count\":8}}]}"));
  using testing::ElementsAre;
  EXPECT_THAT(payloadOf<double>(message, 0, 12),
              ElementsAre(1, -0.0, kInfinity, 1, 2, 3, 4, 5, 6, 7, 8, 9));
  EXPECT_THAT(payloadOf<double>(message, 128, 8), ElementsAre(0, 0, 0, 1, kInfinity, 2, 0, 2));
  EXPECT_THAT(payloadOf<double>(message, 224, 4), ElementsAre(0, 0, 2, 2));
  EXPECT_THAT(payloadOf<double>(message, 256 + 72, 3), ElementsAre(1, 1, 5));
  EXPECT_THAT(payloadOf<double>(message, 872, 3), ElementsAre(0, 0, 1));
  EXPECT_THAT(payloadOf<std::uint32_t>(message, 944, 4), ElementsAre(0, 1, 2, 0));
  EXPECT_THAT(payloadOf<std::uint32_t>(message, 1056, 6), ElementsAre(0, 1, 2, 0, 2, 3));
  EXPECT_THAT(payloadOf<std::uint32_t>(message, 1080, 8),
              testing::UnorderedElementsAre(0, 1, 1, 2, 2, 3, 3, 0));
}

TEST(DrawviewMessage, HasABound) {
  const KilnDebugDrawFrame empty;
  const std::size_t size = drawview::encodeMessage(empty, {}, 4096).value().size();
  EXPECT_EQ(drawview::encodeMessage(empty, {}, size - 8), std::nullopt);
  KilnDebugDrawFrame labels;
  labels.labels.push_back({{}, vxString::CString(std::string_view(std::string(1000, '\1')))});
  EXPECT_EQ(drawview::encodeMessage(labels, {}, 6000), std::nullopt);
}

TEST(DrawviewText, IsHarmlessInJsonAndHtml) {
  const struct {
    std::string text, json, html;
  } cases[] = {{"", R"("")", ""},
               {"a<b>&'\"", R"("a\u003cb\u003e\u0026'\"")", "a&lt;b&gt;&amp;&#39;&quot;"},
               {std::string("\0\x1f\x7f\\", 4), R"("\u0000\u001f\u007f\\")", "�\x1f\x7f\\"},
               {"é\xc3(\xed\xa0\x80", "\"é�(���\"", "é�(���"}};
  for (const auto& [text, json, html] : cases) {
    EXPECT_EQ(drawview::jsonString(text), json);
    EXPECT_EQ(drawview::htmlText(text), html);
  }
  for (const auto& [bytes, text] : {std::pair<std::string, std::string>{"", ""},
                                    {"f", "Zg=="},
                                    {"fo", "Zm8="},
                                    {"\xff\xee\xdd", "/+7d"},
                                    {"foobar", "Zm9vYmFy"}}) {
    std::string out;
    drawview::appendBase64(out, bytes);
    EXPECT_EQ(out, text);
  }
}

double areaOf(const Triangle& t, const vx::vector<vxLinear::Point>& p) {
  const vxLinear::Vector a = p[t[1]] - p[t[0]], b = p[t[2]] - p[t[0]];
  return (a.x * b.y - a.y * b.x) / 2;
}

TEST(DrawviewTriangles, CoverThePolygon) {
  const double nan = std::nan("");
  const vx::vector<vxLinear::Point> l = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0},
                                         {1, 1, 0}, {1, 2, 0}, {0, 2, 0}};
  const vx::vector<vxLinear::Point> dart = {{0, 0, 0}, {1, 3, 0}, {0, 1, 0}, {-1, 3, 0}};
  for (const auto& [points, area] : {std::pair{l, 3.0}, {dart, 1.0}}) {
    vx::vector<std::uint32_t> polygon;
    for (std::uint32_t k = 0; k < points.size(); ++k) polygon.push_back(k);
    for (std::size_t turn = 0; turn < points.size(); ++turn) {
      std::rotate(polygon.begin(), polygon.begin() + 1, polygon.end());
      double sum = 0.0;
      for (const Triangle& each : drawview::trianglesOf(polygon, points)) {
        EXPECT_GT(areaOf(each, points), 0.0);
        sum += areaOf(each, points);
      }
      EXPECT_DOUBLE_EQ(sum, area);
    }
  }
  const vx::vector<vxLinear::Point> odd = {{nan, 0, 0}, {}, {}, {1, nan, kInfinity}, {0, 1, 0}};
  EXPECT_EQ(drawview::trianglesOf({0, 1, 2, 3, 4}, odd).size(), 3u);
}

}  // namespace
