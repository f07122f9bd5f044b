#include <climits>
#include <gtest/gtest.h>

#include <kilnbase/net/KilnDebugDrawFrame.h>

#include "tests/support/Geometry.h"

namespace {

using Frame = vxKilnBase::KilnDebugDrawFrame;

struct WatchedMesh : vxGeom::CompactMesh {
  explicit WatchedMesh(int& count) : deleted(count) {}
  ~WatchedMesh() override { ++deleted; }
  int& deleted;
};

// List `type` has type + 1 elements; no object is there.
Frame filled() {
  Frame frame;
  frame.name = "filled";
  frame.points = {{1, 2, 3}};
  frame.lines.resize(2);
  frame.labels.resize(3);
  frame.curves.resize(4);
  frame.surfaces.resize(5);
  frame.trimmedSurfaces.resize(6);
  frame.shells.resize(7);
  frame.compactMeshes.resize(8);
  frame.topoMeshes.resize(9);
  return frame;
}

void expectSizes(const Frame& frame, int times) {
  for (int type = 0; type < 9; ++type)
    EXPECT_EQ(frame.getListSize(static_cast<Frame::DataType>(type)), times * (type + 1)) << type;
  for (const int type : {-1, 9, 10, INT_MAX, INT_MIN})
    EXPECT_EQ(frame.getListSize(static_cast<Frame::DataType>(type)), 0) << type;
}

TEST(KilnDebugDrawFrame, AddMovesMarksBehindWhatIsThere) {
  Frame frame = filled(), other = filled();
  expectSizes(frame, 1);
  frame.marks = {{0, 9}};
  other.name = "other";
  other.marks = {{0, 2}, {8, 1}, {9, 3}, {-1, 4}, {1, INT_MAX}};
  frame.add(other);
  expectSizes(frame, 2);
  EXPECT_EQ(frame.name, "filled");
  EXPECT_EQ(frame.marks,
            (std::list<Frame::Mark>{{0, 9}, {0, 3}, {8, 10}, {9, 3}, {-1, 4}, {1, INT_MIN + 1}}));
  other.add(other);
  expectSizes(other, 2);
  EXPECT_EQ(other.marks.size(), 10U);
  EXPECT_EQ(other.marks.back(), (Frame::Mark{1, INT_MIN + 1}));
}

TEST(KilnDebugDrawFrame, ClearDeletesWhenToldAndKeepsMarks) {
  int deleted = 0;
  Frame frame = filled();
  frame.marks = {{0, 1}};
  frame.compactMeshes.push_back(new WatchedMesh(deleted));
  frame.topoMeshes.push_back(new vxGeom::TopoMesh);
  for (auto& object : kilntest::objects()) frame.curves.push_back(object.release());
  Frame(frame).clear(false);
  EXPECT_EQ(deleted, 0);
  frame.clear(true);
  EXPECT_EQ(deleted, 1);
  expectSizes(frame, 0);
  EXPECT_EQ(frame.marks.size(), 1U);
  EXPECT_EQ(frame.name, "filled");
}

}  // namespace
