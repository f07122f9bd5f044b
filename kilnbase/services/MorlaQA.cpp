#include <cstdlib>

#include <kilnbase/services/MorlaQA.h>
#include <vx/Process.h>
#include <vx/Report.h>

namespace {

constexpr int kHeapCheckCode = 800;

constinit bool isDecided = false;
constinit bool isEnabled = false;

// The address is read at run time: a compiler that knew a null pointer would put a trap instruction
// in place of the write.
[[noreturn]] void crash() {
  static volatile int* volatile nowhere = nullptr;
  *nowhere = 0;  // NOLINT(clang-analyzer-core.NullDereference): the crash is wanted
  std::abort();  // where address zero can be written
}

}  // namespace

bool MorlaQAEnabled() {
  if (!isDecided) {
    isEnabled =
        vxOS::hasEnvironmentVariable("MORLA_QA") || vxOS::hasEnvironmentVariable("MORLA_DEBUG");
  }
  isDecided = true;
  return isEnabled;
}

void MorlaQAAssert(int bugNumber, bool condition) {
  if (!MorlaQAEnabled() || condition) return;
  rptConfirmOK(
      "MORLA_QA Assertion failed:  You've triggered Bug #%d,\nwhich we've been looking for!  "
      "Please make sure to fill\nout the crash information as fully as possible.",
      bugNumber);
  crash();
}

bool checkMorlaHeap() {
  return rptDebugCodeIsSet(kHeapCheckCode);
}
