#include <kilnbase/auto/containers/T3dDblPointArray.h>

static_assert(sizeof(T3dDblPoint) == 24);

T3dDblPointArray::~T3dDblPointArray() = default;
