#include <kilnbase/auto/containers/TcharPtrArray.h>

TcharPtrArray::~TcharPtrArray() = default;
