// The lines in the bytes of a ring; docs/trace-format.md tells the format.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string_view>
#include <vector>

#include "kilnbase/services/detail/traceFormat.h"

namespace tracelog {

using vxKilnBase::detail::TracePosition;

/// A whole record.
struct Line {
  std::uint32_t offset = 0;  ///< Of the record in the ring.
  std::uint32_t length = 0;  ///< Of the record.
  std::string_view text;     ///< In the bytes of the ring.
  std::int64_t time = 0;     ///< Grows with the local time; `calendar` takes it apart.
  std::size_t subsystem = 0;
};

/// The local time of a line.
std::tm calendar(std::int64_t time);

/// Bytes where no whole record begins though one should.
struct Damage {
  std::uint32_t offset = 0;
  std::uint32_t bytes = 0;
  const char* what = nullptr;
};

struct Contents {
  std::vector<Line> lines;  ///< Oldest first.
  std::vector<Damage> damages;
  bool positionFits = false;  ///< The lines are those of the position, in its order.
};

/// Reads a ring of any bytes. Where `position` is missing or does not fit, the order of the records
/// comes from their places and times. The lines refer to `bytes`.
Contents readRing(std::string_view bytes, const std::optional<TracePosition>& position);

/// The position in the bytes of a position file; nothing when they tell none.
std::optional<TracePosition> readPosition(std::string_view bytes);

}  // namespace tracelog
