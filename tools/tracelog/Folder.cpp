#include "tools/tracelog/Folder.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <set>

#include <vx/File.h>

#include "tools/tracelog/CommandLine.h"
#include "tools/tracelog/RingFile.h"

namespace tracelog {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kNameStart = "MorlaTrace-";
constexpr std::string_view kUuidPattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
constexpr std::string_view kNameEnd = ".dat";

bool isUuid(std::string_view text) {
  const auto fits = [](char c, char pattern) {
    return pattern == '-' ? c == '-' : (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
  };
  return std::ranges::equal(text, kUuidPattern, fits);
}

bool hasRingName(const fs::path& path) {
  const std::string name = path.filename().string();
  return name.size() == kNameStart.size() + kUuidPattern.size() + kNameEnd.size() &&
         name.starts_with(kNameStart) && name.ends_with(kNameEnd) &&
         isUuid(std::string_view(name).substr(kNameStart.size(), kUuidPattern.size()));
}

// Not a link, a pipe or a device, which must not be opened.
bool isPlainFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(fs::symlink_status(path, error));
}

void addFolder(const fs::path& folder, std::set<fs::path>& rings) {
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error))
    if (hasRingName(entry->path()) && isPlainFile(entry->path())) rings.insert(entry->path());
  if (error) throw InputError("cannot read " + folder.string() + ": " + error.message());
}

std::int64_t modified(const fs::path& path) {
  vxOS::FileStatus status;
  static_cast<void>(vxOS::File::query(path.string().c_str(), status));
  return status.modified;
}

// The last sign of life in seconds since 1970. Stores through a mapping need not change the time of
// a file, so the newest line counts, too.
std::int64_t lastSign(const fs::path& ring) {
  std::int64_t last = std::max(modified(ring), modified(positionPath(ring)));
  RingFile file(ring);
  for (const Line& line : file.readNewLines()) {
    std::tm local = calendar(line.time);
    last = std::max<std::int64_t>(last, std::mktime(&local));
  }
  return last;
}

void removeFile(const fs::path& path) {
  std::error_code error;
  if (!fs::remove(path, error) && error)
    throw InputError("cannot remove " + path.string() + ": " + error.message());
}

}  // namespace

std::vector<fs::path> findRings(const std::vector<fs::path>& sources) {
  std::vector<fs::path> found;
  std::set<fs::path> known;
  for (fs::path source : sources) {
    std::error_code error;
    if (source.string().ends_with(".dat.pos")) source.replace_extension();
    std::set<fs::path> rings;
    if (fs::is_directory(source, error))
      addFolder(source, rings);
    else if (fs::is_regular_file(source, error))
      rings.insert(source);
    else
      throw InputError("there is no file and no folder " + source.string());
    for (const fs::path& ring : rings)
      if (known.insert(ring).second) found.push_back(ring);
  }
  return found;
}

std::string ringLabel(const fs::path& ring) {
  const std::string name = ring.filename().string();
  return hasRingName(ring) ? name.substr(kNameStart.size(), 8) : name;
}

// The position file goes first: what a kill between leaves is a ring, which the next run removes.
bool prune(const fs::path& ring, int days) {
  if (!hasRingName(ring) || !isPlainFile(ring))
    throw InputError(ring.string() + " has not the name of a ring and stays");
  if (isLive(ring)) return false;
  if (std::time(nullptr) - lastSign(ring) < std::int64_t{days} * 24 * 60 * 60) return false;
  if (isPlainFile(positionPath(ring))) removeFile(positionPath(ring));
  removeFile(ring);
  return true;
}

}  // namespace tracelog
