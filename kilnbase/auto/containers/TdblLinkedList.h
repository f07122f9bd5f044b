// Doubly linked lists that own their elements and have a cursor.
#pragma once

#include <kilnbase/export.h>

/// The base class of list elements. The list deletes its elements through the virtual destructor.
/// Nobody else may delete a linked element. Asserted in debug builds; in release builds its
/// neighbours keep pointers to the deleted element.
///
/// The lists call `append`, `insert` and `remove`, which count nothing and do not check that an
/// element is in the list.
class KILNBASE_API TdblLinkedListElement {
 public:
  TdblLinkedListElement() = default;
  /// The copy is in no list.
  TdblLinkedListElement(const TdblLinkedListElement&) noexcept {}
  /// Leaves the links of both elements alone.
  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
  TdblLinkedListElement& operator=(const TdblLinkedListElement&) noexcept { return *this; }
  virtual ~TdblLinkedListElement();

  /// The neighbours, which may be sentinels of the list. Both are null while the element is in no
  /// list.
  TdblLinkedListElement* next() const { return next_; }
  TdblLinkedListElement* prev() const { return prev_; }

  /// Links `e` directly after this element, which must be linked. Asserted in debug builds; in
  /// release builds nothing is linked.
  void append(TdblLinkedListElement* e);
  /// Links `e` directly before this element, which must be linked. Asserted in debug builds; in
  /// release builds nothing is linked.
  void insert(TdblLinkedListElement* e);
  /// Unlinks this element, which must be linked. Asserted in debug builds; in release builds
  /// nothing happens.
  void remove();

 private:
  friend class TrestrictedLinkedList;

  TdblLinkedListElement* next_ = nullptr;
  TdblLinkedListElement* prev_ = nullptr;
};

/// A list of elements between two sentinels. The list owns the linked elements: its destructor
/// deletes them. Only derived classes insert elements; `TdblLinkedList` lets everybody insert.
///
/// The cursor is on the element last touched, or on a sentinel, before the first or after the last
/// element. Const operations move the cursor, too. Where an element may be null, null means the
/// element at the cursor. All other elements must be in the list: only `inList` checks this. On an
/// empty list an operation does nothing and returns 0 or null unless its comment says otherwise.
///
/// Kept as it is: **a copy is a second view of the same chain**, not a second chain.
/// - A copy moves the cursor of the original, so the original must outlive the copy.
/// - Each view counts its own changes only.
/// - A copy keeps the ends with which it was made. When either view has changed the first or last
///   element, only `next`, `prev`, `remove`, `beyondEnds`, `length` and insertion at a `where` may
///   be used on the copy.
/// - Only the original may be destroyed while elements are linked. Before a copy is destroyed, all
///   elements must be removed through the copy.
class KILNBASE_API TrestrictedLinkedList {
 public:
  /// The base of the elements.
  using Element = TdblLinkedListElement;

  /// An empty list.
  TrestrictedLinkedList();
  TrestrictedLinkedList(const TrestrictedLinkedList& other);
  /// Makes this list a second view of the other chain. The elements of this list are not deleted.
  TrestrictedLinkedList& operator=(const TrestrictedLinkedList& other);
  virtual ~TrestrictedLinkedList();

  /// Unlinks an element and returns it: now the caller owns it. The cursor moves to the next
  /// element or sentinel. With `e` null and the cursor on a sentinel, nothing happens and the
  /// result is null. Another `e` must be linked. Asserted in debug builds; in release builds
  /// nothing happens and the result is null.
  Element* remove(Element* e = nullptr);

  /// Moves the cursor to the first or last element and returns it.
  Element* first() const;
  Element* last() const;
  /// Moves the cursor to the neighbour of an element and returns the neighbour, or null when it is
  /// a sentinel.
  Element* next(const Element* e = nullptr) const;
  Element* prev(const Element* e = nullptr) const;

  /// 1 when the cursor is on the first or last element, and for an empty list.
  int atStart() const;
  int atEnd() const;
  /// 1 when the cursor is on a sentinel, and for an empty list.
  int beyondEnds() const;

  /// Moves the cursor to element i, counted from 0, and returns it. A negative i means the first
  /// element. Kept as it is: for i >= `length` the result is the sentinel after the last element,
  /// not null.
  Element* getElement(int i) const;
  /// The place of an element, counted from 0. The cursor moves to the element. For an element that
  /// is not found, the result is the length, and the cursor moves to the sentinel after the last
  /// element. Kept as it is: the result is 1 for an empty list.
  int elementIndex(const Element* e = nullptr) const;
  /// 1 when `e` is a sentinel or linked between the sentinels. Takes linear time. The cursor stays.
  int inList(const Element* e) const;
  /// The number of elements, counted as they come and go.
  int length() const { return length_; }
  /// 1 when `b` is not null. Kept as it is: nothing else is checked.
  int validate(const Element* a, const Element* b) const;

 protected:
  /// Links `e` after `where`, or at the end for null, moves the cursor to `e` and returns `e`. `e`
  /// must be in no list and `where` must be linked. Asserted in debug builds; in release builds
  /// nothing is linked and the result is null.
  Element* protAppend(Element* e, Element* where);
  /// The same before `where`, or at the start for null.
  Element* protInsert(Element* e, Element* where);

 private:
  const Element* orCursor(const Element* e) const { return e != nullptr ? e : *cursorRef_; }
  Element* moveTo(Element* e) const;
  Element* linkBehind(Element* place, Element* e);

  Element head_;
  Element tail_;
  Element* cursor_;
  Element** cursorRef_;  // const operations move the cursor through this pointer
  int length_ = 0;
};

/// A list into which everybody may insert.
///
///     struct Layer : TdblLinkedListElement {
///       explicit Layer(const char* text) : name(text) {}
///       const char* name;
///     };
///     TdblLinkedList list;
///     list.append(new Layer("ground"));
///     list.append(new Layer("water"));
///     for (auto* each = list.first(); each != nullptr; each = list.next()) {
///       std::puts(static_cast<Layer*>(each)->name);
///     }
class KILNBASE_API TdblLinkedList : public TrestrictedLinkedList {
 public:
  TdblLinkedList() = default;
  TdblLinkedList(const TdblLinkedList&) = default;
  TdblLinkedList& operator=(const TdblLinkedList&) = default;
  ~TdblLinkedList() override;

  /// `protAppend` and `protInsert`, for everybody.
  Element* append(Element* e, Element* where = nullptr) { return protAppend(e, where); }
  Element* insert(Element* e, Element* where = nullptr) { return protInsert(e, where); }
};
