#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

#include <kilnbase/detail/assert.h>
#include <kilnbase/services/mr_undo.h>

using vxUndo::Group;
using vxUndo::Manager;

namespace {

constexpr int kLevels = 10;

constinit bool inUndo = false;
constinit bool inRedo = false;
constinit Group* groups[kLevels] = {};
constinit int count = 0;  // may exceed kLevels: recording is off there

bool dropNewest(Manager& manager) {
  try {
    return !manager.dropNewestGroup();
  } catch (const std::bad_alloc&) {
    return false;
  }
}

// Gives back what `MR_undo_push_group` has taken, and drops the group when it is not wanted.
void leaveGroup(Group& group, bool discardEmpty) {
  Manager* const manager = vxUndo::manager();
  const bool isNewest = manager != nullptr && manager->newestGroup() == &group;
  if (isNewest && discardEmpty && group.isEmpty() && dropNewest(*manager)) return;
  group.release();
}

void push(Group* group) {
  const int level = count++;
  if (level >= kLevels) return;
  groups[level] = group;
  if (group != nullptr) group->hold();
}

void forgetGroup(Group* group) {
  std::replace(std::begin(groups), std::end(groups), group, static_cast<Group*>(nullptr));
}

const char* orEmpty(const char* text) {
  return text != nullptr ? text : "";
}

const char* withoutFolders(const char* file) {
  const char* const backslash = std::strrchr(file, '\\');
  return backslash != nullptr ? backslash + 1 : file;
}

}  // namespace

bool MR_undo_in_undo() {
  return inUndo;
}

bool MR_undo_in_redo() {
  return inRedo;
}

bool MR_undo_is_active() {
  return inUndo || inRedo;
}

void MR_undo_set_in_undo(bool on) {
  inUndo = on;
}

void MR_undo_set_in_redo(bool on) {
  inUndo = on;
}

Group* MR_undo_new_group(const char* name, bool joinsPrevious) {
  Manager* const manager = vxUndo::manager();
  if (manager == nullptr) return nullptr;
  try {
    return manager->newGroup(name, joinsPrevious);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void MR_undo_push_group(Group* group) {
  KILN_ASSERT(count < kLevels);
  push(group);
}

void MR_undo_push_new_group(const char* name, bool joinsPrevious) {
  MR_undo_push_group(MR_undo_new_group(name, joinsPrevious));
}

void MR_undo_pop_group(bool discardEmpty) {
  KILN_ASSERT(count > 0);
  if (count == 0 || --count >= kLevels) return;
  Group* const group = std::exchange(groups[count], nullptr);
  if (group != nullptr) leaveGroup(*group, discardEmpty);
}

Group* MR_undo_get_group() {
  KILN_ASSERT(count > 0);
  return vxKilnBase::undoGetGroup();
}

int MR_undo_get_num_groups() {
  return count;
}

void MR_undo_creation_disable(bool disable) {
  if (disable) {
    push(nullptr);
  } else {
    MR_undo_pop_group(false);
  }
}

void MR_undo_call_supported(const char* name) {
  if (vxKilnBase::undoGetGroup() == nullptr) vxUndoReport("UNSAFE call %s\n", orEmpty(name));
}

void MR_undo_call_unsupported(const char* name, bool report, const char* file, int line) {
  if (!report) return;
  vxUndoReport("UNSUPPORTED %s from %s line %d\n", orEmpty(name), withoutFolders(orEmpty(file)),
               line);
}

namespace vxKilnBase {

void undoInit() {
  static vxRTB::SignalClient client;
  auto manager = vxUndo::newManager();
  manager->rolling.connect(client, MR_undo_set_in_undo);
  manager->creationOff.connect(client, MR_undo_creation_disable);
  manager->groupGoingAway.connect(client, forgetGroup);
  if (!vxUndo::installManager(std::move(manager))) {
    vxUndoReport("undoInit: the undo manager is at work and stays\n");
  }
}

Group* undoGetGroup() {
  return count > 0 && count <= kLevels ? groups[count - 1] : nullptr;
}

}  // namespace vxKilnBase
