#include <kilnbase/geometry/T4dDblPoint.h>

constinit const T4dDblPoint T4dDblPoint::origin;
