// Undo and redo.
//
// A command changes the document and can take the change back. A group holds the commands of one
// piece of work under a name for the user. The manager holds the groups in the order of doing, the
// done ones and those that have been undone, and goes back and forth.
//
//     struct Add : vxUndo::Command {
//       Add(int& sum, int summand) : Command("Add"), sum_(sum), summand_(summand) {}
//       bool doIt() override { sum_ += summand_; return true; }
//       bool undoIt() override { sum_ -= summand_; return true; }
//       int& sum_;
//       int summand_;
//     };
//     int sum = 0;
//     const auto manager = vxUndo::newManager();
//     if (vxUndo::Group* group = manager->newGroup("Add seven")) {
//       group->perform(std::make_unique<Add>(sum, 3));
//       group->perform(std::make_unique<Add>(sum, 4));
//     }
//     manager->undo();  // sum is 0 again, and manager->redoName() is "Add seven"
//
// Everything here is for the application's main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <unordered_set>

#include <vx/Containers.h>
#include <vx/Error.h>
#include <vx/Signal.h>
#include <vx/String.h>
#include <vx/export.h>

extern "C" {

/// Reports what the undo manager and its callers have to tell the developer, through `rptError`.
VX_API void vxUndoReport(const char* format, ...) VX_PRINTF(1, 2);
}

namespace vxUndo {

namespace detail {
class History;
}

/// The root of what undo managers deal with.
class VX_API State {
 public:
  virtual ~State();
};

/// A change of the document.
///
/// `doIt` and `undoIt` return false, or throw, when they fail, and then leave the document as they
/// have found it. The manager deletes its commands, but never one whose function it is calling.
class VX_API Command : public State {
 public:
  explicit Command(vxString::CString name);
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  ~Command() override;

  /// Makes the change, also again after `undoIt`.
  virtual bool doIt() = 0;
  /// Takes the change back.
  virtual bool undoIt() = 0;
  /// The memory that the command holds, for the limit of the manager; by default that of a command
  /// without data. The manager asks when the command is added, whenever it was done or undone, and
  /// when the next group begins. It must not throw. A number below 0 counts as 0.
  virtual int getNumBytesUsed() const;
  /// Called once, when a done command leaves the manager: the change stays for ever, and what only
  /// `undoIt` needs may go. The command is deleted next. By default nothing is done. Not called for
  /// a command that has been undone.
  virtual void commit();

  const vxString::CString& name() const { return name_; }

 private:
  vxString::CString name_;
};

/// Codes of the errors of groups and managers.
enum UndoErrorCode {
  kNothingLeft = 1,    ///< There is nothing to undo, or to redo, or to drop.
  kRefused = 2,        ///< Not possible at this moment. Nothing has been called.
  kCommandFailed = 3,  ///< A command has failed. Everything is as it was before the step.
  /// A command has failed, and another failed when it put back what it had done. The manager is as
  /// it was before the step, all other commands have been put back, and the document counts as not
  /// saved until it is saved again.
  kNotPutBack = 4
};

/// Commands that are undone and redone together. Groups are made and owned by a manager.
class VX_API Group {
 public:
  Group(detail::History& history, vxString::CString name, bool joinsPrevious);
  Group(const Group&) = delete;
  Group& operator=(const Group&) = delete;
  ~Group();

  const vxString::CString& name() const { return name_; }
  /// The flag that the group was made with.
  bool joinsPrevious() const { return joinsPrevious_; }
  /// Whether the group begins a step: see `Manager::newGroup` and `start`.
  bool beginsStep() const { return beginsStep_; }
  bool isEmpty() const { return commands_.empty(); }
  std::size_t numCommands() const { return commands_.size(); }
  std::int64_t numBytesUsed() const { return bytes_; }

  /// Does the command and adds the command to the group. A command that fails is deleted; those
  /// that it has added to this group meanwhile are undone and deleted, the newest first. Refused,
  /// without calling anything, when `add` would refuse the command.
  vxUtil::Error perform(std::unique_ptr<Command> command);

  /// Adds a command whose change has been made, or will be made by the caller next. The first
  /// command of a group destroys what has been undone. Refused with false, and the command is
  /// deleted, for null, without memory, while creation is off, while the manager calls commands or
  /// signals, and in a group that has been undone with its commands.
  bool add(std::unique_ptr<Command> command);

  /// Notes that commands of the group use `data`; see `Manager::forget`. Refused with false for
  /// null and without memory.
  bool declare(const void* data);
  bool hasDeclared(const void* data) const { return declared_.count(data) != 0; }

  /// Told by an object that takes the snapshot from which its changes in this group start. With
  /// `on` not 0 the group begins a step, also when it was made to join the one before: what lies
  /// before the snapshot is not the object's to undo. With 0 the flag counts again.
  void start(int on);

  /// While a group is held, because somebody will add to it, the limits do not drop the group.
  /// While a group with commands is held, undo and redo are refused. Calls nest and must pair; a
  /// `release` too many is asserted in debug builds and does nothing in release builds.
  void hold();
  void release();

 private:
  friend class detail::History;

  // What every step reads comes first, in one or two cache lines.
  detail::History& history_;
  vx::vector<std::unique_ptr<Command>> commands_;
  std::int64_t bytes_ = 0;
  std::int64_t order_ = 0;  // grows along the list of groups
  int holds_ = 0;
  bool joinsPrevious_;
  bool beginsStep_;
  bool isUndone_ = false;
  bool isMeasured_ = false;  // bytes_ is exact
  vxString::CString name_;
  std::unordered_set<const void*> declared_;
};

/// How much a manager holds. The oldest steps are dropped first; when only one done step is left,
/// the steps that would be redone last. One step always stays: the user can undo at least the last
/// piece of work.
struct Limits {
  int groups = std::numeric_limits<int>::max();  ///< Groups without commands do not count.
  std::int64_t bytes = std::numeric_limits<std::int64_t>::max();
};

/// The history of a document.
///
/// A step is what one undo takes back: a group and those after it that were made to join it. Groups
/// without commands are passed over. While the manager calls commands or signals, all functions
/// that would change the history are refused.
class VX_API Manager {
 public:
  Manager();
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;
  /// Drops all groups, see `clear`. Must not be called while the manager is at work (asserted in
  /// debug builds).
  ~Manager();

  /// Makes a group, the newest. Null while creation is off or the manager is at work.
  ///
  /// A group that joins the previous one is no step of its own: both are undone and redone
  /// together, under the name of the first. Good for what belongs to the work before: the selection
  /// after a command, one more drag of the same handle. A group that gets its first command when
  /// the document is in the saved state begins a step all the same, so that the user can come back
  /// to the saved state.
  Group* newGroup(vxString::CString name, bool joinsPrevious = false);
  /// The group that was made last, of those that are not undone; or null.
  Group* newestGroup() const;
  /// Takes back the commands of the newest group and deletes the group, also when it is held.
  /// Groups that have been undone go too, unless the newest group has no commands. Fails as `undo`
  /// does.
  vxUtil::Error dropNewestGroup();

  /// Goes so many steps back, or forth, or as many as there are. The steps before one that fails
  /// stay taken. Refused while a group with commands is held, inside `Group::perform`, and while
  /// the manager is at work.
  vxUtil::Error undo(int steps = 1);
  vxUtil::Error redo(int steps = 1);

  bool canUndo() const;
  bool canRedo() const;
  /// The name of the step that would be undone, or redone, next; empty when there is none.
  vxString::CString undoName() const;
  vxString::CString redoName() const;
  /// The names of all steps, the next one first.
  vx::vector<vxString::CString> undoNames() const;
  vx::vector<vxString::CString> redoNames() const;

  std::size_t numGroups() const;
  std::int64_t numBytesUsed() const;
  /// By default there is no limit.
  void setLimits(const Limits& limits);

  /// The document as it is now has been saved. A new manager takes the document for saved. Ignored
  /// while commands are undone or redone.
  void markSaved();
  /// Whether the document is as it was when it was saved. Never again until `markSaved`, once the
  /// manager has lost the way back there: because new work has cut off that state, or the limits
  /// have dropped what led to it.
  bool isSaved() const;

  /// Switch the creation of groups and commands off and on again. Calls nest and must pair; an
  /// `enableCreation` too many does nothing (asserted in debug builds).
  void disableCreation();
  void enableCreation();
  bool isCreationEnabled() const;

  /// Drops all groups, held or not. The document stays as it is.
  vxUtil::Error clear();
  /// `data` goes away for good. Drops all steps with a group that has declared `data`, and those
  /// that can only be reached through them: the older done ones and the later undone ones.
  vxUtil::Error forget(const void* data);

  // Signals. The manager is at work while it emits them. An exception of a callback is reported and
  // goes no further.

  /// True before commands are undone or redone, false afterwards.
  vxRTB::SignalBase<bool> rolling;
  /// True when the creation of commands is switched off, false when it is on again: by the
  /// functions above, and while commands are undone or redone.
  vxRTB::SignalBase<bool> creationOff;
  /// A group goes away. The group is still whole, but in no list any more.
  vxRTB::SignalBase<Group*> groupGoingAway;
  /// What the menus show has changed: the names, or whether the document is saved.
  vxRTB::SignalBase<> changed;

 private:
  friend VX_API bool installManager(std::unique_ptr<Manager> manager);

  std::unique_ptr<detail::History> history_;
};

VX_API std::unique_ptr<Manager> newManager();

/// Makes this the manager of the application, or null none. The one before is deleted, which tells
/// that its groups go away. Refused with false while the one before is at work: then the new one is
/// deleted. The end of the process does not delete the installed manager, whose commands may need
/// what is gone by then.
VX_API bool installManager(std::unique_ptr<Manager> manager);

/// The installed manager, or null.
VX_API Manager* manager();

}  // namespace vxUndo
