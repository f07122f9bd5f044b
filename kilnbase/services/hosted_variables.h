/* Variables of the application. The library gives them a home, so that all libraries of the
 * application can reach them, and never reads them. All are 0 at the start. */
#ifndef KILNBASE_SERVICES_HOSTED_VARIABLES_H
#define KILNBASE_SERVICES_HOSTED_VARIABLES_H

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The meaning of each variable is the application's. */
KILNBASE_API extern int angular_mode;
KILNBASE_API extern int gridmesh;
KILNBASE_API extern int top_win_layer;
KILNBASE_API extern int initial_pov;

/** The meaning of each variable is the application's. */
KILNBASE_API extern double xmindim;
KILNBASE_API extern double ymindim;
KILNBASE_API extern double xmaxdim;
KILNBASE_API extern double ymaxdim;
KILNBASE_API extern double persp_grid_extent;

#ifdef __cplusplus
}
#endif

#endif
