#include <kilnbase/auto/containers/TdoubleArray.h>

TdoubleArray::~TdoubleArray() = default;
