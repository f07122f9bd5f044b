/* The plain functions, called from C. */
#include <vx/Report.h>

void reportFromC(const char* text) {
  rptError("%s\n", text);
}
