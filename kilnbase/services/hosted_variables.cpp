#include <kilnbase/services/hosted_variables.h>

constinit int angular_mode = 0;
constinit int gridmesh = 0;
constinit int top_win_layer = 0;
constinit int initial_pov = 0;

constinit double xmindim = 0.0;
constinit double ymindim = 0.0;
constinit double xmaxdim = 0.0;
constinit double ymaxdim = 0.0;
constinit double persp_grid_extent = 0.0;
