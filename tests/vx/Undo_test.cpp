#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <vx/Undo.h>

#include "tests/support/Reports.h"

using vxString::CString;
using vxUndo::Group;
using vxUndo::Manager;

namespace {

enum class Fault { kFails, kThrows };

// A text, and the call of a command (counted from now on) that goes wrong.
struct Document {
  std::string text;
  int callsToFault = -1;
  int callsToSecondFault = -1;
  Fault fault = Fault::kFails;
  bool isWhole = true;
  int commands = 0;

  bool succeeds() {
    const bool isSecond = callsToSecondFault-- == 0;
    if (callsToFault-- != 0 && !isSecond) return true;
    if (fault == Fault::kThrows) throw std::runtime_error("no such curve");
    return false;
  }
  void noFault() { callsToFault = callsToSecondFault = -1; }
};

// What the command that appends a letter tells: below 0 for some when they are done.
int bytesOf(char letter, bool isDone) {
  return isDone ? letter - 'c' : 3;
}

class Append : public vxUndo::Command {
 public:
  Append(Document& document, char letter)
      : Command("Append"), document_(document), letter_(letter) {
    ++document_.commands;
  }
  ~Append() override {
    --document_.commands;
    EXPECT_TRUE(isDone_ == isCommitted_ || !document_.isWhole);
  }

  bool doIt() override {
    EXPECT_FALSE(isDone_);
    if (!document_.succeeds()) return false;
    document_.text += letter_;
    return isDone_ = true;
  }
  bool undoIt() override {
    EXPECT_TRUE(isDone_);
    if (!document_.succeeds()) return false;
    EXPECT_TRUE(document_.text.ends_with(letter_) || !document_.isWhole);
    document_.text.pop_back();
    isDone_ = false;
    return true;
  }
  int getNumBytesUsed() const override { return bytesOf(letter_, isDone_); }
  void commit() override {
    EXPECT_FALSE(isCommitted_);
    isCommitted_ = true;
  }

 private:
  Document& document_;
  char letter_;
  bool isDone_ = false;
  bool isCommitted_ = false;
};

// Calls functions when it is done and undone.
struct Call : vxUndo::Command {
  Call(std::function<bool()> done, std::function<bool()> undone)
      : Command("Call"), whenDone(std::move(done)), whenUndone(std::move(undone)) {}
  bool doIt() override { return whenDone(); }
  bool undoIt() override { return whenUndone(); }
  int getNumBytesUsed() const override { return 0; }
  std::function<bool()> whenDone, whenUndone;
};

struct Undo : testing::Test {
  ~Undo() override {
    manager.reset();
    EXPECT_EQ(0, document.commands);
  }

  // A group with commands that append a, b, c, ...
  Group& record(const char* name, int commands, bool joins = false) {
    Group& group = *manager->newGroup(name, joins);
    for (int i = 0; i < commands; ++i) add(group, static_cast<char>('a' + i));
    return group;
  }
  vxUtil::Error add(Group& group, char letter = 'm') {
    return group.perform(std::make_unique<Append>(document, letter));
  }
  // The steps, such as "A B | C": done ones, and after the bar those that were undone.
  std::string steps() const {
    std::string done, undone;
    for (const CString& name : manager->undoNames()) done.insert(0, (name + ' ').c_str());
    for (const CString& name : manager->redoNames()) (undone += ' ') += name.c_str();
    return done + '|' + undone;
  }

  kilntest::RecordedReports reports;
  Document document;
  std::unique_ptr<Manager> manager = vxUndo::newManager();
};

// The simple model: what the groups have appended.
struct Model {
  struct Part {
    Group* group;
    bool begins;
    std::string text;
  };
  std::string oldest;
  std::vector<Part> parts;
  int done = 0;
  int saved = 0;  // so many parts done; below 0 when that state cannot be reached
  vxUndo::Limits limits;

  int size() const { return static_cast<int>(parts.size()); }
  int steps(int from, int end) const {
    return static_cast<int>(std::count_if(parts.begin() + from, parts.begin() + end,
                                          [](const Part& part) { return part.begins; }));
  }
  std::string text() const {
    std::string text = oldest;
    for (int i = 0; i < done; ++i) text += at(i).text;
    return text;
  }
  std::int64_t bytes() const {
    std::int64_t bytes = 0;
    for (int i = 0; i < size(); ++i) {
      for (const char letter : at(i).text) bytes += std::max(bytesOf(letter, i < done), 0);
    }
    return bytes;
  }
  const Part& at(int i) const { return parts[static_cast<std::size_t>(i)]; }

  int find(const Group& group) const {
    int i = 0;
    while (i < done && at(i).group != &group) ++i;
    return i;
  }
  // A group within the outer one may join that.
  void append(Group& group, const std::string& letter, Group& outer) {
    truncate(done);
    const bool isNewInner = &group != &outer && find(group) == done;
    if (isNewInner && group.joinsPrevious() && find(outer) == done) append(outer, "", outer);
    const int i = find(group);
    const bool begins = i == 0 || saved == done || !group.joinsPrevious();
    Part part = i < done ? at(i) : Part{&group, begins, {}};
    for (int newer = i + 1; newer < done; ++newer) part.text += at(newer).text;
    part.text += letter;
    truncate(i);
    parts.push_back(part);
    done = size();
  }
  void truncate(int count) {
    parts.resize(static_cast<std::size_t>(count));
    if (saved > count) saved = -1;
    done = std::min(done, count);
  }
  int endOfStep(int i) const {
    do ++i;
    while (i < size() && !at(i).begins);
    return i;
  }
  int startOfStep(int i) const {
    while (!at(i).begins) --i;
    return i;
  }
  void dropOldest(int count) {
    for (int i = 0; i < count; ++i) oldest += at(i).text;
    parts.erase(parts.begin(), parts.begin() + count);
    done -= count;
    saved = std::max(saved - count, -1);
  }
  void forget(int i) {
    if (i < done) return dropOldest(endOfStep(i));
    truncate(startOfStep(i));
  }
  void keepLimits() {
    while ((size() > limits.groups || bytes() > limits.bytes) && steps(0, size()) > 1) {
      if (steps(0, done) > 1) {
        dropOldest(endOfStep(0));
      } else {
        truncate(startOfStep(size() - 1));
      }
    }
  }
};

struct UndoModel : Undo {
  int below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }

  // Records a letter, in one of the two ways to do that.
  void append(Group& group) {
    const auto letter = static_cast<char>('a' + below(26));
    auto command = std::make_unique<Append>(document, letter);
    Append& added = *command;
    if (document.callsToFault < 0 && below(3) == 0) {
      ASSERT_TRUE(group.add(std::move(command)));
      ASSERT_TRUE(added.doIt());
    } else if (group.perform(std::move(command))) {
      return;
    }
    recorded.emplace_back(&group, std::string(1, letter));
  }
  bool appendSome(Group& outer) {
    for (int i = below(5); i > 0; --i) {
      if (inner == nullptr && below(3) == 0) {
        inner = manager->newGroup("Inner", below(2) == 0);
        inner->hold();
      }
      append(inner != nullptr && below(2) == 0 ? *inner : outer);
    }
    return true;
  }
  // A command that records, too, and may fail afterwards.
  void nest(Group& outer) {
    const std::size_t before = recorded.size();
    const auto nested = [this, &outer, isDone = false]() mutable {
      if (std::exchange(isDone, true)) return true;
      appendSome(outer);
      if (below(2) == 0) return document.succeeds();
      document.noFault();
      return false;
    };
    if (outer.perform(std::make_unique<Call>(nested, [] { return true; }))) {
      recorded.resize(before);
    } else {
      recorded.emplace_back(&outer, "");
    }
  }
  void work(const CString& name) {
    const bool isOld = model.done > 0 && below(4) == 0;
    Group& outer =
        isOld ? *model.at(below(model.done)).group : *manager->newGroup(name, below(3) == 0);
    outer.hold();
    appendSome(outer);
    nest(outer);
    appendSome(outer);
    document.noFault();
    ASSERT_FALSE(add(outer, 'z'));
    recorded.emplace_back(&outer, "z");
    for (const auto& [group, letter] : std::exchange(recorded, {})) {
      model.append(*group, letter, outer);
    }
    outer.release();
    if (Group* const other = std::exchange(inner, nullptr)) {
      const bool isEmpty = other->isEmpty();
      other->release();
      ASSERT_TRUE(!isEmpty || !manager->dropNewestGroup());
    }
  }
  void move(bool back) {
    const int steps = 1 + below(4);
    const int most = back ? model.steps(0, model.done) : model.steps(model.done, model.size());
    const int possible = std::min(steps, most);
    const int code = (back ? manager->undo(steps) : manager->redo(steps)).code();
    int taken = 0;
    for (; taken < possible && model.text() != document.text; ++taken) {
      model.done = back ? model.startOfStep(model.done - 1) : model.endOfStep(model.done);
    }
    ASSERT_EQ(code == vxUndo::kNothingLeft, possible == 0);
    ASSERT_EQ(code == vxUndo::kCommandFailed, taken < possible);
  }
  void drop() {
    const int code = manager->dropNewestGroup().code();
    ASSERT_EQ(code == vxUndo::kNothingLeft, model.done == 0);
    if (code == 0) model.truncate(model.done - 1);
  }
  void forget() {
    if (model.parts.empty()) return;
    const int i = below(model.size());
    ASSERT_TRUE(model.at(i).group->declare(this));
    ASSERT_FALSE(manager->forget(this));
    model.forget(i);
  }
  void clear() {
    ASSERT_FALSE(manager->clear());
    model.truncate(model.done);
    model.dropOldest(model.done);
    model.oldest = document.text = "";
  }
  void limit() {
    model.limits = {.groups = below(2) == 0 ? below(20) : 1000,
                    .bytes = below(2) == 0 ? below(2000) : 100000};
    manager->setLimits(model.limits);
  }

  std::mt19937 random{12};
  Model model;
  Group* inner = nullptr;
  std::vector<std::pair<Group*, std::string>> recorded;
};

}  // namespace

TEST_F(UndoModel, RandomWorkWithFaultsFollowsTheModel) {
  int changes = 0;
  vxRTB::SignalClient client;
  manager->changed.connect(client, [&changes] { ++changes; });
  for (int round = 0; round < 20000; ++round) {
    SCOPED_TRACE(round);
    const std::string before = steps() + (manager->isSaved() ? "" : "*");
    changes = 0;
    document.callsToFault = below(3) == 0 ? below(12) : -1;
    document.fault = below(2) == 0 ? Fault::kFails : Fault::kThrows;
    const int what = below(30);
    if (what < 12) work(CString::format("%d", round));
    if (what >= 12 && what < 23) move(what < 18);
    if (what == 23 || what == 24) drop();
    if (what == 25) forget();
    if (what == 26 && below(5) == 0) clear();
    if (what == 27) limit();
    if (what > 27) {
      manager->markSaved();
      model.saved = model.done;
    }
    model.keepLimits();
    const std::string after = steps() + (manager->isSaved() ? "" : "*");
    ASSERT_TRUE(changes > 0 || before == after);
    ASSERT_EQ(model.text(), document.text);
    ASSERT_EQ(model.steps(0, model.done), manager->numUndoSteps());
    ASSERT_EQ(model.steps(model.done, model.size()), manager->numRedoSteps());
    ASSERT_EQ(manager->undoNames().size(), static_cast<std::size_t>(manager->numUndoSteps()));
    ASSERT_EQ(model.parts.size(), manager->numGroups());
    ASSERT_EQ(model.saved == model.done, manager->isSaved());
    ASSERT_EQ(model.bytes(), manager->numBytesUsed());
  }
}

struct UndoFault : Undo, testing::WithParamInterface<std::tuple<bool, Fault, int>> {};

// In a step of two groups with three commands each call number `k` goes wrong, and then one of the
// `k` calls that put back, or none.
TEST_P(UndoFault, LeavesDocumentAndManagerAsTheyWere) {
  const auto [undoes, fault, k] = GetParam();
  for (int second = -1; second < k; ++second) {
    const bool putsBack = second < 0;
    manager = vxUndo::newManager();
    document = Document();
    record("A", 3);
    record("B", 3, true);
    if (!undoes) manager->undo();
    manager->markSaved();
    document.callsToFault = k;
    document.callsToSecondFault = putsBack ? -1 : k + 1 + second;
    document.fault = fault;
    document.isWhole = putsBack;
    const auto error = undoes ? manager->undo() : manager->redo();
    EXPECT_EQ(putsBack ? vxUndo::kCommandFailed : vxUndo::kNotPutBack, error.code());
    EXPECT_EQ(
        CString::format("cannot %s \"A\": the command \"Append\" has failed%s%s\n",
                        undoes ? "undo" : "redo", fault == Fault::kThrows ? ": no such curve" : "",
                        putsBack ? "" : "; what was done before could not be put back"),
        error.message());
    EXPECT_EQ(undoes ? "A |" : "| A", steps());
    EXPECT_EQ(putsBack, manager->isSaved());
    EXPECT_TRUE(!putsBack || document.text == (undoes ? "abcabc" : ""));
  }
}

INSTANTIATE_TEST_SUITE_P(EveryCall, UndoFault,
                         testing::Combine(testing::Bool(),
                                          testing::Values(Fault::kFails, Fault::kThrows),
                                          testing::Range(0, 6)));

// What the failing command has recorded is undone as by `undo`, and nothing is recorded meanwhile.
TEST_F(Undo, ACommandThatFailsTakesItsOwnCommandsBack) {
  record("A", 2);
  record("B", 1);
  manager->undo();
  manager->markSaved();
  std::string log;
  vxRTB::SignalClient client;
  manager->rolling.connect(client, [&log](bool on) { log += on ? '(' : ')'; });
  Group& group = *manager->newGroup("Work");
  bool isWhole = true;
  const auto undone = [&] {
    log += add(group) ? "refused" : "recorded";
    return isWhole;
  };
  const auto perform = [&] {
    return group.perform(std::make_unique<Call>(
        [&] {
          Group& other = *manager->newGroup("Other");
          other.perform(std::make_unique<Call>([] { return true; }, undone));
          return false;
        },
        [] { return true; }));
  };
  EXPECT_EQ(vxUndo::kCommandFailed, perform().code());
  EXPECT_EQ("(refused)", log);
  EXPECT_EQ("A | B", steps());
  EXPECT_EQ(3U, manager->numGroups());
  EXPECT_TRUE(manager->isSaved());
  isWhole = false;
  EXPECT_EQ(vxUndo::kNotPutBack, perform().code());
  EXPECT_FALSE(manager->isSaved());
}

TEST_F(Undo, WorkTakesOverThatOfNewerGroups) {
  Group& group = *manager->newGroup("Work");
  const auto record = [&] {
    Group& other = *manager->newGroup("Other");
    EXPECT_TRUE(other.declare(this));
    EXPECT_NE(nullptr, manager->newGroup("Own"));
    EXPECT_FALSE(manager->dropNewestGroup());
    return !add(group) && !add(other) && !add(group) && !add(other);
  };
  EXPECT_FALSE(group.perform(std::make_unique<Call>(record, [] { return true; })));
  EXPECT_EQ(1U, manager->numGroups());
  EXPECT_EQ(5U, group.numCommands());
  EXPECT_TRUE(group.hasDeclared(this));
  EXPECT_FALSE(manager->undo());
  EXPECT_TRUE(manager->isSaved());
}

TEST_F(Undo, GroupsWithoutCommandsLeaveUndoneOnesAlone) {
  Group& done = record("A", 1);
  manager->undo();
  EXPECT_FALSE(done.add(std::make_unique<Append>(document, 'm')));
  manager->newGroup("Empty");
  manager->dropNewestGroup();
  EXPECT_EQ("| A", steps());
  EXPECT_EQ(vxUndo::kNothingLeft, manager->dropNewestGroup().code());
}

TEST_F(Undo, HeldGroupsAreNotDropped) {
  Group& outer = *manager->newGroup("Outer");
  outer.hold();
  Group& a = record("A", 1);
  a.hold();
  record("B", 1);
  manager->setLimits({.groups = 1});
  EXPECT_EQ("A B |", steps());
  EXPECT_FALSE(manager->canUndo());
  EXPECT_EQ(vxUndo::kRefused, manager->undo().code());
  int told = 0;
  vxRTB::SignalClient client;
  manager->changed.connect(client, [&told] { ++told; });
  manager->setLimits({});
  a.release();
  EXPECT_EQ(1, told);
  manager->setLimits({.groups = 1});
  EXPECT_EQ("B |", steps());
  EXPECT_FALSE(manager->undo());
  EXPECT_TRUE(manager->canRedo());
  EXPECT_FALSE(add(outer));
  EXPECT_EQ("Outer |", steps());
}

// Groups are named after what they do: "+" joins the one before, "!" starts, "?" ends that after
// the first command, "-" stays empty, "s" saves afterwards.
TEST_F(Undo, JoinedGroupsMakeOneStepUntilTheDocumentIsSaved) {
  const struct {
    const char* groups;
    const char* steps;
  } cases[] = {{"A B +C +D E", "A B E |"},      {"+A B", "+A B |"}, {"A !+B +C", "A !+B |"},
               {"As +B +C", "A +B |"},          {"A +Bs", "A |"},   {"A -E B", "A B |"},
               {"A -E +B", "A -E |"},           {"A !+?B", "A |"},  {"+?A B", "+?A B |"},
               {"A !+B +C !+?D E", "A !+B E |"}};
  for (const auto& each : cases) {
    manager->clear();
    std::istringstream words(each.groups);
    for (std::string word; words >> word;) {
      const bool saves = word.back() == 's';
      if (saves) word.pop_back();
      Group& group = *manager->newGroup(word.c_str(), word.find('+') != std::string::npos);
      if (word[0] == '!') group.start(1);
      if (word[0] != '-') add(group);
      if (word.find('?') != std::string::npos) group.start(0);
      if (saves) manager->markSaved();
    }
    EXPECT_EQ(each.steps, steps());
    manager->undo(10);
    manager->redo(10);
    EXPECT_EQ(each.steps, steps());
  }
}

TEST_F(Undo, DroppingAGroupLeavesTheOneThatTheGroupHasJoined) {
  record("A", 1);
  Group& outer = *manager->newGroup("Outer");
  Group& inner = *manager->newGroup("Inner", true);
  inner.hold();
  EXPECT_FALSE(add(inner));
  EXPECT_EQ("A Outer |", steps());
  EXPECT_FALSE(manager->dropNewestGroup());
  EXPECT_EQ("A |", steps());
  EXPECT_EQ(&outer, manager->newestGroup());
  EXPECT_TRUE(manager->canUndo());
}

namespace {

// Writes down the signals of a manager, and tries to change the history on each of them.
struct Listener {
  Listener(Manager& manager, Group& aGroup) : group(aGroup) {
    manager.rolling.connect(client, [&](bool on) { note(manager, on ? "rolling" : "rolled"); });
    manager.creationOff.connect(client, [&](bool off) { note(manager, off ? "off" : "on"); });
    manager.changed.connect(client, [&] { note(manager, "changed"); });
    manager.groupGoingAway.connect(
        client, [&](Group* gone) { note(manager, (CString("-") + gone->name()).c_str()); });
  }

  void note(Manager& manager, const char* what) {
    (log += log.empty() ? "" : " ") += what;
    attempts +=
        !manager.undo() || !manager.redo() || !manager.clear() || !manager.dropNewestGroup();
    attempts += !manager.forget(this) || manager.newGroup("No") != nullptr;
    attempts += group.add(std::make_unique<Call>([] { return true; }, [] { return true; }));
  }
  std::string takeLog() { return std::exchange(log, {}); }

  vxRTB::SignalClient client;
  Group& group;
  std::string log;
  int attempts = 0;  // that were not refused
};

}  // namespace

TEST_F(Undo, SignalsTellWhatHappensAndNothingChangesMeanwhile) {
  Group& first = record("A", 1);
  record("B", 1);
  Listener listener(*manager, first);
  manager->undo();
  EXPECT_EQ("rolling off on rolled changed", listener.takeLog());
  document.callsToFault = 0;
  EXPECT_TRUE(manager->redo());
  EXPECT_EQ("rolling off on rolled changed", listener.takeLog());
  EXPECT_FALSE(manager->undo(0));
  EXPECT_FALSE(manager->redo(-3));
  EXPECT_EQ("", listener.takeLog());
  record("C", 2);
  EXPECT_EQ("-B changed", listener.takeLog());
  manager->disableCreation();
  manager->disableCreation();
  EXPECT_EQ(nullptr, manager->newGroup("No"));
  EXPECT_FALSE(first.add(std::make_unique<Append>(document, 'm')));
  manager->undo();
  manager->enableCreation();
  EXPECT_FALSE(manager->isCreationEnabled());
  manager->enableCreation();
  EXPECT_EQ("off rolling rolled changed on", listener.takeLog());
  manager->setLimits({.groups = 1});
  EXPECT_EQ("-C changed", listener.takeLog());
  manager->markSaved();
  EXPECT_EQ("changed", listener.takeLog());
  manager.reset();
  EXPECT_EQ("-A", listener.takeLog());
  EXPECT_EQ(0, listener.attempts);
  EXPECT_EQ("error: a command is not recorded: the undo manager is at work\n",
            reports.takeAll().at(0));
}

TEST_F(Undo, CallbacksOfChangedMaySaveAndSetLimits) {
  int told = 0;
  vxRTB::SignalClient client;
  record("A", 1);
  Group& b = record("B", 1, true);
  manager->changed.connect(client, [&] {
    ++told;
    EXPECT_TRUE(manager->canUndo());
  });
  b.start(1);
  EXPECT_EQ(1, told);
  manager->changed.connect(client, [&] {
    manager->markSaved();
    manager->setLimits({.groups = 1});
  });
  record("C", 1);
  EXPECT_EQ(3, told);
  EXPECT_EQ("C |", steps());
}

TEST_F(Undo, CommandsCannotChangeTheHistoryThatCallsThem) {
  int attempts = 0;
  Group& group = *manager->newGroup("Work");
  const auto attempt = [&](bool mayMakeGroups) {
    attempts += !manager->undo() || !manager->redo() || !manager->clear();
    attempts += !manager->dropNewestGroup() || !manager->forget(this);
    if (!mayMakeGroups) manager->markSaved();
    if (!mayMakeGroups) attempts += manager->newGroup("No") != nullptr || group.add(nullptr);
    return true;
  };
  bool isDone = false;
  EXPECT_FALSE(group.perform(std::make_unique<Call>(
      [&] { return attempt(!std::exchange(isDone, true)); }, [&] { return attempt(false); })));
  EXPECT_FALSE(manager->undo());
  EXPECT_FALSE(manager->redo());
  EXPECT_EQ(0, attempts);
  EXPECT_FALSE(manager->isSaved());
}

TEST_F(Undo, ExceptionsOfListenersAreReported) {
  vxRTB::SignalClient client;
  record("A", 1);
  manager->creationOff.connect(client, [](bool) { throw std::runtime_error("too late"); });
  EXPECT_FALSE(manager->undo());
  EXPECT_EQ("", document.text);
  EXPECT_EQ(std::vector<std::string>(2, "error: undo manager: too late\n"), reports.takeAll());
}

TEST_F(Undo, InstallingAManagerReplacesTheOneBeforeUnlessThatIsAtWork) {
  int gone = 0;
  vxRTB::SignalClient client;
  EXPECT_TRUE(vxUndo::installManager(vxUndo::newManager()));
  Manager* const installed = vxUndo::manager();
  installed->groupGoingAway.connect(client, [&gone](Group*) { ++gone; });
  installed->newGroup("A");
  const auto replace = [] { return !vxUndo::installManager(nullptr); };
  EXPECT_FALSE(installed->newGroup("B")->perform(std::make_unique<Call>(replace, replace)));
  EXPECT_FALSE(installed->undo());
  EXPECT_EQ(installed, vxUndo::manager());
  EXPECT_TRUE(vxUndo::installManager(nullptr));
  EXPECT_EQ(2, gone);
  EXPECT_EQ(nullptr, vxUndo::manager());
}
