#include <memory>
#include <vector>

#include <vx/Undo.h>

#include "families/Families.h"

namespace bench {

namespace {

class Add : public vxUndo::Command {
 public:
  Add(double& sum, int summand) : Command("Add"), sum_(sum), summand_(summand) {}
  bool doIt() override { return add(summand_); }
  bool undoIt() override { return add(-summand_); }

 private:
  bool add(int summand) {
    sum_ += summand;
    return true;
  }

  double& sum_;
  int summand_;
};

// As many commands as there are rows, in as many groups as there are columns, which all have been
// done. What is measured takes all of them back, and does them again.
struct Managed {
  explicit Managed(const Shape& shape) : manager(vxUndo::newManager()) {
    for (int group = 0; group < shape.columns; ++group) {
      vxUndo::Group& work = *manager->newGroup("Work");
      for (int i = 0; i < shape.rows / shape.columns; ++i) {
        work.perform(std::make_unique<Add>(*sum, i));
      }
    }
  }

  double undoAndRedo(int steps) {
    manager->undo(steps);
    const double undone = *sum;
    manager->redo(steps);
    return undone + *sum;
  }

  std::unique_ptr<double> sum = std::make_unique<double>(0.0);
  std::unique_ptr<vxUndo::Manager> manager;
};

// The same calls in plain loops.
struct Looped {
  explicit Looped(const Shape& shape) {
    for (int group = 0; group < shape.columns; ++group) {
      for (int i = 0; i < shape.rows / shape.columns; ++i) {
        commands.push_back(std::make_unique<Add>(*sum, i));
        commands.back()->doIt();
      }
    }
  }

  double undoAndRedo(int) {
    for (auto command = commands.rbegin(); command != commands.rend(); ++command) {
      if (!(*command)->undoIt()) return 0.0;
    }
    const double undone = *sum;
    for (const auto& command : commands) {
      if (!command->doIt()) return 0.0;
    }
    return undone + *sum;
  }

  std::unique_ptr<double> sum = std::make_unique<double>(0.0);
  std::vector<std::unique_ptr<vxUndo::Command>> commands;
};

template <class Commands>
Contestant undoAndRedo(const Shape& shape) {
  const auto commands = std::make_shared<Commands>(shape);
  return contestant([commands, groups = shape.columns] { return commands->undoAndRedo(groups); },
                    [](double sums) { return Values{sums}; });
}

// Records as many groups of one command as there are rows. The limit keeps 100 of them.
double recordManaged(int groups) {
  double sum = 0.0;
  const auto manager = vxUndo::newManager();
  manager->setLimits({.groups = 100});
  for (int i = 0; i < groups; ++i) {
    manager->newGroup("Work")->perform(std::make_unique<Add>(sum, i));
  }
  return sum;
}

double recordLooped(int groups) {
  double sum = 0.0;
  std::vector<std::unique_ptr<vxUndo::Command>> ring(100);
  for (int i = 0; i < groups; ++i) {
    auto& place = ring[static_cast<std::size_t>(i) % ring.size()];
    place = std::make_unique<Add>(sum, i);
    place->doIt();
  }
  return sum;
}

Maker recording(double (*record)(int)) {
  return [record](const Shape& shape) {
    return contestant([record, n = shape.rows] { return record(n); },
                      [](double sum) { return Values{sum}; });
  };
}

// A call may take 20 ns above the same call in the loop, where it takes 6 ns (2 * 10^6 calls in 12
// ms, AVX-512 Xeon at 2.1 GHz): 1 + 20 / 6. One call in 1000 commands takes 3 ns in the loop.
constexpr double kUndoRatio = 4.3;

// In a group of its own a call may take as much, but two blocks of memory are read for the call: 18
// to 20 ns above the loop were measured with 10^6 groups on the loaded processor, 5 ns with 1000.
constexpr double kSingleUndoRatio = 5.0;

// A recorded group takes its memory in two pieces, the one of the loop in one.
constexpr double kRecordRatio = 6.0;

}  // namespace

void addUndo(Suite& suite) {
  suite.add({"undo and redo",
             {{1000, 1}, {1000000, 1}, {1000000, 1000}, {1000000, 500000}, {1000000, 1000000}},
             {"loop"},
             [](const Shape& shape) {
               return Limits{.named = shape.rows == shape.columns ? kSingleUndoRatio : kUndoRatio};
             },
             undoAndRedo<Managed>,
             {{"loop", undoAndRedo<Looped>}}});
  suite.add({"record undo groups",
             {{1000, 1}, {100000, 1}, {1000000, 1}},
             {"loop"},
             [](const Shape&) { return Limits{.named = kRecordRatio}; },
             recording(recordManaged),
             {{"loop", recording(recordLooped)}}});
}

}  // namespace bench
