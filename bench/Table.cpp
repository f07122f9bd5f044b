#include "Table.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <ostream>

#include "Text.h"

namespace bench {

namespace {

// Named peer, target and verdict.
constexpr std::size_t kTextColumns = 3;

// Ratios are compared with their limits as they are printed.
double ratio(double ours, double peer) {
  return std::round(100.0 * ours / peer) / 100.0;
}

const Time* find(const std::vector<Time>& times, const std::string& peer) {
  const auto found =
      std::find_if(times.begin(), times.end(), [&](const Time& time) { return time.way == peer; });
  return found == times.end() ? nullptr : &*found;
}

// All peers, in the order in which they turn up.
std::vector<std::string> peersOf(const std::vector<Measurement>& measurements) {
  std::vector<std::string> peers;
  for (const Measurement& measurement : measurements) {
    for (const Time& time : measurement.peers) {
      if (std::find(peers.begin(), peers.end(), time.way) == peers.end()) {
        peers.push_back(time.way);
      }
    }
  }
  return peers;
}

// The fastest peer, or null when there is none.
const Time* fastestPeer(const Measurement& measurement) {
  const auto fastest =
      std::min_element(measurement.peers.begin(), measurement.peers.end(),
                       [](const Time& a, const Time& b) { return a.seconds < b.seconds; });
  return fastest == measurement.peers.end() ? nullptr : &*fastest;
}

// What a measurement comes to against its limits.
class Verdict {
 public:
  explicit Verdict(const Measurement& measurement) {
    const Operation& operation = *measurement.operation;
    const Limits limits = operation.limits(measurement.shape);
    if (const Time* fastest = fastestPeer(measurement)) {
      best_ = ratioText(ratio(measurement.ours.seconds, fastest->seconds));
      hold("best", ratio(measurement.ours.seconds, fastest->seconds), limits.best);
    }
    for (const std::string& peer : operation.namedPeers) {
      if (const Time* time = find(measurement.peers, peer)) {
        append(named_, peer + " " + ratioText(ratio(measurement.ours.seconds, time->seconds)));
        hold(peer, ratio(measurement.ours.seconds, time->seconds), limits.named);
      }
    }
  }

  bool over() const { return over_; }
  Row cells() const {
    return {best_, named_, targets_, targets_.empty() ? "" : over_ ? "over" : "ok"};
  }

 private:
  void hold(const std::string& peer, double value, double limit) {
    if (limit == 0.0) return;
    append(targets_, peer + " <= " + formatted("%.4g", limit));
    over_ = over_ || value > limit;
  }
  static void append(std::string& list, const std::string& item) {
    list += (list.empty() ? "" : ", ") + item;
  }

  std::string best_;
  std::string named_;
  std::string targets_;
  bool over_ = false;
};

// The part of the peak that the operation reaches, in hundredths.
std::string shareOfPeak(const Measurement& measurement) {
  const Operation& operation = *measurement.operation;
  if (!operation.flops) return "";
  const double speed = operation.flops(measurement.shape) / measurement.ours.seconds;
  return formatted("%.0f%%", 100.0 * speed / measurement.peak);
}

Row rowOf(const Measurement& measurement, const std::vector<std::string>& peers,
          const Verdict& verdict) {
  Row row = {measurement.operation->name, text(measurement.shape),
             timeText(measurement.ours.seconds)};
  for (const std::string& peer : peers) {
    const Time* time = find(measurement.peers, peer);
    row.push_back(time == nullptr ? "" : timeText(time->seconds));
  }
  row.push_back(shareOfPeak(measurement));
  for (std::string& cell : verdict.cells()) row.push_back(std::move(cell));
  return row;
}

// As the system calls it.
std::string processorName() {
  std::ifstream cpus("/proc/cpuinfo");
  for (std::string line; std::getline(cpus, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(": ") + 2);
  }
  return "Unknown processor";
}

}  // namespace

int printTable(std::ostream& stream, const std::vector<Measurement>& measurements) {
  const std::vector<std::string> peers = peersOf(measurements);
  Row head = {"operation", "size", "ours"};
  head.insert(head.end(), peers.begin(), peers.end());
  for (const char* title : {"of peak", "best", "named peer", "target", "verdict"})
    head.push_back(title);
  std::vector<Row> rows = {head};
  int over = 0;
  for (const Measurement& measurement : measurements) {
    const Verdict verdict(measurement);
    rows.push_back(rowOf(measurement, peers, verdict));
    over += verdict.over();
  }
  printRows(stream, rows, kTextColumns);
  return over;
}

void printSummary(std::ostream& stream, const std::vector<Measurement>& measurements) {
  stream << "# Beside its peers\n\nTimes on one thread of " << processorName()
         << ", compiled by GCC " << __VERSION__
         << ". A ratio below 1 says that libKilnBase is faster. The size is that of the matrix, or "
            "how many points are transformed and keys are found. `kiln_bench --summary FILE` "
            "writes this page; [bench/README.md](../bench/README.md) tells how it measures.\n\n"
            "| Operation | Size | libKilnBase | Fastest other | Ratio |\n|---|--:|--:|--:|--:|\n";
  for (const Measurement& each : measurements) {
    stream << "| " << each.operation->name << " | " << text(each.shape) << " | "
           << timeText(each.ours.seconds) << " | ";
    if (const Time* fastest = fastestPeer(each)) {
      stream << fastest->way << ", " << timeText(fastest->seconds) << " | "
             << ratioText(ratio(each.ours.seconds, fastest->seconds)) << " |\n";
    } else {
      stream << "none is installed | |\n";
    }
  }
}

}  // namespace bench
