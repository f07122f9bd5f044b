#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <span>

#include <kilnbase/util/DS/detail/Kind.h>

namespace {

using vxKilnBase::detail::fail;
using vxKilnBase::detail::Gap;
using vxKilnBase::detail::Slot;

struct Buffer {
  std::size_t count = 0;
  std::size_t capacity = 0;
  Slot* items = nullptr;
};

struct Array {
  static constexpr int kType = DS_ARRAY;

  static std::span<Slot> items(const void* data) {
    if (data == nullptr) return {};
    const Buffer& buffer = *static_cast<const Buffer*>(data);
    return {buffer.items, buffer.count};
  }

  static Slot* first(const void* data) {
    return items(data).empty() ? nullptr : &items(data).front();
  }

  static Slot* last(const void* data) {
    return items(data).empty() ? nullptr : &items(data).back();
  }

  static Slot* next(const void* data, Slot* slot) {
    return slot != last(data) ? slot + 1 : nullptr;
  }

  static Slot* previous(const void* data, Slot* slot) {
    return slot != first(data) ? slot - 1 : nullptr;
  }

  static bool insert(void*& data, Gap gap, void* item) {
    Buffer* made = data != nullptr ? static_cast<Buffer*>(data) : new (std::nothrow) Buffer;
    if (made == nullptr) return false;
    data = made;
    Buffer& buffer = *made;
    const std::ptrdiff_t index = gap.before != nullptr ? gap.before + 1 - buffer.items : 0;
    if (buffer.count == buffer.capacity && !grow(buffer)) return false;
    Slot* const slot = buffer.items + index;
    std::copy_backward(slot, buffer.items + buffer.count, buffer.items + buffer.count + 1);
    slot->item = item;
    ++buffer.count;
    return true;
  }

  static Slot* remove(void* data, Slot*, Slot* slot, Slot* later) {
    Buffer& buffer = *static_cast<Buffer*>(data);
    std::copy(slot + 1, buffer.items + buffer.count, slot);
    --buffer.count;
    return later != nullptr ? later - 1 : nullptr;
  }

  static void clear(void*& data) {
    if (data != nullptr) std::free(static_cast<Buffer*>(data)->items);
    delete static_cast<Buffer*>(data);
    data = nullptr;
  }

 private:
  static bool grow(Buffer& buffer) {
    constexpr std::size_t kSmallest = 8;
    const std::size_t capacity = std::max(kSmallest, 2 * buffer.capacity);
    void* items = std::realloc(buffer.items, capacity * sizeof(Slot));
    if (items == nullptr) return false;
    buffer.items = static_cast<Slot*>(items);
    buffer.capacity = capacity;
    return true;
  }
};

}  // namespace

void* Ds_array_allocate(DS_Structure*, StatusCode* status) {
  Buffer* buffer = new (std::nothrow) Buffer;
  if (buffer == nullptr) return fail(status, MR_MEMORY_FAULT);
  return buffer;
}

DS_DEFINE_KIND(array, Array, Ds_array_allocate)
