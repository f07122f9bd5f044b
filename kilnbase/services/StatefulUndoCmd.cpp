#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include <kilnbase/services/StatefulUndoCmd.h>
#include <kilnbase/services/mr_undo.h>

namespace vxKilnBase {

namespace {

using Snapshot = vx::Reference<StatefulUndoState>;

constexpr int kCommandBytes = 56;  // what a command counts beside its snapshot

class StateCommand : public vxUndo::Command {
 public:
  StateCommand(const vxString::CString& name, Snapshot snapshot, bool isStartOfChange)
      : Command(name), state(std::move(snapshot)), isStart(isStartOfChange) {}

  bool doIt() override {
    const bool skips = std::exchange(skipNext, false);
    if (!isStart && !skips) restore.emit(state);
    return true;
  }

  bool undoIt() override {
    if (isStart) restore.emit(state);
    return true;
  }

  int getNumBytesUsed() const override {
    constexpr int kMost = std::numeric_limits<int>::max() - kCommandBytes;
    return (state ? std::min(state->getNumBytesUsed(), kMost) : 0) + kCommandBytes;
  }

  vxRTB::SignalBase<Snapshot> restore;

 private:
  Snapshot state;
  bool isStart;
  bool skipNext = false;  // kept as it is: nothing sets it
};

}  // namespace

StatefulUndoState::~StatefulUndoState() = default;

StatefulUndoCmd::StatefulUndoCmd(const char* aName) : name(aName) {}

StatefulUndoCmd::~StatefulUndoCmd() = default;

void StatefulUndoCmd::initialize() {
  initialized = true;
  if (vxUndo::Group* const group = undoGetGroup()) {
    group->start(1);
    record(true);
  }
}

void StatefulUndoCmd::startChange() {
  changing = true;
  record(true);
}

void StatefulUndoCmd::endChange() {
  changing = false;
  record(false);
}

// Takes a snapshot only when there is a group for it.
void StatefulUndoCmd::record(bool isStart) {
  if (undoGetGroup() == nullptr) return;
  Snapshot state;
  getState(state);
  createCommand(state, isStart);
}

void StatefulUndoCmd::createCommand(const Snapshot& state, bool isStart) {
  vxUndo::Group* const group = undoGetGroup();
  if (group == nullptr) return;
  auto created = std::make_unique<StateCommand>(name, state, isStart);
  created->restore.connect(client_, [this](const Snapshot& restored) { setState_(restored); });
  StateCommand& command = *created;
  if (group->add(std::move(created))) command.doIt();
}

void StatefulUndoCmd::setState_(const Snapshot& state) {
  setState(state);
  stateChanged.emit();
}

}  // namespace vxKilnBase
