// Undo for an object that can save and restore its state.
#pragma once

#include <kilnbase/export.h>
#include <vx/Reference.h>
#include <vx/Signal.h>
#include <vx/String.h>

namespace vxKilnBase {

/// A snapshot of the state of an object. An application derives its own.
class KILNBASE_API StatefulUndoState : public vx::ReferenceCount {
 public:
  ~StatefulUndoState() override;
  /// The memory that the snapshot takes.
  virtual int getNumBytesUsed() const = 0;
};

/// Makes the changes of an object undoable by snapshots before and after each change. Not a
/// command: it makes commands and puts them into the current group (mr_undo.h). Without a current
/// group nothing is recorded.
///
///     struct Snapshot : vxKilnBase::StatefulUndoState {
///       explicit Snapshot(int aRadius) : radius(aRadius) {}
///       int getNumBytesUsed() const override { return sizeof(Snapshot); }
///       int radius;
///     };
///     using State = vx::Reference<vxKilnBase::StatefulUndoState>;
///     struct Brush : vxKilnBase::StatefulUndoCmd {
///       Brush() : StatefulUndoCmd("Brush") {}
///       void getState(State& state) override { state = new Snapshot(radius); }
///       void setState(const State& state) override {
///         radius = static_cast<const Snapshot&>(*state).radius;
///       }
///       int radius = 1;
///     };
///     Brush brush;
///     brush.startChange();
///     brush.radius = 5;
///     brush.endChange();
///
/// Undoing a change restores the snapshot of its start, redoing the change that of its end. When
/// the object dies, its commands stay, and restore nothing any more.
class KILNBASE_API StatefulUndoCmd {
 public:
  /// The commands are named `name`.
  explicit StatefulUndoCmd(const char* name);
  StatefulUndoCmd(const StatefulUndoCmd&) = delete;
  StatefulUndoCmd& operator=(const StatefulUndoCmd&) = delete;

  /// Records the state from which the object's changes in the current group start. The group begins
  /// a step of its own.
  void initialize();
  /// Record the state before a change and the state after the change. Calls must pair.
  void startChange();
  void endChange();

  /// Makes `state` a snapshot of the current state.
  virtual void getState(vx::Reference<StatefulUndoState>& state) = 0;
  /// Restores the object from a snapshot. Must not destroy the object.
  virtual void setState(const vx::Reference<StatefulUndoState>& state) = 0;

 protected:
  ~StatefulUndoCmd();

 private:
  void record(bool isStart);
  void createCommand(const vx::Reference<StatefulUndoState>& state, bool isStart);
  void setState_(const vx::Reference<StatefulUndoState>& state);

  vxRTB::SignalClient client_;

 public:
  /// Emitted after a state has been restored. Kept as it is: `endChange` restores the state that it
  /// has just taken, so that the signal tells listeners of a new change, too.
  vxRTB::SignalBase<> stateChanged;

 protected:
  /// The name of the commands.
  vxString::CString name;
  bool initialized = false;  ///< Since `initialize`.
  bool changing = false;     ///< Between `startChange` and `endChange`.
};

}  // namespace vxKilnBase
