// Doubly linked lists that own their elements and have a cursor.
#pragma once

#include <kilnbase/export.h>

/// What the elements of a list derive from. The list deletes its elements through the virtual
/// destructor; nobody else may delete one that is linked.
class KILNBASE_API TdblLinkedListElement {
 public:
  TdblLinkedListElement() = default;
  /// The copy is in no list.
  TdblLinkedListElement(const TdblLinkedListElement&) noexcept {}
  /// Leaves the links of both elements alone.
  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
  TdblLinkedListElement& operator=(const TdblLinkedListElement&) noexcept { return *this; }
  virtual ~TdblLinkedListElement();

  /// The neighbours, which may be the sentinels of the list; both null in no list.
  TdblLinkedListElement* next() const { return next_; }
  TdblLinkedListElement* prev() const { return prev_; }

  /// Links `e` directly after this element, which must be linked. These three are for the lists:
  /// they count nothing, and only debug builds check anything.
  void append(TdblLinkedListElement* e);
  /// Links `e` directly before this element.
  void insert(TdblLinkedListElement* e);
  /// Unlinks this element.
  void remove();

 private:
  friend class TrestrictedLinkedList;

  TdblLinkedListElement* next_ = nullptr;
  TdblLinkedListElement* prev_ = nullptr;
};

/// A list of elements between two sentinels, with a cursor on the element last touched. It owns the
/// elements that are linked and deletes them with itself. Only derived classes insert into it;
/// `TdblLinkedList` lets everybody.
///
/// Elements that are handed in must be in the list; `inList` tells, nothing else checks. Where one
/// may be null, the cursor's is meant. The cursor may rest on a sentinel, beyond the first or last
/// element, and moves in const operations, too. On an empty list an operation does nothing and
/// gives 0 or null, if nothing else is said.
///
/// **A copy is a second view of the same chain**, not a second chain. It moves the cursor of the
/// original, which it must not outlive. Each view counts its own changes only. The ends of a copy
/// stay those that it was made with: once either view has changed the first or last element, only
/// `next`, `prev`, `remove`, `beyondEnds`, `length` and insertion at a `where` may be used on it.
/// The view to be destroyed with elements linked is the original; a copy may be destroyed when all
/// of them have been removed through it.
class KILNBASE_API TrestrictedLinkedList {
 public:
  using Element = TdblLinkedListElement;

  TrestrictedLinkedList();
  TrestrictedLinkedList(const TrestrictedLinkedList& other);
  /// Makes this a second view of the other chain; elements that it had are forgotten.
  TrestrictedLinkedList& operator=(const TrestrictedLinkedList& other);
  virtual ~TrestrictedLinkedList();

  /// Unlinks an element, which is the caller's from then on, and returns it. The cursor moves to
  /// the one after it. Without `e` and with the cursor beyond the ends nothing happens and null is
  /// returned.
  Element* remove(Element* e = nullptr);

  /// Moves the cursor to the first or last element and returns it.
  Element* first() const;
  Element* last() const;
  /// Moves the cursor to the neighbour of an element and returns it; null when the cursor is beyond
  /// the end now.
  Element* next(const Element* e = nullptr) const;
  Element* prev(const Element* e = nullptr) const;

  /// 1 when the cursor is on the first or last element, and in an empty list.
  int atStart() const;
  int atEnd() const;
  /// 1 when the cursor is on a sentinel, and in an empty list.
  int beyondEnds() const;

  /// Moves the cursor to element i, counted from 0, and returns it. With `i` below 0 this is the
  /// first element and beyond the last one the sentinel there, not null.
  Element* getElement(int i) const;
  /// The place of an element, counted from 0, to which the cursor moves. When it is not there, the
  /// length, and the cursor is beyond the last element; **1 in an empty list**.
  int elementIndex(const Element* e = nullptr) const;
  /// 1 when `e` is linked between the sentinels or one of them. Takes linear time and leaves the
  /// cursor.
  int inList(const Element* e) const;
  int length() const { return length_; }
  /// 1 when `b` is not null; the list does not matter.
  int validate(const Element* a, const Element* b) const;

 protected:
  /// Links `e` after `where` (null: at the end), moves the cursor to it and returns it. `e` must be
  /// in no list and `where` in this one; otherwise nothing is linked and null returned.
  Element* protAppend(Element* e, Element* where);
  /// Links `e` before `where` (null: at the start) in the same way.
  Element* protInsert(Element* e, Element* where);

 private:
  const Element* orCursor(const Element* e) const { return e != nullptr ? e : *cursorRef_; }
  Element* moveTo(Element* e) const;
  Element* linkBehind(Element* place, Element* e);

  Element head_;
  Element tail_;
  Element* cursor_;
  Element** cursorRef_;  // through which const operations move the cursor
  int length_ = 0;
};

/// A list into which everybody may insert.
///
///     TdblLinkedList list;
///     list.append(new Layer("ground"));
///     for (auto* layer = list.first(); layer != nullptr; layer = list.next()) show(layer);
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
