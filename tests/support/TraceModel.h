// What a ring of traces holds, and rings to compare with it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <kilnbase/services/MorlaTrace.h>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/traceMessage.h"

namespace kilntest {

// Keeps the messages of all records that no later record has overwritten.
class TraceModel {
 public:
  explicit TraceModel(std::uint32_t size) : size_(size) {}

  // Takes away what the message will overwrite.
  void makeRoom(const std::string& message) {
    const std::uint32_t end = next + lengthOf(message);
    while (!records.empty() && records.front().begin < end && next < records.front().end)
      records.pop_front();
  }
  void write(const std::string& message) {
    makeRoom(message);
    records.push_back({next, next + lengthOf(message), message});
    next = records.back().end % size_;
  }
  std::vector<std::string> messages() const {
    std::vector<std::string> result;
    for (const Record& record : records) result.push_back(record.message);
    return result;
  }

  // What a kill while the message is written may leave: the message has not begun, or has taken its
  // room, or is whole.
  std::vector<std::vector<std::string>> possibleWhileWriting(const std::string& message) const {
    TraceModel later = *this;
    later.makeRoom(message);
    TraceModel last = later;
    last.write(message);
    return {messages(), later.messages(), last.messages()};
  }

  struct Record {
    std::uint32_t begin;
    std::uint32_t end;
    std::string message;
  };
  std::deque<Record> records;  // oldest first
  std::uint32_t next = 0;

 private:
  // Header, prefix of an `UI` line, message, terminator, pad byte; or all that is left.
  std::uint32_t lengthOf(const std::string& message) const {
    const auto length = static_cast<std::uint32_t>(2 + 25 + message.size() + 1 + 1) / 2 * 2;
    return size_ - next - length < 256 ? size_ - next : length;
  }

  std::uint32_t size_;
};

// The message of a line of the subsystem `UI`.
inline std::string messageOf(std::string_view line) {
  return std::string(line.substr(std::min<std::size_t>(line.size(), 25)));
}

// Starts a ring that is empty and begins at its beginning: the ring of 512 bytes before does not
// have the place at which the big ring before that one stopped.
inline void startTrace(const std::filesystem::path& folder, std::size_t size, int level = 1) {
  const TemporaryFolder other;
  MorlaTrace::initialize(other.path().string().c_str(), std::size_t{1} << 20, 1);
  for (int i = 0; i < 2; ++i) MorlaTrace::trace1(MorlaTrace::UI, "%200d", i);
  MorlaTrace::initialize(other.path().string().c_str(), 512, 1);
  MorlaTrace::initialize(folder.string().c_str(), size, level);
}

// The only ring in a folder.
inline std::filesystem::path ringIn(const std::filesystem::path& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.path().extension() == ".dat") return entry.path();
  return {};
}

}  // namespace kilntest
