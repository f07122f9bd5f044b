#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>

#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/DS/mr_register.h>
#include <vx/Memory.h>

#include "tests/support/Reports.h"
#include "tests/util/DS/Structures.h"

using namespace kilntest;
using testing::ElementsAre;
using testing::StartsWith;

TEST_P(Kinds, DuplicatesHoldCopiesOfWhatIsShown) {
  const Owned s = make({1, 4, 3, 2}, Ds_filo_comparator);
  s->filter = isEven;
  const DS_CopyFn add = [](void* it, void* n) { return item(number(it) + number(n)); };
  const Owned odd(DS_duplicate(s.get(), add, item(1), &status_));
  EXPECT_EQ(1, odd->ordered);
  EXPECT_EQ(isEven, std::exchange(odd->filter, nullptr));
  EXPECT_THAT(contents(odd), ElementsAre(5, 3)) << "copies are added by the comparator";
  s->ordered = 0;
  EXPECT_EQ(0, Owned(DS_duplicate(s.get(), nullptr, nullptr, &status_))->ordered);
}

TEST_P(Kinds, DifferencesAndIntersectionsLookUpTheVisibleItemsOfTheSecond) {
  const Owned a = make({8, 6, 5, 4, 2}), b = make({2, 3, 6, 108});
  a->filter = isEven;
  b->filter = isSmall;
  const Owned difference(DS_difference(a.get(), b.get(), &status_));
  EXPECT_THAT(contents(difference), ElementsAre(4, 8));
  EXPECT_THAT(contents(Owned(DS_intersect(a.get(), b.get(), &status_))), ElementsAre(2, 6));
  EXPECT_EQ(nullptr, DS_difference(a.get(), a.get(), &status_));
  EXPECT_EQ(nullptr, DS_intersect(a.get(), make().get(), &status_));
  EXPECT_EQ(MR_NO_ERROR, status_) << "having no items is no failure";
  EXPECT_EQ(1, difference->ordered);
  EXPECT_EQ(0, Owned(DS_difference(a.get(), b.get(), nullptr))->ordered);
  b->ordered = 0;
  EXPECT_EQ(0, Owned(DS_intersect(a.get(), b.get(), &status_))->ordered);
  a->comparator = b->comparator = nullptr;
  b->ordered = 1;
  EXPECT_EQ(0, Owned(DS_intersect(a.get(), b.get(), &status_))->ordered);
  EXPECT_EQ(MR_CANNOT_SORT, status_);
}

TEST_P(Kinds, MergingAddsTheItemsOfBoth) {
  const Owned a = make({1, 2, 4}), b = make({2, 3, 6});
  EXPECT_THAT(contents(Owned(DS_merge(a.get(), b.get(), &status_))), ElementsAre(1, 2, 2, 3, 4, 6));
  EXPECT_EQ(1, Owned(DS_merge(a.get(), b.get(), nullptr))->ordered);
  EXPECT_THAT(contents(Owned(DS_merge(nullptr, b.get(), &status_))), ElementsAre(2, 3, 6));
  EXPECT_EQ(MR_NO_ERROR, status_);
  a->filter = isEven;
  EXPECT_EQ(nullptr, DS_merge(a.get(), b.get(), &status_)) << "3 is hidden in the result";
  EXPECT_EQ(MR_ITEM_FILTERED, status_);
  a->comparator = b->comparator = nullptr;
  const Owned unsorted(DS_merge(b.get(), a.get(), &status_));
  EXPECT_THAT(contents(unsorted), ElementsAre(2, 3, 6, 2, 4));
  EXPECT_EQ(0, unsorted->ordered);
  EXPECT_EQ(MR_CANNOT_SORT, status_);
}

TEST(Structures, OperandsMustFitAndExist) {
  const Owned s = makeStructure(DS_DLIST, {1}), otherKind = makeStructure(DS_SLIST, {1});
  const Owned otherComparator = makeStructure(DS_DLIST, {1}, Ds_filo_comparator);
  DS_Structure bare{1, nullptr, Ds_fifo_comparator, nullptr, nullptr};
  for (const auto operation : {DS_difference, DS_intersect, DS_merge}) {
    for (DS_Structure* const other : {otherKind.get(), otherComparator.get(), &bare}) {
      StatusCode status = MR_NO_ERROR;
      EXPECT_EQ(nullptr, operation(s.get(), other, &status));
      EXPECT_EQ(other == &bare ? MR_ARGUMENT_ERROR : MR_INCOMPATIBILITY, status);
    }
  }
}

TEST(Structures, ResultsThatFailPartWayAreDestroyed) {
  DS_Methods methods = *Ds_slist_get_methods();
  methods.add = [](DS_Structure* structure, void* added, StatusCode* status) {
    if (Ds_slist_enumerate(structure, nullptr) < 2) return Ds_slist_add(structure, added, status);
    *status = MR_MEMORY_FAULT;
    return 0;
  };
  methods.intersect = nullptr;
  const Owned s = makeStructure(DS_SLIST, {1, 2, 3});
  s->methods = &methods;
  StatusCode status = MR_NO_ERROR;
  EXPECT_EQ(nullptr, DS_duplicate(s.get(), nullptr, nullptr, &status));
  EXPECT_EQ(MR_MEMORY_FAULT, status);
  EXPECT_EQ(nullptr, DS_intersect(s.get(), s.get(), &status));
  EXPECT_EQ(MR_ARGUMENT_ERROR, status);
}

TEST_P(Kinds, UnwantedItemsAreRemovedHiddenOrNot) {
  const Owned s = make({1, 2, 0, 103, 104, 0}, Ds_fifo_comparator);
  s->filter = isSmall;
  EXPECT_EQ(1, DS_remove_nulls(s.get(), &status_));
  EXPECT_EQ(1, DS_remove_unfiltered_items(s.get(), isEven, nullptr, nullptr, nullptr));
  EXPECT_EQ(isSmall, std::exchange(s->filter, nullptr));
  EXPECT_THAT(contents(s), ElementsAre(2, 104));
}

TEST(Structures, DestructionHandsOverTheItemsAndClearsTheHandle) {
  StatusCode status = MR_UNKNOWN;
  DS_Structure* s = makeStructure(DS_SLIST, {number(std::malloc(1))}).release();
  EXPECT_EQ(1, DS_destructor(&s, longForm<DS_FreeFn>(DS_memory_free), nullptr, &status));
  EXPECT_EQ(nullptr, s);
  EXPECT_EQ(MR_NO_ERROR, status);
  EXPECT_EQ(0, DS_destructor(&s, nullptr, nullptr, &status));
  EXPECT_EQ(MR_ARGUMENT_ERROR, status);
}

TEST(Structures, SuppliedComparatorsTakeItemsForNumbersAndStrings) {
  char a[] = "a", umlaut[] = "\xe4";
  const Slot small{item(1)}, large{item(-1)}, none{nullptr}, text{a}, umlautText{umlaut};
  EXPECT_EQ(-1, Ds_default_comparator(&small, &large)) << "unsigned";
  EXPECT_EQ(-1, Ds_string_comparator(&text, &umlautText)) << "unsigned";
  EXPECT_EQ(0, Ds_string_comparator(&text, &none));
  EXPECT_EQ(1, Ds_string_find(a, "a"));
}

TEST(Structures, PrintingShowsTheHeaderAndTheVisibleItems) {
  const Owned s = makeStructure(DS_SLIST, {6, 7});
  s->filter = isEven;
  RecordedReports reports;
  DS_print(s.get(), nullptr, nullptr, nullptr);
  EXPECT_THAT(
      reports.takeAll(),
      ElementsAre(StartsWith("debug 0: Structure 0x"), "debug 0: >>>",
                  StartsWith("debug 0: Filter = 0x"), StartsWith("debug 0: Comparator = 0x"),
                  "debug 0: Ordered = TRUE\n", "debug 0: Filtered Member list =\n", "debug 0: >>>",
                  StartsWith("debug 0: Item 0x"), "debug 0: 0x6\n", "debug 0: <<<"));
  const DS_PrintFn print = [](void* it, void*) {
    rptDebug(0, "%d", static_cast<int>(number(it)));
    return 1;
  };
  DS_print_structure(s.get(), print, nullptr, nullptr);
  EXPECT_EQ("debug 0: 6", reports.takeAll().at(9));
}

// The one test that registers structures: there is one table in the process.
TEST(Structures, TheFirstRegisteredTableMakesTheObjectTable) {
  StatusCode status = MR_NO_ERROR;
  DS_Structure* s = DS_create_type(77, &status, __LINE__, __FILE__);
  EXPECT_EQ(nullptr, s->methods);
  EXPECT_EQ(MR_ARGUMENT_ERROR, status) << "nothing is registered";
  MA_free(s);

  static DS_Methods array = *Ds_array_get_methods();
  array.intersect = nullptr;
  const auto registers = [&](auto tail, StatusCode code) {
    array.tail = tail;
    EXPECT_EQ(code == MR_NO_ERROR, Ds_register_structure(77, &array, &status));
    EXPECT_EQ(code, status);
  };
  registers(nullptr, MR_INVALID_DATA);
  registers(Ds_array_tail, MR_NO_ERROR);
  registers(Ds_array_tail, MR_INVALID_FUNCTION);
  EXPECT_EQ(&array, Ds_get_object_table()->methods);
  EXPECT_EQ(Ds_default_comparator, Ds_get_object_table()->comparator);
  EXPECT_EQ(&array, makeStructure(77)->methods);
  EXPECT_EQ(Ds_slist_get_methods(), makeStructure(DS_SLIST)->methods) << "built in";
  EXPECT_EQ(1, MR_deregister_item(&array, Ds_get_object_table(), nullptr));
}

// The one test that registers filters.
TEST(Structures, OnceOneIsRegisteredOthersAreRefused) {
  StatusCode status = MR_UNKNOWN;
  const Owned s = makeStructure(DS_SLIST);
  EXPECT_EQ(Ds_fifo_comparator, DS_set_comparator(s.get(), Ds_filo_comparator, &status));
  EXPECT_EQ(1, s->ordered) << "not touched";
  EXPECT_EQ(nullptr, DS_set_filter(s.get(), isSmall, &status));
  EXPECT_EQ(0, std::exchange(s->ordered, 1));
  EXPECT_EQ(1, DS_register_filter(4, isEven, &status));
  EXPECT_EQ(isEven, DS_get_filter_function(4, &status));
  EXPECT_EQ(4, DS_get_filter_index(isEven, &status));
  EXPECT_EQ(MR_NO_ERROR, status);
  EXPECT_EQ(isSmall, DS_set_filter(s.get(), isSmall, &status));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status);
  EXPECT_EQ(0, s->ordered) << "even though it is refused";
  EXPECT_EQ(isSmall, DS_set_filter(s.get(), isEven, &status));
  EXPECT_EQ(isEven, s->filter);
  EXPECT_EQ(nullptr, DS_get_comparator_function(4, &status)) << "a registry of their own";
}
