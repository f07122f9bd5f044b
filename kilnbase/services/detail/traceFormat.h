// The bytes of a trace's files, for the writer and the reader; docs/trace-format.md tells them.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vxKilnBase::detail {

static_assert(std::endian::native == std::endian::little, "the files are little-endian");

constexpr std::array<std::string_view, 6> kTraceTags = {"<Picking> ",    "<SPF> ",  "<UI> ",
                                                        "<UIFunction> ", "<Undo> ", "<Debug> "};

constexpr std::uint32_t kTraceSmallestRing = 512;
constexpr std::uint32_t kTraceHeader = 2;     // bytes of the length before a text
constexpr std::uint32_t kTraceLongest = 253;  // bytes of a text with its terminator
constexpr std::uint32_t kTraceTail = 256;     // a tail shorter than this goes to the last record

/// The bytes of a record for a text of `bytes` bytes, terminator included.
constexpr std::uint32_t traceSlot(std::uint32_t bytes) {
  return kTraceHeader + bytes + bytes % 2;
}

/// What a position file tells. `lines - held` lines are overwritten; the lines that are held are
/// the records from `oldest` on, `next` is the end of the last one.
struct TracePosition {
  std::uint32_t oldest = 0;
  std::uint32_t next = 0;
  std::uint64_t lines = 0;
  std::uint32_t held = 0;
  std::uint32_t size = 0;  // of the ring
  bool operator==(const TracePosition&) const = default;
};

constexpr std::string_view kTracePositionMagic = "MorlaTrace pos 1";
constexpr std::size_t kTracePositionBytes = 128;
/// Where the two copies of the position stand, both in one line of the processor's cache.
constexpr std::array<std::size_t, 2> kTraceCopyOffsets = {64, 96};

/// A copy as it stands in the file: the fields in order and a checksum, which is written last.
using TraceWords = std::array<std::uint64_t, 4>;

constexpr std::uint64_t joinTraceWord(std::uint32_t low, std::uint32_t high) {
  return low | std::uint64_t{high} << 32;
}

/// A change of one word changes the sum. Words of zeros do not have the sum 0.
constexpr std::uint64_t traceChecksum(const TraceWords& words) {
  return 0x4d6f726c61547263 ^ words[0] * 0x9e3779b97f4a7c15 ^ words[1] * 0xbf58476d1ce4e5b9 ^
         words[2] * 0x94d049bb133111eb;
}

constexpr TraceWords traceWords(const TracePosition& position) {
  TraceWords words = {joinTraceWord(position.oldest, position.next), position.lines,
                      joinTraceWord(position.held, position.size)};
  words[3] = traceChecksum(words);
  return words;
}

/// Nothing when the checksum does not fit.
constexpr std::optional<TracePosition> tracePosition(const TraceWords& words) {
  if (words[3] != traceChecksum(words)) return std::nullopt;
  return TracePosition{
      static_cast<std::uint32_t>(words[0]), static_cast<std::uint32_t>(words[0] >> 32), words[1],
      static_cast<std::uint32_t>(words[2]), static_cast<std::uint32_t>(words[2] >> 32)};
}

}  // namespace vxKilnBase::detail
