// Sends frames to a viewer: draw_sender PORT NAME COUNT [wait]
// Frame i of COUNT holds something of each kind, i + 1 points, and NAME as its name and label. With
// "wait" the program keeps the connection until it is killed.

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include <kilnbase/net/KilnDebugDrawProtocol.h>

namespace {

using vxLinear::Point;

vxgk::Surface wave(double x0, double height) {
  constexpr int kPoles = 5;
  const vxgk::Surface::Direction direction{3, {0, 0, 0, 0, 0.5, 1, 1, 1, 1}};
  vx::vector<Point> poles;
  for (int i = 0; i < kPoles; ++i)
    for (int j = 0; j < kPoles; ++j)
      poles.push_back({x0 + i, static_cast<double>(j), height * std::sin(1.5 * i) * std::cos(j)});
  return {direction, direction, poles};
}

// The parameters inside a square with corners at `low` and `high`.
vxgk::TrimmedSurface::Loop square(double low, double high) {
  return {vxgk::ParameterCurve(1, {0, 0, 1, 2, 3, 4, 4},
                               {{low, low}, {high, low}, {high, high}, {low, high}, {low, low}})};
}

vxKilnBase::KilnDebugDrawFrame makeFrame(const char* name, int number) {
  vxKilnBase::KilnDebugDrawFrame frame;
  frame.name = name;
  for (int i = 0; i <= number; ++i) frame.points.push_back({0.2 * i, -1.0, 0.0});
  frame.lines.push_back({{0, -2, 0}, {1, 0, 1}});
  frame.labels.push_back({{4, 4, 2}, name});
  frame.curves.push_back(
      new vxgk::Curve(2, {0, 0, 0, 1, 1, 1}, {{0, -3, 0}, {3, -3, 3}, {6, -3, 0}}));
  frame.surfaces.push_back(new vxgk::Surface(wave(0, 1)));
  const vxgk::TrimmedSurface trimmed(wave(5, 1), {square(0.1, 0.9), square(0.4, 0.6)});
  frame.trimmedSurfaces.push_back(new vxgk::TrimmedSurface(trimmed));
  frame.shells.push_back(new vxgk::Shell({vxgk::TrimmedSurface(wave(10, 0.5), {})}));
  const vx::vector<Point> corners{{0, 6, 0}, {4, 6, 0}, {4, 9, 1}, {0, 9, 0}};
  frame.compactMeshes.push_back(new vxGeom::CompactMesh(corners, {{0, 1, 2}, {0, 2, 3}}));
  const vx::vector<Point> moved{{6, 6, 0}, {10, 6, 0}, {10, 9, 1}, {6, 9, 0}};
  frame.topoMeshes.push_back(new vxGeom::TopoMesh(moved, {{0, 1, 2, 3}}));
  frame.marks.push_back({vxKilnBase::KilnDebugDrawFrame::kPoints, 0});
  return frame;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  vxKilnBase::KilnDebugDrawProtocol viewer;
  if (!viewer.connect("127.0.0.1", std::atoi(argv[1]))) return 1;
  const int count = std::atoi(argv[3]);
  for (int i = 0; i < count; ++i) {
    vxKilnBase::KilnDebugDrawFrame frame = makeFrame(argv[2], i);
    const bool isSent = viewer.sendFrame(frame);
    frame.clear(true);
    if (!isSent) return 1;
  }
  std::cout << "sent\n" << std::flush;
  if (argc > 4 && std::string_view(argv[4]) == "wait") std::cin.get();
  return 0;
}
