#include <cstdarg>
#include <memory>
#include <new>
#include <utility>

#include <vx/Report.h>
#include <vx/Undo.h>
#include <vx/detail/UndoHistory.h>

using vxString::CString;
using vxUtil::Error;

void vxUndoReport(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  rptVError(format, arguments);
  va_end(arguments);
}

namespace vxUndo {

using detail::Direction;

namespace detail {

CommandList::~CommandList() {
  while (size_ > 0) takeFirst();
}

void CommandList::append(std::unique_ptr<Command> command) {
  Command* const newest = command.release();
  newest->previous_ = last_;
  (last_ != nullptr ? last_->next_ : first_) = newest;
  last_ = newest;
  ++size_;
}

void CommandList::append(CommandList& others) {
  if (others.size_ == 0) return;
  others.first_->previous_ = last_;
  (last_ != nullptr ? last_->next_ : first_) = others.first_;
  last_ = std::exchange(others.last_, nullptr);
  others.first_ = nullptr;
  size_ += std::exchange(others.size_, 0);
}

std::unique_ptr<Command> CommandList::takeFirst() {
  return take(first_);
}

std::unique_ptr<Command> CommandList::takeLast() {
  return take(last_);
}

std::unique_ptr<Command> CommandList::take(Command* command) {
  Command* const previous = std::exchange(command->previous_, nullptr);
  Command* const next = std::exchange(command->next_, nullptr);
  (previous != nullptr ? previous->next_ : first_) = next;
  (next != nullptr ? next->previous_ : last_) = previous;
  --size_;
  return std::unique_ptr<Command>(command);
}

}  // namespace detail

State::~State() = default;

Command::Command(CString name) : name_(std::move(name)) {}

Command::~Command() = default;

int Command::getNumBytesUsed() const {
  return sizeof(Command);
}

void Command::commit() {}

Group::Group(detail::History& history, CString name, bool joinsPrevious, std::int64_t number)
    : step_(joinsPrevious ? nullptr : this),
      joinsPrevious_(joinsPrevious),
      history_(history),
      number_(number),
      name_(std::move(name)) {}

Group::~Group() = default;

Error Group::perform(std::unique_ptr<Command> command) {
  return history_.perform(*this, std::move(command));
}

bool Group::add(std::unique_ptr<Command> command) {
  return history_.add(*this, std::move(command));
}

bool Group::declare(const void* data) {
  if (data == nullptr) return false;
  try {
    if (declared_ == nullptr) declared_ = std::make_unique<std::set<const void*>>();
    declared_->insert(data);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

bool Group::hasDeclared(const void* data) const {
  return declared_ != nullptr && declared_->count(data) != 0;
}

void Group::start(int on) {
  history_.start(*this, on != 0);
}

void Group::hold() {
  history_.hold(*this);
}

void Group::release() {
  history_.release(*this);
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

int Manager::numUndoSteps() const {
  return history_->numSteps(Direction::kUndo);
}

int Manager::numRedoSteps() const {
  return history_->numSteps(Direction::kRedo);
}

CString Manager::undoName() const {
  const Group* const step = history_->nextStep(Direction::kUndo);
  return step != nullptr ? step->name() : CString();
}

CString Manager::redoName() const {
  const Group* const step = history_->nextStep(Direction::kRedo);
  return step != nullptr ? step->name() : CString();
}

vx::vector<CString> Manager::undoNames() const {
  return history_->names(Direction::kUndo);
}

vx::vector<CString> Manager::redoNames() const {
  return history_->names(Direction::kRedo);
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
