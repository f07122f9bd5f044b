// Geometry to be looked at while a program is under development.
#pragma once

#include <kilnbase/export.h>
#include <vx/Containers.h>
#include <vx/KernelObject.h>
#include <vx/Linear.h>
#include <vx/Mesh.h>
#include <vx/String.h>

namespace vxKilnBase {

/// What one frame of a debug drawing shows: nine lists of geometry, filled as the caller likes.
/// `KilnDebugDrawProtocol` sends the frame to a viewer.
///
///     vxKilnBase::KilnDebugDrawFrame frame;
///     frame.name = "offset, pass 2";
///     frame.points.push_back({1.0, 2.0, 3.0});
///     frame.labels.push_back({{1.0, 2.0, 3.0}, "start"});
///
/// Objects and meshes are not owned: copies of a frame share them, and only `clear(true)` deletes
/// them. A null pointer in a list counts as an element, but is not sent.
class KILNBASE_API KilnDebugDrawFrame {
 public:
  /// The numbers of the lists.
  enum DataType : int {
    kPoints = 0,
    kLines = 1,
    kLabels = 2,
    kCurves = 3,
    kSurfaces = 4,
    kTrimmedSurfaces = 5,
    kShells = 6,
    kCompactMeshes = 7,
    kTopoMeshes = 8,
  };

  /// A text at a point.
  struct Label {
    /// The text, in UTF-8, and where it stands.
    vxLinear::Point at;
    vxString::CString text;

    friend bool operator==(const Label&, const Label&) = default;
  };

  /// A place in one of the lists, for example where the elements of a frame that `add` added begin.
  struct Mark {
    int type;   ///< The `DataType` of the list.
    int index;  ///< The number of the element, from 0.

    friend bool operator==(const Mark&, const Mark&) = default;
  };

  KilnDebugDrawFrame() = default;
  KilnDebugDrawFrame(const KilnDebugDrawFrame& other) = default;
  KilnDebugDrawFrame(KilnDebugDrawFrame&& other) noexcept = default;
  KilnDebugDrawFrame& operator=(const KilnDebugDrawFrame& other) = default;
  KilnDebugDrawFrame& operator=(KilnDebugDrawFrame&& other) noexcept = default;
  /// Deletes no object and no mesh.
  ~KilnDebugDrawFrame();

  /// The length of a list; 0 for a number that no list has.
  int getListSize(DataType type) const;

  /// Appends the other frame's lists to the lists here, and the other frame's marks as marks of the
  /// same elements here. The name stays. A mark whose type no list has keeps its index. `other` may
  /// be this frame.
  void add(const KilnDebugDrawFrame& other);

  /// Empties the nine lists. With `deleteObjects` the kernel objects and the meshes are deleted
  /// first; none may be in the lists twice. Kept as it is: `marks` and `name` stay.
  void clear(bool deleteObjects);

  /// What the viewer shows as the title of the frame.
  vxString::CString name;
  /// Geometry without objects: its elements are values.
  vx::list<vxLinear::Point> points;
  vx::list<vxLinear::ParamLine> lines;
  vx::list<Label> labels;
  vx::list<vxgk::Object*> curves;           ///< Objects of the kind `vxgk::kCurve`.
  vx::list<vxgk::Object*> surfaces;         ///< Objects of the kind `vxgk::kSurface`.
  vx::list<vxgk::Object*> trimmedSurfaces;  ///< Objects of the kind `vxgk::kTrimmedSurface`.
  vx::list<vxgk::Object*> shells;           ///< Objects of the kind `vxgk::kShell`.
  /// Meshes, not owned.
  vx::list<vxGeom::CompactMesh*> compactMeshes;
  vx::list<vxGeom::TopoMesh*> topoMeshes;
  /// Places of interest in the lists, in any order.
  vx::list<Mark> marks;
};

}  // namespace vxKilnBase
