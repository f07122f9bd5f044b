#include <kilnbase/auto/containers/TdblLinkedList.h>
#include <kilnbase/detail/assert.h>

static_assert(sizeof(TdblLinkedListElement) == 3 * sizeof(void*));
static_assert(sizeof(TdblLinkedList) == 10 * sizeof(void*));

namespace {

// Whether e is linked and no sentinel. A sentinel, of any view of the chain, has one neighbour
// only.
bool isBetweenEnds(const TdblLinkedListElement* e) {
  return e->next() != nullptr && e->prev() != nullptr;
}

bool isInNoList(const TdblLinkedListElement* e) {
  return e->next() == nullptr && e->prev() == nullptr;
}

}  // namespace

TdblLinkedListElement::~TdblLinkedListElement() {
  KILN_ASSERT(!isBetweenEnds(this));
}

void TdblLinkedListElement::append(TdblLinkedListElement* e) {
  KILN_ASSERT(next_ != nullptr);
  if (next_ == nullptr) return;
  e->next_ = next_;
  e->prev_ = this;
  next_->prev_ = e;
  next_ = e;
}

void TdblLinkedListElement::insert(TdblLinkedListElement* e) {
  KILN_ASSERT(prev_ != nullptr);
  if (prev_ != nullptr) prev_->append(e);
}

void TdblLinkedListElement::remove() {
  KILN_ASSERT(isBetweenEnds(this));
  if (!isBetweenEnds(this)) return;
  next_->prev_ = prev_;
  prev_->next_ = next_;
  next_ = nullptr;
  prev_ = nullptr;
}

TrestrictedLinkedList::TrestrictedLinkedList() : cursor_(&head_), cursorRef_(&cursor_) {
  head_.next_ = &tail_;
  tail_.prev_ = &head_;
}

TrestrictedLinkedList::TrestrictedLinkedList(const TrestrictedLinkedList& other)
    : TrestrictedLinkedList() {
  *this = other;
}

// Assigning an element leaves its links unchanged, so the links of the sentinels are copied here.
TrestrictedLinkedList& TrestrictedLinkedList::operator=(const TrestrictedLinkedList& other) {
  head_.next_ = other.head_.next_;
  head_.prev_ = other.head_.prev_;
  tail_.next_ = other.tail_.next_;
  tail_.prev_ = other.tail_.prev_;
  cursor_ = other.cursor_;
  cursorRef_ = other.cursorRef_;
  length_ = other.length_;
  return *this;
}

TrestrictedLinkedList::~TrestrictedLinkedList() {
  for (first(); !beyondEnds();) delete remove();
}

TrestrictedLinkedList::Element* TrestrictedLinkedList::remove(Element* e) {
  if (length_ == 0) return nullptr;
  Element* const removed = e != nullptr ? e : *cursorRef_;
  KILN_ASSERT(e == nullptr || isBetweenEnds(e));
  if (!isBetweenEnds(removed)) return nullptr;
  *cursorRef_ = removed->next_;
  removed->remove();
  --length_;
  return removed;
}

TrestrictedLinkedList::Element* TrestrictedLinkedList::first() const {
  return length_ == 0 ? nullptr : moveTo(head_.next_);
}

TrestrictedLinkedList::Element* TrestrictedLinkedList::last() const {
  return length_ == 0 ? nullptr : moveTo(tail_.prev_);
}

TrestrictedLinkedList::Element* TrestrictedLinkedList::next(const Element* e) const {
  return length_ == 0 ? nullptr : moveTo(orCursor(e)->next_);
}

TrestrictedLinkedList::Element* TrestrictedLinkedList::prev(const Element* e) const {
  return length_ == 0 ? nullptr : moveTo(orCursor(e)->prev_);
}

int TrestrictedLinkedList::atStart() const {
  return length_ == 0 || *cursorRef_ == head_.next_ ? 1 : 0;
}

int TrestrictedLinkedList::atEnd() const {
  return length_ == 0 || *cursorRef_ == tail_.prev_ ? 1 : 0;
}

int TrestrictedLinkedList::beyondEnds() const {
  return length_ == 0 || !isBetweenEnds(*cursorRef_) ? 1 : 0;
}

TrestrictedLinkedList::Element* TrestrictedLinkedList::getElement(int i) const {
  if (first() == nullptr) return nullptr;
  while (i > 0 && next() != nullptr) --i;
  return *cursorRef_;
}

int TrestrictedLinkedList::elementIndex(const Element* e) const {
  if (length_ == 0) return 1;
  const Element* const wanted = orCursor(e);
  int index = 0;
  for (const Element* each = first(); each != nullptr && each != wanted; each = next()) ++index;
  return index;
}

int TrestrictedLinkedList::inList(const Element* e) const {
  if (length_ == 0) return 0;
  const Element* each = &head_;
  while (each != nullptr && each != e) each = each->next_;
  return each != nullptr ? 1 : 0;
}

int TrestrictedLinkedList::validate(const Element*, const Element* b) const {
  return b != nullptr ? 1 : 0;
}

TrestrictedLinkedList::Element* TrestrictedLinkedList::protAppend(Element* e, Element* where) {
  return linkBehind(where != nullptr ? where : tail_.prev_, e);
}

TrestrictedLinkedList::Element* TrestrictedLinkedList::protInsert(Element* e, Element* where) {
  return linkBehind((where != nullptr ? where : head_.next_)->prev_, e);
}

// Moves the cursor to e and returns e, or null for a sentinel. A null e, which is the place beyond
// a sentinel, moves nothing.
TrestrictedLinkedList::Element* TrestrictedLinkedList::moveTo(Element* e) const {
  if (e == nullptr) return nullptr;
  *cursorRef_ = e;
  return isBetweenEnds(e) ? e : nullptr;
}

TrestrictedLinkedList::Element* TrestrictedLinkedList::linkBehind(Element* place, Element* e) {
  const bool canLink = e != nullptr && isInNoList(e) && place != nullptr && place->next_ != nullptr;
  KILN_ASSERT(canLink);
  if (!canLink) return nullptr;
  place->append(e);
  ++length_;
  *cursorRef_ = e;
  return e;
}

TdblLinkedList::~TdblLinkedList() = default;
