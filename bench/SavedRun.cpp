#include "SavedRun.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <istream>
#include <ostream>
#include <sstream>

#include "Text.h"

namespace bench {

namespace {

constexpr const char* kFormat = "kiln_bench times 1";
constexpr double kLeastNoise = 0.02;

void saveTime(std::ostream& stream, const Measurement& measurement, const Time& time) {
  stream << measurement.operation->name << '\t' << text(measurement.shape) << '\t' << time.way
         << '\t' << time.seconds << '\t' << time.noise << '\n';
}

void readLine(const std::string& line, SavedRun& run) {
  std::istringstream stream(line);
  std::string operation, size;
  Time time;
  std::getline(stream, operation, '\t');
  std::getline(stream, size, '\t');
  std::getline(stream, time.way, '\t');
  stream >> time.seconds >> time.noise;
  if (!stream || !(stream >> std::ws).eof() || !(time.seconds > 0.0) || !(time.noise >= 0.0))
    throw std::runtime_error("not a line of saved times: " + line);
  run[{operation, size, time.way}] = time;
}

const Time* find(const SavedRun& run, const Measurement& measurement, const std::string& way) {
  const auto found = run.find({measurement.operation->name, text(measurement.shape), way});
  return found == run.end() ? nullptr : &found->second;
}

// 0 for none, and the mean of the middle two of an even number.
double median(Values values) {
  if (values.empty()) return 0.0;
  std::ranges::sort(values);
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2.0;
}

struct Change {
  double factor;
  double noise;
};

Change changeOf(const Measurement& now, const Time& before, const SavedRun& run) {
  Values drifts;
  for (const Time& peer : now.peers) {
    if (const Time* then = find(run, now, peer.way))
      drifts.push_back(std::log(peer.seconds / then->seconds));
  }
  const double drift = median(drifts);
  for (double& each : drifts) each = std::abs(each - drift);
  return {now.ours.seconds / before.seconds / std::exp(drift),
          std::max(kLeastNoise, now.ours.noise + before.noise + median(drifts))};
}

std::string verdict(const Change& change) {
  if (change.factor > 1.0 + change.noise) return "slower";
  return change.factor * (1.0 + change.noise) < 1.0 ? "faster" : "same";
}

}  // namespace

void save(std::ostream& stream, const std::vector<Measurement>& measurements) {
  stream << kFormat << '\n' << std::setprecision(6);
  for (const Measurement& each : measurements) {
    saveTime(stream, each, each.ours);
    for (const Time& peer : each.peers) saveTime(stream, each, peer);
  }
}

SavedRun readSavedRun(std::istream& stream) {
  std::string line;
  if (!std::getline(stream, line) || line != kFormat)
    throw std::runtime_error("no saved times: the first line is not '" + std::string(kFormat) +
                             "'");
  SavedRun run;
  while (std::getline(stream, line)) readLine(line, run);
  return run;
}

void printComparison(std::ostream& stream, const std::vector<Measurement>& measurements,
                     const SavedRun& before) {
  std::vector<Row> rows = {{"operation", "size", "before", "now", "change", "noise", "verdict"}};
  std::map<std::string, int> counts;
  int missing = 0;
  for (const Measurement& now : measurements) {
    const Time* then = find(before, now, now.ours.way);
    if (then == nullptr) {
      ++missing;
      continue;
    }
    const Change change = changeOf(now, *then, before);
    ++counts[verdict(change)];
    rows.push_back({now.operation->name, text(now.shape), timeText(then->seconds),
                    timeText(now.ours.seconds), ratioText(change.factor),
                    formatted("%.0f%%", 100.0 * change.noise), verdict(change)});
  }
  printRows(stream, rows, 1);
  stream << "\n"
         << counts["faster"] << " faster, " << counts["slower"] << " slower, " << counts["same"]
         << " the same within noise, " << missing << " not in the saved run\n";
}

}  // namespace bench
