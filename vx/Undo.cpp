#include <algorithm>
#include <cassert>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iterator>
#include <list>
#include <new>
#include <utility>

#include <vx/Report.h>
#include <vx/Undo.h>

using vxString::CString;
using vxUtil::Error;

void vxUndoReport(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  rptVError(format, arguments);
  va_end(arguments);
}

namespace vxUndo {

namespace {

enum class Direction { kUndo, kRedo };

Direction opposite(Direction direction) {
  return direction == Direction::kUndo ? Direction::kRedo : Direction::kUndo;
}

// Why a command failed. Takes no memory: everything is put back before anybody is told.
struct Failure {
  Failure() { reason[0] = '\0'; }

  const Command* command = nullptr;
  char reason[200];
};

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

std::int64_t bytesOf(const Command& command) {
  try {
    return std::max(command.getNumBytesUsed(), 0);
  } catch (...) {
    return 0;
  }
}

// Calls something that must not disturb the manager.
template <class Call>
void callSafely(Call call) {
  try {
    call();
  } catch (const std::exception& exception) {
    vxUndoReport("undo manager: %s\n", exception.what());
  } catch (...) {
    vxUndoReport("undo manager: unknown exception\n");
  }
}

template <class... Values>
void tell(vxRTB::SignalBase<Values...>& signal, Values... values) {
  callSafely([&] { signal.emit(values...); });
}

Error refused(const char* reason) {
  return Error(kRefused, CString::format("undo is not possible now: %s\n", reason));
}

Error failed(const char* what, const CString& group, const Failure& failure, bool putBack) {
  const char* const consequence = putBack ? "" : "; what was done before could not be put back";
  return Error(
      putBack ? kCommandFailed : kNotPutBack,
      CString::format("cannot %s \"%s\": the command \"%s\" has failed%s%s\n", what, group.c_str(),
                      failure.command->name().c_str(), failure.reason, consequence));
}

// The groups that one undo or redo takes, none when there is nothing to do, and the one among them
// whose name stands in the menu.
struct Step {
  std::size_t groups = 0;
  const Group* named = nullptr;
};

bool hasNoCommands(const Group& group) {
  return group.isEmpty();
}

// Walk over one step, away from the present. The oldest group begins a step whatever its flag.
template <class Position>
Step stepBack(Position& position, const Position& end) {
  Step step;
  bool hasCommands = false;
  while (position != end) {
    const Group& group = *position++;
    ++step.groups;
    hasCommands = hasCommands || !group.isEmpty();
    step.named = &group;
    if (hasCommands && group.beginsStep()) return step;
  }
  return hasCommands ? step : Step();
}

template <class Position>
Step stepForth(Position& position, const Position& end) {
  Step step;
  bool hasCommands = false;
  for (; position != end; ++position) {
    if (hasCommands && position->beginsStep()) break;
    ++step.groups;
    hasCommands = hasCommands || !position->isEmpty();
    if (step.named == nullptr || position->beginsStep()) step.named = &*position;
  }
  return hasCommands ? step : Step();
}

template <class Position>
vx::vector<CString> namesOf(Step (*nextStep)(Position&, const Position&), Position& position,
                            const Position& end, std::size_t most) {
  vx::vector<CString> names;
  while (names.size() < most) {
    const Step step = nextStep(position, end);
    if (step.groups == 0) break;
    names.push_back(step.named->name());
  }
  return names;
}

}  // namespace

namespace detail {

// The groups of a manager: first the done ones, then those that have been undone.
class History {
 public:
  explicit History(Manager& manager) : manager_(manager) {}
  History(const History&) = delete;
  History& operator=(const History&) = delete;

  Group* newGroup(CString name, bool joinsPrevious);
  Group* newestGroup();
  Error dropNewestGroup();
  Error perform(Group& group, std::unique_ptr<Command> command);
  bool add(Group& group, std::unique_ptr<Command>& command);

  Error go(Direction direction, int steps);
  bool canGo(Direction direction) { return next(direction).groups > 0; }
  vx::vector<CString> names(Direction direction, std::size_t most);

  std::size_t numGroups() const { return groups_.size(); }
  std::int64_t numBytesUsed() const { return bytes_; }
  void setLimits(const Limits& limits);
  void markSaved();
  bool isSaved() { return savedIsKnown_ && newestWork() == saved_; }

  void disableCreation();
  void enableCreation();
  bool isCreationEnabled() const { return creationOff_ == 0; }

  Error clear();
  Error forget(const void* data);
  void close();

  bool isAtWork() const { return atWork_ > 0 || performing_ > 0; }
  // A group with commands has become held, or is held no more.
  void countOpen(const Group& group, int change) { open_ += group.isEmpty() ? 0 : change; }
  // Keeps the limits, and tells when that or the caller has changed what the menus show.
  void finish(bool hasChanged);

 private:
  using Groups = std::list<Group>;
  using Position = Groups::iterator;

  // While one lives, nothing else may change the history.
  class Work {
   public:
    explicit Work(History& history) : history_(history) { ++history.atWork_; }
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    ~Work() { --history_.atWork_; }

   private:
    History& history_;
  };
  class Performing;
  class Rolling;

  bool takes(const Group& group) const;
  bool beginWork(Group& group);
  void cutUndone(const Group& worker);
  void measure(Group& group);
  void countBytes(Group& group, std::int64_t bytes);
  void countFilled(const Group& group, int change);
  bool takeBack(Group& group, std::size_t remaining);

  Step next(Direction direction);
  Error takeStep(Direction direction, const Step& step);
  Group& nextGroup(Direction direction);
  void pass(Direction direction);
  bool roll(Group& group, Direction direction, std::size_t& ran, Failure& failure);
  bool rollBack(Group& group, Direction direction, std::size_t ran);

  const Group* newestWork();
  Position endOfStep(Position position);
  bool dropOldestStep();
  bool dropUnheld(Position first, Position end);
  void drop(Position first, Position end);
  void bury(Groups& buried);
  void forgetSaved(const Group& group);

  Manager& manager_;
  Groups groups_;
  Position undone_ = groups_.end();  // the first
  std::int64_t lastOrder_ = 0;
  std::int64_t bytes_ = 0;
  Limits limits_;
  const Group* saved_ = nullptr;  // the newest group with commands in the saved state, if any
  bool savedIsKnown_ = true;
  int filled_ = 0;  // the number of groups with commands
  int open_ = 0;    // the number of those that are held
  bool isRolling_ = false;
  int atWork_ = 0;
  int performing_ = 0;
  int creationOff_ = 0;
};

// Keeps a group alive whose command is running.
class History::Performing {
 public:
  Performing(History& history, Group& group) : history_(history), group_(group) {
    ++history.performing_;
    group.hold();
  }
  Performing(const Performing&) = delete;
  Performing& operator=(const Performing&) = delete;
  ~Performing() {
    --history_.performing_;
    group_.release();
  }

 private:
  History& history_;
  Group& group_;
};

// Tells that commands are undone and redone. The newest groups stay the newest when they are held
// and have no commands yet: they are out of the list meanwhile.
class History::Rolling {
 public:
  explicit Rolling(History& history) : history_(history), work_(history) {
    Groups& groups = history.groups_;
    while (history.undone_ != groups.begin()) {
      const Position newest = std::prev(history.undone_);
      if (!newest->isEmpty() || newest->holds_ == 0) break;
      held_.splice(held_.begin(), groups, newest);
    }
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
    history_.groups_.splice(history_.undone_, held_);
  }

 private:
  History& history_;
  Work work_;
  Groups held_;
};

Group* History::newGroup(CString name, bool joinsPrevious) {
  if (atWork_ > 0 || !isCreationEnabled()) return nullptr;
  if (Group* const previous = newestGroup()) measure(*previous);
  Group& group = *groups_.emplace(undone_, *this, std::move(name), joinsPrevious);
  group.order_ = ++lastOrder_;
  return &group;
}

Group* History::newestGroup() {
  return undone_ == groups_.begin() ? nullptr : &*std::prev(undone_);
}

Error History::dropNewestGroup() {
  if (isAtWork()) return refused("the undo manager is at work");
  Group* const group = newestGroup();
  if (group == nullptr) return Error(kNothingLeft, "there is no group to drop\n");
  if (group->isEmpty()) {
    drop(std::prev(undone_), undone_);
    return {};
  }
  Error error;
  {
    const Rolling rolling(*this);
    error = takeStep(Direction::kUndo, {1, group});
  }
  if (!error) cutUndone(*group);
  finish(true);
  return error;
}

Error History::perform(Group& group, std::unique_ptr<Command> command) {
  if (command == nullptr || !takes(group)) return refused("the group takes no command");
  const Performing performing(*this, group);
  const std::size_t before = group.numCommands();
  Failure failure;
  bool putBack = true;
  if (run(*command, Direction::kRedo, failure)) {
    if (add(group, command)) return {};
    putBack = run(*command, Direction::kUndo, failure);
    failure.command = command.get();
    std::strcpy(failure.reason, ": the group takes no command any more");
  }
  putBack = takeBack(group, before) && putBack;
  if (!putBack) savedIsKnown_ = false;
  finish(true);
  return failed("do", group.name(), failure, putBack);
}

// A command that is refused stays with the caller.
bool History::add(Group& group, std::unique_ptr<Command>& command) {
  if (command == nullptr || !takes(group)) return false;
  const bool isFirst = group.isEmpty();
  try {
    const std::size_t count = group.numCommands();
    if (count == group.commands_.capacity()) group.commands_.reserve(count + count / 2 + 1);
  } catch (const std::bad_alloc&) {
    return false;
  }
  const bool hasChanged = beginWork(group);
  group.commands_.push_back(std::move(command));
  group.isMeasured_ = false;
  countBytes(group, bytesOf(*group.commands_.back()));
  if (isFirst) countFilled(group, 1);
  finish(hasChanged);
  return true;
}

bool History::takes(const Group& group) const {
  return atWork_ == 0 && isCreationEnabled() && !(group.isUndone_ && !group.isEmpty());
}

// New work in a group: the undone groups go, and the saved state is lost when that group is part of
// it. Tells whether menus show anything else from now on.
bool History::beginWork(Group& group) {
  const bool isFirst = group.isEmpty();
  const bool cuts = undone_ != groups_.end();
  if (isFirst && isSaved()) group.beginsStep_ = true;
  if (cuts) cutUndone(group);
  const bool losesSaved = savedIsKnown_ && saved_ != nullptr && group.order_ <= saved_->order_;
  if (losesSaved) savedIsKnown_ = false;
  return isFirst || cuts || losesSaved;
}

// Groups without commands into which somebody will put some, the worker or others that are held,
// become the newest ones.
void History::cutUndone(const Group& worker) {
  Groups cut;
  cut.splice(cut.begin(), groups_, undone_, groups_.end());
  undone_ = groups_.end();
  for (Position position = cut.begin(); position != cut.end();) {
    const Position group = position++;
    if (!group->isEmpty() || (group->holds_ == 0 && &*group != &worker)) continue;
    group->isUndone_ = false;
    group->order_ = ++lastOrder_;
    groups_.splice(groups_.end(), cut, group);
  }
  bury(cut);
}

void History::measure(Group& group) {
  if (std::exchange(group.isMeasured_, true)) return;
  std::int64_t bytes = 0;
  for (const auto& command : group.commands_) bytes += bytesOf(*command);
  countBytes(group, bytes - group.bytes_);
}

void History::countBytes(Group& group, std::int64_t bytes) {
  group.bytes_ += bytes;
  bytes_ += bytes;
}

// A group has got its first command, or has lost its commands.
void History::countFilled(const Group& group, int change) {
  filled_ += change;
  if (group.holds_ > 0) open_ += change;
}

// Undoes and deletes the newest commands of a group.
bool History::takeBack(Group& group, std::size_t remaining) {
  bool putBack = true;
  const bool wasEmpty = group.isEmpty();
  while (group.numCommands() > remaining) {
    Failure ignored;
    putBack = run(*group.commands_.back(), Direction::kUndo, ignored) && putBack;
    group.commands_.pop_back();
  }
  if (!wasEmpty && group.isEmpty()) countFilled(group, -1);
  group.isMeasured_ = false;
  measure(group);
  return putBack;
}

Error History::go(Direction direction, int steps) {
  if (isAtWork()) return refused("the undo manager is at work");
  if (open_ > 0) return refused("commands are being recorded");
  if (!canGo(direction)) return Error(kNothingLeft, "there is nothing left to undo or redo\n");
  Error error;
  {
    const Rolling rolling(*this);
    for (; steps > 0 && !error; --steps) {
      const Step step = next(direction);
      if (step.groups == 0) break;
      error = takeStep(direction, step);
    }
  }
  finish(true);
  return error;
}

vx::vector<CString> History::names(Direction direction, std::size_t most) {
  Position forth = undone_;
  auto back = std::make_reverse_iterator(undone_);
  return direction == Direction::kRedo ? namesOf(stepForth, forth, groups_.end(), most)
                                       : namesOf(stepBack, back, groups_.rend(), most);
}

Step History::next(Direction direction) {
  Position forth = undone_;
  auto back = std::make_reverse_iterator(undone_);
  return direction == Direction::kRedo ? stepForth(forth, groups_.end())
                                       : stepBack(back, groups_.rend());
}

// Rolls all groups of a step, or none.
Error History::takeStep(Direction direction, const Step& step) {
  Failure failure;
  for (std::size_t taken = 0; taken < step.groups; ++taken) {
    Group& group = nextGroup(direction);
    std::size_t ran = 0;
    if (roll(group, direction, ran, failure)) {
      pass(direction);
      continue;
    }
    bool putBack = rollBack(group, direction, ran);
    for (; taken > 0; --taken) {
      pass(opposite(direction));
      Group& rolled = nextGroup(direction);
      putBack = rollBack(rolled, direction, rolled.numCommands()) && putBack;
    }
    if (!putBack) savedIsKnown_ = false;
    return failed(direction == Direction::kUndo ? "undo" : "redo", step.named->name(), failure,
                  putBack);
  }
  return {};
}

Group& History::nextGroup(Direction direction) {
  return direction == Direction::kUndo ? *std::prev(undone_) : *undone_;
}

void History::pass(Direction direction) {
  if (direction == Direction::kUndo) --undone_;
  undone_->isUndone_ = direction == Direction::kUndo;
  if (direction == Direction::kRedo) ++undone_;
}

// Runs all commands of a group until one fails, and tells how many ran.
bool History::roll(Group& group, Direction direction, std::size_t& ran, Failure& failure) {
  std::int64_t bytes = 0;
  const std::size_t count = group.numCommands();
  for (ran = 0; ran < count; ++ran) {
    Command& command = *group.commands_[direction == Direction::kUndo ? count - 1 - ran : ran];
    if (!run(command, direction, failure)) return false;
    bytes += bytesOf(command);
  }
  countBytes(group, bytes - group.bytes_);
  group.isMeasured_ = true;
  return true;
}

// Puts back what `roll` has done with the first commands in its direction.
bool History::rollBack(Group& group, Direction direction, std::size_t ran) {
  bool putBack = true;
  const std::size_t count = group.numCommands();
  while (ran-- > 0) {
    Command& command = *group.commands_[direction == Direction::kUndo ? count - 1 - ran : ran];
    Failure ignored;
    putBack = run(command, opposite(direction), ignored) && putBack;
  }
  group.isMeasured_ = false;
  measure(group);
  return putBack;
}

void History::setLimits(const Limits& limits) {
  limits_ = limits;
  finish(false);
}

void History::finish(bool hasChanged) {
  if (atWork_ > 0) return;
  while ((filled_ > limits_.groups || bytes_ > limits_.bytes) && dropOldestStep()) {
    hasChanged = true;
  }
  const Work work(*this);
  if (hasChanged) tell(manager_.changed);
}

// The last done step with commands stays. When there is no other, the step that would be redone
// last is dropped, if that is not the last one of all.
bool History::dropOldestStep() {
  const Group* const newest = newestWork();
  const Position end = endOfStep(groups_.begin());
  if (newest != nullptr && end != undone_ && newest->order_ >= end->order_) {
    return dropUnheld(groups_.begin(), end);
  }
  if (undone_ == groups_.end()) return false;
  Position last = std::prev(groups_.end());
  while (last != undone_ && !last->beginsStep()) --last;
  const bool isOnly = newest == nullptr && std::all_of(undone_, last, hasNoCommands);
  return !isOnly && dropUnheld(last, groups_.end());
}

// The end of the step of a group, among the done ones or the undone ones.
History::Position History::endOfStep(Position position) {
  if (position == groups_.end()) return position;
  do {
    ++position;
  } while (position != undone_ && position != groups_.end() && !position->beginsStep());
  return position;
}

bool History::dropUnheld(Position first, Position end) {
  const bool isHeld = std::any_of(first, end, [](const Group& group) { return group.holds_ > 0; });
  if (!isHeld) drop(first, end);
  return !isHeld;
}

void History::drop(Position first, Position end) {
  for (Position position = first; position != end; ++position) {
    if (position == undone_) undone_ = end;
  }
  Groups dropped;
  dropped.splice(dropped.begin(), groups_, first, end);
  bury(dropped);
}

void History::bury(Groups& buried) {
  const Work work(*this);
  for (Group& group : buried) {
    forgetSaved(group);
    tell(manager_.groupGoingAway, &group);
    if (!group.isEmpty()) countFilled(group, -1);
    countBytes(group, -group.bytes_);
    if (group.isUndone_) continue;
    for (const auto& command : group.commands_) callSafely([&] { command->commit(); });
  }
  buried.clear();
}

// A done group goes away as the oldest: then the state after the group is the one from which
// everything starts.
void History::forgetSaved(const Group& group) {
  if (group.isEmpty() || !savedIsKnown_) return;
  const bool isNewestSaved = saved_ == &group;
  if (group.isUndone_ ? isNewestSaved : saved_ == nullptr) savedIsKnown_ = false;
  if (isNewestSaved) saved_ = nullptr;
}

const Group* History::newestWork() {
  const auto end = groups_.rend();
  const auto newest = std::find_if_not(std::make_reverse_iterator(undone_), end, hasNoCommands);
  return newest == end ? nullptr : &*newest;
}

void History::markSaved() {
  if (isRolling_) return;
  saved_ = newestWork();
  savedIsKnown_ = true;
  finish(true);
}

void History::disableCreation() {
  if (creationOff_++ > 0) return;
  const Work work(*this);
  tell(manager_.creationOff, true);
}

void History::enableCreation() {
  assert(creationOff_ > 0);
  if (creationOff_ == 0 || --creationOff_ > 0) return;
  const Work work(*this);
  tell(manager_.creationOff, false);
}

Error History::clear() {
  if (isAtWork()) return refused("the undo manager is at work");
  drop(groups_.begin(), groups_.end());
  finish(true);
  return {};
}

Error History::forget(const void* data) {
  if (isAtWork()) return refused("the undo manager is at work");
  const std::size_t before = groups_.size();
  const auto declares = [data](const Group& group) { return group.hasDeclared(data); };
  const auto newest = std::find_if(std::make_reverse_iterator(undone_), groups_.rend(), declares);
  if (newest != groups_.rend()) drop(groups_.begin(), endOfStep(std::prev(newest.base())));
  Position later = std::find_if(undone_, groups_.end(), declares);
  while (later != undone_ && later != groups_.end() && !later->beginsStep()) --later;
  drop(later, groups_.end());
  finish(groups_.size() != before);
  return {};
}

void History::close() {
  assert(!isAtWork());
  drop(groups_.begin(), groups_.end());
}

}  // namespace detail

State::~State() = default;

Command::Command(CString name) : name_(std::move(name)) {}

Command::~Command() = default;

int Command::getNumBytesUsed() const {
  return sizeof(Command);
}

void Command::commit() {}

Group::Group(detail::History& history, CString name, bool joinsPrevious)
    : history_(history),
      joinsPrevious_(joinsPrevious),
      beginsStep_(!joinsPrevious),
      name_(std::move(name)) {}

Group::~Group() = default;

Error Group::perform(std::unique_ptr<Command> command) {
  return history_.perform(*this, std::move(command));
}

bool Group::add(std::unique_ptr<Command> command) {
  return history_.add(*this, command);
}

bool Group::declare(const void* data) {
  try {
    if (data != nullptr) declared_.insert(data);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return data != nullptr;
}

void Group::start(int on) {
  beginsStep_ = on != 0 || !joinsPrevious_;
}

void Group::hold() {
  if (holds_++ == 0) history_.countOpen(*this, 1);
}

void Group::release() {
  assert(holds_ > 0);
  if (holds_ == 0 || --holds_ > 0) return;
  history_.countOpen(*this, -1);
  history_.finish(false);
}

Manager::Manager() : history_(std::make_unique<detail::History>(*this)) {}

Manager::~Manager() {
  history_->close();
}

Group* Manager::newGroup(CString name, bool joinsPrevious) {
  return history_->newGroup(std::move(name), joinsPrevious);
}

Group* Manager::newestGroup() const {
  return history_->newestGroup();
}

Error Manager::dropNewestGroup() {
  return history_->dropNewestGroup();
}

Error Manager::undo(int steps) {
  return history_->go(Direction::kUndo, steps);
}

Error Manager::redo(int steps) {
  return history_->go(Direction::kRedo, steps);
}

bool Manager::canUndo() const {
  return history_->canGo(Direction::kUndo);
}

bool Manager::canRedo() const {
  return history_->canGo(Direction::kRedo);
}

CString Manager::undoName() const {
  const auto names = history_->names(Direction::kUndo, 1);
  return names.empty() ? CString() : names.front();
}

CString Manager::redoName() const {
  const auto names = history_->names(Direction::kRedo, 1);
  return names.empty() ? CString() : names.front();
}

vx::vector<CString> Manager::undoNames() const {
  return history_->names(Direction::kUndo, numGroups());
}

vx::vector<CString> Manager::redoNames() const {
  return history_->names(Direction::kRedo, numGroups());
}

std::size_t Manager::numGroups() const {
  return history_->numGroups();
}

std::int64_t Manager::numBytesUsed() const {
  return history_->numBytesUsed();
}

void Manager::setLimits(const Limits& limits) {
  history_->setLimits(limits);
}

void Manager::markSaved() {
  history_->markSaved();
}

bool Manager::isSaved() const {
  return history_->isSaved();
}

void Manager::disableCreation() {
  history_->disableCreation();
}

void Manager::enableCreation() {
  history_->enableCreation();
}

bool Manager::isCreationEnabled() const {
  return history_->isCreationEnabled();
}

Error Manager::clear() {
  return history_->clear();
}

Error Manager::forget(const void* data) {
  return history_->forget(data);
}

namespace {

constinit Manager* installedManager = nullptr;

}  // namespace

std::unique_ptr<Manager> newManager() {
  return std::make_unique<Manager>();
}

bool installManager(std::unique_ptr<Manager> manager) {
  if (installedManager != nullptr && installedManager->history_->isAtWork()) return false;
  delete std::exchange(installedManager, nullptr);
  installedManager = manager.release();
  return true;
}

Manager* manager() {
  return installedManager;
}

}  // namespace vxUndo
