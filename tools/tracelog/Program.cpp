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

namespace tracelog {

namespace {

enum ExitCode { kFine = 0, kDamaged = 1, kFailed = 2 };

constexpr unsigned int kPollMilliseconds = 100;

int reportFailure(const std::exception& error) {
  rptError("tracelog: %s\n", error.what());
  return kFailed;
}

// The length of the UTF-8 sequence at the front, 0 for one that is not well-formed. A control
// character beyond ASCII counts as not well-formed.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(0);
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : first >= 0xc2 ? 2 : 0;
  if (length == 0 || first > 0xf4 || text.size() < length) return 0;
  unsigned code = first & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0U) != 0x80) return 0;
    code = code << 6 | (byte(i) & 0x3fU);
  }
  constexpr unsigned kLeast[] = {0xa0, 0x800, 0x10000};
  const bool isSurrogate = code >= 0xd800 && code < 0xe000;
  return code >= kLeast[length - 2] && code <= 0x10ffff && !isSurrogate ? length : 0;
}

// The text with the bytes that a terminal could obey, or not show, written as numbers.
std::string shown(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string result;
  while (!text.empty()) {
    const auto byte = static_cast<unsigned char>(text.front());
    const std::size_t length = byte >= 0x20 && byte < 0x7f ? 1 : sequenceLength(text);
    if (length == 0)
      result.append({'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]});
    else
      result += text.substr(0, length);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return result;
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
  for (const std::filesystem::path& ring : findRings(sources)) {
    try {
      if (prune(ring, days)) std::cout << "removed " << ring.string() << '\n';
    } catch (const InputError& error) {
      code = reportFailure(error);
    }
  }
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
