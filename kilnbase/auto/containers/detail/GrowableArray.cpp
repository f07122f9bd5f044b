#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>

#include <kilnbase/auto/containers/Tarray.h>
#include <kilnbase/auto/containers/TobjArray.h>
#include <kilnbase/auto/containers/detail/GrowableArray.h>
#include <kilnbase/detail/assert.h>

namespace vxKilnBase::detail {

namespace {

constexpr int kDone = 0;

// The number of values of the 16-bit counters.
constexpr std::size_t kCounterRange = 65536;

// Growth raises a step below this value only.
constexpr std::size_t kLargestStep = 0x7fffffff;

}  // namespace

template <class Array, class Result>
GrowableArray<Array, Result>::~GrowableArray() {
  std::free(buffer_);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::create(std::size_t n, std::size_t increment) {
  sizeIncrement_ = increment;
  return allocateArray(n);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::removeAt(std::size_t index, std::size_t count) {
  if (index >= length_) return Result(kDone);
  const std::size_t rest = length_ - index;
  const std::size_t removed = rest == 1 ? 1 : std::min(count, rest);
  moveBy(index + removed, -static_cast<std::ptrdiff_t>(removed), rest - removed);
  setLength(length_ - removed);
  return Result(kDone);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::removeLast(std::size_t count) {
  return length_ <= count ? reset() : removeAt(length_ - count, count);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::setSizeIncrement(std::size_t increment) {
  sizeIncrement_ = increment;
  return Result(kDone);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::changeLogicalSizeTo(std::size_t n) {
  return expandArray(n);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::changeLogicalSizeBy(long difference) {
  KILN_ASSERT(difference >= 0 || length_ + static_cast<std::size_t>(difference) < length_);
  return expandArray(length_ + static_cast<std::size_t>(difference));
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::changePhysicalSizeTo(std::size_t n) {
  if (n > 0) return Result(resizeBlock(n) ? kDone : kNoMemory);
  setLength(0);
  std::free(buffer_);
  buffer_ = nullptr;
  capacity_ = 0;
  return Result(kDone);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::buffer(std::size_t n) {
  if (n <= capacity_ - length_) return Result(kDone);
  return changePhysicalSizeTo(length_ + std::min(n, SIZE_MAX - length_));
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::pack() {
  return capacity_ > length_ ? changePhysicalSizeTo(length_) : Result(kDone);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::reset() {
  return changeLogicalSizeTo(0);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::createAndInitialise(void* value, std::size_t n,
                                                         std::size_t increment) {
  const bool own = placeOf(value).has_value();
  KILN_ASSERT(n < kCounterRange && !own);
  if (own) return Result(kDone);
  const char* const oldBlock = buffer_;
  create(n, increment);
  if (n > 0 && buffer_ == oldBlock) return Result(kNoMemory);
  const std::size_t reached = std::min(capacity_, kCounterRange);
  for (std::size_t i = 0; i < reached; ++i) replace(i, static_cast<const char*>(value), 1);
  return Result(kDone);
}

// A source in this array is copied in two parts: the elements of the source before `index` are
// still in their slots, the others have moved up by `count` slots.
template <class Array, class Result>
Result GrowableArray<Array, Result>::insertElement(const void* source, std::size_t index,
                                                   std::size_t count) {
  const std::optional<std::size_t> own = placeOf(source);
  index = std::min(index, length_);
  if (!insertSlots(index, count)) return Result(kDone);
  const std::size_t before = own ? std::min(count, index - std::min(*own, index)) : count;
  replace(index, own ? slot(*own) : static_cast<const char*>(source), before);
  if (own) replace(index + before, slot(*own + before + count), count - before);
  return Result(kDone);
}

template <class Array, class Result>
long GrowableArray<Array, Result>::findElement(const void* element, std::size_t& index) const {
  KILN_ASSERT(elementSize_ < kCounterRange);
  const std::size_t compared = std::min(elementSize_, kCounterRange);
  std::size_t i = 0;
  while (i < length_ && std::memcmp(slot(i), element, compared) != 0) ++i;
  index = i;
  return i < length_ ? kDone : kNotFound;
}

template <class Array, class Result>
long GrowableArray<Array, Result>::removeElement(const void* element) {
  std::size_t index = 0;
  const long result = findElement(element, index);
  if (result == kDone) removeAt(index, 1);
  return result;
}

// A source in this array is copied element by element: from the back when the copies go to higher
// slots, from the front when they go to lower ones.
template <class Array, class Result>
Result GrowableArray<Array, Result>::copyElements(std::size_t index, const void* source,
                                                  std::size_t count) {
  const std::optional<std::size_t> own = placeOf(source);
  const std::size_t n = index + count;
  if (n < index || (n > length_ && !changeLength(n))) return Result(kDone);
  if (!own) replace(index, static_cast<const char*>(source), count);
  for (std::size_t i = 0; own && *own != index && i < count; ++i) {
    const std::size_t each = *own < index ? count - 1 - i : i;
    replace(index + each, slot(*own + each), 1);
  }
  setLength(n);
  return Result(kDone);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::allocateArray(std::size_t n) {
  if (n > 0) {
    auto* const block = fits(n) ? static_cast<char*>(std::malloc(n * elementSize_)) : nullptr;
    if (block == nullptr) return Result(kNoMemory);
    setLength(0);
    std::free(buffer_);
    buffer_ = block;
  }
  capacity_ = n;
  setLength(n);
  return Result(kDone);
}

template <class Array, class Result>
Result GrowableArray<Array, Result>::expandArray(std::size_t n) {
  if (n <= capacity_ || grow(n)) setLength(n);
  return Result(kDone);
}

template <class Array, class Result>
std::optional<std::size_t> GrowableArray<Array, Result>::placeOf(const void* element) const {
  const std::less<> before;
  if (before(element, buffer_) || !before(element, slot(capacity_))) return std::nullopt;
  return static_cast<std::size_t>(static_cast<const char*>(element) - buffer_) / elementSize_;
}

template <class Array, class Result>
bool GrowableArray<Array, Result>::fits(std::size_t n) const {
  return elementSize_ > 0 && n <= PTRDIFF_MAX / elementSize_ &&
         n <= static_cast<std::size_t>(std::numeric_limits<typename Array::Distance>::max());
}

template <class Array, class Result>
bool GrowableArray<Array, Result>::resizeBlock(std::size_t n) {
  char* const block = fits(n) ? self().moveElements(n) : nullptr;
  if (block == nullptr) return false;
  buffer_ = block;
  capacity_ = n;
  length_ = std::min(length_, n);
  return true;
}

template <class Array, class Result>
bool GrowableArray<Array, Result>::grow(std::size_t n) {
  const bool isFirstBlock = buffer_ == nullptr;
  const std::size_t grown = capacity_ + missingSlots(n);
  if (grown < n || !resizeBlock(grown)) return false;
  if (!isFirstBlock && sizeIncrement_ < kLargestStep) sizeIncrement_ += sizeIncrement_ / 4 + 1;
  return true;
}

// The slots to add for n elements: one step, or n - capacity rounded up to whole steps when the
// step is below n.
template <class Array, class Result>
std::size_t GrowableArray<Array, Result>::missingSlots(std::size_t n) const {
  KILN_ASSERT(sizeIncrement_ > 0);
  if (sizeIncrement_ >= n) return sizeIncrement_;
  const std::size_t step = std::max<std::size_t>(sizeIncrement_, 1);
  return ((n - capacity_ - 1) / step + 1) * step;
}

template <class Array, class Result>
void GrowableArray<Array, Result>::replace(std::size_t index, const char* source,
                                           std::size_t count) {
  if (count == 0) return;
  self().destruct(index, count);
  self().initialize(slot(index), const_cast<char*>(source), count);
}

template class GrowableArray<Tarray, long>;
template class GrowableArray<TobjArray, void>;

}  // namespace vxKilnBase::detail
