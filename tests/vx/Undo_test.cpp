#include <algorithm>
#include <array>
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

// A document of numbers, and the call of a command (counted from now on) that goes wrong.
struct Document {
  std::array<int, 5> numbers{};
  int callsToFault = -1;
  int callsToSecondFault = -1;
  Fault fault = Fault::kFails;
  bool isWhole = true;
  int commands = 0;
  std::int64_t bytes = 0;

  bool succeeds() {
    const bool isSecond = callsToSecondFault-- == 0;
    if (callsToFault-- != 0 && !isSecond) return true;
    if (fault == Fault::kThrows) throw std::runtime_error("no such curve");
    return false;
  }
  void noFault() { callsToFault = callsToSecondFault = -1; }
};

// Adds to a number; holds more memory while it is done.
class Add : public vxUndo::Command {
 public:
  Add(Document& document, std::size_t place, int summand)
      : Command("Add"), document_(document), place_(place), summand_(summand) {
    ++document_.commands;
    document_.bytes += 3;
  }
  ~Add() override {
    --document_.commands;
    document_.bytes -= getNumBytesUsed();
    EXPECT_TRUE(isDone_ == isCommitted_ || !document_.isWhole);
  }

  bool doIt() override { return change(true); }
  bool undoIt() override { return change(false); }
  int getNumBytesUsed() const override { return isDone_ ? 10 : 3; }
  void commit() override {
    EXPECT_FALSE(isCommitted_);
    isCommitted_ = true;
  }

 private:
  bool change(bool makesDone) {
    if (!document_.succeeds()) return false;
    EXPECT_NE(makesDone, isDone_);
    isDone_ = makesDone;
    document_.numbers[place_] += makesDone ? summand_ : -summand_;
    document_.bytes += makesDone ? 7 : -7;
    return true;
  }

  Document& document_;
  std::size_t place_;
  int summand_;
  bool isDone_ = false;
  bool isCommitted_ = false;
};

// Calls functions when it is done and undone.
struct Call : vxUndo::Command {
  Call(std::function<bool()> done, std::function<bool()> undone)
      : Command("Call"), whenDone(std::move(done)), whenUndone(std::move(undone)) {}
  bool doIt() override { return whenDone(); }
  bool undoIt() override { return whenUndone(); }
  std::function<bool()> whenDone, whenUndone;
};

struct Undo : testing::Test {
  ~Undo() override {
    manager.reset();
    EXPECT_EQ(0, document.commands);
  }

  // A group with commands that add 1, 10, 100, ... to the first number.
  Group& record(const char* name, int commands, bool joins = false) {
    Group& group = *manager->newGroup(name, joins);
    for (int i = 0, summand = 1; i < commands; ++i, summand *= 10) add(group, 0, summand);
    return group;
  }
  vxUtil::Error add(Group& group, std::size_t place = 0, int summand = 1) {
    return group.perform(std::make_unique<Add>(document, place, summand));
  }
  // The steps, such as "A B | C": done ones, and after the bar those that were undone.
  std::string steps() const {
    std::string done, undone;
    for (const CString& name : manager->undoNames()) done.insert(0, (name + ' ').c_str());
    for (const CString& name : manager->redoNames()) (undone += ' ') += name.c_str();
    return done + '|' + undone;
  }
  int number() const { return document.numbers[0]; }

  Document document;
  std::unique_ptr<Manager> manager = vxUndo::newManager();
};

using Numbers = std::array<int, 5>;

// The simple model: each step with its number of groups and the state of the document after it.
struct Model {
  struct Step {
    std::size_t groups;
    Numbers after;
  };
  Numbers oldest{};
  std::vector<Step> steps;
  int done = 0;
  int saved = 0;  // so many steps done; below 0 when the saved state cannot be reached
  int limit = 1000;

  const Numbers& now() const {
    return done > 0 ? steps[static_cast<std::size_t>(done) - 1].after : oldest;
  }
  int undone() const { return static_cast<int>(steps.size()) - done; }

  void record(const Numbers& after, bool joins) {
    steps.resize(static_cast<std::size_t>(done));
    if (saved > done) saved = -1;
    if (joins && done > 0 && saved != done) {
      steps.back() = {steps.back().groups + 1, after};
    } else {
      steps.push_back({1, after});
      ++done;
    }
    keepLimit();
  }

  std::size_t groups() const {
    std::size_t sum = 0;
    for (const Step& step : steps) sum += step.groups;
    return sum;
  }

  void keepLimit() {
    while (static_cast<int>(groups()) > limit && steps.size() > 1) {
      if (done > 1) {
        oldest = steps.front().after;
        steps.erase(steps.begin());
        --done;
        saved = std::max(saved - 1, -1);
      } else {
        if (saved == static_cast<int>(steps.size())) saved = -1;
        steps.pop_back();
      }
    }
  }
};

}  // namespace

TEST_F(Undo, RandomWorkWithFaultsFollowsTheModel) {
  std::mt19937 random(12);
  const auto below = [&random](unsigned n) { return static_cast<int>(random() % n); };
  Model model;
  const auto work = [&] {
    const bool joins = below(3) == 0;
    Group& group = *manager->newGroup("Work", joins);
    for (int i = below(5); i > 0; --i) {
      const Numbers before = document.numbers;
      const bool fails = static_cast<bool>(add(group, random() % 5, 1 + below(9)));
      ASSERT_EQ(fails, before == document.numbers);
    }
    if (!group.isEmpty()) return model.record(document.numbers, joins);
    ASSERT_FALSE(manager->dropNewestGroup());
  };
  const auto move = [&](bool back) {
    const int steps = 1 + below(4);
    const int possible = std::min(steps, back ? model.done : model.undone());
    const int code = (back ? manager->undo(steps) : manager->redo(steps)).code();
    const int done = static_cast<int>(manager->undoNames().size());
    const int taken = back ? model.done - done : done - model.done;
    ASSERT_EQ(code == vxUndo::kNothingLeft, possible == 0);
    ASSERT_EQ(code == vxUndo::kCommandFailed, taken < possible);
    ASSERT_LE(taken, possible);
    model.done = done;
  };
  for (int round = 0; round < 20000; ++round) {
    SCOPED_TRACE(round);
    document.callsToFault = below(3) == 0 ? below(8) : -1;
    document.fault = below(2) == 0 ? Fault::kFails : Fault::kThrows;
    const int what = below(10);
    if (what < 4) work();
    if (what >= 4 && what < 8) move(what < 6);
    if (what == 8) {
      manager->markSaved();
      model.saved = model.done;
    } else if (what == 9) {
      model.limit = below(2) == 0 ? below(20) : 1000;
      manager->setLimits({.groups = model.limit});
      model.keepLimit();
    }
    ASSERT_EQ(model.now(), document.numbers);
    ASSERT_EQ(model.done, static_cast<int>(manager->undoNames().size()));
    ASSERT_EQ(model.undone(), static_cast<int>(manager->redoNames().size()));
    ASSERT_EQ(model.groups(), manager->numGroups());
    ASSERT_EQ(model.saved == model.done, manager->isSaved());
    ASSERT_EQ(document.bytes, manager->numBytesUsed());
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
        CString::format("cannot %s \"A\": the command \"Add\" has failed%s%s\n",
                        undoes ? "undo" : "redo", fault == Fault::kThrows ? ": no such curve" : "",
                        putsBack ? "" : "; what was done before could not be put back"),
        error.message());
    EXPECT_EQ(undoes ? "A |" : "| A", steps());
    EXPECT_EQ(putsBack, manager->isSaved());
    EXPECT_TRUE(!putsBack || number() == (undoes ? 222 : 0));
  }
}

INSTANTIATE_TEST_SUITE_P(EveryCall, UndoFault,
                         testing::Combine(testing::Bool(),
                                          testing::Values(Fault::kFails, Fault::kThrows),
                                          testing::Range(0, 6)));

// The outer command performs two commands in its group before its own call number `fault`.
TEST_F(Undo, ACommandThatFailsInTheMiddleTakesItsOwnCommandsBack) {
  record("A", 2);
  record("B", 1);
  manager->undo();
  Group& group = *manager->newGroup("Work", false);
  const auto perform = [&] {
    return group.perform(std::make_unique<Call>(
        [&] { return !add(group) && !add(group) && document.succeeds(); }, [] { return true; }));
  };
  for (const int fault : {0, 1, 2}) {
    document.callsToFault = fault;
    EXPECT_EQ(vxUndo::kCommandFailed, perform().code());
    EXPECT_EQ(11, number());
    EXPECT_TRUE(group.isEmpty());
    EXPECT_EQ(0, group.numBytesUsed());
  }
  document.noFault();
  EXPECT_FALSE(perform());
  EXPECT_EQ(3U, group.numCommands());
  EXPECT_EQ("A Work |", steps());
  document.callsToFault = 2;
  document.callsToSecondFault = 3;
  document.isWhole = false;
  EXPECT_EQ(vxUndo::kNotPutBack, perform().code());
  EXPECT_FALSE(manager->isSaved());
}

TEST_F(Undo, TheFirstCommandOfAGroupCutsOffWhatWasUndone) {
  Group& early = *manager->newGroup("Early");
  record("A", 1);
  Group& done = record("B", 1);
  manager->undo(2);
  EXPECT_EQ("| A B", steps());
  EXPECT_FALSE(done.add(std::make_unique<Add>(document, 0, 1)));
  manager->newGroup("Empty");
  manager->dropNewestGroup();
  EXPECT_EQ("| A B", steps());
  EXPECT_FALSE(add(early, 0, 5));
  EXPECT_EQ("Early |", steps());
  EXPECT_EQ(5, number());
  EXPECT_EQ(1U, manager->numGroups());

  Group& older = record("C", 1);
  record("D", 1);
  manager->undo();
  EXPECT_FALSE(add(older));
  EXPECT_EQ("Early C |", steps());
}

TEST_F(Undo, HeldGroupsAreNotDroppedAndStayTheNewest) {
  record("A", 1).hold();
  record("B", 1);
  manager->setLimits({.groups = 1, .bytes = 15});
  EXPECT_EQ("A B |", steps());
  EXPECT_EQ(vxUndo::kRefused, manager->undo().code());
  Group& a = *manager->newGroup("C");
  a.hold();
  EXPECT_EQ(vxUndo::kRefused, manager->redo().code());
  manager->forget(nullptr);
  EXPECT_EQ("A B |", steps());
  manager->clear();

  record("A", 2);
  EXPECT_EQ("A |", steps());  // the last step stays, whatever its bytes
  Group& open = *manager->newGroup("Open");
  open.hold();
  for (const bool back : {true, false}) {
    EXPECT_FALSE(back ? manager->undo() : manager->redo());
    EXPECT_EQ(&open, manager->newestGroup());
  }
  Group& other = *manager->newGroup("Other");
  EXPECT_FALSE(manager->undo());
  EXPECT_FALSE(add(other));
  EXPECT_EQ(2U, manager->numGroups());
  EXPECT_FALSE(add(open));
  open.release();
  EXPECT_EQ(1U, manager->undoNames().size());
}

// Groups are named after what they do: "+" joins the one before, "!" starts, "-" stays empty, "s"
// saves afterwards.
TEST_F(Undo, JoinedGroupsMakeOneStepUntilTheDocumentIsSaved) {
  const struct {
    const char* groups;
    const char* steps;
  } cases[] = {{"A B +C +D E", "A B E |"}, {"+A B", "+A B |"}, {"A !+B +C", "A !+B |"},
               {"As +B +C", "A +B |"},     {"A +Bs", "A |"},   {"A -E B", "A B |"}};
  for (const auto& each : cases) {
    manager->clear();
    std::istringstream words(each.groups);
    for (std::string word; words >> word;) {
      const bool saves = word.back() == 's';
      if (saves) word.pop_back();
      Group& group = *manager->newGroup(word.c_str(), word.find('+') != std::string::npos);
      if (word[0] == '!') group.start(1);
      if (word[0] != '-') add(group);
      if (saves) manager->markSaved();
    }
    EXPECT_EQ(each.steps, steps());
    manager->undo(10);
    manager->redo(10);
    EXPECT_EQ(each.steps, steps());
  }
}

TEST_F(Undo, WorkInASavedGroupLosesTheSavedState) {
  Group& group = record("A", 1);
  manager->newGroup("Empty");
  manager->markSaved();
  EXPECT_FALSE(add(group));
  for (const bool back : {true, false}) {
    EXPECT_FALSE(manager->isSaved());
    EXPECT_FALSE(back ? manager->undo() : manager->redo());
  }
}

// In the steps A, B with a second group, and D.
TEST_F(Undo, ForgettingDataDropsAllThatLeadsThroughIt) {
  const struct {
    std::size_t declaring;
    int undone;
    const char* left;
  } cases[] = {{0, 0, "B D |"}, {2, 0, "D |"}, {3, 0, "|"},     {2, 1, "| D"}, {3, 1, "A B |"},
               {2, 2, "A |"},   {0, 3, "|"},   {3, 3, "| A B"}, {2, 3, "| A"}};
  const int data = 0;
  for (const auto& each : cases) {
    Group* groups[] = {&record("A", 1), &record("B", 1), &record("C", 1, true), &record("D", 1)};
    EXPECT_TRUE(groups[each.declaring]->declare(&data));
    manager->undo(each.undone);
    EXPECT_FALSE(manager->forget(&data));
    EXPECT_EQ(each.left, steps());
    manager->clear();
  }
}

TEST_F(Undo, DroppingTheNewestGroupTakesItsCommandsBack) {
  EXPECT_EQ(vxUndo::kNothingLeft, manager->dropNewestGroup().code());
  record("A", 1);
  record("B", 2).hold();
  document.callsToFault = 1;
  EXPECT_EQ(vxUndo::kCommandFailed, manager->dropNewestGroup().code());
  EXPECT_EQ("A B |", steps());
  EXPECT_EQ(12, number());
  manager->newestGroup()->release();
  record("C", 1);
  manager->undo();
  EXPECT_FALSE(manager->dropNewestGroup());
  EXPECT_EQ("A |", steps());
  EXPECT_EQ(1, number());
  EXPECT_FALSE(manager->undo());
  EXPECT_TRUE(manager->isSaved());
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
  record("C", 2);
  EXPECT_EQ("-B changed", listener.takeLog());
  manager->disableCreation();
  manager->disableCreation();
  EXPECT_EQ(nullptr, manager->newGroup("No"));
  EXPECT_FALSE(first.add(std::make_unique<Add>(document, 0, 1)));
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
  kilntest::RecordedReports reports;
  vxRTB::SignalClient client;
  record("A", 1);
  manager->creationOff.connect(client, [](bool) { throw std::runtime_error("too late"); });
  EXPECT_FALSE(manager->undo());
  EXPECT_EQ(0, number());
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
