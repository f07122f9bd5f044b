#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <memory>

#include <kilnbase/util/mr_array.h>

namespace {

constexpr int kMostInt = std::numeric_limits<int>::max();

struct Free {
  void operator()(MR_Array* array) const { MR_array_free(&array); }
};
using Array = std::unique_ptr<MR_Array, Free>;

Array arrayOf(int elementSize, int start, int growth) {
  return Array(MR_array_new(elementSize, start, growth));
}

std::int64_t at(const Array& array, int i) {
  return *static_cast<const std::int64_t*>(MR_array_get(array.get(), i));
}

}  // namespace

TEST(Array, GrowsByItsStepBeyondWhatIsAskedFor) {
  const Array array = arrayOf(8, 2, 3);
  EXPECT_EQ(5, array->count);
  MR_array_size(array.get(), 5);
  MR_array_size(array.get(), 1);
  EXPECT_EQ(5, array->count);
  const std::int64_t element = 7;
  MR_array_put(array.get(), 4, &element);
  EXPECT_EQ(5, array->count);
  MR_array_put(array.get(), 5, &element);
  EXPECT_EQ(8, array->count);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(i == 4 || i == 5 ? 7 : 0, at(array, i)) << i;
  EXPECT_EQ(nullptr, MR_array_get(array.get(), 8));
  EXPECT_EQ(nullptr, MR_array_get(array.get(), -1));
  EXPECT_EQ(0, arrayOf(8, 0, 3)->count);
}

TEST(Array, PutsAnElementOfItsOwnWhileItGrows) {
  const Array array = arrayOf(8, 1, 0);
  array->growth = 1;
  *static_cast<std::int64_t*>(array->elements) = 9;
  MR_array_put(array.get(), 1, array->elements);
  EXPECT_EQ(9, at(array, 1));
}

TEST(Array, WithoutAStepThereIsNoPlaceToPut) {
  const Array array = arrayOf(8, 2, 0);
  const std::int64_t element = 7;
  EXPECT_DEBUG_DEATH(MR_array_put(array.get(), 2, &element), "growth");
  EXPECT_DEBUG_DEATH(MR_array_put(array.get(), -1, &element), "i >= 0");
  EXPECT_EQ(2, array->count);
}

TEST(Array, StaysAsItIsWhenItCannotGrow) {
  const Array array = arrayOf(1 << 30, 0, 1);
  MR_array_size(array.get(), kMostInt - 1);
  MR_array_size(array.get(), kMostInt);
  MR_array_put(array.get(), kMostInt, &array);
  EXPECT_EQ(0, array->count);
  EXPECT_EQ(nullptr, arrayOf(8, kMostInt, 1));
  EXPECT_DEBUG_DEATH(arrayOf(-8, -5, -1), "element_size > 0");
}
