#include "tools/tracelog/RingFile.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

#include <vx/File.h>
#include <vx/FileLock.h>
#include <vx/Report.h>

#include "tools/tracelog/CommandLine.h"
#include "tools/tracelog/Text.h"

namespace tracelog {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLargestRing = std::uint64_t{1} << 31;
// A process that traces all the time can overwrite the lines while they are read.
constexpr int kTries = 8;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// Nothing when the file cannot be read. A pipe is not opened, because that would wait for a writer.
std::optional<std::string> contentOf(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  const std::uint64_t size = fs::file_size(path, error);
  if (error || size > kLargestRing) return std::nullopt;
  const std::unique_ptr<std::FILE, CloseFile> file(vxOS::openFile(nameOf(path), "rb"));
  if (!file) return std::nullopt;
  std::string content(size, '\0');
  content.resize(std::fread(content.data(), 1, content.size(), file.get()));
  if (std::ferror(file.get()) != 0) return std::nullopt;
  return content;
}

std::optional<TracePosition> positionOf(const fs::path& ring) {
  const auto content = contentOf(positionPath(ring));
  return content ? readPosition(*content) : std::nullopt;
}

std::uint64_t overwrittenLines(const TracePosition& position) {
  return position.lines - std::min<std::uint64_t>(position.held, position.lines);
}

// The lines that stayed as they were between two looks at the position, with `after` the later one.
// Nothing when no line did.
std::optional<TracePosition> unchanged(const TracePosition& before, const TracePosition& after) {
  if (overwrittenLines(after) > before.lines || before.size != after.size) return std::nullopt;
  TracePosition result = before;
  result.held = static_cast<std::uint32_t>(before.lines - overwrittenLines(after));
  if (result.held == 0 && before.held > 0) return std::nullopt;
  result.oldest = result.held > 0 ? after.oldest : before.next;
  return result;
}

}  // namespace

fs::path positionPath(const fs::path& ring) {
  fs::path result = ring;
  return result += ".pos";
}

bool isLive(const fs::path& ring) {
  std::error_code error;
  vxOS::FileLock lock;
  return fs::exists(ring, error) && !lock.acquire(vxString::CString(nameOf(ring).c_str()));
}

RingFile::RingFile(fs::path path) : path_(std::move(path)) {}

const std::vector<Line>& RingFile::readNewLines() {
  const auto now = positionOf(path_);
  if (now && position_ && now->lines == position_->lines) {
    contents_.lines.clear();
    return contents_.lines;
  }
  if (readFiles())
    readWholeLines();
  else
    readChangingLines();
  return contents_.lines;
}

void RingFile::readWholeLines() {
  contents_ = readRing(bytes_, position_);
  reportDamage();
  if (position_ && contents_.positionFits) forgetShownLines(*position_);
}

// False when the process has overwritten all lines in each of the tries, and none was read before;
// `position_` is the last one then. When lines were read before, `position_` tells of the
// overwritten ones, so that the next call reads the others.
bool RingFile::readFiles() {
  std::optional<TracePosition> last;
  for (int i = 0; i < kTries; ++i) {
    const auto before = positionOf(path_);
    auto content = contentOf(path_);
    const auto after = positionOf(path_);
    if (!content) throw InputError("cannot read " + nameOf(path_));
    bytes_ = std::move(*content);
    position_ = before && after ? unchanged(*before, *after) : std::nullopt;
    std::error_code error;
    if (position_ || !fs::exists(positionPath(path_), error)) return true;
    if (after) last = after;
  }
  position_ = last;
  if (position_ && linesRead_ == 0) return false;
  if (position_)
    position_ = TracePosition{position_->next, position_->next, overwrittenLines(*position_), 0,
                              position_->size};
  return true;
}

// Shows the bytes of the last try, as places and times tell the lines.
void RingFile::readChangingLines() {
  report("the process overwrites the lines faster than they can be read; some may be torn");
  contents_ = readRing(bytes_, std::nullopt);
  contents_.positionFits = true;
  if (position_) linesRead_ = position_->lines;
}

void RingFile::forgetShownLines(const TracePosition& position) {
  const std::uint64_t overwritten = overwrittenLines(position);
  if (linesRead_ > 0 && overwritten > linesRead_)
    report(std::to_string(overwritten - linesRead_) +
           " lines were overwritten before they could be read");
  const std::uint64_t newLines = position.lines - std::min(linesRead_, position.lines);
  linesRead_ = position.lines;
  std::vector<Line>& lines = contents_.lines;
  if (lines.size() > newLines)
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(newLines));
}

void RingFile::reportDamage() {
  std::error_code error;
  const bool positionIsBad = fs::exists(positionPath(path_), error) && !contents_.positionFits;
  if (isDamaged_ || (contents_.damages.empty() && !positionIsBad)) return;
  isDamaged_ = true;
  if (positionIsBad)
    report("the position file does not fit; the order of the lines comes from their times");
  for (const Damage& damage : contents_.damages)
    report("offset " + std::to_string(damage.offset) + ": " + damage.what + "; " +
           std::to_string(damage.bytes) + " bytes left out");
}

void RingFile::report(const std::string& what) {
  rptError("tracelog: %s: %s\n", shown(nameOf(path_)).c_str(), what.c_str());
}

}  // namespace tracelog
