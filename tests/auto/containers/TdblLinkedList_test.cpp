#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

#include <kilnbase/auto/containers/TdblLinkedList.h>

namespace {

using Element = TdblLinkedListElement;

struct Item : Element {
  static inline const auto token = std::make_shared<int>();
  std::shared_ptr<int> counted = token;
};

// A word of a list: the sentinels begin at words 1 and 4, the cursor is word 7, cursorRef word 8.
template <class T = void* const>
T* atWord(const TdblLinkedList& list, int word) {
  return reinterpret_cast<T*>(reinterpret_cast<void* const*>(&list) + word);
}
const auto headOf = [](const auto& list) { return atWord<const Element>(list, 1); };
const auto tailOf = [](const auto& list) { return atWord<const Element>(list, 4); };

}  // namespace

TEST(TdblLinkedList, FollowsAModelThroughRandomOperations) {
  TdblLinkedList list;
  std::vector<const Element*> chain = {headOf(list), tailOf(list)};
  int tail = 1;  // the places of tail and cursor in the chain
  int cursor = 0;
  const auto at = [&](int i) {
    return i == 0 || i == tail ? nullptr : const_cast<Element*>(chain.begin()[i]);
  };
  const auto moveTo = [&](int i) {
    return tail == 1 ? nullptr : at(cursor = std::clamp(i, 0, tail));
  };
  const auto put = [&](const Element* e, int i) {
    chain.insert(chain.begin() + i, e);
    return cursor = i;
  };
  const auto take = [&](int i) {
    Element* const taken = at(i);
    if (taken != nullptr) chain.erase(chain.begin() + (cursor = i));
    return taken;
  };
  std::mt19937 random(62);
  for (int step = 0; step < 20000; ++step) {
    const int i = 1 + static_cast<int>(random() % chain.size()) % tail;
    Element* const e = at(i);  // null when i is the tail
    const int from = e != nullptr ? i : cursor;
    const std::function<bool()> operations[] = {
        [&] { return put(list.append(new Item, e), e != nullptr ? i + 1 : tail); },
        [&] { return put(list.insert(new Item, e), e != nullptr ? i : 1); },
        [&] { return list.first() == moveTo(1); },
        [&] { return list.last() == moveTo(tail - 1); },
        [&] { return list.next(e) == moveTo(from + 1); },
        [&] { return list.prev(e) == moveTo(from - 1); },
        [&] {
          if (tail > 1) cursor = at(from) != nullptr ? from : tail;
          return list.elementIndex(e) == (tail > 1 ? cursor - 1 : 1);
        },
        [&] { return std::unique_ptr<Element>(list.remove(e)).get() == take(from); }};
    const auto chosen = random() % (tail > 31 ? 12 : 8);  // mostly removes from a long list
    ASSERT_TRUE(operations[std::min<std::size_t>(chosen, 7)]()) << chosen;
    tail = static_cast<int>(chain.size()) - 1;
    for (int k = 0; k < tail; ++k) {
      ASSERT_EQ(chain.begin()[k + 1], chain.begin()[k]->next()) << step;
      ASSERT_EQ(chain.begin()[k], chain.begin()[k + 1]->prev()) << step;
    }
    const bool empty = tail == 1;
    ASSERT_EQ(chain.begin()[cursor], *atWord(list, 7)) << step;
    ASSERT_EQ(tail - 1, list.length());
    ASSERT_EQ(empty || cursor == 1, list.atStart());
    ASSERT_EQ(empty || cursor == tail - 1, list.atEnd());
    ASSERT_EQ(empty || at(cursor) == nullptr, list.beyondEnds());
    ASSERT_EQ(tail, Item::token.use_count());
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
  EXPECT_EQ(first, list.getElement(-1));
  EXPECT_EQ(2, list.elementIndex(&stranger));
  EXPECT_EQ(1, list.inList(headOf(list)));
  EXPECT_EQ(0, list.inList(&stranger));
  EXPECT_EQ(0, list.inList(nullptr));
  EXPECT_DEBUG_DEATH(EXPECT_EQ(nullptr, list.append(nullptr)), "canLink");
  EXPECT_DEBUG_DEATH(EXPECT_EQ(nullptr, list.insert(first)), "canLink");
  EXPECT_DEBUG_DEATH(EXPECT_EQ(nullptr, list.append(&stranger, list.getElement(9))), "canLink");
  EXPECT_DEBUG_DEATH(stranger.append(list.append(new Item)), "_ != nullptr");
  EXPECT_DEBUG_DEATH(stranger.remove(), "isBetweenEnds");
  Item twin(static_cast<const Item&>(*first));
  *last = twin;
  EXPECT_EQ(nullptr, twin.next());
  EXPECT_EQ(nullptr, twin.prev());
  EXPECT_EQ(first, last->prev());
}

TEST(TdblLinkedList, ACopyIsASecondViewOfTheSameChain) {
  TdblLinkedList list;
  Element* const items[] = {list.append(new Item), list.append(new Item), list.append(new Item)};
  TdblLinkedList copy = list;
  EXPECT_EQ(atWord(list, 7), *atWord(copy, 8));
  EXPECT_EQ(items[2], copy.last());
  for (Element* item : items) delete copy.remove(item);
  EXPECT_EQ(3, list.length());
}
