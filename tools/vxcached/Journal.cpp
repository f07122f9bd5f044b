#include "tools/vxcached/Journal.h"

#include <algorithm>
#include <optional>
#include <type_traits>
#include <utility>

#include "tools/vxcached/OwnFiles.h"

namespace vxcached {

using vxString::CString;
using vxUtil::Error;

namespace {

constexpr std::string_view kHead = "vxcached index 1\n";
constexpr std::size_t kRecordHeadBytes = 4 + 8;  // the length of the content and its check sum

enum RecordKind : std::uint8_t { kEntry = 'E', kAccess = 'A', kRemoval = 'R' };

// FNV-1a, 64 bits.
std::uint64_t checkSum(std::string_view bytes) {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  return sum;
}

template <class Integer>
void put(std::string& bytes, Integer value) {
  auto rest = static_cast<std::make_unsigned_t<Integer>>(value);
  for (std::size_t i = 0; i < sizeof value; ++i) {
    bytes += static_cast<char>(rest & 0xFF);
    rest = static_cast<decltype(rest)>(static_cast<std::uint64_t>(rest) >> 8);
  }
}

// Takes values from the front. After a value that is cut, `isWhole` is false.
struct Reader {
  std::string_view bytes;
  bool isWhole = true;

  std::string_view text(std::size_t size) {
    isWhole = isWhole && size <= bytes.size();
    if (!isWhole) return {};
    const std::string_view taken = bytes.substr(0, size);
    bytes.remove_prefix(size);
    return taken;
  }
  template <class Integer>
  Integer number() {
    std::uint64_t value = 0;
    const std::string_view taken = text(sizeof(Integer));
    for (std::size_t i = taken.size(); i-- > 0;)
      value = value << 8 | static_cast<unsigned char>(taken[i]);
    return static_cast<Integer>(value);
  }
};

std::string record(std::string_view content) {
  std::string bytes;
  bytes.reserve(kRecordHeadBytes + content.size());
  put(bytes, static_cast<std::uint32_t>(content.size()));
  put(bytes, checkSum(content));
  return bytes += content;
}

std::string content(RecordKind kind, const Entry& entry) {
  std::string bytes(1, static_cast<char>(kind));
  put(bytes, entry.generation);
  return bytes;
}

std::string entryRecord(const Entry& entry) {
  std::string bytes = content(kEntry, entry);
  put(bytes, entry.accessTime);
  put(bytes, entry.facts.size);
  put(bytes, entry.facts.modified);
  put(bytes, entry.facts.identity);
  put(bytes, static_cast<std::uint32_t>(entry.name.size()));
  bytes += entry.name;
  bytes += entry.key;
  return record(bytes);
}

Entry readEntry(Reader& reader, std::uint64_t generation) {
  Entry entry;
  entry.generation = generation;
  entry.accessTime = reader.number<std::int64_t>();
  entry.facts.isOwnFile = true;
  entry.facts.size = reader.number<std::uint64_t>();
  entry.facts.modified = reader.number<std::int64_t>();
  entry.facts.identity = reader.number<std::uint64_t>();
  entry.name = reader.text(reader.number<std::uint32_t>());
  entry.key = reader.text(reader.bytes.size());
  return entry;
}

// Whether a daemon can have written the entry: the name of its file leads nowhere else.
bool isPossible(const Entry& entry) {
  return isEntryName(entry.name) && CacheIndex::isKey(entry.key);
}

// Repeats one change; false when the content is none.
bool replay(std::string_view content, CacheIndex& index) {
  Reader reader{content};
  const auto kind = reader.number<std::uint8_t>();
  const auto generation = reader.number<std::uint64_t>();
  if (generation == 0 || generation > CacheIndex::kMostGeneration) return false;
  if (kind == kEntry) {
    Entry entry = readEntry(reader, generation);
    if (!reader.isWhole || !isPossible(entry)) return false;
    index.restoreEntry(std::move(entry));
  } else if (kind == kAccess) {
    const auto time = reader.number<std::int64_t>();
    if (reader.isWhole) index.restoreAccess(generation, time);
  } else if (kind == kRemoval) {
    if (reader.isWhole) index.restoreRemoval(generation);
  } else {
    return false;
  }
  return reader.isWhole;
}

// The content of the next record; nothing at the end and where the journal is torn.
std::optional<std::string_view> nextRecord(Reader& reader) {
  const auto size = reader.number<std::uint32_t>();
  const auto sum = reader.number<std::uint64_t>();
  const std::string_view content = reader.text(size);
  if (!reader.isWhole || checkSum(content) != sum) return std::nullopt;
  return content;
}

}  // namespace

Error Journal::open(const vxOS::Directory& directory, CacheIndex& index) {
  directory_ = &directory;
  if (Error error = file_.open(directory, kIndexName)) return error;
  const CString text = file_.read();
  Reader reader{text.view()};
  std::size_t whole = 0;
  if (reader.text(kHead.size()) == kHead) {
    std::optional<std::string_view> content;
    do {
      whole = text.length() - reader.bytes.size();
    } while ((content = nextRecord(reader)) && replay(*content, index) && ++records_ > 0);
  }
  index.finishRestore();
  whole_ = std::max(whole, kHead.size());
  const bool isReady =
      (whole == text.length() || file_.truncate(whole)) && (whole > 0 || file_.append(kHead));
  return isReady ? Error()
                 : Error(1, "cannot write the index of the folder \"" + directory.path() + "\"");
}

bool Journal::append(const std::string& record) {
  const std::string bytes = rest_ + record;
  if (!reopen() || !file_.append(bytes)) return false;
  whole_ += bytes.size();
  rest_.clear();
  ++records_;
  return true;
}

// A file that was closed after a failure may have a torn end.
bool Journal::reopen() {
  return file_.isOpen() || (!file_.open(*directory_, kIndexName) && file_.truncate(whole_));
}

bool Journal::appendEntry(const Entry& entry) {
  return append(entryRecord(entry));
}

bool Journal::appendAccess(const Entry& entry) {
  std::string bytes = content(kAccess, entry);
  put(bytes, entry.accessTime);
  return append(record(bytes));
}

bool Journal::appendRemoval(const Entry& entry) {
  const std::string removal = record(content(kRemoval, entry));
  const bool isAppended = append(removal);
  if (!isAppended) rest_ += removal;
  return isAppended;
}

Error Journal::rewrite(const std::vector<CacheIndex::Listed>& entries) {
  std::string bytes(kHead);
  std::size_t records = 0;
  for (const auto& [entry, holders, isCurrent] : entries) {
    if (!isCurrent) continue;
    bytes += entryRecord(entry);
    ++records;
  }
  file_.close();
  Error error = directory_->replace(kIndexName, bytes);
  if (!error) {
    records_ = records;
    whole_ = bytes.size();
    rest_.clear();
  }
  slack_ = kSlack + (error ? records_ : 0);  // not tried again at once
  if (!error && !reopen()) error = Error(1, "cannot open the index again");
  return error;
}

}  // namespace vxcached
