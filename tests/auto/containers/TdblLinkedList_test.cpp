#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

#include <kilnbase/auto/containers/TdblLinkedList.h>

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

using Element = TdblLinkedListElement;
using Owned = std::unique_ptr<Element>;

struct Item : Element {
  Item() { ++living; }
  Item(const Item& other) : Element(other) { ++living; }
  ~Item() override { --living; }

  static inline int living = 0;
};

// A word of a list: from 1 and 4 on its sentinels, then its cursor and where that is moved.
static_assert(sizeof(TdblLinkedList) == 10 * sizeof(void*));
const Element* atWord(const TdblLinkedList& list, int word) {
  return reinterpret_cast<const Element*>(reinterpret_cast<void* const*>(&list) + word);
}
const void* wordOf(const TdblLinkedList& list, int word) {
  return reinterpret_cast<void* const*>(&list)[word];
}
const Element* headOf(const TdblLinkedList& list) {
  return atWord(list, 1);
}
const Element* tailOf(const TdblLinkedList& list) {
  return atWord(list, 4);
}

// What a list must hold: the elements, and the cursor as an index from -1 to their number.
class Model {
 public:
  explicit Model(TdblLinkedList& list) : list_(list) {}

  int size() const { return static_cast<int>(items_.size()); }
  int cursor() const { return cursor_; }
  Element* at(int i) const { return i < 0 || i >= size() ? nullptr : items_[indexOf(i)]; }

  Element* moveTo(int i) {
    if (size() > 0) cursor_ = std::clamp(i, -1, size());
    return size() > 0 ? at(cursor_) : nullptr;
  }
  bool put(Element* e, int i) {
    items_.insert(items_.begin() + i, e);
    cursor_ = i;
    return true;
  }
  int find(int i) {
    if (size() == 0) return 1;
    return cursor_ = at(i) != nullptr ? i : size();
  }
  Element* take(int i) {
    Element* const taken = at(i);
    if (taken == nullptr) return nullptr;
    items_.erase(items_.begin() + i);
    cursor_ = i;
    return taken;
  }

  void check() const {
    std::vector<const Element*> forward;
    for (const Element* e = headOf(list_)->next(); e != tailOf(list_); e = e->next()) {
      ASSERT_EQ(e, e->next()->prev());
      forward.push_back(e);
    }
    ASSERT_THAT(forward, ElementsAreArray(items_));
    ASSERT_EQ(size(), list_.length());
    if (size() > 0) {
      const Element* const sentinel = cursor_ < 0 ? headOf(list_) : tailOf(list_);
      ASSERT_EQ(at(cursor_) != nullptr ? at(cursor_) : sentinel, wordOf(list_, 7));
    }
    ASSERT_EQ(size() == 0 || cursor_ == 0, list_.atStart());
    ASSERT_EQ(size() == 0 || cursor_ == size() - 1, list_.atEnd());
    ASSERT_EQ(size() == 0 || at(cursor_) == nullptr, list_.beyondEnds());
  }

 private:
  static std::size_t indexOf(int i) { return static_cast<std::size_t>(i); }

  TdblLinkedList& list_;
  std::vector<Element*> items_;
  int cursor_ = -1;
};

}  // namespace

TEST(TdblLinkedList, FollowsAModelThroughRandomOperations) {
  TdblLinkedList list;
  Model model(list);
  std::mt19937 random(62);
  const auto below = [&random](int n) {
    return static_cast<int>(random() % static_cast<unsigned>(n));
  };
  for (int step = 0; step < 20000; ++step) {
    const int i = below(model.size() + 1);
    Element* const e = model.at(i);  // sometimes null: then the cursor's or the outermost counts
    const int from = e != nullptr ? i : model.cursor();
    const std::function<bool()> operations[] = {
        [&] { return model.put(list.append(new Item, e), e != nullptr ? i + 1 : model.size()); },
        [&] { return model.put(list.insert(new Item, e), e != nullptr ? i : 0); },
        [&] { return list.first() == model.moveTo(0); },
        [&] { return list.last() == model.moveTo(model.size() - 1); },
        [&] { return list.next(e) == model.moveTo(from + 1); },
        [&] { return list.prev(e) == model.moveTo(from - 1); },
        [&] { return list.elementIndex(e) == model.find(from); },
        [&] { return Owned(list.remove(e)).get() == model.take(from); }};
    const int chosen = below(model.size() > 30 ? 12 : 8);  // a long list loses elements
    ASSERT_TRUE(operations[std::min(chosen, 7)]()) << chosen;
    ASSERT_NO_FATAL_FAILURE(model.check()) << step;
    ASSERT_EQ(model.size(), Item::living);
  }
}

TEST(TdblLinkedList, TheCursorStaysOnASentinelAndComesBackFromThere) {
  TdblLinkedList list;
  Item stranger;
  EXPECT_EQ(nullptr, list.getElement(0));
  EXPECT_EQ(1, list.elementIndex());
  EXPECT_EQ(0, list.inList(headOf(list)));
  EXPECT_EQ(0, list.validate(&stranger, nullptr));
  EXPECT_EQ(1, list.validate(nullptr, &stranger));
  Element* const first = list.append(new Item);
  Element* const last = list.append(new Item);
  EXPECT_EQ(tailOf(list), list.getElement(5));
  EXPECT_EQ(nullptr, list.next());
  EXPECT_EQ(2, list.elementIndex());
  EXPECT_EQ(last, list.prev());
  EXPECT_EQ(nullptr, list.prev(first));
  EXPECT_EQ(nullptr, list.prev());
  EXPECT_EQ(first, list.next());
  EXPECT_EQ(first, list.getElement(-1));
  EXPECT_EQ(2, list.elementIndex(&stranger));
  EXPECT_THAT((std::vector{list.inList(headOf(list)), list.inList(tailOf(list)),
                           list.inList(&stranger), list.inList(nullptr)}),
              ElementsAre(1, 1, 0, 0));
  EXPECT_EQ(1, list.beyondEnds());
  EXPECT_EQ(nullptr, list.remove());
  for (Element* misfit : {static_cast<Element*>(nullptr), first}) {
    EXPECT_DEBUG_DEATH(EXPECT_EQ(nullptr, list.append(misfit)), "canLink");
    EXPECT_DEBUG_DEATH(EXPECT_EQ(nullptr, list.insert(misfit)), "canLink");
  }
  EXPECT_DEBUG_DEATH(EXPECT_EQ(nullptr, list.append(&stranger, list.getElement(9))), "canLink");
  EXPECT_EQ(2, list.length());
  Item twin(static_cast<const Item&>(*first));
  *last = twin;
  EXPECT_TRUE(twin.next() == nullptr && twin.prev() == nullptr && last->prev() == first);
}

TEST(TdblLinkedList, ACopyIsASecondViewOfTheSameChain) {
  TdblLinkedList list;
  Element* const items[] = {list.append(new Item), list.append(new Item), list.append(new Item)};
  TdblLinkedList copy = list;
  EXPECT_EQ(static_cast<const void*>(atWord(list, 7)), wordOf(copy, 8));
  copy.first();
  for (const auto* view : {&list, &copy}) {
    EXPECT_EQ(items[1], view->next());
    EXPECT_EQ(items[2], view->next());
    EXPECT_EQ(nullptr, view->next());
    EXPECT_EQ(1, view->beyondEnds());
    EXPECT_EQ(items[0], view->first());
  }
  for (Element* item : items) delete copy.remove(item);
  EXPECT_EQ(0, copy.length());
  EXPECT_EQ(3, list.length());
  EXPECT_EQ(0, Item::living);
}
