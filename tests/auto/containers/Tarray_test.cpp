#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>
#include <tuple>
#include <vector>

#include <kilnbase/auto/containers/T3dDblPointArray.h>
#include <kilnbase/auto/containers/TcharPtrArray.h>
#include <kilnbase/auto/containers/TdoubleArray.h>
#include <kilnbase/auto/containers/TobjArray.h>

using testing::ElementsAre;
using vxKilnBase::detail::TypedArray;
using vxKilnBase::detail::TypedObjArray;

namespace {

// A number that knows where the living ones of its kind are, and so notices one that is used after
// its end or begun twice.
class Counted {
 public:
  Counted() : Counted(0.0) {}
  Counted(double value) : value_(value) { begin(); }  // NOLINT(google-explicit-constructor)
  Counted(const Counted& other) : value_(other) { begin(); }
  Counted& operator=(const Counted& other) {
    EXPECT_TRUE(living.contains(this));
    value_ = other;
    return *this;
  }
  ~Counted() { EXPECT_EQ(1U, living.erase(this)); }

  operator double() const {
    EXPECT_TRUE(living.contains(this));
    return value_;
  }

  static inline std::set<const Counted*> living;

 private:
  void begin() { EXPECT_TRUE(living.insert(this).second); }

  double value_;
};

// Opens what is protected, and counts nothing of its own.
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
using Objects = Opened<TypedObjArray<Counted>>;

template <class Array>
std::vector<double> listed(const Array& array) {
  std::vector<double> values;
  for (std::size_t i = 0; i < array.length(); ++i) values.push_back(array[i]);
  return values;
}

template <class Array>
class Arrays : public testing::Test {
 protected:
  void TearDown() override { EXPECT_TRUE(Counted::living.empty()); }
};

using Kinds = testing::Types<Doubles, Objects>;
TYPED_TEST_SUITE(Arrays, Kinds);

template <class Array>
Array* filled(std::size_t n, Array& array) {
  for (std::size_t i = 0; i < n; ++i) array.addLast(static_cast<double>(i));
  return &array;
}

// Where a virtual function stands in the table of its class, told by the Itanium representation of
// pointers to members.
template <class Member>
std::uintptr_t slotOf(Member member) {
  std::uintptr_t word = 0;
  std::memcpy(&word, &member, sizeof word);
  return (word - 1) / sizeof(void*);
}

// Two slots for the destructor come first, two private operations stand before the hooks.
template <class Array>
class Slots : public Array {
 public:
  static std::vector<std::uintptr_t> ofOperations() {
    return {slotOf(&Array::create),
            slotOf(&Array::removeAt),
            slotOf(&Array::removeLast),
            slotOf(&Array::setSizeIncrement),
            slotOf(&Array::changeLogicalSizeTo),
            slotOf(&Array::changeLogicalSizeBy),
            slotOf(&Array::changePhysicalSizeTo),
            slotOf(&Array::buffer),
            slotOf(&Array::pack),
            slotOf(&Array::reset),
            slotOf(&Slots::createAndInitialise)};
  }
  static std::vector<std::uintptr_t> ofHooks() {
    return {slotOf(&Slots::construct), slotOf(&Slots::destruct), slotOf(&Slots::destroy),
            slotOf(&Slots::initialize), slotOf(&Slots::shuffle)};
  }
};

}  // namespace

TEST(Tarray, LaysOutFieldsAndVirtualFunctionsInTheirOrder) {
  TdoubleArray array(32);
  filled(3, array);
  std::size_t words[6];
  static_assert(sizeof array == sizeof words && sizeof(TypedObjArray<double>) == sizeof words);
  std::memcpy(words, static_cast<const void*>(&array), sizeof words);
  EXPECT_THAT(words, ElementsAre(testing::_, 3, 32, 32, 8,
                                 reinterpret_cast<std::uintptr_t>(&array.element(0))));
  const auto operations = ElementsAre(2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12);
  EXPECT_THAT(Slots<Tarray>::ofOperations(), operations);
  EXPECT_THAT(Slots<TobjArray>::ofOperations(), operations);
  EXPECT_THAT(Slots<TobjArray>::ofHooks(), ElementsAre(15, 16, 17, 18, 19));
}

TYPED_TEST(Arrays, GrowByAStepThatGrowsWithEachReallocation) {
  TypeParam array(32);
  const std::tuple<std::size_t, std::size_t, std::size_t> growths[] = {
      {1, 32, 32}, {32, 32, 32}, {33, 64, 41}, {65, 105, 52}, {106, 157, 66}};
  for (const auto& [length, capacity, step] : growths) {
    while (array.length() < length) array.addLast(0.0);
    EXPECT_EQ(capacity, array.capacity()) << length;
    EXPECT_EQ(step, array.sizeIncrement()) << length;
  }
  TypeParam fresh(32);
  fresh.changeLogicalSizeTo(200);
  EXPECT_EQ(224U, fresh.capacity());
  EXPECT_EQ(32U, fresh.sizeIncrement());
  fresh.changeLogicalSizeTo(32 + 224);  // a step of 32 makes up for just that
  EXPECT_EQ(256U, fresh.capacity());
  fresh.setSizeIncrement(0x7fffffff);
  fresh.changeLogicalSizeBy(-255);
  EXPECT_EQ(256U, fresh.capacity());
  EXPECT_EQ(1U, fresh.length());
}

TYPED_TEST(Arrays, RemoveWhatIsThere) {
  const std::tuple<std::size_t, std::size_t, std::vector<double>> cases[] = {
      {2, 10, {0, 1}},         {4, 3, {0, 1, 2, 3}},    {7, 1, {0, 1, 2, 3, 4}},
      {5, 1, {0, 1, 2, 3, 4}}, {1, 2, {0, 3, 4}},       {0, SIZE_MAX, {}},
      {4, 0, {0, 1, 2, 3}},    {3, 0, {0, 1, 2, 3, 4}}, {1, SIZE_MAX, {0}}};
  for (const auto& [index, count, left] : cases) {
    TypeParam array(8);
    filled(5, array)->removeAt(index, count);
    EXPECT_EQ(left, listed(array)) << index << ", " << count;
  }
  TypeParam array(8);
  filled(5, array)->removeLast(2);
  EXPECT_THAT(listed(array), ElementsAre(0, 1, 2));
  array.removeLast(9);
  EXPECT_EQ(0U, array.length());
  EXPECT_EQ(8U, array.capacity());
}

TYPED_TEST(Arrays, ChangeThePhysicalSizeOnRequestOnly) {
  TypeParam array(32);
  filled(3, array)->pack();
  EXPECT_EQ(3U, array.capacity());
  array.buffer(4);
  EXPECT_EQ(7U, array.capacity());
  array.buffer(4);
  EXPECT_EQ(7U, array.capacity());
  array.changePhysicalSizeTo(2);
  EXPECT_THAT(listed(array), ElementsAre(0, 1));
  array.create(0, 5);  // keeps a block of no slots, which the next growth reallocates
  EXPECT_EQ(0U, array.capacity());
  filled(1, array);
  EXPECT_EQ(5U, array.capacity());
  EXPECT_EQ(7U, array.sizeIncrement());
  array.create(6, 3);
  EXPECT_EQ(6U, array.length());
  EXPECT_EQ(6U, array.capacity());
  array.changePhysicalSizeTo(0);
  EXPECT_EQ(0U, array.length());
  filled(1, array);
  EXPECT_EQ(3U, array.capacity());
  EXPECT_EQ(3U, array.sizeIncrement());
}

TYPED_TEST(Arrays, FindElementsByTheirBytes) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  TypeParam array(2);
  for (const double value : {1.0, -0.0, 0.0, kNaN, 1.0}) array.addLast(value);
  const std::tuple<double, long, std::size_t> cases[] = {
      {1.0, 0, 0}, {0.0, 0, 2}, {kNaN, 0, 3}, {2.0, 150, 5}};
  for (const auto& [value, result, place] : cases) {
    std::size_t index = 99;
    EXPECT_EQ(result, array.find(value, index));
    EXPECT_EQ(place, index) << value;
  }
  EXPECT_EQ(0, array.remove(kNaN));
  EXPECT_EQ(150, array.remove(kNaN));
  EXPECT_EQ(4U, array.length());
}

// Values of elements without one of their own are set as they appear.
TYPED_TEST(Arrays, FollowAModelThroughRandomOperations) {
  std::mt19937 random(6);
  const auto below = [&random](std::size_t n) { return n == 0 ? 0 : random() % n; };
  TypeParam array(1);
  std::vector<double> model;
  const auto resized = [&](std::size_t n) {
    for (std::size_t i = model.size(); i < n; ++i) array[i] = -1.0;
    model.resize(n, -1.0);
  };
  for (int step = 0; step < 20000; ++step) {
    const double value = static_cast<double>(below(50));
    const std::size_t index = below(model.size() + 2);
    const std::size_t place = std::min(index, model.size());
    const std::size_t count = std::min(below(6), model.size() - place);
    const auto at = model.begin() + static_cast<std::ptrdiff_t>(place);
    switch (below(14)) {
      case 0:
      case 1:
        array.addLast(value);
        model.push_back(value);
        break;
      case 2:
        array.insert(value, index);
        model.insert(at, value);
        break;
      case 3:
        if (model.empty()) break;
        array.insert(array[0], index);
        model.insert(at, model.front());
        break;
      case 4: {  // elements of the array itself
        const std::vector<double> run(at, at + static_cast<std::ptrdiff_t>(count));
        const std::size_t target = below(model.size() + 1);
        if (count > 0) array.insertElement(&array[place], target, count);
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(target), run.begin(), run.end());
        break;
      }
      case 5: {
        const typename TypeParam::Element others[] = {1.0, 2.0, value};
        array.addLast(others, 3);
        model.insert(model.end(), {1.0, 2.0, value});
        break;
      }
      case 6:
        if (place + 1 == model.size()) break;
        array.removeAt(index, count);
        model.erase(at, at + static_cast<std::ptrdiff_t>(count));
        break;
      case 7:
        array.removeLast(count);
        model.resize(model.size() - count);
        break;
      case 8:
        array.changeLogicalSizeTo(index);
        resized(index);
        break;
      case 9:
        array.changeLogicalSizeBy(3 - static_cast<long>(count));
        resized(model.size() + 3 - count);
        break;
      case 10:
        array.changePhysicalSizeTo(index);
        model.resize(std::min(index, model.size()));
        break;
      case 11: {
        const auto found = std::find(model.begin(), model.end(), value);
        EXPECT_EQ(found == model.end() ? 150 : 0, array.remove(value));
        if (found != model.end()) model.erase(found);
        break;
      }
      case 12: {
        TypeParam other(3);
        array.copyTo(other);
        other.catenate(other);
        const std::size_t half = other.length() / 2;
        if (half == 0) break;
        array.copyElements(place, &other[half - 1], half);
        model.resize(place);
        for (std::size_t i = 0; i < half; ++i) model.push_back(other[half - 1 + i]);
        break;
      }
      default:
        if (model.size() > 100) {
          array.reset();
          model.clear();
        }
        array.setSizeIncrement(1 + below(4));
        array.pack();
    }
    ASSERT_EQ(model, listed(array)) << step;
    ASSERT_LE(array.length(), array.capacity());
  }
}

TYPED_TEST(Arrays, CountSlotsWith16BitsWhenTheyAreInitialised) {
  typename TypeParam::Element value = 7.0;
  TypeParam array(1);
  array.createAndInitialise(&value, 65535, 9);
  EXPECT_EQ(std::vector<double>(65535, 7.0), listed(array));
  EXPECT_EQ(9U, array.sizeIncrement());
  EXPECT_DEBUG_DEATH(array.createAndInitialise(&value, 65536 + 2, 1), "n < kCounterRange");
  EXPECT_DOUBLE_EQ(7.0, array[65534]);
}

TEST(Tarray, ComparesTheFirst65536BytesOfAnElement) {
  Opened<Tarray> array(65538, 1);
  array.changeLogicalSizeTo(1);
  std::vector<char> element(65538, 'a');
  array.copyElements(0, element.data(), 1);
  std::size_t index = 9;
  for (const auto& [changed, expected] : {std::pair(65537U, 0U), std::pair(65535U, 1U)}) {
    element[changed] = 'b';
    EXPECT_DEBUG_DEATH(
        {
          array.findElement(element.data(), index);
          EXPECT_EQ(expected, index);
        },
        "kCounterRange");
  }
}

TYPED_TEST(Arrays, StayAsTheyAreWhenThereIsNoMemory) {
  TypeParam array(4);
  filled(3, array);
  for (const std::size_t n : {SIZE_MAX, SIZE_MAX / 8, std::size_t{1} << 58}) {
    array.changePhysicalSizeTo(n);
    array.changeLogicalSizeTo(n);
    array.create(n, 4);
    array.insertElement(&array[0], 1, n);
    EXPECT_THAT(listed(array), ElementsAre(0, 1, 2));
    EXPECT_EQ(4U, array.capacity());
  }
  EXPECT_DEBUG_DEATH(array.changeLogicalSizeBy(-4), "difference");
  EXPECT_EQ(3U, array.length());
  array.setSizeIncrement(0);
  EXPECT_DEBUG_DEATH(
      {
        array.changeLogicalSizeTo(5);
        EXPECT_EQ(5U, array.capacity());
      },
      "sizeInc");
}

TEST(Tarray, TellsResultsByCodes) {
  TdoubleArray array(4);
  EXPECT_EQ(2, array.changePhysicalSizeTo(SIZE_MAX / 8));
  EXPECT_EQ(0, array.changeLogicalSizeTo(SIZE_MAX / 8));
  EXPECT_EQ(2, array.create(SIZE_MAX / 8, 4));
  EXPECT_EQ(0, array.addLast(1.0));
  EXPECT_EQ(0, array.insert(2.0, 99));
  EXPECT_DOUBLE_EQ(2.0, *array.last());
  EXPECT_EQ(0, array.removeAt(99, 1));
  EXPECT_EQ(0, array.pack());
}

TEST(T3dDblPointArray, HoldsPointsThatStartAtTheOrigin) {
  T3dDblPointArray array(1);
  array.changeLogicalSizeTo(2);
  array.addLast({1, 2, 3});
  array.insert(array[2], 1);
  EXPECT_EQ(24U, array.elementSize());
  EXPECT_TRUE(array[0] == T3dDblPoint::origin && array[2] == T3dDblPoint::origin);
  EXPECT_TRUE(array[1] == T3dDblPoint(1, 2, 3) && *array.last() == array[1]);
  std::size_t index = 0;
  EXPECT_EQ(0, array.find({1, 2, 3}, index));
  EXPECT_EQ(1U, index);
  EXPECT_EQ(150, array.remove({1, 2, 4}));
}

TEST(TcharPtrArray, HoldsPointersNotStrings) {
  char a[] = "text";
  char b[] = "text";
  TcharPtrArray array(1);
  array.addLast(a);
  std::size_t index = 0;
  EXPECT_EQ(150, array.find(b, index));
  EXPECT_EQ(0, array.find(a, index));
  EXPECT_EQ(8U, array.elementSize());
  a[0] = 'n';
  EXPECT_STREQ("next", array.element(0));
}
