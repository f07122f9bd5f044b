// The groups of an undo manager.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>

#include <vx/Containers.h>
#include <vx/Error.h>
#include <vx/String.h>
#include <vx/Undo.h>

namespace vxUndo::detail {

enum class Direction { kUndo, kRedo };

struct Failure;

// The history: groups in the order of doing, first the done ones, then those that have been undone.
// Each of the two parts consists of whole steps. Groups that wait for their first command are open:
// in a list of their own, in the order of making.
//
// While a command is performed, what is recorded waits in a list of commands, and the history stays
// as it is. When the outermost command has succeeded, the waiting commands go into their groups one
// after the other; when a command fails, those that came to wait meanwhile are taken back.
class History {
 public:
  explicit History(Manager& manager) : manager_(manager) {}
  History(const History&) = delete;
  History& operator=(const History&) = delete;

  Group* newGroup(vxString::CString name, bool joinsPrevious);
  Group* newestGroup();
  vxUtil::Error dropNewestGroup();
  vxUtil::Error perform(Group& group, std::unique_ptr<Command> command);
  bool add(Group& group, std::unique_ptr<Command> command);
  void start(Group& group, bool on);
  void hold(Group& group);
  void release(Group& group);

  vxUtil::Error go(Direction direction, int steps);
  bool canGo(Direction direction) const;
  int numSteps(Direction direction) const;
  const Group* nextStep(Direction direction) const;
  vx::vector<vxString::CString> names(Direction direction) const;

  std::size_t numGroups() const { return groups_.size() + open_.size(); }
  std::int64_t numBytesUsed() const { return bytes_; }
  void setLimits(const Limits& limits);
  void markSaved();
  bool isSaved() const { return saved_ == newestDone(); }

  void disableCreation();
  void enableCreation();
  bool isCreationEnabled() const { return creationOff_ == 0; }

  vxUtil::Error clear();
  vxUtil::Error forget(const void* data);
  void close();

  bool isAtWork() const { return atWork_ > 0 || performing_ > 0; }

 private:
  using Groups = std::list<Group>;
  using Position = Groups::iterator;
  class Work;
  class Performing;
  class Rolling;

  bool takes(const Group& group) const;
  void wait(Group& group, std::unique_ptr<Command> command);
  void recordWaiting();
  void record(Group& group, std::unique_ptr<Command> command);
  void makeNewest(Group& group);
  void place(Group& group);
  void takeOverNewer(Group& group);
  void reopen(Group& group);
  void takeBack(std::size_t remaining, Failure& failure);
  void dropOpenSince(std::int64_t number);
  void measureNewest();
  void countBytes(Group& group, std::int64_t bytes);
  void count(const Group& group, int change);

  vxUtil::Error dropNewestDone(Group& group);
  bool takeStep(Direction direction, Failure& failure);
  Group& nextGroup(Direction direction);
  static Command* firstOf(const Group& group, Direction direction);
  static Command* nextOf(const Command& command, Direction direction);
  void pass(Direction direction);
  bool roll(Group& group, Direction direction, Failure& failure);
  void rollBack(Group& group, Direction direction, Command* from, Failure& failure);
  vxUtil::Error failed(const char* what, const Group& named, const Failure& failure);

  const Group* newestDone() const;
  void finish(bool hasChanged);
  void keepLimits();
  bool dropOldestStep();
  Position endOfStep(Position position);
  void drop(Position first, Position end);
  void cutUndone() { drop(undone_, groups_.end()); }
  void dropOpen(Position first, Position end);
  void bury(Groups& buried);
  void forgetSaved(const Group& group);

  Manager& manager_;
  Groups groups_;
  Position undone_ = groups_.end();  // the first
  Groups open_;
  CommandList waiting_;
  std::int64_t lastNumber_ = 0;
  std::int64_t numberBefore_ = 0;  // the last one before the innermost command that is performed
  std::int64_t bytes_ = 0;
  Limits limits_;
  // The newest done group in the saved state, null for the state without any. Without a value the
  // saved state cannot be reached.
  std::optional<const Group*> saved_ = nullptr;
  Group* unmeasured_ = nullptr;   // the group whose newest command is to be asked once more
  std::int64_t newestBytes_ = 0;  // counted for that command
  std::array<int, 2> steps_{};    // done and undone
  int held_ = 0;                  // groups that are held and not open
  int atWork_ = 0;
  int performing_ = 0;
  int creationOff_ = 0;
  bool isRolling_ = false;
  bool isChangeUntold_ = false;
};

// While one lives, nothing else may change the history.
class History::Work {
 public:
  explicit Work(History& history) : history_(history) { ++history.atWork_; }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  ~Work() { --history_.atWork_; }

 private:
  History& history_;
};

inline void History::countBytes(Group& group, std::int64_t bytes) {
  group.bytes_ += bytes;
  bytes_ += bytes;
}

// A group comes into the part of the history in which its place is, or leaves that part.
inline void History::count(const Group& group, int change) {
  if (group.beginsStep()) steps_[group.place_ == Group::Place::kUndone] += change;
  if (group.holds_ > 0) held_ += change;
}

}  // namespace vxUndo::detail
