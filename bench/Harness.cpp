#include "Harness.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace bench {

namespace {

// A round gives each contestant one block of repetitions of at least this length, so that the
// clock's resolution does not matter.
constexpr double kBlockSeconds = 0.002;
constexpr int kFewestRounds = 3;
constexpr int kMostRounds = 100;

// Keeps of each benchmark, named by its number, the least time of a repetition.
class MinimumReporter : public benchmark::BenchmarkReporter {
 public:
  explicit MinimumReporter(std::size_t count)
      : seconds_(count, std::numeric_limits<double>::infinity()) {}

  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      double& least = seconds_[std::stoul(run.run_name.function_name)];
      least = std::min(least, run.real_accumulated_time / static_cast<double>(run.iterations));
    }
  }

  const Values& seconds() const { return seconds_; }

 private:
  Values seconds_;
};

// Makes the library take the repetitions of all benchmarks in random order, not one after the
// other.
void interleaveRepetitions() {
  static const bool done = [] {
    char program[] = "kiln_bench";
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    std::array<char*, 3> arguments = {program, interleave, nullptr};
    int count = 2;
    benchmark::Initialize(&count, arguments.data());
    return true;
  }();
  static_cast<void>(done);
}

Values minimumSeconds(const std::vector<Contestant>& contestants, int rounds) {
  interleaveRepetitions();
  benchmark::ClearRegisteredBenchmarks();
  for (std::size_t i = 0; i < contestants.size(); ++i) {
    benchmark::RegisterBenchmark(std::to_string(i).c_str(), contestants[i].loop)
        ->MinTime(kBlockSeconds)
        ->Repetitions(rounds)
        ->UseRealTime();
  }
  MinimumReporter reporter(contestants.size());
  benchmark::RunSpecifiedBenchmarks(&reporter, "all");
  return reporter.seconds();
}

// Each block is preceded by one repetition that is not timed.
int roundsWithin(double seconds, const Values& once) {
  double round = 0.0;
  for (const double operation : once) round += operation + std::max(operation, kBlockSeconds);
  return static_cast<int>(std::clamp(seconds / round, double{kFewestRounds}, double{kMostRounds}));
}

double norm(const Values& values) {
  double sum = 0.0;
  for (const double value : values) sum += value * value;
  return std::sqrt(sum);
}

bool agree(const Values& a, const Values& b, const Shape& shape) {
  if (a.size() != b.size()) return false;
  Values difference(a.size());
  std::transform(a.begin(), a.end(), b.begin(), difference.begin(), std::minus<>());
  const double roundOff = std::numeric_limits<double>::epsilon() * (shape.rows + shape.columns);
  return norm(difference) <= 1000.0 * roundOff * norm(a);
}

}  // namespace

std::string text(const Shape& shape) {
  const std::string rows = std::to_string(shape.rows);
  const bool plain = shape.columns == 1 || shape.columns == shape.rows;
  return plain ? rows : rows + "x" + std::to_string(shape.columns);
}

void Suite::addPeer(const std::string& operation, Peer peer) {
  const auto found = std::find_if(operations_.begin(), operations_.end(),
                                  [&](const Operation& each) { return each.name == operation; });
  if (found == operations_.end()) throw std::invalid_argument("no operation '" + operation + "'");
  found->peers.push_back(std::move(peer));
}

Measurement measure(const Operation& operation, const Shape& shape, double seconds) {
  std::vector<Contestant> contestants = {operation.ours(shape)};
  const Values expected = contestants.front().result();
  Measurement measurement = {&operation, shape, 0.0, {}};
  for (const Peer& peer : operation.peers) {
    if (shape.rows > peer.largest) continue;
    contestants.push_back(peer.make(shape));
    measurement.peers.push_back({peer.name, 0.0});
    if (agree(expected, contestants.back().result(), shape)) continue;
    throw Disagreement(operation.name + " " + text(shape) + ": the result of " + peer.name +
                       " is not ours");
  }
  const int rounds = roundsWithin(seconds, minimumSeconds(contestants, 1));
  const Values times = minimumSeconds(contestants, rounds);
  measurement.ours = times.front();
  for (std::size_t i = 1; i < times.size(); ++i) measurement.peers[i - 1].seconds = times[i];
  return measurement;
}

}  // namespace bench
