// Containers of the interfaces between libraries.
#pragma once

#include <list>
#include <vector>

namespace vx {

/// A growable array.
template <class T>
using vector = std::vector<T>;

/// A doubly linked list.
template <class T>
using list = std::list<T>;

}  // namespace vx
