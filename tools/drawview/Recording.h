// The file of a recording; docs/draw-recording.md tells the format.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <vx/FileLock.h>

#include "tools/drawview/Frames.h"

namespace drawview {

/// A frame whose bytes are whole.
struct RecordedFrame {
  std::uint64_t offset = 0;  ///< Of the message in the file.
  std::uint64_t bytes = 0;   ///< Of the message.
  std::string name;
};

/// Bytes that are not as they were written.
struct Damage {
  std::uint64_t offset = 0;
  std::string what;
};

struct RecordingContents {
  std::vector<RecordedFrame> frames;
  std::vector<Damage> damages;
  /// Where the last record breaks off, as a kill leaves it.
  std::optional<std::uint64_t> tornAt;
};

/// Reads a recording of any bytes. A record whose content is damaged is passed over. Where the
/// lengths of a record are damaged, nothing after them can be found.
RecordingContents scanRecording(std::istream& file);

/// Reads the message of a frame; empty when the file has changed since.
std::optional<std::string> readMessage(std::istream& file, const RecordedFrame& frame);

/// A recording that grows. Every record goes to the system at once: a kill loses at most the record
/// that is being written.
class RecordingWriter {
 public:
  /// Makes the file. A file that is there is an error, unless `force`; one that another process
  /// records into is an error always. Throws InputError.
  RecordingWriter(const std::filesystem::path& path, bool force);

  /// Adds a frame. On failure the file holds the records before, and InputError is thrown.
  void add(std::string_view name, std::string_view message);

 private:
  std::filesystem::path path_;
  std::ofstream file_;
  vxOS::FileLock lock_;
  std::uint64_t size_ = 0;  // of the whole records
};

}  // namespace drawview
