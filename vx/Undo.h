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
#include <list>
#include <memory>
#include <set>

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

class Group;

namespace detail {
class CommandList;
class History;
}  // namespace detail

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
  /// The name is for the developer; menus show the name of the group.
  explicit Command(vxString::CString name);
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  ~Command() override;

  /// Makes the change, also again after `undoIt`.
  virtual bool doIt() = 0;
  /// Takes the change back.
  virtual bool undoIt() = 0;
  /// The memory that the command holds, for the limit of the manager; by default that of a command
  /// without data. The manager asks when the command is added, once more before the next command or
  /// group comes, and whenever the command was done or undone. It must not throw. A number below 0
  /// counts as 0.
  virtual int getNumBytesUsed() const;
  /// Called once, when a done command leaves the manager: the change stays for ever, and what only
  /// `undoIt` needs may go. The command is deleted next. By default nothing is done. Not called for
  /// a command that has been undone.
  virtual void commit();

  /// As given to the constructor.
  const vxString::CString& name() const { return name_; }

 private:
  friend class detail::CommandList;
  friend class detail::History;

  Command* previous_ = nullptr;
  Command* next_ = nullptr;
  Group* group_ = nullptr;  // that the command goes into, while the command waits for that
  vxString::CString name_;
};

namespace detail {

// Owns commands. The links are in the commands, so that nothing here takes memory.
class VX_API CommandList {
 public:
  CommandList() = default;
  CommandList(const CommandList&) = delete;
  CommandList& operator=(const CommandList&) = delete;
  ~CommandList();

  std::size_t size() const { return size_; }
  Command* first() const { return first_; }
  Command* last() const { return last_; }
  void append(std::unique_ptr<Command> command);
  // Takes all commands of the other list, behind the own ones.
  void append(CommandList& others);
  std::unique_ptr<Command> takeFirst();
  std::unique_ptr<Command> takeLast();

 private:
  std::unique_ptr<Command> take(Command* command);

  Command* first_ = nullptr;
  Command* last_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace detail

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
///
/// Undo goes back in the order of doing. So a group that gets a command is the newest from then on:
/// with its first command the group moves behind all others; with a further one it takes over the
/// commands of the newer groups, which are parts of its work then. Of these, the groups that are
/// not held go away. Whoever adds to a group again after other groups had work holds the group.
class VX_API Group {
 public:
  /// Groups come from `Manager::newGroup`.
  Group(detail::History& history, vxString::CString name, bool joinsPrevious, std::int64_t number);
  Group(const Group&) = delete;
  Group& operator=(const Group&) = delete;
  ~Group();

  /// The name that menus show for the step which the group begins.
  const vxString::CString& name() const { return name_; }
  /// The flag that the group was made with.
  bool joinsPrevious() const { return joinsPrevious_; }
  /// Whether the group begins a step: see `Manager::newGroup` and `start`.
  bool beginsStep() const { return step_ == this; }
  /// The commands in the group, also those that wait to go in, and the memory that they hold.
  bool isEmpty() const { return numCommands() == 0; }
  std::size_t numCommands() const { return commands_.size() + waiting_; }
  std::int64_t numBytesUsed() const { return bytes_; }

  /// Does the command and adds the command to the group. A command that fails is deleted. What was
  /// recorded meanwhile, in this group and in others, is undone and deleted, the newest first, and
  /// the groups that were made meanwhile go away unless they are held. Refused, without calling
  /// anything, when `add` would refuse the command.
  ///
  /// Commands may perform and add others. The history changes when the outermost command has
  /// succeeded: only then undone steps are cut off, limits kept and the saved state lost. The
  /// limits may drop any group then that is neither held nor part of the newest step.
  vxUtil::Error perform(std::unique_ptr<Command> command);

  /// Adds a command whose change has been made, or will be made by the caller next. All steps that
  /// have been undone are destroyed. Refused with false, and the command is deleted, for null,
  /// while creation is off, while the manager undoes, redoes or emits signals (which is reported),
  /// and in a group that has been undone.
  bool add(std::unique_ptr<Command> command);

  /// Notes that commands of the group use `data`; see `Manager::forget`. Refused with false for
  /// null and without memory.
  bool declare(const void* data);
  bool hasDeclared(const void* data) const;

  /// Told by an object that takes the snapshot from which its changes in this group start. With
  /// `on` not 0 the group begins a step, also when it was made to join the one before: what lies
  /// before the snapshot is not the object's to undo. With 0 the flag counts again, but the oldest
  /// group always begins a step. Ignored in a group that has been undone.
  void start(int on);

  /// While a group is held, because somebody will add to it, the limits do not drop the group.
  /// While a group with commands is held, or one that a group with commands has joined, undo and
  /// redo are refused and the limits wait. Calls nest and must pair; a `release` too many is
  /// asserted in debug builds and does nothing in release builds.
  void hold();
  void release();

 private:
  friend class detail::History;
  enum class Place : char { kOpen, kDone, kUndone };

  // What every step reads comes first, in one or two cache lines.
  detail::CommandList commands_;
  std::int64_t bytes_ = 0;
  const Group* step_;  // the group that begins the step; null for one that will join another
  Place place_ = Place::kOpen;
  bool joinsPrevious_;
  int holds_ = 0;
  std::size_t waiting_ = 0;  // the commands that go into the group when the outermost one ends
  detail::History& history_;
  std::list<Group>::iterator position_;
  std::int64_t number_;  // grows in the order of making
  std::unique_ptr<std::set<const void*>> declared_;
  vxString::CString name_;
};

/// How much a manager holds. The oldest steps are dropped first; when only one done step is left,
/// the steps that would be redone last. One step always stays: the user can undo at least the last
/// piece of work.
struct Limits {
  /// Groups without commands count only when a group with commands has joined them.
  int groups = std::numeric_limits<int>::max();
  /// The sum of what the commands answer to `getNumBytesUsed`.
  std::int64_t bytes = std::numeric_limits<std::int64_t>::max();
};

/// The history of a document.
///
/// A step is what one undo takes back: a group and those after it that were made to join it. A
/// group is part of the history from its first command on. While the manager calls commands or
/// signals, all functions that would change the history are refused, but for the limits, which are
/// kept afterwards.
class VX_API Manager {
 public:
  /// A manager without groups, for a document that counts as saved.
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
  /// The group that was made last, of those without commands and the one with the newest command;
  /// or null.
  Group* newestGroup() const;
  /// Takes back the commands of the newest group and deletes the group, also when it is held.
  /// Groups that have been undone go too, unless the newest group has no commands. Fails as `undo`
  /// does. Inside `Group::perform` a command may only drop a group without commands that it has
  /// made itself.
  vxUtil::Error dropNewestGroup();

  /// Goes so many steps back, or forth, or as many as there are. The steps before one that fails
  /// stay taken. Nothing happens when `steps` is below 1. Refused while a group with commands is
  /// held, inside `Group::perform`, and while the manager is at work.
  vxUtil::Error undo(int steps = 1);
  vxUtil::Error redo(int steps = 1);

  /// False also while a group with commands is held, and while commands run. A callback of
  /// `changed` learns what can be done after the signal.
  bool canUndo() const;
  bool canRedo() const;
  /// How many steps there are to undo, or to redo, also when that is not possible now.
  int numUndoSteps() const;
  int numRedoSteps() const;
  /// The name of the step that would be undone, or redone, next; empty when there is none.
  vxString::CString undoName() const;
  vxString::CString redoName() const;
  /// The names of all steps, the next one first.
  vx::vector<vxString::CString> undoNames() const;
  vx::vector<vxString::CString> redoNames() const;

  /// All groups, done and undone, and the memory of their commands.
  std::size_t numGroups() const;
  std::int64_t numBytesUsed() const;
  /// By default there is no limit.
  void setLimits(const Limits& limits);

  /// The document as it is now has been saved. A new manager takes the document for saved. Ignored
  /// while commands run.
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
  /// What the menus show has changed: the names, whether undo is possible, or whether the document
  /// is saved. Emitted once more when a callback changes that.
  vxRTB::SignalBase<> changed;

 private:
  friend VX_API bool installManager(std::unique_ptr<Manager> manager);

  std::unique_ptr<detail::History> history_;
};

/// Makes a manager inside libvx.
VX_API std::unique_ptr<Manager> newManager();

/// Makes this the manager of the application, or null none. The one before is deleted, which tells
/// that its groups go away. Refused with false while the one before is at work: then the new one is
/// deleted. The end of the process does not delete the installed manager, whose commands may need
/// what is gone by then.
VX_API bool installManager(std::unique_ptr<Manager> manager);

/// The installed manager, or null.
VX_API Manager* manager();

}  // namespace vxUndo
