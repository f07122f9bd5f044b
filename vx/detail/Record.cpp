#include <algorithm>
#include <iterator>

#include <vx/detail/Record.h>

namespace vx::detail {

namespace {

struct Header {
  char magic[8];
  std::int32_t kind;
  std::uint32_t zero;
  std::uint64_t contentBytes;
  std::uint64_t checksum;
};
static_assert(sizeof(Header) == 32);

constexpr std::size_t kCheckedBytes = offsetof(Header, checksum);
constexpr std::size_t kFirstPart = 65536;

// Takes in bytes by eights, the last ones filled up with zeros. Each step is a one-to-one map of
// the state, so that a change within eight bytes always changes the result.
std::uint64_t mixed(std::uint64_t state, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    std::uint64_t word = 0;
    const std::size_t size = std::min(bytes.size(), sizeof word);
    std::memcpy(&word, bytes.data(), size);
    state = (state ^ word) * 0x9e3779b97f4a7c15;
    state ^= state >> 32;
    bytes = bytes.subspan(size);
  }
  return state;
}

std::uint64_t checksumOf(const Header& header, std::span<const std::byte> content) {
  const auto checked = std::as_bytes(std::span(&header, 1)).first(kCheckedBytes);
  return mixed(mixed(0, checked), content);
}

bool hasMagic(const Header& header, const Magic& magic) {
  return std::equal(std::begin(header.magic), std::end(header.magic), magic);
}

}  // namespace

void fail(const char* why) {
  throw vxUtil::Error(1, why);
}

void RecordWriter::append(std::span<const std::byte> bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

const std::byte* RecordReader::take(std::uint64_t count, std::size_t size) {
  if (count > rest_.size() / size) fail("the content of a record is too short");
  const std::byte* taken = rest_.data();
  rest_ = rest_.subspan(static_cast<std::size_t>(count) * size);
  return taken;
}

void RecordReader::requireEnd() const {
  if (!rest_.empty()) fail("the content of a record is too long");
}

void writeRecord(std::FILE* file, const Magic& magic, std::int32_t kind,
                 std::span<const std::byte> content) {
  Header header = {{}, kind, 0, content.size(), 0};
  std::copy_n(magic, sizeof header.magic, header.magic);
  header.checksum = checksumOf(header, content);
  const bool hasContent = !content.empty();
  if (std::fwrite(&header, sizeof header, 1, file) != 1 ||
      (hasContent && std::fwrite(content.data(), content.size(), 1, file) != 1))
    fail("cannot write the file");
}

Record readRecord(std::FILE* file, const Magic& magic) {
  Header header;
  if (std::fread(&header, sizeof header, 1, file) != 1) fail("the file ends too early");
  if (!hasMagic(header, magic)) fail("the file holds something else");
  Record record = {header.kind, {}};
  auto& content = record.content;
  while (content.size() < header.contentBytes) {
    const std::size_t start = content.size();
    const auto part =
        std::min<std::uint64_t>(header.contentBytes - start, std::max(kFirstPart, start));
    content.resize(start + static_cast<std::size_t>(part));
    if (std::fread(&content[start], 1, content.size() - start, file) != content.size() - start)
      fail("the file ends too early");
  }
  if (header.zero != 0 || checksumOf(header, content) != header.checksum)
    fail("the file is damaged");
  return record;
}

bool isAtEnd(std::FILE* file) {
  return std::fgetc(file) == EOF && std::ferror(file) == 0;
}

}  // namespace vx::detail
