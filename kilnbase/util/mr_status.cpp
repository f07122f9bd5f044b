#include <iterator>

#include <kilnbase/detail/assert.h>
#include <kilnbase/util/mr_status.h>
#include <vx/Report.h>

StatusCode Mr_err_ignore = MR_NO_ERROR;
int32_t morla_debug = 0;

namespace {

constexpr const char* kNames[] = {"NO ERROR",
                                  "ARGUMENT ERROR",
                                  "UNKNOWN",
                                  "MEMORY FAULT",
                                  "INVALID FUNCTION",
                                  "INVALID DATA",
                                  "ALTERNATE RESULT",
                                  "INCOMPATIBILITY",
                                  "NO ANIMATION",
                                  "WALK ERROR",
                                  "WALK TERMINATED",
                                  "WALK INCOMPLETE",
                                  "ITEM NOT FOUND",
                                  "REMOVAL ERROR",
                                  "CANNOT SORT",
                                  "UNEXPECTED NULL STRUCTURE",
                                  "ITEM FILTERED",
                                  "UNEXPECTED SWITCH CASE",
                                  "STORE",
                                  "RETRIEVE",
                                  "WDL ERROR",
                                  "INVALID OPTIONS",
                                  "FILE ERROR",
                                  "PICKLIST ERROR",
                                  "ANIMTRON METHOD ERROR",
                                  "ALREADY EXISTS",
                                  "MISSING CURVE(S)",
                                  "MISSING SURFACE(S)",
                                  "MISSING SKELETON",
                                  "SECURITY",
                                  "ABORTED",
                                  "EXPRESSION ERROR"};
static_assert(std::size(kNames) == MR_EXPRESSION_ERROR + 1);

const char* nameOf(int code) {
  const bool known = code >= 0 && code <= MR_EXPRESSION_ERROR;
  KILN_ASSERT(known);
  return kNames[known ? code : MR_UNKNOWN];
}

}  // namespace

int Mr_print_error(int code, const char* file, int line, const char* message) {
  rptError("ERROR %s (file %s, line %d): %s", nameOf(code), file, line, message);
  return 1;
}

int Mr_print_conditional(int code, const char* file, int line, const char* message) {
  return code != MR_NO_ERROR ? Mr_print_error(code, file, line, message) : 1;
}
