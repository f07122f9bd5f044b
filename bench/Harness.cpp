#include "Harness.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "peers/Peak.h"

namespace bench {

namespace {

// A round gives each contestant one block of repetitions of at least this length, so that the
// clock's resolution does not matter.
constexpr double kBlockSeconds = 0.002;
constexpr double kFewestRounds = 4.0;
constexpr double kMostRounds = 100.0;
// Which pages the data lies on decides what of it stays in the caches. In each pass the contestants
// make theirs anew, another one first, so that the good places go round.
constexpr int kMostPasses = 8;

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
  return static_cast<int>(std::clamp(seconds / round, kFewestRounds, kMostRounds));
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

// Ours, then the peers that take part at this size.
std::vector<Peer> waysOf(const Operation& operation, const Shape& shape) {
  std::vector<Peer> ways = {{"ours", operation.ours}};
  for (const Peer& peer : operation.peers) {
    if (shape.rows <= peer.largest) ways.push_back(peer);
  }
  return ways;
}

// Leaves gaps of odd sizes on the heap for as long as it lives, into which data falls as it
// happens.
class ScatteredHeap {
 public:
  explicit ScatteredHeap(unsigned seed) {
    std::mt19937 generator(seed);
    std::uniform_int_distribution<std::size_t> size(64, 20000);
    for (int i = 0; i < 400; ++i) blocks_.push_back(std::make_unique<char[]>(size(generator)));
    for (std::size_t i = 0; i < blocks_.size(); i += 2) blocks_[i].reset();
  }

 private:
  std::vector<std::unique_ptr<char[]>> blocks_;
};

// In the order of `ways`, but made from number `first` on, round and round.
std::vector<Contestant> contestantsOf(const std::vector<Peer>& ways, const Shape& shape,
                                      std::size_t first) {
  std::vector<Contestant> contestants(ways.size());
  for (std::size_t i = 0; i < ways.size(); ++i) {
    const std::size_t next = (first + i) % ways.size();
    contestants[next] = ways[next].make(shape);
  }
  return contestants;
}

// Raises Disagreement unless all contestants have the result of the first.
std::vector<Contestant> agreeingContestants(const Operation& operation,
                                            const std::vector<Peer>& ways, const Shape& shape) {
  std::vector<Contestant> contestants = contestantsOf(ways, shape, 0);
  const Values expected = contestants.front().result();
  for (std::size_t i = 1; i < ways.size(); ++i) {
    if (agree(expected, contestants[i].result(), shape)) continue;
    throw Disagreement(operation.name + " " + text(shape) + ": the result of " + ways[i].name +
                       " is not ours");
  }
  return contestants;
}

// `passes` are the least times of the passes.
Time timeOf(const std::string& way, Values passes) {
  std::ranges::sort(passes);
  const double least = passes.front();
  return {way, least, passes[passes.size() / 2] / least - 1.0};
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

void check(const Operation& operation, const Shape& shape) {
  agreeingContestants(operation, waysOf(operation, shape), shape);
}

Measurement measure(const Operation& operation, const Shape& shape, double seconds) {
  const std::vector<Peer> ways = waysOf(operation, shape);
  std::vector<Contestant> contestants = agreeingContestants(operation, ways, shape);
  const int rounds = roundsWithin(seconds, minimumSeconds(contestants, 1));
  const int passes = std::min(rounds, kMostPasses);
  std::vector<Values> times(ways.size());
  double peak = 0.0;
  for (int pass = 0; pass < passes; ++pass) {
    contestants.clear();
    const ScatteredHeap heap(static_cast<unsigned>(pass));
    contestants = contestantsOf(ways, shape, static_cast<std::size_t>(pass));
    const Values least = minimumSeconds(contestants, rounds / passes);
    for (std::size_t i = 0; i < times.size(); ++i) times[i].push_back(least[i]);
    if (operation.flops) peak = std::max(peak, peakFlops());
  }
  Measurement measurement = {&operation, shape, timeOf(ways.front().name, times.front()), {}, peak};
  for (std::size_t i = 1; i < ways.size(); ++i) {
    measurement.peers.push_back(timeOf(ways[i].name, times[i]));
  }
  return measurement;
}

}  // namespace bench
