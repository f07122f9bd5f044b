#include "Table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <ostream>

namespace bench {

namespace {

using Row = std::vector<std::string>;

std::string formatted(const char* format, double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, format, value);
  return buffer;
}

// Three digits and a unit.
std::string timeText(double seconds) {
  constexpr const char* kUnits[] = {"ns", "us", "ms", "s"};
  double value = seconds * 1e9;
  std::size_t unit = 0;
  for (; value >= 999.5 && unit < 3; ++unit) value /= 1e3;
  const char* format = value < 9.995 ? "%.2f " : value < 99.95 ? "%.1f " : "%.0f ";
  return formatted(format, value) + kUnits[unit];
}

// Ratios are compared with their limits as they are printed.
double ratio(double ours, double peer) {
  return std::round(100.0 * ours / peer) / 100.0;
}

std::string ratioText(double value) {
  return formatted("%.2f", value);
}

const Time* find(const std::vector<Time>& times, const std::string& peer) {
  const auto found =
      std::find_if(times.begin(), times.end(), [&](const Time& time) { return time.peer == peer; });
  return found == times.end() ? nullptr : &*found;
}

// All peers, in the order in which they turn up.
std::vector<std::string> peersOf(const std::vector<Measurement>& measurements) {
  std::vector<std::string> peers;
  for (const Measurement& measurement : measurements) {
    for (const Time& time : measurement.peers) {
      if (std::find(peers.begin(), peers.end(), time.peer) == peers.end()) {
        peers.push_back(time.peer);
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
      best_ = ratioText(ratio(measurement.ours, fastest->seconds));
      hold("best", ratio(measurement.ours, fastest->seconds), limits.best);
    }
    for (const std::string& peer : operation.namedPeers) {
      if (const Time* time = find(measurement.peers, peer)) {
        append(named_, peer + " " + ratioText(ratio(measurement.ours, time->seconds)));
        hold(peer, ratio(measurement.ours, time->seconds), limits.named);
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
    append(targets_, peer + " <= " + formatted("%.1f", limit));
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

Row rowOf(const Measurement& measurement, const std::vector<std::string>& peers,
          const Verdict& verdict) {
  Row row = {measurement.operation->name, text(measurement.shape), timeText(measurement.ours)};
  for (const std::string& peer : peers) {
    const Time* time = find(measurement.peers, peer);
    row.push_back(time == nullptr ? "" : timeText(time->seconds));
  }
  for (std::string& cell : verdict.cells()) row.push_back(std::move(cell));
  return row;
}

std::vector<std::size_t> widthsOf(const std::vector<Row>& rows) {
  std::vector<std::size_t> widths(rows.front().size(), 0);
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  return widths;
}

// Texts stand left, times and the ratio to the best right.
void printRow(std::ostream& stream, const Row& row, const std::vector<std::size_t>& widths) {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::string padding(widths[i] - row[i].size(), ' ');
    const bool left = i == 0 || i + 3 >= row.size();
    line += (i == 0 ? "" : "  ") + (left ? row[i] + padding : padding + row[i]);
  }
  stream << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
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
  for (const char* title : {"best", "named peer", "target", "verdict"}) head.push_back(title);
  std::vector<Row> rows = {head};
  int over = 0;
  for (const Measurement& measurement : measurements) {
    const Verdict verdict(measurement);
    rows.push_back(rowOf(measurement, peers, verdict));
    over += verdict.over();
  }
  const std::vector<std::size_t> widths = widthsOf(rows);
  for (const Row& row : rows) printRow(stream, row, widths);
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
           << timeText(each.ours) << " | ";
    if (const Time* fastest = fastestPeer(each)) {
      stream << fastest->peer << ", " << timeText(fastest->seconds) << " | "
             << ratioText(ratio(each.ours, fastest->seconds)) << " |\n";
    } else {
      stream << "none is installed | |\n";
    }
  }
}

}  // namespace bench
