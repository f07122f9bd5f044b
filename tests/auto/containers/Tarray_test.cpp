#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

#include <kilnbase/auto/containers/TdoubleArray.h>
#include <kilnbase/auto/containers/TobjArray.h>

using testing::ElementsAre;
using vxKilnBase::detail::TypedArray;
using vxKilnBase::detail::TypedObjArray;

namespace {

// A number on the heap. Sanitizers notice a leak and a use after the end, `at` an element that was
// moved from.
struct Heaped {
  Heaped(double number = 0.0) : numbers{number} {}  // NOLINT(google-explicit-constructor)
  operator double() const { return numbers.at(0); }

  std::vector<double> numbers;
};

// Makes the protected operations public.
template <class Base>
class Opened : public Base {
 public:
  using Base::Base;
  using Base::copyElements;
  using Base::createAndInitialise;
  using Base::findElement;
  using Base::insertElement;
};

using Doubles = Opened<TypedArray<Tarray, double>>;
using Objects = Opened<TypedObjArray<Heaped>>;

template <class Array>
std::vector<double> listed(const Array& array) {
  return {array.begin(), array.end()};
}

template <class Array>
std::vector<std::size_t> sizes(const Array& array) {
  return {array.length(), array.capacity(), array.sizeIncrement()};
}

template <class Array>
class Arrays : public testing::Test {};

using Kinds = testing::Types<Doubles, Objects>;
TYPED_TEST_SUITE(Arrays, Kinds);

template <class Array>
Array& filled(std::size_t n, Array& array) {
  for (std::size_t i = 0; i < n; ++i) array.addLast(static_cast<double>(i));
  return array;
}

using Pointers = Opened<TypedObjArray<std::unique_ptr<int>>>;

static_assert(Tarray::kNoMemory == 2);
static_assert(Tarray::kNotFound == 150);

}  // namespace

TEST(Tarray, LaysOutFieldsInTheirOrder) {
  TdoubleArray array(32);
  filled(3, array);
  std::size_t words[6];
  std::memcpy(words, static_cast<const void*>(&array), sizeof words);
  EXPECT_THAT(words, ElementsAre(testing::_, 3, 32, 32, 8,
                                 reinterpret_cast<std::uintptr_t>(&array.element(0))));
}

TYPED_TEST(Arrays, GrowByAStepThatGrowsWithEachReallocation) {
  TypeParam array(32);
  for (const auto& expected : std::vector<std::vector<std::size_t>>{
           {1, 32, 32}, {32, 32, 32}, {33, 64, 41}, {65, 105, 52}, {106, 157, 66}}) {
    while (array.length() < expected[0]) array.addLast(0.0);
    EXPECT_EQ(expected, sizes(array));
  }
}

TYPED_TEST(Arrays, RemoveWhatIsThere) {
  TypeParam array(8);
  filled(5, array).removeAt(7, 1);
  EXPECT_THAT(listed(array), ElementsAre(0, 1, 2, 3, 4));
  array.removeAt(2, SIZE_MAX);
  EXPECT_THAT(listed(array), ElementsAre(0, 1));
  array.removeLast(9);
  EXPECT_THAT(sizes(array), ElementsAre(0, 8, 8));
}

TYPED_TEST(Arrays, ChangeThePhysicalSizeOnRequestOnly) {
  TypeParam array(32);
  filled(3, array).pack();
  for (int i = 0; i < 2; ++i) array.buffer(4);
  EXPECT_THAT(sizes(array), ElementsAre(3, 7, 32));
  array.create(0, 5);  // keeps the block, so the next growth raises the step
  EXPECT_THAT(sizes(array), ElementsAre(0, 0, 5));
  EXPECT_THAT(sizes(filled(1, array)), ElementsAre(1, 5, 7));
  array.create(6, 3);
  EXPECT_THAT(sizes(array), ElementsAre(6, 6, 3));
}

TEST(Tarray, FindsElementsByTheirBytes) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  Doubles array(2);
  for (const double value : {1.0, -0.0, 0.0, kNaN, 1.0}) array.addLast(value);
  std::size_t index = 99;
  EXPECT_EQ(0, array.find(0.0, index));
  EXPECT_EQ(2U, index);
  EXPECT_EQ(array.kNotFound, array.find(2.0, index));
  EXPECT_EQ(5U, index);
  EXPECT_EQ(0, array.remove(kNaN));
  EXPECT_EQ(array.kNotFound, array.remove(kNaN));
}

TEST(TobjArray, MovesItsElementsWhenItGrows) {
  Pointers pointers(1);
  for (int i = 0; i < 9; ++i) pointers.insert(std::make_unique<int>(i), 0);
  pointers.removeAt(1, 7);
  pointers.insertElement(&pointers[0], 9, 1);  // moved, since there are no copies
  EXPECT_THAT(pointers[1], testing::Pointee(0));
  EXPECT_THAT(pointers[2], testing::Pointee(8));
}

TYPED_TEST(Arrays, FollowAModelThroughRandomOperations) {
  std::mt19937 random(6);
  TypeParam array(1);
  std::vector<double> model;
  const auto at = [&](std::size_t i) { return model.begin() + static_cast<std::ptrdiff_t>(i); };
  const auto put = [&](std::size_t i, const std::vector<double>& values) {
    model.insert(at(i), values.begin(), values.end());
  };
  const typename TypeParam::Element others[] = {1.0, 2.0, 3.0};
  for (int step = 0; step < 20000; ++step) {
    const std::size_t n = model.size();
    const auto value = static_cast<double>(random() % 50);
    const std::size_t i = random() % (n + 1);
    const std::size_t j = random() % (n + 1);
    const std::size_t count = std::min<std::size_t>(random() % 6, n - i);
    const std::vector<double> some(at(i), at(i + count));
    const std::size_t chosen = n == 0 ? 0 : random() % (n > 100 ? 9 : 11);
    if (chosen == 0) array.addLast(value), put(n, {value});
    if (chosen == 1) array.insert(array[0], i), put(i, {model[0]});
    if (chosen == 2) array.insertElement(&array[i], j, count), put(j, some);
    if (chosen == 3) array.removeAt(i, count), model.erase(at(i), at(i + 1 == n ? n : i + count));
    if (chosen == 4) array.removeLast(count), model.resize(n - count);
    if (chosen == 5) array.changePhysicalSizeTo(j), model.resize(j);
    if (chosen == 6) array.changeLogicalSizeTo(i), model.resize(i);
    if (chosen == 7) array.copyElements(j, others, 3), model.resize(j), put(j, {1, 2, 3});
    if (chosen == 8) array.copyElements(j, &array[i], count), model.resize(j), put(j, some);
    if (chosen == 9) array.catenate(array), put(n, std::vector(model));
    if (chosen == 10) array.setSizeIncrement(1 + count), array.pack();
    ASSERT_THAT(listed(array), testing::ElementsAreArray(model)) << step;
  }
  TypeParam copy(3);
  array.copyTo(copy);
  EXPECT_EQ(model, listed(copy));
}

TYPED_TEST(Arrays, CountSlotsWith16Bits) {
  typename TypeParam::Element value = 7.0;
  TypeParam array(1);
  const auto lastOf = [&](std::size_t n) {
    array.createAndInitialise(&value, n, 1);
    return static_cast<double>(*array.last());
  };
  EXPECT_EQ(7.0, lastOf(65535));
  EXPECT_DEBUG_DEATH(EXPECT_EQ(7.0, lastOf(65536)), "n < kCounterRange");
  EXPECT_DEBUG_DEATH(array.createAndInitialise(&array[0], 3, 1), "!own");
  EXPECT_LE(65535U, array.length());
}

TEST(Tarray, CountsComparedBytesWith16Bits) {
  Opened<Tarray> large(65538, 1);
  std::vector<char> element(65538, 'a');
  large.copyElements(0, element.data(), 1);
  std::size_t index = 0;
  for (const auto& [changed, result] : {std::pair(65536U, 0L), {65535U, large.kNotFound}}) {
    element[changed] = 'b';
    EXPECT_DEBUG_DEATH(EXPECT_EQ(result, large.findElement(element.data(), index)), "Range");
  }
}

TYPED_TEST(Arrays, StayAsTheyAreWhenThereIsNoMemory) {
  TypeParam array(4);
  filled(3, array);
  for (const std::size_t n : {SIZE_MAX, SIZE_MAX / 8, std::size_t{1} << 58}) {
    if constexpr (std::is_same_v<TypeParam, Doubles>) {
      EXPECT_EQ(array.kNoMemory, array.create(n, 5));
      EXPECT_EQ(array.kNoMemory, array.changePhysicalSizeTo(n));
      EXPECT_EQ(array.kNoMemory, array.buffer(n));
      EXPECT_EQ(0, array.changeLogicalSizeTo(n));
    }
    array.changePhysicalSizeTo(n);
    array.buffer(n);
    array.create(n, 7);
    array.insertElement(&array[0], 1, n);
    EXPECT_THAT(listed(array), ElementsAre(0, 1, 2));
    EXPECT_THAT(sizes(array), ElementsAre(3, 4, 7));
  }
  Opened<Tarray> large(SIZE_MAX / 2, 1);
  EXPECT_EQ(large.kNoMemory, large.createAndInitialise(&array[0], 3, 1));
  EXPECT_DEBUG_DEATH(array.changeLogicalSizeBy(-4), "difference");
  array.setSizeIncrement(0);
  EXPECT_DEBUG_DEATH(EXPECT_EQ(5U, (array.changeLogicalSizeTo(5), array.capacity())), "Increment");
}
