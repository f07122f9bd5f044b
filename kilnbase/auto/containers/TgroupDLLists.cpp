#include <memory>
#include <new>

#include <kilnbase/auto/containers/TgroupDLLists.h>
#include <kilnbase/detail/assert.h>

static_assert(sizeof(TgroupDLLists) == 2 * sizeof(void*) + sizeof(IntVec));

namespace {

IntVec run(int first, int count) {
  IntVec indices(static_cast<unsigned>(count));
  for (int i = 0; i < static_cast<int>(indices.length()); ++i) indices(i) = first + i;
  return indices;
}

}  // namespace

TgroupDLLists::TgroupDLLists(int n) : count_(n) {
  if (n < 1) return;
  const auto slots = static_cast<std::size_t>(n);
  std::unique_ptr<TrestrictedLinkedList*[]> lists(new (std::nothrow)
                                                      TrestrictedLinkedList*[slots]());
  if (lists == nullptr) {
    clear();
    return;
  }
  usingIndices_.reference(run(0, n));
  lists_ = lists.release();
}

TgroupDLLists::TgroupDLLists(int n, const IntVec& indices) : TgroupDLLists(n) {
  const bool canUse = areSlots(indices);
  KILN_ASSERT(count_ < 0 || canUse);
  usingIndices_.reference(canUse ? indices.copy() : IntVec());
}

TgroupDLLists& TgroupDLLists::operator=(const TgroupDLLists& other) {
  lists_ = other.lists_;
  count_ = other.count_;
  usingIndices_.reference(other.usingIndices_);
  return *this;
}

int TgroupDLLists::setUsing(const IntVec& indices) {
  if (indices.length() == 0 || !areSlots(indices)) return 0;
  usingIndices_.reference(indices.copy());
  return 1;
}

int TgroupDLLists::setUsing(int first, int last) {
  if (first < 0 || first > last || last >= count_) return 0;
  usingIndices_.reference(run(first, last - first + 1));
  return 1;
}

int TgroupDLLists::totalActiveLength() const {
  if (lists_ == nullptr) return 0;
  int total = 0;
  for (int i = 0; i < static_cast<int>(usingIndices_.length()); ++i) {
    const int index = usingIndices_(i);
    const TrestrictedLinkedList* const each = isSlot(index) ? listB(index) : nullptr;
    KILN_ASSERT(each != nullptr);
    if (each != nullptr) total += each->length();
  }
  return total;
}

void TgroupDLLists::clear() {
  for (int i = 0; lists_ != nullptr && i < count_; ++i) delete lists_[i];
  delete[] lists_;
  lists_ = nullptr;
  count_ = -1;
}

bool TgroupDLLists::areSlots(const IntVec& indices) const {
  for (int i = 0; i < static_cast<int>(indices.length()); ++i) {
    if (!isSlot(indices(i))) return false;
  }
  return true;
}
