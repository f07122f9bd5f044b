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

TEST_P(Kinds, DifferencesIntersectionsAndMergersTakeVisibleItems) {
  const Owned a = make({8, 6, 5, 4, 2}), b = make({2, 3, 6, 108});
  a->filter = isEven;
  b->filter = isSmall;
  const Owned difference(DS_difference(a.get(), b.get(), &status_));
  EXPECT_THAT(contents(difference), ElementsAre(4, 8));
  EXPECT_EQ(1, difference->ordered);
  EXPECT_THAT(contents(Owned(DS_intersect(a.get(), b.get(), &status_))), ElementsAre(2, 6));
  EXPECT_THAT(contents(Owned(DS_merge(nullptr, b.get(), &status_))), ElementsAre(2, 3, 6));
  const Owned merged(DS_merge(b.get(), a.get(), nullptr));
  EXPECT_THAT(contents(merged), ElementsAre(2, 2, 3, 4, 6, 6, 8));
  EXPECT_EQ(1, merged->ordered);
  EXPECT_EQ(nullptr, DS_merge(a.get(), b.get(), &status_)) << "3 is hidden in the result";
  EXPECT_EQ(MR_ITEM_FILTERED, status_);
  EXPECT_EQ(nullptr, DS_difference(a.get(), a.get(), &status_));
  EXPECT_EQ(nullptr, DS_intersect(a.get(), make().get(), &status_));
  EXPECT_EQ(MR_NO_ERROR, status_) << "having no items is no failure";
  EXPECT_EQ(0, Owned(DS_difference(a.get(), b.get(), nullptr))->ordered);
  b->ordered = 0;
  EXPECT_EQ(0, Owned(DS_intersect(a.get(), b.get(), &status_))->ordered);
  a->comparator = b->comparator = nullptr;
  b->ordered = 1;
  for (const auto operation : {DS_intersect, DS_merge}) {
    const Owned unsorted(operation(b.get(), a.get(), &status_));
    EXPECT_EQ(operation == DS_merge ? Numbers({2, 3, 6, 2, 4, 6, 8}) : Numbers({2, 6}),
              contents(unsorted));
    EXPECT_EQ(0, unsorted->ordered);
    EXPECT_EQ(MR_CANNOT_SORT, status_);
  }
}

TEST_P(Kinds, OperandsMustFitAndExist) {
  const Owned s = make({1}), otherKind = makeStructure(5 - GetParam(), {1}, s->comparator);
  const Owned otherComparator = make({1}, Ds_filo_comparator);
  DS_Structure bare{1, nullptr, s->comparator, nullptr, nullptr};
  for (const auto operation : {DS_difference, DS_intersect, DS_merge}) {
    for (DS_Structure* const other : {otherKind.get(), otherComparator.get(), &bare}) {
      EXPECT_EQ(nullptr, operation(s.get(), other, &status_));
      EXPECT_EQ(other == &bare ? MR_ARGUMENT_ERROR : MR_INCOMPATIBILITY, status_);
    }
  }
}

TEST_P(Kinds, RemovalAndDestructionMeetItemsHiddenOrNot) {
  DS_Structure* s = make({number(std::calloc(1, 1))}).release();
  EXPECT_EQ(1, DS_destructor(&s, longForm<DS_FreeFn>(DS_memory_free), nullptr, &status_));
  EXPECT_EQ(nullptr, s);
  EXPECT_EQ(0, DS_destructor(&s, nullptr, nullptr, &status_));
  EXPECT_EQ(MR_ARGUMENT_ERROR, status_);
  void* memory = std::malloc(1);
  EXPECT_EQ(1, DS_memory_free(static_cast<void*>(&memory)));
  EXPECT_EQ(nullptr, memory);
  EXPECT_EQ(1, DS_memory_free(nullptr));
  const Owned mixed = make({1, 2, 0, 103, 104, 0}, Ds_fifo_comparator);
  mixed->filter = isSmall;
  EXPECT_EQ(1, DS_remove_nulls(mixed.get(), &status_));
  EXPECT_EQ(1, DS_remove_unfiltered_items(mixed.get(), isEven, nullptr, nullptr, nullptr));
  EXPECT_EQ(isSmall, std::exchange(mixed->filter, nullptr));
  EXPECT_EQ(Ds_fifo_comparator, mixed->comparator);
  EXPECT_THAT(contents(mixed), ElementsAre(2, 104));
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
}

// The only test that registers: the process has one registry of each sort.
TEST(Structures, AreOfTheRegisteredKindsAndOnceThereIsOneOfTheRegisteredFilters) {
  StatusCode status = MR_NO_ERROR;
  DS_Structure* bare = DS_create_type(77, &status, __LINE__, __FILE__);
  EXPECT_EQ(nullptr, bare->methods);
  EXPECT_EQ(MR_ARGUMENT_ERROR, status) << "nothing is registered";
  MA_free(bare);
  static DS_Methods array = *Ds_array_get_methods();
  array.intersect = nullptr;
  array.allocate = [](DS_Structure* to, StatusCode* code) {
    EXPECT_EQ(&Mr_err_ignore, code);
    EXPECT_EQ(MR_NO_ERROR, *code);
    return Ds_array_allocate(to, code);
  };
  Mr_err_ignore = MR_INVALID_DATA;
  const auto registers = [&](auto tail, StatusCode code) {
    array.tail = tail;
    EXPECT_EQ(code == MR_NO_ERROR, Ds_register_structure(77, &array, &status));
    EXPECT_EQ(code, status);
  };
  registers(nullptr, MR_INVALID_DATA);
  registers(Ds_array_tail, MR_NO_ERROR);
  registers(Ds_array_tail, MR_INVALID_FUNCTION);
  array.allocate = Ds_array_allocate;
  EXPECT_EQ(&array, Ds_get_object_table()->methods);
  const Owned s = makeStructure(77, {1, 2, 3});
  EXPECT_EQ(nullptr, DS_intersect(s.get(), s.get(), &status)) << "has no such method";
  EXPECT_EQ(MR_ARGUMENT_ERROR, status);
  array.add = [](DS_Structure* to, void* added, StatusCode* code) {
    const bool fits = Ds_array_enumerate(to, nullptr) < 2;
    return fits ? Ds_array_add(to, added, code) : (*code = MR_MEMORY_FAULT, 0);
  };
  EXPECT_EQ(nullptr, DS_duplicate(s.get(), nullptr, nullptr, &status)) << "failed part way";
  EXPECT_EQ(MR_MEMORY_FAULT, status);
  EXPECT_EQ(1, MR_deregister_item(&array, Ds_get_object_table(), nullptr));

  EXPECT_EQ(Ds_fifo_comparator, DS_set_comparator(s.get(), Ds_filo_comparator, &status));
  EXPECT_EQ(1, s->ordered) << "not touched";
  EXPECT_EQ(nullptr, DS_set_filter(s.get(), isSmall, &status));
  EXPECT_EQ(1, DS_register_filter(4, isEven, &status));
  EXPECT_EQ(isEven, DS_get_filter_function(4, &status));
  EXPECT_EQ(4, DS_get_filter_index(isEven, &status));
  EXPECT_EQ(MR_NO_ERROR, status);
  EXPECT_EQ(isSmall, DS_set_filter(s.get(), isEven, &status));
  EXPECT_EQ(0, std::exchange(s->ordered, 1));
  EXPECT_EQ(isEven, DS_set_filter(s.get(), isSmall, &status));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status);
  EXPECT_EQ(isEven, s->filter);
  EXPECT_EQ(0, s->ordered) << "even though it is refused";
  EXPECT_EQ(nullptr, DS_get_comparator_function(4, &status)) << "a registry of their own";
}
