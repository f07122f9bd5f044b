// How programs end.
#pragma once

namespace kilntest {

// Whether a process with this exit status, as of EXPECT_EXIT, ended because it used memory that it
// does not have. A sanitizer that finds out first ends the process in its own way.
bool hasCrashed(int status);

}  // namespace kilntest
