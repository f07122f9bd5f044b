#include "tools/tracelog/Program.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <iostream>
#include <iterator>
#include <new>

#include <vx/Report.h>

#include "tools/tracelog/CommandLine.h"
#include "tools/tracelog/Folder.h"
#include "tools/tracelog/RingFile.h"
#include "tools/tracelog/Text.h"

namespace tracelog {

namespace {

enum ExitCode { kFine = 0, kDamaged = 1, kFailed = 2 };

constexpr unsigned int kPollMilliseconds = 100;

int reportFailure(const std::exception& error) {
  rptError("tracelog: %s\n", shown(error.what()).c_str());
  return kFailed;
}

// The lines of several rings in one order.
class Viewer {
 public:
  explicit Viewer(const Options& options) : options_(options) {
    for (const std::filesystem::path& path : findRings(options.sources)) all_.emplace_back(path);
    for (RingFile& ring : all_) open_.push_back(&ring);
  }

  // Shows the lines that are there, or, with --follow, the lines until all processes have ended.
  int run() {
    while (true) {
      // Before the lines are read: a process that has ended writes no line behind the last one.
      std::vector<RingFile*> live;
      if (options_.follow) live = liveRings();
      showNewLines();
      std::erase_if(live, [](const RingFile* ring) { return !ring->canFollow(); });
      open_ = live;
      if (open_.empty() || !std::cout.flush() || rptCheckAbort()) return code_;
      rptSleep(kPollMilliseconds);
    }
  }

 private:
  struct Entry {
    std::int64_t time;  // Of the newest line so far in its ring, so that the ring's order stays.
    const RingFile* ring;
    const Line* line;
  };

  std::vector<RingFile*> liveRings() const {
    std::vector<RingFile*> live;
    std::ranges::copy_if(open_, std::back_inserter(live),
                         [](const RingFile* ring) { return isLive(ring->path()); });
    return live;
  }

  void showNewLines() {
    std::vector<Entry> entries;
    for (RingFile* ring : open_) {
      try {
        addNewLines(*ring, entries);
      } catch (const InputError& error) {
        code_ = reportFailure(error);
      }
    }
    std::ranges::stable_sort(entries, {}, &Entry::time);
    for (const Entry& entry : entries) show(entry);
  }

  void addNewLines(RingFile& ring, std::vector<Entry>& entries) {
    std::int64_t time = 0;
    for (const Line& line : ring.readNewLines()) {
      time = std::max(time, line.time);
      if (isWanted(line)) entries.push_back({time, &ring, &line});
    }
    if (ring.isDamaged()) code_ = std::max<int>(code_, kDamaged);
  }

  bool isWanted(const Line& line) const {
    const std::string_view tag = vxKilnBase::detail::kTraceTags[line.subsystem];
    const auto isNamed = [tag](const std::string& name) { return tag == "<" + name + "> "; };
    return (options_.subsystems.empty() || std::ranges::any_of(options_.subsystems, isNamed)) &&
           line.text.find(options_.text) != std::string_view::npos;
  }

  void show(const Entry& entry) const {
    if (all_.size() > 1) std::cout << shown(ringLabel(entry.ring->path())) << ' ';
    std::cout << shown(entry.line->text) << '\n';
  }

  const Options& options_;
  std::deque<RingFile> all_;
  std::vector<RingFile*> open_;  // from which lines may come
  int code_ = kFine;
};

int pruneAll(const std::vector<std::filesystem::path>& sources, int days) {
  int code = kFine;
  const auto pruneFiles = [&](const std::vector<std::filesystem::path>& files, auto pruneFile) {
    for (const std::filesystem::path& file : files) {
      try {
        if (pruneFile(file, days)) std::cout << "removed " << shown(nameOf(file)) << '\n';
      } catch (const InputError& error) {
        code = reportFailure(error);
      }
    }
  };
  pruneFiles(findRings(sources), prune);
  pruneFiles(findLonePositions(sources), pruneLonePosition);
  return code;
}

int run(const Options& options) {
  if (options.pruneDays) return pruneAll(options.sources, *options.pruneDays);
  return Viewer(options).run();
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
  try {
    const auto options = parseCommandLine(argc, argv);
    const int code = options ? run(*options) : kFine;
    if (!std::cout.flush()) throw InputError("cannot write to standard output");
    return code;
  } catch (const std::bad_alloc&) {
    rptError("tracelog: not enough memory\n");
  } catch (const std::exception& error) {
    return reportFailure(error);
  }
  return kFailed;
}

}  // namespace tracelog
