#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

#include <vx/detail/UndoHistory.h>
#include <vx/detail/undoCalls.h>

using vxString::CString;
using vxUtil::Error;

namespace vxUndo::detail {

Group* History::newGroup(CString name, bool joinsPrevious) {
  if (atWork_ > 0 || !isCreationEnabled()) return nullptr;
  measureNewest();
  Group& group = open_.emplace_back(*this, std::move(name), joinsPrevious, lastNumber_ + 1);
  ++lastNumber_;
  group.position_ = std::prev(open_.end());
  return &group;
}

Group* History::newestGroup() {
  Group* const done = undone_ == groups_.begin() ? nullptr : &*std::prev(undone_);
  if (open_.empty()) return done;
  return done != nullptr && done->number_ > open_.back().number_ ? done : &open_.back();
}

bool History::add(Group& group, std::unique_ptr<Command> command) {
  if (command == nullptr || !takes(group)) {
    if (atWork_ > 0) vxUndoReport("a command is not recorded: the undo manager is at work\n");
    return false;
  }
  if (performing_ > 0) {
    wait(group, std::move(command));
  } else {
    record(group, std::move(command));
    finish(false);
  }
  return true;
}

bool History::takes(const Group& group) const {
  return atWork_ == 0 && isCreationEnabled() && group.place_ != Group::Place::kUndone;
}

void History::wait(Group& group, std::unique_ptr<Command> command) {
  command->group_ = &group;
  ++group.waiting_;
  waiting_.append(std::move(command));
}

void History::recordWaiting() {
  while (waiting_.size() > 0) {
    std::unique_ptr<Command> command = waiting_.takeFirst();
    Group& group = *command->group_;
    --group.waiting_;
    record(group, std::move(command));
  }
}

// Makes a command the newest of all.
void History::record(Group& group, std::unique_ptr<Command> command) {
  measureNewest();
  if (&group != newestDone() || undone_ != groups_.end()) makeNewest(group);
  if (saved_ == &group) {
    saved_.reset();
    isChangeUntold_ = true;
  }
  newestBytes_ = bytesOf(*command);
  unmeasured_ = &group;
  countBytes(group, newestBytes_);
  group.commands_.append(std::move(command));
}

void History::makeNewest(Group& group) {
  isChangeUntold_ = true;
  cutUndone();
  if (group.place_ == Group::Place::kOpen) {
    place(group);
  } else {
    takeOverNewer(group);
  }
}

// An open group moves behind the done ones, and before it those open ones that the group joins.
void History::place(Group& group) {
  const Group* const newest = newestDone();
  const std::int64_t number = newest != nullptr ? newest->number_ : 0;
  Position first = group.position_;
  while (!first->beginsStep() && first != open_.begin() && std::prev(first)->number_ > number) {
    --first;
  }
  if (newest == nullptr || isSaved()) first->step_ = &*first;
  const Group* const step = first->beginsStep() ? &*first : newest->step_;
  const Position end = std::next(group.position_);
  for (Position position = first; position != end; ++position) {
    position->step_ = step;
    position->place_ = Group::Place::kDone;
    count(*position, 1);
  }
  groups_.splice(groups_.end(), open_, first, end);
}

// A done group becomes the newest one, with the commands of the newer groups behind its own. Those
// groups go away, but for the ones that get commands later: they are open again.
void History::takeOverNewer(Group& group) {
  Groups buried;
  for (Position position = std::next(group.position_); position != undone_;) {
    Group& newer = *position++;
    if (saved_ == &newer) saved_.reset();
    group.commands_.append(newer.commands_);
    group.bytes_ += std::exchange(newer.bytes_, 0);
    if (group.declared_ == nullptr) {
      group.declared_ = std::move(newer.declared_);
    } else if (newer.declared_ != nullptr) {
      group.declared_->merge(*newer.declared_);
    }
    reopen(newer);
    if (newer.holds_ == 0 && newer.waiting_ == 0) {
      buried.splice(buried.end(), open_, newer.position_);
    }
  }
  bury(buried);
}

// A done group without commands waits for one again.
void History::reopen(Group& group) {
  count(group, -1);
  group.place_ = Group::Place::kOpen;
  if (!group.beginsStep()) group.step_ = nullptr;
  Position next = open_.end();
  while (next != open_.begin() && std::prev(next)->number_ > group.number_) --next;
  open_.splice(next, groups_, group.position_);
}

// Drops the groups with higher numbers that nobody holds. They have no commands.
void History::dropOpenSince(std::int64_t number) {
  Groups dropped;
  for (Position end = open_.end(); end != open_.begin() && std::prev(end)->number_ > number;) {
    const Position group = std::prev(end);
    if (group->holds_ > 0) {
      end = group;
    } else {
      dropped.splice(dropped.begin(), open_, group);
    }
  }
  bury(dropped);
}

// A command that was added may have been done since.
void History::measureNewest() {
  if (unmeasured_ == nullptr) return;
  Group& group = *std::exchange(unmeasured_, nullptr);
  countBytes(group, bytesOf(*group.commands_.last()) - newestBytes_);
}

void History::start(Group& group, bool on) {
  const bool begins = on || !group.joinsPrevious_;
  const bool isOpen = group.place_ == Group::Place::kOpen;
  const bool isFirst = !isOpen && group.position_ == groups_.begin();
  if (group.place_ == Group::Place::kUndone || isFirst || begins == group.beginsStep()) return;
  if (isOpen) {
    group.step_ = begins ? &group : nullptr;
    return;
  }
  const Group* const before = group.step_;
  const Group* const after = begins ? &group : std::prev(group.position_)->step_;
  for (Position next = group.position_; next != undone_ && next->step_ == before; ++next) {
    next->step_ = after;
  }
  steps_[0] += begins ? 1 : -1;
  finish(true);
}

void History::hold(Group& group) {
  if (group.holds_++ > 0 || group.place_ == Group::Place::kOpen) return;
  finish(held_++ == 0);
}

void History::release(Group& group) {
  assert(group.holds_ > 0);
  if (group.holds_ == 0 || --group.holds_ > 0 || group.place_ == Group::Place::kOpen) return;
  finish(--held_ == 0);
}

void History::setLimits(const Limits& limits) {
  limits_ = limits;
  finish(false);
}

// Ends a change: keeps the limits, and tells when there is anything new for the menus.
void History::finish(bool hasChanged) {
  isChangeUntold_ = isChangeUntold_ || hasChanged;
  if (isAtWork()) return;
  for (keepLimits(); std::exchange(isChangeUntold_, false); keepLimits()) {
    const Work work(*this);
    tell(manager_.changed);
  }
}

void History::keepLimits() {
  const auto isExceeded = [this] {
    return bytes_ > limits_.bytes ||
           static_cast<std::int64_t>(groups_.size()) > std::max(limits_.groups, 0);
  };
  while (held_ == 0 && isExceeded() && dropOldestStep()) isChangeUntold_ = true;
}

// The last done step stays. When there is no other, the step that would be redone last is dropped,
// if that is not the last one of all.
bool History::dropOldestStep() {
  if (steps_[0] + steps_[1] <= 1) return false;
  if (steps_[0] > 1) {
    drop(groups_.begin(), endOfStep(groups_.begin()));
  } else {
    drop(groups_.back().step_->position_, groups_.end());
  }
  return true;
}

// The end of the step of a done group.
History::Position History::endOfStep(Position position) {
  do {
    ++position;
  } while (position != undone_ && !position->beginsStep());
  return position;
}

void History::drop(Position first, Position end) {
  for (Position position = first; position != end; ++position) {
    if (position == undone_) undone_ = end;
  }
  Groups dropped;
  dropped.splice(dropped.begin(), groups_, first, end);
  bury(dropped);
}

void History::dropOpen(Position first, Position end) {
  Groups dropped;
  dropped.splice(dropped.begin(), open_, first, end);
  bury(dropped);
}

void History::bury(Groups& buried) {
  const Work work(*this);
  for (Group& group : buried) {
    if (unmeasured_ == &group) unmeasured_ = nullptr;
    forgetSaved(group);
    tell(manager_.groupGoingAway, &group);
    countBytes(group, -group.bytes_);
    if (group.place_ != Group::Place::kOpen) count(group, -1);
    if (group.place_ != Group::Place::kDone) continue;
    for (Command* command = group.commands_.first(); command != nullptr; command = command->next_) {
      callSafely([&] { command->commit(); });
    }
  }
  buried.clear();
}

// A done group goes away as the oldest: then the state after the group is the one from which
// everything starts.
void History::forgetSaved(const Group& group) {
  if (group.isEmpty()) return;
  const bool isDone = group.place_ == Group::Place::kDone;
  const bool isNewestSaved = saved_ == &group;
  if (isDone ? saved_ == nullptr : isNewestSaved) {
    saved_.reset();
  } else if (isNewestSaved) {
    saved_ = nullptr;
  }
}

const Group* History::newestDone() const {
  const Groups::const_iterator undone = undone_;
  return undone == groups_.begin() ? nullptr : &*std::prev(undone);
}

void History::markSaved() {
  if (isRolling_ || performing_ > 0) return;
  const bool wasSaved = isSaved();
  saved_ = newestDone();
  finish(!wasSaved);
}

void History::disableCreation() {
  if (creationOff_++ > 0) return;
  {
    const Work work(*this);
    tell(manager_.creationOff, true);
  }
  finish(false);
}

void History::enableCreation() {
  assert(creationOff_ > 0);
  if (creationOff_ == 0 || --creationOff_ > 0) return;
  {
    const Work work(*this);
    tell(manager_.creationOff, false);
  }
  finish(false);
}

Error History::clear() {
  if (isAtWork()) return atWork();
  drop(groups_.begin(), groups_.end());
  dropOpen(open_.begin(), open_.end());
  finish(true);
  return {};
}

Error History::forget(const void* data) {
  if (isAtWork()) return atWork();
  const std::size_t before = groups_.size();
  const auto declares = [data](const Group& group) { return group.hasDeclared(data); };
  const auto newest = std::find_if(std::make_reverse_iterator(undone_), groups_.rend(), declares);
  if (newest != groups_.rend()) drop(groups_.begin(), endOfStep(std::prev(newest.base())));
  const Position later = std::find_if(undone_, groups_.end(), declares);
  if (later != groups_.end()) drop(later->step_->position_, groups_.end());
  finish(groups_.size() != before);
  return {};
}

// Those who were told that creation is off learn that this is over.
void History::close() {
  assert(!isAtWork());
  drop(groups_.begin(), groups_.end());
  dropOpen(open_.begin(), open_.end());
  if (std::exchange(creationOff_, 0) > 0) tell(manager_.creationOff, false);
}

}  // namespace vxUndo::detail
