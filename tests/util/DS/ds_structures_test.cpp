#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/DS/mr_register.h>
#include <vx/Memory.h>

#include "tests/support/Reports.h"
#include "tests/util/DS/Structures.h"

using kilntest::contents;
using kilntest::isEven;
using kilntest::isSmall;
using kilntest::item;
using kilntest::longForm;
using kilntest::makeStructure;
using kilntest::number;
using kilntest::numberAt;
using kilntest::Numbers;
using kilntest::Owned;
using kilntest::Slot;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Operations : public testing::TestWithParam<int> {
 protected:
  Owned make(const Numbers& numbers = {}, DS_Comparator comparator = Ds_fifo_comparator) const {
    return makeStructure(GetParam(), numbers, comparator);
  }

  StatusCode status_ = MR_UNKNOWN;  // As left by something else.
};

int addAtMostTwo(DS_Structure* structure, void* added, StatusCode* status) {
  if (Ds_slist_enumerate(structure, nullptr) < 2) return Ds_slist_add(structure, added, status);
  *status = MR_MEMORY_FAULT;
  return 0;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(All, Operations,
                         testing::Values(DS_DLIST, DS_SLIST, DS_BINTREE, DS_ARRAY));

TEST_P(Operations, DuplicatesHoldCopiesOfWhatIsShown) {
  const Owned s = make({1, 4, 3, 2}, Ds_filo_comparator);
  s->filter = isEven;
  const DS_CopyFn addUser = [](void* it, void* user) {
    return item(number(it) + *static_cast<int*>(user));
  };
  int one = 1;
  const Owned odd(DS_duplicate(s.get(), addUser, &one, &status_));
  EXPECT_EQ(MR_NO_ERROR, status_);
  EXPECT_EQ(isEven, odd->filter);
  EXPECT_EQ(Ds_filo_comparator, odd->comparator);
  EXPECT_EQ(1, odd->ordered);
  odd->filter = nullptr;
  EXPECT_THAT(contents(odd), ElementsAre(5, 3)) << "copies are added by the comparator";
  s->ordered = 0;
  EXPECT_EQ(0, Owned(DS_duplicate(s.get(), nullptr, nullptr, &status_))->ordered);
  const Owned empty(DS_duplicate(make().get(), nullptr, nullptr, &status_));
  EXPECT_THAT(contents(empty), IsEmpty());
  EXPECT_EQ(MR_NO_ERROR, status_);
}

TEST_P(Operations, DifferencesAndIntersectionsLookUpTheVisibleItemsOfTheSecond) {
  const Owned a = make({8, 6, 5, 4, 2}, Ds_default_comparator);
  const Owned b = make({2, 3, 6, 108}, Ds_default_comparator);
  a->filter = isEven;
  b->filter = isSmall;
  const Owned difference(DS_difference(a.get(), b.get(), &status_));
  EXPECT_THAT(contents(difference), ElementsAre(4, 8));
  EXPECT_EQ(MR_NO_ERROR, status_);
  const Owned intersection(DS_intersect(a.get(), b.get(), &status_));
  EXPECT_THAT(contents(intersection), ElementsAre(2, 6));
  EXPECT_EQ(MR_NO_ERROR, status_);
  EXPECT_EQ(isEven, intersection->filter);

  EXPECT_EQ(1, difference->ordered);
  EXPECT_EQ(0, Owned(DS_difference(a.get(), b.get(), nullptr))->ordered);
  b->ordered = 0;
  EXPECT_EQ(0, Owned(DS_intersect(a.get(), b.get(), &status_))->ordered);
  b->ordered = 1;
  a->comparator = b->comparator = nullptr;
  EXPECT_EQ(0, Owned(DS_intersect(a.get(), b.get(), &status_))->ordered);
  EXPECT_EQ(MR_CANNOT_SORT, status_);

  EXPECT_EQ(nullptr, DS_difference(a.get(), a.get(), &status_));
  EXPECT_EQ(MR_NO_ERROR, status_);
  EXPECT_EQ(nullptr, DS_intersect(a.get(), make({}, nullptr).get(), &status_));
  EXPECT_EQ(MR_NO_ERROR, status_);
}

TEST_P(Operations, MergingAddsTheItemsOfBoth) {
  const Owned a = make({1, 2, 4}, Ds_default_comparator);
  const Owned b = make({2, 3, 6}, Ds_default_comparator);
  const Owned both(DS_merge(a.get(), b.get(), &status_));
  EXPECT_THAT(contents(both), ElementsAre(1, 2, 2, 3, 4, 6));
  EXPECT_EQ(1, Owned(DS_merge(a.get(), b.get(), nullptr))->ordered);
  EXPECT_THAT(contents(Owned(DS_merge(nullptr, b.get(), &status_))), ElementsAre(2, 3, 6));
  EXPECT_THAT(contents(Owned(DS_merge(a.get(), nullptr, &status_))), ElementsAre(1, 2, 4));
  EXPECT_EQ(MR_NO_ERROR, status_);

  b->filter = isEven;
  EXPECT_THAT(contents(Owned(DS_merge(a.get(), b.get(), &status_))), ElementsAre(1, 2, 2, 4, 6));
  a->filter = isEven;
  b->filter = nullptr;
  EXPECT_EQ(nullptr, DS_merge(a.get(), b.get(), &status_)) << "3 is hidden in the result";
  EXPECT_EQ(MR_ITEM_FILTERED, status_);

  const Owned unsorted(DS_merge(make({2}, nullptr).get(), make({1}, nullptr).get(), &status_));
  EXPECT_THAT(contents(unsorted), ElementsAre(2, 1));
  EXPECT_EQ(0, unsorted->ordered);
  EXPECT_EQ(MR_CANNOT_SORT, status_);
}

TEST_P(Operations, StructuresMustFitAndExist) {
  const Owned s = make({1});
  const Owned otherComparator = make({1}, Ds_filo_comparator);
  const Owned otherKind = makeStructure(GetParam() % 4 + 1, {1});
  DS_Structure bare{1, nullptr, Ds_fifo_comparator, nullptr, nullptr};
  const auto codeOf = [&](auto operation, DS_Structure* a, DS_Structure* b) {
    EXPECT_EQ(nullptr, operation(a, b, nullptr));
    EXPECT_EQ(nullptr, operation(a, b, &status_));
    return status_;
  };
  for (const auto operation : {DS_difference, DS_intersect, DS_merge}) {
    EXPECT_EQ(MR_INCOMPATIBILITY, codeOf(operation, s.get(), otherComparator.get()));
    EXPECT_EQ(MR_INCOMPATIBILITY, codeOf(operation, s.get(), otherKind.get()));
    EXPECT_EQ(MR_ARGUMENT_ERROR, codeOf(operation, s.get(), &bare));
    EXPECT_EQ(MR_ARGUMENT_ERROR, codeOf(operation, &bare, s.get()));
    EXPECT_EQ(MR_ARGUMENT_ERROR, codeOf(operation, nullptr, nullptr));
  }
  EXPECT_EQ(MR_ARGUMENT_ERROR, codeOf(DS_difference, s.get(), nullptr));
  EXPECT_EQ(MR_ARGUMENT_ERROR, codeOf(DS_intersect, nullptr, s.get()));
  EXPECT_EQ(nullptr, DS_duplicate(&bare, nullptr, nullptr, &status_));
  EXPECT_EQ(MR_ARGUMENT_ERROR, status_);
}

TEST(Structures, ResultsThatFailPartWayAreDestroyed) {
  DS_Methods methods = *Ds_slist_get_methods();
  methods.add = addAtMostTwo;
  const Owned a = makeStructure(DS_SLIST, {1, 2, 3}), b = makeStructure(DS_SLIST, {9});
  a->methods = b->methods = &methods;
  StatusCode status = MR_NO_ERROR;
  Mr_err_ignore = MR_UNKNOWN;
  EXPECT_EQ(nullptr, DS_duplicate(a.get(), nullptr, nullptr, &status));
  EXPECT_EQ(MR_MEMORY_FAULT, status);
  EXPECT_EQ(MR_NO_ERROR, Mr_err_ignore);
  EXPECT_EQ(nullptr, DS_merge(b.get(), a.get(), &status));
  EXPECT_EQ(nullptr, DS_difference(a.get(), b.get(), &status));
  EXPECT_EQ(MR_MEMORY_FAULT, status);
  methods.intersect = nullptr;
  EXPECT_EQ(nullptr, DS_intersect(a.get(), b.get(), &status));
  EXPECT_EQ(MR_ARGUMENT_ERROR, status);
}

TEST_P(Operations, UnwantedItemsAreRemovedHiddenOrNot) {
  const Owned s = make({1, 2, 0, 103, 104, 0}, Ds_fifo_comparator);
  s->filter = isSmall;
  EXPECT_EQ(1, DS_remove_nulls(s.get(), &status_));
  EXPECT_EQ(MR_NO_ERROR, status_);
  Numbers freed;
  const DS_FreeFn record = [](DS_Position position, void* user) {
    static_cast<Numbers*>(user)->push_back(numberAt(position));
    return 1;
  };
  EXPECT_EQ(1, DS_remove_unfiltered_items(s.get(), isEven, record, &freed, nullptr));
  EXPECT_THAT(freed, ElementsAre(1, 103));
  EXPECT_EQ(isSmall, s->filter);
  EXPECT_EQ(Ds_fifo_comparator, s->comparator);
  s->filter = nullptr;
  EXPECT_THAT(contents(s), ElementsAre(2, 104));
  EXPECT_EQ(1, DS_remove_unfiltered_items(s.get(), nullptr, nullptr, nullptr, &status_));
  EXPECT_THAT(contents(s), IsEmpty());
  EXPECT_EQ(0, DS_remove_unfiltered_items(nullptr, isEven, nullptr, nullptr, &status_));
  EXPECT_EQ(MR_ARGUMENT_ERROR, status_);
}

TEST_P(Operations, DestructionHandsOverTheItemsAndClearsTheHandle) {
  DS_Structure* s = make().release();
  for (int i = 0; i < 3; ++i) s->methods->add(s, std::malloc(1), &status_);
  s->filter = isEven;
  const auto freeItem = longForm<DS_FreeFn>(DS_memory_free);
  EXPECT_EQ(1, DS_empty_list(s, freeItem, nullptr, &status_));
  s->methods->add(s, std::malloc(1), &status_);
  EXPECT_EQ(1, DS_destructor(&s, freeItem, nullptr, &status_));
  EXPECT_EQ(nullptr, s);
  EXPECT_EQ(MR_NO_ERROR, status_);
  EXPECT_EQ(0, DS_destructor(&s, nullptr, nullptr, &status_));
  EXPECT_EQ(MR_ARGUMENT_ERROR, status_);
  EXPECT_EQ(0, DS_destructor(nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(0, DS_empty_list(nullptr, nullptr, nullptr, nullptr));
}

TEST(Structures, SuppliedComparatorsTakeItemsForNumbersAndStrings) {
  const Slot small{item(1)}, large{item(-1)}, none{nullptr};
  EXPECT_EQ(-1, Ds_default_comparator(&small, &large)) << "unsigned";
  EXPECT_EQ(1, Ds_default_comparator(&large, &small));
  EXPECT_EQ(0, Ds_default_comparator(&small, &small));
  EXPECT_EQ(0, Ds_default_comparator(nullptr, &small));
  char aText[] = "a", umlautText[] = "\xe4", longerText[] = "ab";
  const Slot a{aText}, umlaut{umlautText}, longer{longerText};
  EXPECT_EQ(-1, Ds_string_comparator(&a, &umlaut)) << "unsigned";
  EXPECT_EQ(1, Ds_string_comparator(&umlaut, &longer));
  EXPECT_EQ(-1, Ds_string_comparator(&a, &longer));
  EXPECT_EQ(0, Ds_string_comparator(&a, &none));
  EXPECT_EQ(0, Ds_string_comparator(&a, nullptr));
  EXPECT_EQ(1, Ds_string_find(longerText, "ab"));
  EXPECT_EQ(0, Ds_string_find(aText, longerText));
  EXPECT_EQ(0, Ds_string_find(aText, nullptr));
  int count = 0;
  const Owned s = makeStructure(DS_DLIST, {1, 2, 3});
  EXPECT_EQ(1, s->methods->walk(s.get(), Ds_enumerate, &count, -1, 0, nullptr));
  EXPECT_EQ(3, count);
  EXPECT_EQ(1, Ds_enumerate(nullptr, nullptr, nullptr));
}

TEST_P(Operations, PrintingShowsTheHeaderAndTheVisibleItems) {
  const auto hex = [](const char* before, auto* pointer, const char* after) {
    char text[80];
    std::snprintf(text, sizeof text, "debug 0: %s%#llx%s\n", before,
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pointer)),
                  after);
    return std::string(text);
  };
  const Owned s = make({6, 7});
  s->filter = isEven;
  const std::string position = hex("Item ", s->methods->head(s.get(), nullptr), ":");
  const std::string structure = hex("Structure ", s.get(), "");
  const std::string filter = hex("Filter = ", isEven, "");
  const std::string comparator = hex("Comparator = ", Ds_fifo_comparator, "");
  kilntest::RecordedReports reports;
  DS_print(s.get(), nullptr, nullptr, nullptr);
  EXPECT_THAT(reports.takeAll(),
              ElementsAre(structure, "debug 0: >>>", filter, comparator,
                          "debug 0: Ordered = TRUE\n", "debug 0: Filtered Member list =\n",
                          "debug 0: >>>", position, "debug 0: 0x6\n", "debug 0: <<<"));
  s->ordered = 0;
  const DS_PrintFn print = [](void* it, void* user) {
    rptDebug(0, "%s%d", static_cast<const char*>(user), static_cast<int>(number(it)));
    return 1;
  };
  char user[] = "it's ";
  DS_print_structure(s.get(), print, user, &status_);
  EXPECT_THAT(
      reports.takeAll(),
      ElementsAre(structure, "debug 0: >>>", filter, comparator, "debug 0: Ordered = FALSE\n",
                  "debug 0: Filtered Member list =\n", "debug 0: >>>", position, "debug 0: >>>",
                  "debug 0: it's 6", "debug 0: <<<", "debug 0: <<<"));
  DS_print(nullptr, nullptr, nullptr, &status_);
  EXPECT_THAT(reports.takeAll(), ElementsAre("debug 0: Null structure\n"));
  EXPECT_EQ(MR_NO_ERROR, status_);
}

// The one test that registers structures: there is one table in the process.
TEST(Structures, TheFirstRegisteredTableMakesTheObjectTable) {
  StatusCode status = MR_NO_ERROR;
  DS_Structure* s = DS_create_type(77, &status, __LINE__, __FILE__);
  EXPECT_EQ(nullptr, s->methods);
  EXPECT_EQ(MR_ARGUMENT_ERROR, status) << "nothing is registered";
  EXPECT_EQ(0, DS_destructor(&s, nullptr, nullptr, &status));
  MA_free(s);

  static DS_Methods array = *Ds_array_get_methods();
  EXPECT_EQ(0, Ds_register_structure(77, nullptr, &status));
  EXPECT_EQ(MR_ARGUMENT_ERROR, status);
  array.tail = nullptr;
  EXPECT_EQ(0, Ds_register_structure(77, &array, &status));
  EXPECT_EQ(MR_INVALID_DATA, status);
  EXPECT_EQ(nullptr, Ds_get_object_table());

  array.tail = Ds_array_tail;
  array.intersect = nullptr;
  EXPECT_EQ(1, Ds_register_structure(77, &array, &status));
  EXPECT_EQ(MR_NO_ERROR, status);
  const DS_Structure* table = Ds_get_object_table();
  EXPECT_EQ(&array, table->methods);
  EXPECT_EQ(Ds_default_comparator, table->comparator);
  EXPECT_EQ(1, table->ordered);
  EXPECT_EQ(0, Ds_register_structure(77, &array, &status));
  EXPECT_EQ(MR_INVALID_FUNCTION, status);

  const Owned registered(DS_create_type(77, &status, __LINE__, __FILE__));
  EXPECT_EQ(&array, registered->methods);
  EXPECT_NE(nullptr, registered->data);
  EXPECT_EQ(MR_NO_ERROR, status);
  EXPECT_EQ(Ds_slist_get_methods(), makeStructure(DS_SLIST)->methods) << "built in";
  s = DS_create_type(78, &status, __LINE__, __FILE__);
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status);
  MA_free(s);

  array.intersect = Ds_array_intersect;
  EXPECT_EQ(1, MR_deregister_item(&array, Ds_get_object_table(), nullptr));
}

// The one test that registers comparators and filters.
TEST(Structures, OnceOneIsRegisteredOthersAreRefused) {
  StatusCode status = MR_UNKNOWN;
  const Owned s = makeStructure(DS_SLIST);
  EXPECT_EQ(nullptr, DS_get_comparator_function(1, &status));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status);
  EXPECT_EQ(-1, DS_get_filter_index(isEven, nullptr));
  EXPECT_EQ(Ds_fifo_comparator, DS_set_comparator(s.get(), Ds_filo_comparator, &status));
  EXPECT_EQ(MR_NO_ERROR, status);
  EXPECT_EQ(1, s->ordered);
  EXPECT_EQ(nullptr, DS_set_filter(s.get(), isSmall, &status));
  EXPECT_EQ(0, s->ordered);

  EXPECT_EQ(1, DS_register_comparator(3, Ds_string_comparator, &status));
  EXPECT_EQ(1, DS_register_filter(4, isEven, &status));
  EXPECT_EQ(0, DS_register_filter(4, isSmall, &status));
  EXPECT_EQ(MR_INVALID_FUNCTION, status);
  EXPECT_EQ(Ds_string_comparator, DS_get_comparator_function(3, &status));
  EXPECT_EQ(isEven, DS_get_filter_function(4, &status));
  EXPECT_EQ(3, DS_get_comparator_index(Ds_string_comparator, &status));
  EXPECT_EQ(4, DS_get_filter_index(isEven, &status));
  EXPECT_EQ(MR_NO_ERROR, status);

  EXPECT_EQ(Ds_filo_comparator, DS_set_comparator(s.get(), Ds_fifo_comparator, &status));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status);
  EXPECT_EQ(Ds_filo_comparator, s->comparator);
  EXPECT_EQ(Ds_filo_comparator, DS_set_comparator(s.get(), Ds_string_comparator, nullptr));
  EXPECT_EQ(Ds_string_comparator, s->comparator);
  s->ordered = 1;
  EXPECT_EQ(isSmall, DS_set_filter(s.get(), isSmall, &status));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status);
  EXPECT_EQ(0, s->ordered) << "even though it is refused";
  EXPECT_EQ(isSmall, DS_set_filter(s.get(), isEven, &status));
  EXPECT_EQ(isEven, s->filter);
  EXPECT_EQ(MR_NO_ERROR, status);
  EXPECT_EQ(nullptr, DS_set_comparator(nullptr, Ds_string_comparator, &status));
  EXPECT_EQ(MR_ARGUMENT_ERROR, status);
  EXPECT_EQ(nullptr, DS_set_filter(nullptr, isEven, nullptr));
}
