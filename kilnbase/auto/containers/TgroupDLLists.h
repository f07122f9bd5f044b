// A fixed number of lists, some of which are in use.
#pragma once

#include <kilnbase/auto/containers/TdblLinkedList.h>
#include <kilnbase/export.h>
#include <kilnbase/linalg/IntVec.h>

/// Owns a fixed number of lists, in slots that a derived class fills, and knows which of them are
/// in use: the indices of those stand in one vector.
///
/// **A copy has the same array of lists** and shares the vector of indices: only one of the two may
/// be cleared or destroyed. Assignment forgets the lists that were there.
class KILNBASE_API TgroupDLLists {
 public:
  TgroupDLLists(const TgroupDLLists&) = default;
  TgroupDLLists& operator=(const TgroupDLLists& other);
  /// Deletes the lists.
  ~TgroupDLLists() { clear(); }

  /// Number of slots; -1 when the group has been cleared.
  int length() const { return count_; }
  /// The list in slot i, not checked; null where there is none.
  TrestrictedLinkedList* listB(int i) const { return lists_[i]; }

  /// Sets which lists are in use to a copy of `indices` and returns 1; 0, and nothing changes, when
  /// there are none or one of them is not the index of a slot.
  int setUsing(const IntVec& indices);
  /// The same for the lists from `first` to `last`, which must not be below `first`.
  int setUsing(int first, int last);
  /// Number of elements in the lists in use, all of which must exist; 0 when there are no slots.
  int totalActiveLength() const;
  /// Indices of the lists in use: the vector that the group has, not a copy. Who changes its
  /// numbers must leave indices of slots.
  const IntVec& usingIndices() const { return usingIndices_; }

 protected:
  /// `n` empty slots, all in use. Without memory for them the group is cleared.
  explicit TgroupDLLists(int n);
  /// `n` empty slots, those at the indices, which are copied, in use. Each must be from 0 to
  /// n - 1; otherwise no lists are in use.
  TgroupDLLists(int n, const IntVec& indices);

  /// Slot i, for its list. What was in it is not deleted.
  TrestrictedLinkedList*& slot(int i) { return lists_[i]; }
  /// Deletes all lists and gives up the slots.
  void clear();

 private:
  bool isSlot(int i) const { return i >= 0 && i < count_; }
  bool areSlots(const IntVec& indices) const;

  TrestrictedLinkedList** lists_ = nullptr;
  int count_;
  IntVec usingIndices_;
};
