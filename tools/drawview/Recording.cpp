#include "tools/drawview/Recording.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <system_error>
#include <utility>

#include "tools/drawview/InputError.h"
#include "tools/drawview/Paths.h"

namespace drawview {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kMagic = "KILNDRW1";
constexpr std::size_t kLengthsBytes = 12;
constexpr std::size_t kHeadBytes = kLengthsBytes + 4;
constexpr std::size_t kSumBytes = 8;
constexpr std::size_t kPieceBytes = 65536;
constexpr std::uint64_t kMostNameBytes = std::uint64_t{64} << 20;

// The hash FNV-1a of 64 bits (Fowler, Noll, Vo). A change of one byte always changes the result.
class Sum {
 public:
  void add(std::string_view bytes) {
    for (const char byte : bytes) value_ = (value_ ^ static_cast<unsigned char>(byte)) * kPrime;
  }
  std::uint64_t value() const { return value_; }

 private:
  static constexpr std::uint64_t kPrime = 0x100000001b3;
  std::uint64_t value_ = 0xcbf29ce484222325;
};

std::uint64_t sumOf(std::string_view bytes) {
  Sum sum;
  sum.add(bytes);
  return sum.value();
}

std::uint64_t number(std::string_view bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = bytes.size(); i-- > 0;)
    value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

void append(std::string& out, std::uint64_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> (8 * i) & 255);
}

struct Lengths {
  std::uint64_t name;
  std::uint64_t message;
};

std::string headOf(const Lengths& lengths) {
  std::string head;
  append(head, lengths.name, 4);
  append(head, lengths.message, 8);
  append(head, sumOf(head), 4);
  return head;
}

// Nothing for lengths that no recording holds.
std::optional<Lengths> lengthsIn(std::string_view head) {
  const Lengths lengths = {number(head.substr(0, 4)), number(head.substr(4, 8))};
  const bool isRight = head == headOf(lengths) && lengths.name <= kMostNameBytes &&
                       lengths.message <= kMostFrameBytes;
  return isRight ? std::optional(lengths) : std::nullopt;
}

// The file from its start on, with what is left of it.
class Reader {
 public:
  explicit Reader(std::istream& file) : file_(file) {
    file_.clear();
    file_.seekg(0, std::ios::end);
    const std::streamoff size = file_.tellg();
    size_ = static_cast<std::uint64_t>(std::max<std::streamoff>(size, 0));
    file_.seekg(0);
  }

  std::uint64_t offset() const { return offset_; }
  std::uint64_t rest() const { return size_ - offset_; }

  // Reads bytes, which are left. False when the file has become shorter or cannot be read.
  bool read(std::string& bytes, std::uint64_t count) {
    bytes.resize(static_cast<std::size_t>(count));
    file_.read(bytes.data(), static_cast<std::streamsize>(count));
    offset_ += count;
    return file_.good();
  }

 private:
  std::istream& file_;
  std::uint64_t size_ = 0;
  std::uint64_t offset_ = 0;
};

enum class Step { kGoOn, kEnd };

// Reads the records of a file, whose beginning has been read.
class Scan {
 public:
  Scan(Reader& reader, RecordingContents& contents) : reader_(reader), contents_(contents) {}

  Step readRecord() {
    start_ = reader_.offset();
    if (reader_.rest() == 0) return Step::kEnd;
    if (reader_.rest() < kHeadBytes) return breakOff();
    if (!reader_.read(piece_, kHeadBytes)) return unreadable();
    const auto lengths = lengthsIn(piece_);
    if (!lengths) {
      addDamage("no record begins here; the rest of the file is left out");
      return Step::kEnd;
    }
    if (reader_.rest() < lengths->name + lengths->message + kSumBytes) return breakOff();
    Sum sum;
    sum.add(piece_);
    return readContent(*lengths, sum);
  }

 private:
  Step readContent(const Lengths& lengths, Sum& sum) {
    RecordedFrame frame;
    if (!reader_.read(frame.name, lengths.name)) return unreadable();
    sum.add(frame.name);
    frame.offset = reader_.offset();
    frame.bytes = lengths.message;
    for (std::uint64_t left = lengths.message; left > 0; left -= piece_.size()) {
      if (!reader_.read(piece_, std::min<std::uint64_t>(left, kPieceBytes))) return unreadable();
      sum.add(piece_);
    }
    if (!reader_.read(piece_, kSumBytes)) return unreadable();
    if (number(piece_) == sum.value())
      contents_.frames.push_back(std::move(frame));
    else
      addDamage("the record that begins here is damaged and left out");
    return Step::kGoOn;
  }

  Step breakOff() {
    contents_.tornAt = start_;
    return Step::kEnd;
  }
  Step unreadable() {
    addDamage("the file cannot be read on from here");
    return Step::kEnd;
  }
  void addDamage(const char* what) { contents_.damages.push_back({start_, what}); }

  Reader& reader_;
  RecordingContents& contents_;
  std::uint64_t start_ = 0;  // of the record
  std::string piece_;
};

}  // namespace

RecordingContents scanRecording(std::istream& file) {
  RecordingContents contents;
  Reader reader(file);
  std::string magic;
  if (!reader.read(magic, std::min<std::uint64_t>(reader.rest(), kMagic.size())) ||
      !kMagic.starts_with(magic)) {
    contents.damages.push_back({0, "this is no recording"});
  } else if (magic.size() < kMagic.size()) {
    contents.tornAt = 0;
  } else {
    Scan scan(reader, contents);
    while (scan.readRecord() == Step::kGoOn) {
    }
  }
  return contents;
}

std::optional<std::string> readMessage(std::istream& file, const RecordedFrame& frame) {
  std::string message(static_cast<std::size_t>(frame.bytes), '\0');
  file.clear();
  file.seekg(static_cast<std::streamoff>(frame.offset));
  file.read(message.data(), static_cast<std::streamsize>(message.size()));
  return file.good() ? std::optional(std::move(message)) : std::nullopt;
}

// The file is emptied only once nobody else can be writing it.
RecordingWriter::RecordingWriter(const fs::path& path, bool force) : path_(path) {
  const std::string name = pathText(path);
  requireFree(path, force);
  file_.open(path, std::ios::binary | std::ios::app);
  if (!file_) throw InputError("cannot write " + name);
  if (!lock_.acquire(vxString::CString(name))) throw InputError("another process writes " + name);
  std::error_code error;
  fs::resize_file(path, 0, error);
  if (error || !file_.write(kMagic.data(), kMagic.size()).flush())
    throw InputError("cannot write " + name);
  size_ = kMagic.size();
}

void RecordingWriter::add(std::string_view name, std::string_view message) {
  const std::string head = headOf({name.size(), message.size()});
  Sum sum;
  for (const std::string_view part : {std::string_view(head), name, message}) {
    sum.add(part);
    file_.write(part.data(), static_cast<std::streamsize>(part.size()));
  }
  std::string end;
  append(end, sum.value(), kSumBytes);
  file_.write(end.data(), kSumBytes);
  if (file_.flush()) {
    size_ += head.size() + name.size() + message.size() + kSumBytes;
    return;
  }
  file_.close();
  std::error_code error;
  fs::resize_file(path_, size_, error);
  throw InputError("cannot write " + pathText(path_) +
                   "; the recording ends with the frame before");
}

}  // namespace drawview
