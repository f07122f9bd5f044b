#include "tools/tracelog/Folder.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <set>

#include <vx/File.h>

#include "tools/tracelog/CommandLine.h"
#include "tools/tracelog/RingFile.h"
#include "tools/tracelog/Text.h"

namespace tracelog {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kNameStart = "MorlaTrace-";
constexpr std::string_view kUuidPattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
constexpr std::string_view kRingEnd = ".dat";
constexpr std::string_view kPositionEnd = ".dat.pos";

bool isUuid(std::string_view text) {
  const auto fits = [](char c, char pattern) {
    return pattern == '-' ? c == '-' : (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
  };
  return std::ranges::equal(text, kUuidPattern, fits);
}

// Whether the file's name is "MorlaTrace-UUID" with `end`.
bool hasTraceName(const fs::path& path, std::string_view end) {
  const std::string name = nameOf(path.filename());
  return name.size() == kNameStart.size() + kUuidPattern.size() + end.size() &&
         name.starts_with(kNameStart) && name.ends_with(end) &&
         isUuid(std::string_view(name).substr(kNameStart.size(), kUuidPattern.size()));
}

// Not a link, a pipe or a device, which must not be opened.
bool isPlainFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(fs::symlink_status(path, error));
}

// The plain files in a folder whose names are "MorlaTrace-UUID" with `end`, in the order of the
// names.
std::set<fs::path> filesIn(const fs::path& folder, std::string_view end) {
  std::set<fs::path> files;
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error))
    if (hasTraceName(entry->path(), end) && isPlainFile(entry->path())) files.insert(entry->path());
  if (error) throw InputError("cannot read " + nameOf(folder) + ": " + error.message());
  return files;
}

std::set<fs::path> ringsOf(const fs::path& source) {
  std::error_code error;
  if (fs::is_directory(source, error)) return filesIn(source, kRingEnd);
  if (fs::is_regular_file(source, error)) return {source};
  if (fs::exists(source, error)) throw InputError(nameOf(source) + " is no regular file");
  throw InputError("there is no file and no folder " + nameOf(source));
}

std::int64_t modified(const fs::path& path) {
  vxOS::FileStatus status;
  static_cast<void>(vxOS::File::query(nameOf(path).c_str(), status));
  return status.modified;
}

// The times of the last changes of the files and of all lines, in seconds since 1970. Stores
// through a mapping need not change the time of a file, so the lines count, too.
std::vector<std::int64_t> signsOfLife(const fs::path& ring) {
  std::vector<std::int64_t> signs = {modified(ring), modified(positionPath(ring))};
  RingFile file(ring);
  for (const Line& line : file.readNewLines()) {
    std::tm local = calendar(line.time);
    signs.push_back(std::mktime(&local));
  }
  return signs;
}

// Whether the newest of the times is `days` days ago or before. Times to come count for nothing: a
// clock was wrong.
bool areOld(std::vector<std::int64_t> times, int days) {
  const std::int64_t now = std::time(nullptr);
  std::erase_if(times, [now](std::int64_t time) { return time > now; });
  return !times.empty() &&
         now - *std::ranges::max_element(times) >= std::int64_t{days} * 24 * 60 * 60;
}

void removeFile(const fs::path& path) {
  std::error_code error;
  if (!fs::remove(path, error) && error)
    throw InputError("cannot remove " + nameOf(path) + ": " + error.message());
}

}  // namespace

std::vector<fs::path> findRings(const std::vector<fs::path>& sources) {
  std::vector<fs::path> found;
  std::set<fs::path> known;
  for (fs::path source : sources) {
    if (nameOf(source).ends_with(kPositionEnd)) source.replace_extension();
    for (const fs::path& ring : ringsOf(source))
      if (known.insert(fs::canonical(ring)).second) found.push_back(ring);
  }
  return found;
}

std::vector<fs::path> findLonePositions(const std::vector<fs::path>& sources) {
  std::vector<fs::path> found;
  std::error_code error;
  for (const fs::path& source : sources) {
    if (!fs::is_directory(source, error)) continue;
    for (const fs::path& position : filesIn(source, kPositionEnd))
      if (!fs::exists(fs::path(position).replace_extension(), error)) found.push_back(position);
  }
  return found;
}

std::string ringLabel(const fs::path& ring) {
  const std::string name = nameOf(ring.filename());
  return hasTraceName(ring, kRingEnd) ? name.substr(kNameStart.size(), 8) : name;
}

// The files are read first: a file that cannot be opened looks live. The position file goes first:
// what a kill between leaves is a ring, which the next run removes.
bool prune(const fs::path& ring, int days) {
  if (!hasTraceName(ring, kRingEnd) || !isPlainFile(ring))
    throw InputError(nameOf(ring) + " has not the name of a ring and stays");
  if (!areOld(signsOfLife(ring), days) || isLive(ring)) return false;
  if (isPlainFile(positionPath(ring))) removeFile(positionPath(ring));
  removeFile(ring);
  return true;
}

bool pruneLonePosition(const fs::path& position, int days) {
  if (!areOld({modified(position)}, days)) return false;
  removeFile(position);
  return true;
}

}  // namespace tracelog
