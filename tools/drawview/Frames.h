// The frames that the page can show.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace drawview {

/// The memory that frames may take together, in bytes.
constexpr std::uint64_t kMostFrameBytes = std::uint64_t{512} << 20;

/// The bytes of docs/draw-recording.md that hold a frame.
using Message = std::shared_ptr<const std::string>;

struct Frame {
  std::uint64_t number = 0;  ///< From 1, in the order of arrival.
  std::string name;          ///< Any bytes.
  std::uint64_t bytes = 0;   ///< Of the message.
  /// Gives the message, or reads it; null when it cannot be read.
  std::function<Message()> message;
};

/// Frames in the order of their numbers, within a bound: the oldest go first.
class FrameStore {
 public:
  /// What a frame counts for beside its message. So the number of frames has a bound as well.
  static constexpr std::uint64_t kBytesPerFrame = 4096;

  explicit FrameStore(std::uint64_t mostBytes = kMostFrameBytes) : mostBytes_(mostBytes) {}

  /// Adds a frame, whose number is greater than the others. Returns the numbers of the frames that
  /// had to go. A frame that is larger than the bound stays alone.
  std::vector<std::uint64_t> add(Frame frame);

  /// Null when the frame is not there, or not any more.
  const Frame* find(std::uint64_t number) const;
  const std::deque<Frame>& frames() const { return frames_; }

 private:
  static std::uint64_t cost(const Frame& frame) { return frame.bytes + kBytesPerFrame; }

  std::uint64_t mostBytes_;
  std::uint64_t bytes_ = 0;  // the sum of the costs of `frames_`
  std::deque<Frame> frames_;
};

}  // namespace drawview
