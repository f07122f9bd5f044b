#include <cstdio>
#include <string>

#include <kilnbase/kilnbase.h>
#include <vx/String.h>

extern "C" void reportFromC(const char* text);

namespace {

// What vectors and strings of one element type alone have links with the library, whichever
// compiler made it.
bool membersOfOneTypeLink() {
  DoubleVec ramp(2, 3.0, 1.0);
  const double length = ramp.vecLen();
  ramp.normalise();
  const DoubleVec counts = IntVec{3, 4};
  const vxString::CString text = vxString::CString::format("%g", counts(1) / ramp(1));
  return length == 5.0 && text.asWide().asMultibyte() == "5";
}

}  // namespace

int main() {
  // Row i of A is the equation height = slope * x + offset at one point.
  const double x[] = {0.0, 1.0, 2.0, 3.0};
  const double heights[] = {1.1, 2.9, 5.1, 6.9};
  DoubleGenMat a(4, 2, 1.0);
  for (int i = 0; i < 4; ++i) a(i, 0) = x[i];
  const DoubleLeastSqQR fit(a);
  const DoubleVec line = fit.solve(DoubleVec(heights, 4));

  char text[80];
  std::snprintf(text, sizeof text, "slope %.2f, offset %.2f", line(0), line(1));
  reportFromC(text);
  return std::string(text) == "slope 1.96, offset 1.06" && membersOfOneTypeLink() ? 0 : 1;
}
