#include "tools/tracelog/RingFile.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

#include <vx/File.h>
#include <vx/FileLock.h>
#include <vx/Report.h>

#include "tools/tracelog/CommandLine.h"

namespace tracelog {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLargestRing = std::uint64_t{1} << 31;
// A process that traces all the time can overwrite the lines while they are read.
constexpr int kTries = 8;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string nameOf(const fs::path& path) {
  const std::u8string name = path.u8string();
  return {name.begin(), name.end()};
}

// Nothing when the file cannot be read.
std::optional<std::string> contentOf(const fs::path& path) {
  std::error_code error;
  const std::uint64_t size = fs::file_size(path, error);
  const std::unique_ptr<std::FILE, CloseFile> file(vxOS::openFile(nameOf(path), "rb"));
  if (error || !file || size > kLargestRing) return std::nullopt;
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
  readFiles();
  contents_ = readRing(bytes_, position_);
  reportDamage();
  if (position_ && contents_.positionFits) forgetShownLines(*position_);
  return contents_.lines;
}

void RingFile::readFiles() {
  for (int i = 0; i < kTries; ++i) {
    const auto before = positionOf(path_);
    auto content = contentOf(path_);
    const auto after = positionOf(path_);
    if (!content) throw InputError("cannot read " + nameOf(path_));
    bytes_ = std::move(*content);
    position_ = before && after ? unchanged(*before, *after) : std::nullopt;
    std::error_code error;
    if (position_ || !fs::exists(positionPath(path_), error)) return;
    if (after)
      position_ = TracePosition{after->next, after->next, overwrittenLines(*after), 0, after->size};
  }
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
  rptError("tracelog: %s: %s\n", nameOf(path_).c_str(), what.c_str());
}

}  // namespace tracelog
