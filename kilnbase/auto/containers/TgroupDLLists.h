// Groups of lists, some of which are in use.
#pragma once

#include <kilnbase/auto/containers/TdblLinkedList.h>
#include <kilnbase/export.h>
#include <kilnbase/linalg/IntVec.h>

/// A group owns a fixed number of lists, in slots that a derived class fills. A vector holds the
/// indices of the lists in use.
///
/// Kept as it is: **a copy has the same array of lists** and shares the vector of indices. Only one
/// of the two may be cleared or destroyed. Assignment does not delete the lists that were there.
class KILNBASE_API TgroupDLLists {
 public:
  TgroupDLLists(const TgroupDLLists&) = default;
  TgroupDLLists& operator=(const TgroupDLLists& other);
  /// Deletes the lists.
  ~TgroupDLLists() { clear(); }

  /// Number of slots, or -1 when the group has been cleared.
  int length() const { return count_; }
  /// The list in slot i, or null for an empty slot. The index is not checked.
  TrestrictedLinkedList* listB(int i) const { return lists_[i]; }

  /// Puts the lists at `indices`, which are copied, in use and returns 1. Returns 0 and changes
  /// nothing when `indices` is empty or one of them is no index of a slot.
  int setUsing(const IntVec& indices);
  /// Puts the lists from `first` to `last` in use and returns 1. Returns 0 and changes nothing
  /// unless 0 <= first <= last < `length`.
  int setUsing(int first, int last);
  /// Number of elements in the lists in use, or 0 without slots. All lists in use must exist.
  /// Asserted in debug builds; in release builds the missing lists count as empty.
  int totalActiveLength() const;
  /// The vector of the indices of the lists in use, not a copy.
  const IntVec& usingIndices() const { return usingIndices_; }

 protected:
  /// Makes `n` empty slots, all in use. Without memory the group is cleared.
  explicit TgroupDLLists(int n);
  /// Makes `n` empty slots. The slots at `indices`, which are copied, are in use. Each index must
  /// be from 0 to n - 1. Asserted in debug builds; in release builds no slots are in use.
  TgroupDLLists(int n, const IntVec& indices);

  /// Slot i, to store a list in it. The index is not checked. A list that was there is not deleted.
  TrestrictedLinkedList*& slot(int i) { return lists_[i]; }
  /// Deletes all lists and frees the slots.
  void clear();

 private:
  bool isSlot(int i) const { return i >= 0 && i < count_; }
  bool areSlots(const IntVec& indices) const;

  TrestrictedLinkedList** lists_ = nullptr;
  int count_;
  IntVec usingIndices_;
};
