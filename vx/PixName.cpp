#include <vx/PixName.h>

namespace {

ArExpandPixname gExpandPixname = nullptr;

}  // namespace

char* Ar_expand_pixname(char* name, int flag) {
  return gExpandPixname != nullptr ? gExpandPixname(name, flag) : nullptr;
}

void rtbInit_Ar_expand_pixname(ArExpandPixname function) {
  gExpandPixname = function;
}
