#include <cstdlib>

#include <kilnbase/auto/containers/Tarray.h>

static_assert(sizeof(Tarray) == sizeof(void*) + 5 * sizeof(std::size_t));

Tarray::~Tarray() = default;

char* Tarray::moveElements(std::size_t n) {
  return static_cast<char*>(std::realloc(buffer_, n * elementSize_));
}
