// Structures of small numbers.
#pragma once

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include <kilnbase/util/DS/ds_structures.h>

namespace kilntest {

using Numbers = std::vector<std::intptr_t>;

// A comparator gets the addresses of two slots.
struct Slot {
  void* item;
};

inline void* item(std::intptr_t number) {
  return reinterpret_cast<void*>(number);  // NOLINT(performance-no-int-to-ptr)
}

inline std::intptr_t number(const void* item) {
  return reinterpret_cast<std::intptr_t>(item);
}

inline std::intptr_t numberAt(const void* slot) {
  return number(static_cast<const Slot*>(slot)->item);
}

struct Destroy {
  void operator()(DS_Structure* s) const { DS_destructor(&s, nullptr, nullptr, nullptr); }
};
using Owned = std::unique_ptr<DS_Structure, Destroy>;

inline Owned makeStructure(int kind, const Numbers& numbers = {},
                           DS_Comparator comparator = Ds_fifo_comparator) {
  StatusCode status = MR_NO_ERROR;
  Owned s(DS_create_type(kind, &status, __LINE__, __FILE__));
  s->comparator = comparator;
  for (const std::intptr_t n : numbers) s->methods->add(s.get(), item(n), &status);
  return s;
}

class Kinds : public testing::TestWithParam<int> {
 protected:
  Owned make(const Numbers& numbers = {}, DS_Comparator comparator = Ds_default_comparator) const {
    return makeStructure(GetParam(), numbers, comparator);
  }

  StatusCode status_ = MR_NO_ERROR;
};

// The items that the filter lets through, from head to tail.
inline Numbers contents(const Owned& s) {
  Numbers numbers;
  const DS_Methods& m = *s->methods;
  for (DS_Position at = m.head(s.get(), nullptr); at; at = m.next(s.get(), at, nullptr)) {
    numbers.push_back(number(m.get_data(at, nullptr)));
  }
  return numbers;
}

inline int isEven(void* item) {
  return number(item) % 2 == 0 ? 1 : 0;
}

inline int isSmall(void* item) {
  return number(item) < 100 ? 1 : 0;
}

// A callback of the shorter form under the type of the longer form.
template <class To, class From>
To longForm(From* fn) {
  return reinterpret_cast<To>(reinterpret_cast<void (*)()>(fn));
}

// A call that fails: `fails` returns whether the result is that of a failure.
struct Misuse {
  const char* call;
  std::function<bool(StatusCode*)> fails;
  StatusCode code = MR_ARGUMENT_ERROR;
};

inline void expectCodes(const std::vector<Misuse>& misuses) {
  for (const Misuse& misuse : misuses) {
    StatusCode status = MR_NO_ERROR;
    EXPECT_TRUE(misuse.fails(&status)) << misuse.call;
    EXPECT_EQ(misuse.code, status) << misuse.call;
  }
}

}  // namespace kilntest
