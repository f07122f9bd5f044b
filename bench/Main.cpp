// kiln_bench: times the library beside its peers and prints a table of ratios.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <fstream>
#include <iostream>
#include <stdlib.h>
#include <unistd.h>

#include <kilnbase/version.h>

#include "Neighbour.h"
#include "SavedRun.h"
#include "Table.h"
#include "Text.h"
#include "families/Families.h"
#include "peers/Fortran.h"
#include "peers/Peak.h"

namespace bench {

namespace {

struct Options {
  std::vector<std::string> filters;
  std::vector<std::string> sizes;
  double seconds = 1.5;
  std::string summary;
  std::string save;
  std::string compare;
  bool busy = false;
  bool quick = false;
  bool list = false;
};

struct Case {
  const Operation* operation;
  Shape shape;
};

// The lines of the summary: what people ask first.
constexpr std::pair<const char*, const char*> kSummary[] = {
    {"product A B", "500"},
    {"LU and solve", "100"},
    {"least squares, pivoted", "1000x50"},
    {"SVD, all vectors", "100"},
    {"points times 4x4, x86-64", "1000"},
    {"tree find", "100000"},
};

// The quick check leaves out larger sizes: their data takes longer than all others together.
constexpr int kMostQuickRows = 10000;

bool containsIgnoringCase(const std::string& whole, const std::string& part) {
  const auto same = [](unsigned char a, unsigned char b) {
    return std::tolower(a) == std::tolower(b);
  };
  return std::search(whole.begin(), whole.end(), part.begin(), part.end(), same) != whole.end();
}

bool inSummary(const Operation& operation, const Shape& shape) {
  return std::ranges::any_of(kSummary, [&](const auto& line) {
    return operation.name == line.first && text(shape) == line.second;
  });
}

bool chosen(const Options& options, const Operation& operation, const Shape& shape) {
  if (!options.summary.empty()) return inSummary(operation, shape);
  if (options.quick && shape.rows > kMostQuickRows) return false;
  const auto named = [&](const std::string& filter) {
    return containsIgnoringCase(operation.name, filter);
  };
  const auto sized = [&](const std::string& size) { return text(shape) == size; };
  return (options.filters.empty() ||
          std::any_of(options.filters.begin(), options.filters.end(), named)) &&
         (options.sizes.empty() || std::any_of(options.sizes.begin(), options.sizes.end(), sized));
}

std::vector<Case> casesOf(const Suite& suite, const Options& options) {
  std::vector<Case> cases;
  for (const Operation& operation : suite.operations()) {
    for (const Shape& shape : operation.shapes) {
      if (chosen(options, operation, shape)) cases.push_back({&operation, shape});
    }
  }
  return cases;
}

// On a terminal the line stays in place.
class Progress {
 public:
  explicit Progress(std::size_t total) : total_(total) {}
  ~Progress() {
    if (terminal_) std::cerr << "\r\033[K" << std::flush;
  }

  void show(const Case& next) {
    std::cerr << (terminal_ ? "\r\033[K" : "") << "[" << ++done_ << "/" << total_ << "] "
              << next.operation->name << " " << text(next.shape) << (terminal_ ? "" : "\n")
              << std::flush;
  }

 private:
  const bool terminal_ = isatty(STDERR_FILENO) != 0;
  std::size_t total_;
  std::size_t done_ = 0;
};

// Tells of a file that cannot be written before everything is measured. What it holds stays.
void requireWritable(const std::string& file) {
  if (!file.empty() && !std::ofstream(file, std::ios::app))
    throw std::runtime_error("cannot write " + file);
}

void printConditions(const std::vector<std::string>& notes, const Options& options) {
  for (const std::string& note : notes) std::cout << note << "\n";
  for (const std::string& note : fortranNotes()) std::cout << note << "\n";
  std::cout << "Peak: " << formatted("%.1f", peakFlops() * 1e-9)
            << " GFLOP/s, fused multiply-adds on registers\n";
  double load = 0.0;
  if (!options.busy && getloadavg(&load, 1) == 1 && load > 0.5) {
    std::cout << "Load average " << load
              << ": something else is running and will blur the ratios\n";
  }
  std::cout << std::endl;
}

// Carries out all cases by `carryOut`, which may raise Disagreement. Returns how many did.
template <class CarryOut>
int forEach(const std::vector<Case>& cases, CarryOut carryOut) {
  Progress progress(cases.size());
  int disagreements = 0;
  for (const Case& next : cases) {
    progress.show(next);
    try {
      carryOut(next);
    } catch (const Disagreement& disagreement) {
      std::cerr << "\nkiln_bench: " << disagreement.what() << "\n";
      ++disagreements;
    }
  }
  return disagreements;
}

int checkAll(const std::vector<Case>& cases) {
  const int failed = forEach(cases, [](const Case& next) { check(*next.operation, next.shape); });
  std::cout << static_cast<int>(cases.size()) - failed << " passed, " << failed << " failed\n";
  return failed == 0 ? 0 : 1;
}

// Writes a file by `print`; throws std::runtime_error when that cannot be done.
template <class Print>
void write(const std::string& file, const std::vector<Measurement>& measurements, Print print) {
  if (file.empty()) return;
  std::ofstream stream(file);
  print(stream, measurements);
  if (!stream.flush()) throw std::runtime_error("cannot write " + file);
}

SavedRun readFile(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error("cannot read " + file);
  return readSavedRun(stream);
}

int measureAll(const std::vector<Case>& cases, const Options& options) {
  requireWritable(options.save);
  requireWritable(options.summary);
  const SavedRun before = options.compare.empty() ? SavedRun() : readFile(options.compare);
  std::vector<Measurement> measurements;
  const int disagreements = forEach(cases, [&](const Case& next) {
    measurements.push_back(measure(*next.operation, next.shape, options.seconds));
  });
  const int over = printTable(std::cout, measurements);
  std::cout << "\n" << measurements.size() << " measured, " << over << " over their target\n";
  if (!options.compare.empty()) {
    std::cout << "\n";
    printComparison(std::cout, measurements, before);
  }
  write(options.save, measurements, save);
  if (disagreements != 0) return 1;
  write(options.summary, measurements, printSummary);
  return 0;
}

int run(const std::vector<Case>& cases, const Options& options) {
  if (options.quick) return checkAll(cases);
  if (!options.busy) return measureAll(cases, options);
  const Neighbour neighbour;
  std::cout << "Busy: another CPU streams through memory\n\n";
  const int code = measureAll(cases, options);
  neighbour.requireAlive();
  return code;
}

int runProgram(int argc, const char* const* argv) {
  Options options;
  CLI::App app("Times the library beside its peers, one thread, and prints a table of ratios.");
  app.set_version_flag("--version", "kiln_bench " KILNBASE_VERSION_STRING, "Tell the version");
  auto* filter =
      app.add_option("--filter", options.filters, "Only operations whose name contains TEXT")
          ->type_name("TEXT,...")
          ->delimiter(',');
  auto* sizes =
      app.add_option("--sizes", options.sizes, "Only these sizes, as the table writes them")
          ->type_name("SIZE,...")
          ->delimiter(',');
  auto* summary = app.add_option("--summary", options.summary,
                                 "Only six lines, also written to FILE as Markdown")
                      ->type_name("FILE")
                      ->excludes(filter, sizes);
  auto* seconds =
      app.add_option("--seconds", options.seconds, "About how long to measure each line")
          ->check(CLI::PositiveNumber)
          ->capture_default_str();
  auto* saved =
      app.add_option("--save", options.save, "Also write all times to FILE")->type_name("FILE");
  auto* compared = app.add_option("--compare", options.compare,
                                  "Also compare our times with those saved in FILE")
                       ->type_name("FILE");
  auto* busy = app.add_flag("--busy", options.busy,
                            "Measure beside a process that streams through memory on another CPU");
  app.add_flag("--quick", options.quick, "Only check that all peers have our results")
      ->excludes(summary, seconds, saved, compared, busy);
  app.add_flag("--list", options.list, "Only tell what would be measured");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }

  Suite suite;
  addVectors(suite);
  addProducts(suite);
  addQr(suite);
  addLeastSquares(suite);
  addSurfaceFit(suite);
  addCholesky(suite);
  addLu(suite);
  addSymmetric(suite);
  addRightHandSides(suite);
  addSvd(suite);
  addEigenvalues(suite);
  addSmallContainers(suite);
  addArrays(suite);
  addTrees(suite);
  addLists(suite);
  addStructures(suite);
  addBoxes(suite);
  addSparse(suite);
  addCache(suite);
  addUndo(suite);
  addTrace(suite);
  addDrawLink(suite);
  addLoading(suite);
  std::vector<std::string> notes = {addEigen(suite), addBoost(suite), addGlib(suite),
                                    addSpdlog(suite)};
  std::ranges::move(addGeometry(suite), std::back_inserter(notes));
  const std::vector<Case> cases = casesOf(suite, options);
  if (cases.empty()) {
    std::cerr << "kiln_bench: nothing of that name and size; --list tells what there is\n";
    return 2;
  }
  if (options.list) {
    for (const Case& each : cases) {
      std::cout << each.operation->name << "  " << text(each.shape) << "\n";
    }
    return 0;
  }
  printConditions(notes, options);
  try {
    return run(cases, options);
  } catch (const std::exception& error) {
    std::cerr << "kiln_bench: " << error.what() << "\n";
    return 2;
  }
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  const int code = bench::runProgram(argc, argv);
  if (std::cout.flush()) return code;
  std::cerr << "kiln_bench: cannot write to standard output\n";
  return 2;
}
