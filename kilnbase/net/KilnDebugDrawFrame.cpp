#include <cstddef>
#include <cstdint>

#include <kilnbase/net/KilnDebugDrawFrame.h>

namespace vxKilnBase {

namespace {

using Frame = KilnDebugDrawFrame;

// Calls `work` with each list of `frames`, in the order of the types.
template <class Work, class... Frames>
void forEachList(Work work, Frames&... frames) {
  work(Frame::kPoints, frames.points...);
  work(Frame::kLines, frames.lines...);
  work(Frame::kLabels, frames.labels...);
  work(Frame::kCurves, frames.curves...);
  work(Frame::kSurfaces, frames.surfaces...);
  work(Frame::kTrimmedSurfaces, frames.trimmedSurfaces...);
  work(Frame::kShells, frames.shells...);
  work(Frame::kCompactMeshes, frames.compactMeshes...);
  work(Frame::kTopoMeshes, frames.topoMeshes...);
}

void deleteElement(vxgk::Object* object) {
  vxgk_delete(object);
}

template <class Mesh>
void deleteElement(Mesh* mesh) {
  delete mesh;
}

// Elements that are values need no deletion.
template <class Element>
void deleteElements(const vx::list<Element>&) {}

template <class Object>
void deleteElements(const vx::list<Object*>& objects) {
  for (Object* object : objects) deleteElement(object);
}

// A sum that an int cannot hold starts again at the smallest int.
int sum(int a, int b) {
  return static_cast<int>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

}  // namespace

KilnDebugDrawFrame::~KilnDebugDrawFrame() {
  clear(false);
}

int KilnDebugDrawFrame::getListSize(DataType type) const {
  std::size_t size = 0;
  forEachList(
      [&](DataType ofList, const auto& list) {
        if (ofList == type) size = list.size();
      },
      *this);
  return static_cast<int>(size);
}

void KilnDebugDrawFrame::add(const KilnDebugDrawFrame& other) {
  vx::list<Mark> moved;
  for (const Mark& mark : other.marks)
    moved.push_back({mark.type, sum(getListSize(static_cast<DataType>(mark.type)), mark.index)});
  marks.splice(marks.end(), moved);
  forEachList(
      [](DataType, auto& own, const auto& others) {
        auto copied = others;
        own.splice(own.end(), copied);
      },
      *this, other);
}

void KilnDebugDrawFrame::clear(bool deleteObjects) {
  forEachList(
      [deleteObjects](DataType, auto& list) {
        if (deleteObjects) deleteElements(list);
        list.clear();
      },
      *this);
}

}  // namespace vxKilnBase
