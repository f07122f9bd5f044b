#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <vector>

#include <kilnbase/util/mr_array.h>

namespace {

struct Free {
  void operator()(MR_Array* array) const { MR_array_free(&array); }
};

std::unique_ptr<MR_Array, Free> arrayOf(int elementSize, int start, int growth) {
  return std::unique_ptr<MR_Array, Free>(MR_array_new(elementSize, start, growth));
}

}  // namespace

TEST(Array, GrowsByItsStepBeyondWhatIsAskedFor) {
  const auto array = arrayOf(8, 2, 3);
  MR_array_size(array.get(), 5);
  MR_array_size(array.get(), 1);
  EXPECT_EQ(5, array->count);
  const std::int64_t element = 7;
  MR_array_put(array.get(), 4, &element);
  MR_array_put(array.get(), 5, MR_array_get(array.get(), 4));  // from the array that grows
  const auto* const elements = static_cast<const std::int64_t*>(MR_array_get(array.get(), 0));
  EXPECT_EQ((std::vector<std::int64_t>{0, 0, 0, 0, 7, 7, 0, 0}),
            std::vector<std::int64_t>(elements, elements + 8));
  EXPECT_EQ(nullptr, MR_array_get(array.get(), 8));
  EXPECT_EQ(nullptr, MR_array_get(array.get(), -1));
}

TEST(Array, StaysAsItIsWhenItCannotGrow) {
  constexpr int kMostInt = std::numeric_limits<int>::max();
  const auto array = arrayOf(1 << 30, 0, 1);
  MR_array_size(array.get(), kMostInt - 1);
  MR_array_put(array.get(), kMostInt, &array);
  EXPECT_EQ(0, array->count);
  EXPECT_EQ(nullptr, arrayOf(8, kMostInt, 1));
  const auto steady = arrayOf(8, 2, 0);
  EXPECT_DEBUG_DEATH(MR_array_put(steady.get(), 2, &array), "growth");
  EXPECT_DEBUG_DEATH(MR_array_put(steady.get(), -1, &array), "i >= 0");
  EXPECT_EQ(2, steady->count);
  MR_array_put(array.get(), 1, nullptr);
  MR_array_put(nullptr, 0, &array);
  MR_array_size(nullptr, 1);
  EXPECT_EQ(nullptr, MR_array_get(nullptr, 0));
}
