// The records of geometry files: see docs/mesh-format.md.
//
// What is wrong with a record is thrown as a `vxUtil::Error`.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <type_traits>

#include <vx/Containers.h>
#include <vx/Error.h>
#include <vx/String.h>

namespace vx::detail {

static_assert(std::endian::native == std::endian::little, "numbers go into files as they are");

[[noreturn]] void fail(const char* why);

/// The content of a record while it is put together.
class RecordWriter {
 public:
  template <class Number>
  void number(Number value) {
    append(std::as_bytes(std::span(&value, 1)));
  }
  /// The number of elements, and the elements.
  template <class Element>
  void array(const vx::vector<Element>& elements) {
    static_assert(std::is_trivially_copyable_v<Element>);
    number<std::uint64_t>(elements.size());
    append(std::as_bytes(std::span(elements)));
  }
  void append(std::span<const std::byte> bytes);

  std::span<const std::byte> bytes() const { return bytes_; }

 private:
  vx::vector<std::byte> bytes_;
};

/// The content of a record while it is taken apart. Nothing is read beyond the end, and no memory
/// is taken for elements that are not there.
class RecordReader {
 public:
  explicit RecordReader(std::span<const std::byte> bytes) : rest_(bytes) {}

  template <class Number>
  Number number() {
    Number value;
    std::memcpy(&value, take(1, sizeof value), sizeof value);
    return value;
  }
  template <class Element>
  vx::vector<Element> array() {
    const auto count = number<std::uint64_t>();
    const std::byte* bytes = take(count, sizeof(Element));
    vx::vector<Element> elements(static_cast<std::size_t>(count));
    if (count > 0) std::memcpy(elements.data(), bytes, elements.size() * sizeof(Element));
    return elements;
  }
  void requireEnd() const;

 private:
  const std::byte* take(std::uint64_t count, std::size_t size);

  std::span<const std::byte> rest_;
};

/// Eight characters that tell what kind of file this is.
using Magic = char[9];

void writeRecord(std::FILE* file, const Magic& magic, std::int32_t kind,
                 std::span<const std::byte> content);

struct Record {
  std::int32_t kind = 0;
  vx::vector<std::byte> content;
};

/// Reads the next record. Memory is taken as the bytes arrive.
Record readRecord(std::FILE* file, const Magic& magic);

/// Whether nothing follows in the file.
bool isAtEnd(std::FILE* file);

/// The error that `work` throws; none when it returns.
template <class Work>
vxUtil::Error errorOf(Work work) noexcept {
  try {
    work();
    return {};
  } catch (const vxUtil::Error& error) {
    return error;
  } catch (...) {
    return {1, "no memory"};
  }
}

}  // namespace vx::detail
