// No example shows a window: the stand-in answers the warnings.
#include "tests/support/RecordingProgram.h"

static const kilntest::RecordingProgram program;
