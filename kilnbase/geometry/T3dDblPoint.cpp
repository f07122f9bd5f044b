#include <kilnbase/geometry/T3dDblPoint.h>

constinit const T3dDblPoint T3dDblPoint::origin;
