#include "tools/tracelog/Ring.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

namespace tracelog {

namespace {

using namespace vxKilnBase::detail;

constexpr std::uint32_t kLongestRecord = traceSlot(kTraceLongest) + kTraceTail - 1;
constexpr std::uint32_t kUnknownSize = std::numeric_limits<std::uint32_t>::max();

// Takes the prefix of a line apart, from the front.
class PrefixReader {
 public:
  explicit PrefixReader(std::string_view text) : rest_(text) {}

  // A number of `fewest` to `most` digits between `low` and `high`, and `end` behind it.
  bool number(int& value, std::size_t fewest, std::size_t most, int low, int high, char end) {
    std::size_t digits = 0;
    std::int64_t read = 0;
    for (; digits < std::min(most, rest_.size()) && rest_[digits] >= '0' && rest_[digits] <= '9';
         ++digits)
      read = 10 * read + (rest_[digits] - '0');
    if (digits < fewest || digits == rest_.size() || rest_[digits] != end) return false;
    rest_.remove_prefix(digits + 1);
    value = static_cast<int>(read);
    return read >= low && read <= high;
  }

  bool tag(std::size_t& subsystem) const {
    const auto* const found = std::ranges::find_if(
        kTraceTags, [&](std::string_view tag) { return rest_.starts_with(tag); });
    subsystem = static_cast<std::size_t>(found - kTraceTags.begin());
    return found != kTraceTags.end();
  }

 private:
  std::string_view rest_;
};

constexpr std::int64_t kMonths = 13;
constexpr std::int64_t kDays = 32;
constexpr std::int64_t kHours = 24;
constexpr std::int64_t kMinutes = 60;
constexpr std::int64_t kSeconds = 61;

bool readPrefix(Line& line) {
  PrefixReader reader(line.text);
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  if (!reader.number(year, 1, 10, 0, std::numeric_limits<int>::max(), '/') ||
      !reader.number(month, 2, 2, 1, 12, '/') || !reader.number(day, 2, 2, 1, 31, ' ') ||
      !reader.number(hour, 2, 2, 0, 23, ':') || !reader.number(minute, 2, 2, 0, 59, ':') ||
      !reader.number(second, 2, 2, 0, 60, ' '))
    return false;
  line.time =
      ((((year * kMonths + month) * kDays + day) * kHours + hour) * kMinutes + minute) * kSeconds +
      second;
  return reader.tag(line.subsystem);
}

class RingScan {
 public:
  // `isSure` tells that the ring has `size` bytes, also where the file has been cut.
  RingScan(std::string_view bytes, std::uint32_t size, bool isSure)
      : bytes_(bytes), size_(size), isSure_(isSure) {}

  // Reads the record at `offset`. Null when the record is whole, else what is wrong there.
  const char* recordAt(std::uint32_t offset, Line& line) const {
    if (offset + std::uint64_t{kTraceHeader} > bytes_.size()) return "the file ends";
    if (isSure_ && size_ - offset < kTraceTail) return "a record too near to the end";
    std::uint16_t length = 0;
    std::memcpy(&length, bytes_.data() + offset, sizeof length);
    if (length % 2 != 0 || length <= kTraceHeader || length > kLongestRecord ||
        length > size_ - offset)
      return "a length that cannot be";
    if (length > bytes_.size() - offset) return "the file ends in a record";
    line.offset = offset;
    line.length = length;
    line.text = bytes_.substr(offset + kTraceHeader, length - kTraceHeader);
    line.text = line.text.substr(0, line.text.find('\0'));
    if (!terminatorFits(line)) return "a text that ends at the wrong place";
    return readPrefix(line) ? nullptr : "a text without date, time and subsystem";
  }

  // Adds the records from `offset` to `end`, and the bytes between records that are none. A record
  // of a length that cannot be hides where the next record begins: the next place at which a whole
  // record stands is taken for that.
  void scan(std::uint32_t offset, std::uint32_t end, Contents& into) const {
    Line line;
    while (offset < end) {
      const char* const fault = recordAt(offset, line);
      if (!fault && line.length <= end - offset) {
        into.lines.push_back(line);
        offset += line.length;
        continue;
      }
      const std::uint32_t begin = offset;
      offset = nextRecord(offset, end);
      into.damages.push_back(
          {begin, offset - begin, fault ? fault : "a length that goes on too far"});
    }
  }

 private:
  // The record is as long as its text needs, or goes on to the end of the ring.
  bool terminatorFits(const Line& line) const {
    const auto bytes = static_cast<std::uint32_t>(line.text.size()) + 1;
    if (bytes > kTraceLongest || traceSlot(bytes) > line.length) return false;
    const std::uint32_t slack = line.length - traceSlot(bytes);
    return slack == 0 || (slack < kTraceTail && line.offset + line.length == size_);
  }

  std::uint32_t nextRecord(std::uint32_t offset, std::uint32_t end) const {
    Line line;
    for (offset += 2; offset < end && offset < bytes_.size(); offset += 2) {
      if (!recordAt(offset, line) && line.length <= end - offset) return offset;
    }
    return end;
  }

  std::string_view bytes_;
  std::uint32_t size_;
  bool isSure_;
};

// ------------------------------------------------------------------- with a position

bool isPossible(const TracePosition& position, std::size_t bytes) {
  return position.size >= kTraceSmallestRing && position.size >= bytes &&
         position.oldest < position.size && position.next < position.size &&
         position.oldest % 2 == 0 && position.next % 2 == 0 && position.held <= position.lines;
}

// A position of another ring, or of another time, counts other lines, or begins with the newest
// ones where the ring is full to the last byte.
bool fits(const Contents& contents, const TracePosition& position) {
  const std::vector<Line>& lines = contents.lines;
  if (position.oldest == position.next && !lines.empty() && lines.front().time > lines.back().time)
    return false;
  return contents.damages.empty() ? lines.size() == position.held : lines.size() < position.held;
}

Contents readFromPosition(std::string_view bytes, const TracePosition& position) {
  Contents contents;
  if (position.held > 0) {
    const RingScan ring(bytes, position.size, true);
    const bool wraps = position.next <= position.oldest;
    ring.scan(position.oldest, wraps ? position.size : position.next, contents);
    if (wraps) ring.scan(0, position.next, contents);
  }
  contents.positionFits = fits(contents, position);
  if (bytes.size() < position.size)
    contents.damages.push_back({static_cast<std::uint32_t>(bytes.size()), 0, "the end, too early"});
  return contents;
}

// ------------------------------------------------------------------- without one

bool isUnused(std::string_view bytes, const Damage& gap) {
  return bytes.substr(gap.offset, gap.bytes).find_first_not_of('\0') == std::string_view::npos;
}

bool areNeighbours(const Line& before, const Line& after) {
  return before.offset + before.length == after.offset;
}

// Where the oldest line stands: behind the newest one, where the time falls, if possible at the
// bytes that the newest line left of an older one; a fall without such bytes may be a clock that
// was set. When all times are the same, these bytes alone tell.
std::size_t oldestOf(const std::vector<Line>& lines) {
  const auto isSeam = [](const Line& before, const Line& after) {
    return before.time > after.time && !areNeighbours(before, after);
  };
  auto newest = std::ranges::adjacent_find(lines, isSeam);
  if (newest == lines.end())
    newest = std::ranges::adjacent_find(lines, std::greater(), &Line::time);
  if (newest == lines.end() && !lines.empty() && lines.front().time == lines.back().time)
    newest = std::ranges::adjacent_find(lines, std::not_fn(areNeighbours));
  return newest == lines.end() ? 0 : static_cast<std::size_t>(newest - lines.begin()) + 1;
}

// The bytes behind the newest line may be the rest of an older record, which is no damage.
void forgiveGapBehind(const Line& newest, std::vector<Damage>& damages) {
  std::erase_if(damages, [&](const Damage& gap) {
    return gap.offset == newest.offset + newest.length && gap.bytes < kLongestRecord;
  });
}

// `isSure` tells that `bytes` are the whole ring.
Contents readByPlaceAndTime(std::string_view bytes, bool isSure) {
  const bool whole = bytes.size() >= kTraceSmallestRing && bytes.size() % 256 == 0;
  Contents contents;
  RingScan(bytes, whole ? static_cast<std::uint32_t>(bytes.size()) : kUnknownSize, isSure)
      .scan(0, static_cast<std::uint32_t>(bytes.size()), contents);
  std::erase_if(contents.damages, [&](const Damage& gap) { return isUnused(bytes, gap); });
  const auto oldest = static_cast<std::ptrdiff_t>(oldestOf(contents.lines));
  std::ranges::rotate(contents.lines, contents.lines.begin() + oldest);
  if (!contents.lines.empty()) forgiveGapBehind(contents.lines.back(), contents.damages);
  if (!whole)
    contents.damages.push_back(
        {static_cast<std::uint32_t>(bytes.size()), 0, "the end, where no ring ends"});
  return contents;
}

}  // namespace

std::tm calendar(std::int64_t time) {
  const auto take = [&time](std::int64_t radix) {
    return static_cast<int>(std::exchange(time, time / radix) % radix);
  };
  std::tm result = {};
  result.tm_sec = take(kSeconds);
  result.tm_min = take(kMinutes);
  result.tm_hour = take(kHours);
  result.tm_mday = take(kDays);
  result.tm_mon = take(kMonths) - 1;
  result.tm_year = static_cast<int>(time - 1900);
  result.tm_isdst = -1;
  return result;
}

Contents readRing(std::string_view bytes, const std::optional<TracePosition>& position) {
  if (!position || !isPossible(*position, bytes.size())) return readByPlaceAndTime(bytes, false);
  Contents byPosition = readFromPosition(bytes, *position);
  if (byPosition.positionFits && byPosition.damages.empty()) return byPosition;
  Contents byPlace = readByPlaceAndTime(bytes, bytes.size() == position->size);
  // A position of another time hides the newest lines where they overwrote the oldest.
  const bool hidesLines = byPlace.lines.size() > byPosition.lines.size();
  return byPosition.positionFits && !hidesLines ? byPosition : byPlace;
}

// The first copy is the newer one. Where its checksum does not fit, the process was killed while it
// wrote this copy, and the second one is whole.
std::optional<TracePosition> readPosition(std::string_view bytes) {
  if (bytes.size() < kTracePositionBytes || !bytes.starts_with(kTracePositionMagic))
    return std::nullopt;
  for (const std::size_t offset : kTraceCopyOffsets) {
    TraceWords words;
    std::memcpy(words.data(), bytes.data() + offset, sizeof words);
    if (const auto position = tracePosition(words)) return position;
  }
  return std::nullopt;
}

}  // namespace tracelog
