#include <algorithm>
#include <cstdio>
#include <exception>
#include <iterator>
#include <utility>

#include <vx/detail/UndoHistory.h>
#include <vx/detail/undoCalls.h>

using vxString::CString;
using vxUtil::Error;

namespace vxUndo::detail {

// Why a command failed. Takes no memory: everything is put back before anybody is told.
struct Failure {
  Failure() { reason[0] = '\0'; }

  const Command* command = nullptr;
  char reason[200];
  bool isPutBack = true;
};

namespace {

Direction opposite(Direction direction) {
  return direction == Direction::kUndo ? Direction::kRedo : Direction::kUndo;
}

bool run(Command& command, Direction direction, Failure& failure) {
  try {
    if (direction == Direction::kUndo ? command.undoIt() : command.doIt()) return true;
  } catch (const std::exception& exception) {
    std::snprintf(failure.reason, sizeof failure.reason, ": %s", exception.what());
  } catch (...) {
    std::snprintf(failure.reason, sizeof failure.reason, ": unknown exception");
  }
  failure.command = &command;
  return false;
}

void putBack(Command& command, Direction direction, Failure& failure) {
  Failure ignored;
  failure.isPutBack = run(command, direction, ignored) && failure.isPutBack;
}

Error refused(const char* reason) {
  return Error(kRefused, CString::format("undo is not possible now: %s\n", reason));
}

}  // namespace

// While one lives, what is recorded waits.
class History::Performing {
 public:
  explicit Performing(History& history)
      : history_(history),
        outer_(std::exchange(history.numberBefore_, history.lastNumber_)),
        waiting_(history.waiting_.size()) {
    ++history.performing_;
  }
  Performing(const Performing&) = delete;
  Performing& operator=(const Performing&) = delete;
  ~Performing() {
    --history_.performing_;
    history_.numberBefore_ = outer_;
  }

  std::size_t waitingBefore() const { return waiting_; }

 private:
  History& history_;
  std::int64_t outer_;
  std::size_t waiting_;
};

// Tells that commands are undone and redone.
class History::Rolling {
 public:
  explicit Rolling(History& history) : history_(history), work_(history) {
    history.isRolling_ = true;
    tell(history.manager_.rolling, true);
    history.disableCreation();
  }
  Rolling(const Rolling&) = delete;
  Rolling& operator=(const Rolling&) = delete;
  ~Rolling() {
    history_.enableCreation();
    tell(history_.manager_.rolling, false);
    history_.isRolling_ = false;
  }

 private:
  History& history_;
  Work work_;
};

Error History::perform(Group& group, std::unique_ptr<Command> command) {
  if (command == nullptr || !takes(group)) return refused("the group takes no command");
  Error error;
  {
    const Performing performing(*this);
    Failure failure;
    if (run(*command, Direction::kRedo, failure)) {
      wait(group, std::move(command));
      if (performing_ == 1) recordWaiting();
    } else {
      takeBack(performing.waitingBefore(), failure);
      dropOpenSince(numberBefore_);
      error = failed("do", group, failure);
    }
  }
  finish(false);
  return error;
}

// Undoes and deletes the newest commands of those that wait.
void History::takeBack(std::size_t remaining, Failure& failure) {
  if (waiting_.size() == remaining) return;
  const Rolling rolling(*this);
  while (waiting_.size() > remaining) {
    const std::unique_ptr<Command> command = waiting_.takeLast();
    --command->group_->waiting_;
    putBack(*command, Direction::kUndo, failure);
  }
}

Error History::dropNewestGroup() {
  Group* const group = newestGroup();
  const bool isOwn = group != nullptr && group->number_ > numberBefore_ && group->isEmpty();
  if (atWork_ > 0 || (performing_ > 0 && !isOwn)) return atWork();
  if (group == nullptr) return Error(kNothingLeft, "there is no group to drop\n");
  if (!group->isEmpty()) return dropNewestDone(*group);
  dropOpen(group->position_, open_.end());
  finish(false);
  return {};
}

Error History::dropNewestDone(Group& group) {
  Failure failure;
  bool succeeds = false;
  {
    const Rolling rolling(*this);
    succeeds = roll(group, Direction::kUndo, failure);
  }
  Error error = succeeds ? Error() : failed("undo", group, failure);
  if (succeeds) {
    count(group, -1);
    pass(Direction::kUndo);
    count(group, 1);
    cutUndone();
    while (newestDone() != nullptr && newestDone()->isEmpty()) reopen(groups_.back());
  }
  finish(true);
  return error;
}

Error History::go(Direction direction, int steps) {
  if (steps <= 0) return {};
  if (isAtWork()) return atWork();
  if (held_ > 0) return refused("commands are being recorded");
  if (!canGo(direction)) return Error(kNothingLeft, "there is nothing left to undo or redo\n");
  Failure failure;
  bool succeeds = true;
  {
    const Rolling rolling(*this);
    for (; steps > 0 && numSteps(direction) > 0 && succeeds; --steps) {
      succeeds = takeStep(direction, failure);
    }
  }
  const char* const what = direction == Direction::kUndo ? "undo" : "redo";
  Error error = succeeds ? Error() : failed(what, *nextStep(direction), failure);
  finish(true);
  return error;
}

bool History::canGo(Direction direction) const {
  return numSteps(direction) > 0 && held_ == 0 && performing_ == 0 && !isRolling_;
}

int History::numSteps(Direction direction) const {
  return steps_[direction == Direction::kRedo];
}

// The group that begins the next step; null when there is none.
const Group* History::nextStep(Direction direction) const {
  if (numSteps(direction) == 0) return nullptr;
  return direction == Direction::kUndo ? newestDone()->step_ : &*Groups::const_iterator(undone_);
}

vx::vector<CString> History::names(Direction direction) const {
  vx::vector<CString> names;
  const auto add = [&names](const Group& group) {
    if (group.beginsStep()) names.push_back(group.name());
  };
  const Groups::const_iterator undone = undone_;
  if (direction == Direction::kRedo) {
    std::for_each(undone, groups_.end(), add);
  } else {
    std::for_each(std::make_reverse_iterator(undone), groups_.rend(), add);
  }
  return names;
}

// Rolls all groups of a step, or none.
bool History::takeStep(Direction direction, Failure& failure) {
  std::size_t taken = 0;
  do {
    if (!roll(nextGroup(direction), direction, failure)) {
      const Direction back = opposite(direction);
      for (; taken > 0; --taken) {
        Group& group = nextGroup(back);
        rollBack(group, back, firstOf(group, back), failure);
        pass(back);
      }
      return false;
    }
    pass(direction);
    ++taken;
  } while (undone_ != groups_.end() && !undone_->beginsStep());
  const bool undoes = direction == Direction::kUndo;
  steps_[0] += undoes ? -1 : 1;
  steps_[1] += undoes ? 1 : -1;
  return true;
}

Group& History::nextGroup(Direction direction) {
  return direction == Direction::kUndo ? *std::prev(undone_) : *undone_;
}

Command* History::firstOf(const Group& group, Direction direction) {
  return direction == Direction::kUndo ? group.commands_.last() : group.commands_.first();
}

Command* History::nextOf(const Command& command, Direction direction) {
  return direction == Direction::kUndo ? command.previous_ : command.next_;
}

void History::pass(Direction direction) {
  if (direction == Direction::kUndo) {
    (--undone_)->place_ = Group::Place::kUndone;
  } else {
    (undone_++)->place_ = Group::Place::kDone;
  }
}

// Runs all commands of a group, or none.
bool History::roll(Group& group, Direction direction, Failure& failure) {
  std::int64_t bytes = 0;
  for (Command* command = firstOf(group, direction); command != nullptr;
       command = nextOf(*command, direction)) {
    if (!run(*command, direction, failure)) {
      const Direction back = opposite(direction);
      rollBack(group, back, nextOf(*command, back), failure);
      return false;
    }
    bytes += bytesOf(*command);
  }
  countBytes(group, bytes - group.bytes_);
  unmeasured_ = nullptr;
  return true;
}

// Puts back the commands of a group from one on.
void History::rollBack(Group& group, Direction direction, Command* from, Failure& failure) {
  for (; from != nullptr; from = nextOf(*from, direction)) putBack(*from, direction, failure);
  std::int64_t bytes = 0;
  for (Command* command = group.commands_.first(); command != nullptr; command = command->next_) {
    bytes += bytesOf(*command);
  }
  countBytes(group, bytes - group.bytes_);
  unmeasured_ = nullptr;
}

Error History::failed(const char* what, const Group& named, const Failure& failure) {
  if (!failure.isPutBack) {
    saved_.reset();
    isChangeUntold_ = true;
  }
  const char* const consequence =
      failure.isPutBack ? "" : "; what was done before could not be put back";
  return Error(failure.isPutBack ? kCommandFailed : kNotPutBack,
               CString::format("cannot %s \"%s\": the command \"%s\" has failed%s%s\n", what,
                               named.name().c_str(), failure.command->name().c_str(),
                               failure.reason, consequence));
}

}  // namespace vxUndo::detail
