// Measures operations of the library beside the same operations of its peers.
//
// A family (families/) adds operations to a Suite: a name, the sizes, how the library does it, how
// peers do it, and the ratios to reach. `measure` then takes one operation at one size: all ways
// must give the same numbers before they are timed, in turns and in one process, so that only
// ratios are compared.
#pragma once

#include <benchmark/benchmark.h>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace bench {

using Values = std::vector<double>;

struct Shape {
  int rows;
  int columns;  ///< 1 for vectors.
};

/// "100" for square matrices and for vectors, "1000x50" for others.
std::string text(const Shape& shape);

/// One way to carry out an operation, with its own copy of the data.
struct Contestant {
  std::function<void(benchmark::State&)> loop;  ///< Repeats the operation under the clock.
  std::function<Values()> result;               ///< Carries it out once and tells what came out.
};

/// `run` carries out the whole operation once; what it returns is kept from the optimiser. `read`
/// makes of that the numbers on which all ways must agree.
template <class Run, class Read>
Contestant contestant(Run run, Read read) {
  const auto shared = std::make_shared<Run>(std::move(run));
  const auto loop = [shared](benchmark::State& state) {
    Run& operation = *shared;
    benchmark::DoNotOptimize(operation());  // the caches hold this contestant's data from here on
    for (auto _ : state) benchmark::DoNotOptimize(operation());
  };
  return {loop, [shared, read] { return read((*shared)()); }};
}

using Maker = std::function<Contestant(const Shape&)>;

struct Peer {
  std::string name;  ///< Heads the column of the table.
  Maker make;
  int largest = std::numeric_limits<int>::max();  ///< Rows beyond which it is left out.
};

/// Ratios of times, ours to the peer's, that are to be reached; 0 where there is none.
struct Limits {
  double best = 0.0;   ///< To the fastest peer.
  double named = 0.0;  ///< To each of the operation's named peers.
};

struct Operation {
  std::string name;
  std::vector<Shape> shapes;
  std::vector<std::string> namedPeers;
  std::function<Limits(const Shape&)> limits;
  Maker ours;
  std::vector<Peer> peers;
  /// Additions and multiplications that the result takes; empty where nobody asks.
  std::function<double(const Shape&)> flops = {};
};

class Suite {
 public:
  /// The reference stays good.
  Operation& add(Operation operation) { return operations_.emplace_back(std::move(operation)); }
  /// Throws std::invalid_argument when no operation has this name.
  void addPeer(const std::string& operation, Peer peer);

  const std::deque<Operation>& operations() const { return operations_; }

 private:
  std::deque<Operation> operations_;
};

struct Time {
  std::string way;  ///< "ours", or the name of the peer.
  double seconds;   ///< The least of all rounds.
  double noise;     ///< By which part of it the median of the passes is longer.
};

struct Measurement {
  const Operation* operation;
  Shape shape;
  Time ours;
  std::vector<Time> peers;
  double peak;  ///< Operations a second on registers, measured beside; 0 for one without `flops`.
};

/// Raised by `measure` when a peer's numbers are not ours.
class Disagreement : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Carries out an operation once in all ways; raises Disagreement.
void check(const Operation& operation, const Shape& shape);

/// Checks, then times all ways of doing an operation, and takes the minimum of each over as many
/// rounds as fit into about `seconds`, at least four.
Measurement measure(const Operation& operation, const Shape& shape, double seconds);

}  // namespace bench
