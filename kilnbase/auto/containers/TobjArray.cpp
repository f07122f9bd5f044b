#include <algorithm>
#include <cstdlib>

#include <kilnbase/auto/containers/TobjArray.h>
#include <kilnbase/detail/assert.h>

static_assert(sizeof(TobjArray) == sizeof(void*) + 5 * sizeof(std::size_t));

TobjArray::~TobjArray() {
  KILN_ASSERT(length() == 0);
}

char* TobjArray::moveElements(std::size_t n) {
  auto* const block = static_cast<char*>(std::malloc(n * elementSize_));
  if (block == nullptr || buffer_ == nullptr) return block;
  transfer(block, buffer_, std::min(length_, n));
  destroy(buffer_, length_);
  std::free(buffer_);
  return block;
}
