// A frame as the page reads it; docs/draw-recording.md tells the format.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <kilnbase/net/KilnDebugDrawFrame.h>

namespace drawview {

struct MessageStamp {
  std::uint64_t number = 0;       ///< Of the frame.
  std::int64_t milliseconds = 0;  ///< Of the frame's arrival, since 1970-01-01 UTC.
};

/// The message of a frame; nothing when the message would have more than `mostBytes`.
std::optional<std::string> encodeMessage(const vxKilnBase::KilnDebugDrawFrame& frame,
                                         const MessageStamp& stamp, std::uint64_t mostBytes);

}  // namespace drawview
