// Calls of the framework's callbacks, how its functions fail, and how values are ordered.
#pragma once

#include <cstdint>

#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/mr_status.h>

namespace vxKilnBase::detail {

// The result of a function that fails: 0 or null.
struct Failure {
  operator int() const { return 0; }
  template <class T>
  operator T*() const {
    return nullptr;
  }
};

inline Failure fail(StatusCode* status, StatusCode code) {
  if (status != nullptr) *status = code;
  return {};
}

inline bool lacksMethods(const DS_Structure* structure) {
  return structure == nullptr || structure->methods == nullptr;
}

// The address as a number, to be printed or compared.
template <class T>
unsigned long long addressOf(T* pointer) {
  return reinterpret_cast<std::uintptr_t>(pointer);
}

// The status for operations whose failure does not matter.
inline StatusCode* ignored() {
  Mr_err_ignore = MR_NO_ERROR;
  return &Mr_err_ignore;
}

// 1, 0 or -1.
template <class T>
int order(T a, T b) {
  return (a > b) - (a < b);
}

// The same function under another type. The cast by way of void (*)() is the one that compilers do
// not warn about.
template <class To, class From>
To functionCast(From* fn) {
  return reinterpret_cast<To>(reinterpret_cast<void (*)()>(fn));
}

// Calls `fn` with the caller's pointer, or in the shorter form when that pointer is null.
template <class Result, class Item, class User>
Result call(Result (*fn)(Item*, User*), Item* item, User* user) {
  return user != nullptr ? fn(item, user) : functionCast<Result (*)(Item*)>(fn)(item);
}

}  // namespace vxKilnBase::detail
