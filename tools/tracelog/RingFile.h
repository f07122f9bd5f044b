// The ring of a process on the disk, which the process may be writing.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/tracelog/Ring.h"

namespace tracelog {

std::filesystem::path positionPath(const std::filesystem::path& ring);

/// Whether the process that writes the ring lives.
bool isLive(const std::filesystem::path& ring);

class RingFile {
 public:
  explicit RingFile(std::filesystem::path path);

  const std::filesystem::path& path() const { return path_; }

  /// Reads the lines that came since the last call; the first call reads all. Damage is reported,
  /// and so are lines that were overwritten between two calls. The result is good until the next
  /// call. Throws InputError when the file cannot be read.
  ///
  /// A process may overwrite a ring faster than it can be read. The first call reports that and
  /// returns lines that may be torn; a later call returns none.
  const std::vector<Line>& readNewLines();

  /// Whether a file was damaged in any call.
  bool isDamaged() const { return isDamaged_; }
  /// Whether new lines can be told from those that were read: there is a position file that fits.
  bool canFollow() const { return contents_.positionFits; }

 private:
  bool readFiles();
  void readWholeLines();
  void readChangingLines();
  void forgetShownLines(const TracePosition& position);
  void reportDamage();
  void report(const std::string& what);

  std::filesystem::path path_;
  std::string bytes_;
  std::optional<TracePosition> position_;
  Contents contents_;
  std::uint64_t linesRead_ = 0;
  bool isDamaged_ = false;
};

}  // namespace tracelog
