#include <gmock/gmock.h>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <kilnbase/services/StatefulUndoCmd.h>
#include <kilnbase/services/UndoCommand.h>
#include <kilnbase/services/mr_undo.h>
#include <kilnbase/services/redraw.h>
#include <vx/Undo.h>

#include "tests/support/Reports.h"

using testing::ElementsAre;
using vxKilnBase::KilnRedraw;
using vxKilnBase::StatefulUndoState;
using vxKilnBase::undoGetGroup;
using vxUndo::Group;

namespace {

struct Nothing : vxKilnBase::UndoCommand {
  explicit Nothing(Group* group, const void* data = nullptr) : UndoCommand(group, "Nothing") {
    declare(data);
  }
  bool doIt() override { return true; }
  bool undoIt() override { return true; }
};

struct MrUndo : testing::Test {
  MrUndo() { vxKilnBase::undoInit(); }
  ~MrUndo() override {
    EXPECT_EQ(0, MR_undo_get_num_groups());
    vxUndo::installManager(nullptr);
  }

  static vxUndo::Manager& manager() { return *vxUndo::manager(); }
  static bool addCommand(Group& group) { return group.add(std::make_unique<Nothing>(&group)); }

  kilntest::RecordedReports reports;
};

using State = vx::Reference<StatefulUndoState>;

struct Snapshot : StatefulUndoState {
  explicit Snapshot(int aRadius) : radius(aRadius) {}
  int getNumBytesUsed() const override {
    return radius > 0 ? 100 : std::numeric_limits<int>::max();
  }
  int radius;
};

struct Brush : vxKilnBase::StatefulUndoCmd {
  Brush() : StatefulUndoCmd("Brush") {}
  void getState(State& state) override { state = new Snapshot(radius); }
  void setState(const State& state) override {
    radius = static_cast<const Snapshot&>(*state).radius;
    wasInUndo = MR_undo_in_undo();
    canRecord = undoGetGroup() != nullptr;
  }
  void change(int newRadius) {
    startChange();
    radius = newRadius;
    endChange();
  }
  using StatefulUndoCmd::changing, StatefulUndoCmd::initialized;

  int radius = 1;
  bool wasInUndo = false;
  bool canRecord = false;
};

}  // namespace

TEST_F(MrUndo, BothSettersSetTheUndoFlag) {
  for (const auto set : {MR_undo_set_in_undo, MR_undo_set_in_redo}) {
    for (const bool on : {true, false}) {
      set(on);
      EXPECT_EQ(on, MR_undo_in_undo());
      EXPECT_FALSE(MR_undo_in_redo());
      EXPECT_EQ(on, MR_undo_is_active());
    }
  }
}

TEST_F(MrUndo, PoppingDropsTheNewestGroupWhenItIsEmptyAndUnwanted) {
  const struct {
    bool discardEmpty;
    bool hasCommand;
    bool isNewest;
    std::size_t left;
  } cases[] = {{true, false, true, 0},
               {false, false, true, 1},
               {true, true, true, 1},
               {true, false, false, 2}};
  for (const auto& each : cases) {
    MR_undo_push_new_group("Work", false);
    if (each.hasCommand) addCommand(*undoGetGroup());
    if (!each.isNewest) MR_undo_new_group("Newer", true);
    MR_undo_pop_group(each.discardEmpty);
    EXPECT_EQ(each.left, manager().numGroups());
    EXPECT_EQ(nullptr, undoGetGroup());
    EXPECT_FALSE(manager().clear());
  }
}

TEST_F(MrUndo, NullGroupsSwitchRecordingOffAndNest) {
  MR_undo_push_new_group("Work", true);
  Group* const group = MR_undo_get_group();
  EXPECT_STREQ("Work", group->name().c_str());
  EXPECT_TRUE(group->joinsPrevious());
  MR_undo_creation_disable(true);
  EXPECT_EQ(nullptr, MR_undo_get_group());
  EXPECT_EQ(2, MR_undo_get_num_groups());
  MR_undo_push_group(group);
  EXPECT_EQ(group, MR_undo_get_group());
  MR_undo_pop_group(false);
  MR_undo_creation_disable(false);
  EXPECT_EQ(group, undoGetGroup());
  manager().disableCreation();
  EXPECT_EQ(nullptr, undoGetGroup());
  manager().enableCreation();
  EXPECT_EQ(group, undoGetGroup());
  MR_undo_pop_group(true);
}

TEST_F(MrUndo, GroupsOnTheStackAreHeldAndLeaveANullWhenTheyGoAway) {
  manager().setLimits({.groups = 1});
  MR_undo_push_new_group("Outer", false);
  addCommand(*undoGetGroup());
  MR_undo_push_group(undoGetGroup());
  MR_undo_push_new_group("Inner", false);
  addCommand(*undoGetGroup());
  EXPECT_EQ(2U, manager().numGroups());
  EXPECT_EQ(vxUndo::kRefused, manager().undo().code());
  MR_undo_pop_group(true);
  EXPECT_EQ(vxUndo::kRefused, manager().undo().code());
  MR_undo_pop_group(true);
  EXPECT_EQ(2U, manager().numGroups());
  MR_undo_pop_group(true);
  EXPECT_EQ(1U, manager().numGroups());
  EXPECT_STREQ("Inner", manager().undoName().c_str());

  const auto drop = [] { EXPECT_FALSE(manager().dropNewestGroup()); };
  for (const auto remove : {+drop, vxKilnBase::undoInit}) {
    MR_undo_push_new_group("Gone", false);
    MR_undo_push_group(undoGetGroup());
    remove();
    EXPECT_EQ(2, MR_undo_get_num_groups());
    for (int level = 0; level < 2; ++level) {
      EXPECT_EQ(nullptr, undoGetGroup());
      MR_undo_pop_group(true);
    }
  }
}

TEST_F(MrUndo, ANewManagerTakesThePlaceOfOneThatIsNotAtWork) {
  manager().disableCreation();
  vxKilnBase::undoInit();
  EXPECT_EQ(0, MR_undo_get_num_groups());
  const vxUndo::Manager* const installed = &manager();
  vxRTB::SignalClient client;
  manager().changed.connect(client, vxKilnBase::undoInit);
  EXPECT_TRUE(addCommand(*MR_undo_new_group("Work", false)));
  EXPECT_EQ(installed, &manager());
  EXPECT_THAT(reports.takeAll(),
              ElementsAre("error: undoInit: the undo manager is at work and stays\n"));
}

// The stack stays whole: what is pushed beyond its levels is not recorded and can be popped.
TEST_F(MrUndo, PushesBeyondTheTenthLevelRecordNothing) {
  addCommand(*MR_undo_new_group("Done", false));
  Group* const group = MR_undo_new_group("Work", false);
  for (int level = 1; level <= 10; ++level) MR_undo_push_group(group);
  EXPECT_FALSE(manager().undo());
  EXPECT_EQ(group, undoGetGroup());
  EXPECT_DEBUG_DEATH(
      {
        MR_undo_push_group(group);
        EXPECT_EQ(nullptr, MR_undo_get_group());
        MR_undo_push_group(group);
        EXPECT_EQ(12, MR_undo_get_num_groups());
        MR_undo_pop_group(true);
        MR_undo_pop_group(true);
      },
      "count < kLevels");
  EXPECT_EQ(group, undoGetGroup());
  for (int level = 1; level <= 10; ++level) MR_undo_pop_group(true);
  EXPECT_DEBUG_DEATH(MR_undo_pop_group(true), "count > 0");
  EXPECT_DEBUG_DEATH(EXPECT_EQ(nullptr, MR_undo_get_group()), "count > 0");
}

TEST_F(MrUndo, CallsAreReportedWithTheFileBehindTheLastBackslash) {
  MR_undo_call_supported("move");
  MR_undo_push_new_group("Work", false);
  MR_undo_call_supported("move");
  MR_undo_pop_group(true);
  MR_undo_call_unsupported("cut", true, "d:\\src\\dir\\cut.c", 12);
  MR_undo_call_unsupported("cut", true, "src/cut.c", -1);
  MR_undo_call_unsupported("cut", false, "cut.c", 3);
  EXPECT_THAT(reports.takeAll(), ElementsAre("error: UNSAFE call move\n",
                                             "error: UNSUPPORTED cut from cut.c line 12\n",
                                             "error: UNSUPPORTED cut from src/cut.c line -1\n"));
}

TEST_F(MrUndo, CommandsAskForRedrawsAndDeclareToTheirGroup) {
  const std::pair<int, unsigned> cases[] = {{0, 0},     {1, 0x9C0}, {2, 0x9F8}, {3, 0x9FF},
                                            {4, 0xFFF}, {5, 0},     {-1, 0}};
  int data = 0;
  Group& group = *MR_undo_new_group("Work", false);
  Nothing unused(nullptr, &data), command(&group, nullptr), user(&group, &data);
  EXPECT_TRUE(group.hasDeclared(&data));
  EXPECT_FALSE(group.hasDeclared(nullptr));
  for (const auto& [planes, pending] : cases) {
    command.redrawPlanes(static_cast<KilnRedraw>(planes));
    EXPECT_EQ(pending, redraw_get_pending_planes());
    redraw_reset_pending();
  }
  command.setRedrawPending();
  EXPECT_TRUE(redraw_get_pending_redraw_all());
  redraw_reset_pending();
}

TEST_F(MrUndo, SnapshotsBringEveryChangeBackAndForth) {
  Brush brush;
  int told = 0;
  vxRTB::SignalClient listener;
  brush.stateChanged.connect(listener, [&told] { ++told; });
  MR_undo_push_new_group("First", false);
  brush.change(2);
  brush.change(3);
  EXPECT_EQ(2, told);
  EXPECT_EQ(4U, undoGetGroup()->numCommands());
  EXPECT_EQ(4 * (100 + 56), undoGetGroup()->numBytesUsed());
  MR_undo_pop_group(true);
  MR_undo_push_new_group("Large", false);
  brush.radius = 0;
  brush.startChange();
  EXPECT_EQ(std::numeric_limits<int>::max(), undoGetGroup()->numBytesUsed());
  EXPECT_FALSE(manager().dropNewestGroup());
  MR_undo_pop_group(true);
  brush.radius = 3;
  MR_undo_push_new_group("Second", true);
  brush.initialize();
  brush.radius = 4;
  EXPECT_TRUE(undoGetGroup()->beginsStep());
  MR_undo_pop_group(true);

  const std::pair<bool, int> moves[] = {{true, 3}, {true, 1}, {false, 3}, {true, 1}};
  for (const auto& [back, radius] : moves) {
    EXPECT_FALSE(back ? manager().undo() : manager().redo());
    EXPECT_EQ(radius, brush.radius);
    EXPECT_TRUE(brush.wasInUndo);
    EXPECT_FALSE(brush.canRecord);
  }
  EXPECT_FALSE(MR_undo_in_undo());
  EXPECT_EQ(0, MR_undo_get_num_groups());
}

TEST_F(MrUndo, ChangesWithoutAGroupAreNotRecordedAndDeadObjectsNotRestored) {
  std::optional<Brush> brush(std::in_place);
  brush->initialize();
  EXPECT_TRUE(brush->initialized);
  brush->startChange();
  EXPECT_TRUE(brush->changing);
  brush->endChange();
  EXPECT_FALSE(brush->changing);
  EXPECT_EQ(0U, manager().numGroups());
  MR_undo_push_new_group("Work", false);
  brush->change(2);
  MR_undo_pop_group(true);
  brush.reset();
  EXPECT_FALSE(manager().undo());
  EXPECT_FALSE(manager().redo());
}
