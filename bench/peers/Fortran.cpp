#include "peers/Fortran.h"

#include <cstdlib>
#include <dlfcn.h>

namespace bench {

namespace {

// OpenBLAS falls back to SSE kernels on processors that it is too old to know, and reads what to
// use instead when it is loaded. A choice made by the user stays.
void configureOpenBlas() {
  setenv("OPENBLAS_NUM_THREADS", "1", 1);
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq")) {
    setenv("OPENBLAS_CORETYPE", "SKYLAKEX", 1);
  } else if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) {
    setenv("OPENBLAS_CORETYPE", "HASWELL", 1);
  }
}

std::string openBlasCore() {
  using CoreName = char* (*)();
  const auto core = reinterpret_cast<CoreName>(lapack().symbol("openblas_get_corename"));
  return core == nullptr ? "" : core();
}

// File of the library that holds a symbol.
std::string homeOf(void* symbol) {
  Dl_info information;
  if (symbol == nullptr || dladdr(symbol, &information) == 0) return "an unknown BLAS";
  return information.dli_fname;
}

}  // namespace

NumericLibrary::NumericLibrary(const std::vector<std::string>& candidates) {
  configureOpenBlas();
  for (const std::string& candidate : candidates) {
    handle_ = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) continue;
    file_ = candidate;
    return;
  }
}

void* NumericLibrary::symbol(const char* name) const {
  return found() ? dlsym(handle_, name) : nullptr;
}

const NumericLibrary& lapack() {
  static const NumericLibrary library({"libopenblas.so.0", "liblapack.so.3"});
  return library;
}

std::string lapackName() {
  return openBlasCore().empty() ? "LAPACK" : "OpenBLAS";
}

const NumericLibrary& linpack() {
  static const NumericLibrary library({"/usr/lib/R/lib/libR.so", "/usr/lib64/R/lib/libR.so"});
  return library;
}

void addPeer(Operation& operation, const std::string& name, const FortranRoutine& routine,
             Maker make, int largest) {
  if (routine) operation.peers.push_back({name, std::move(make), largest});
}

std::vector<std::string> fortranNotes() {
  std::vector<std::string> notes;
  if (!lapack().found()) {
    notes.push_back("OpenBLAS: not installed, left out (libopenblas0)");
  } else if (openBlasCore().empty()) {
    notes.push_back("LAPACK: " + lapack().file() + "; OpenBLAS is not installed (libopenblas0)");
  } else {
    notes.push_back("OpenBLAS: " + lapack().file() + ", kernels " + openBlasCore() + ", 1 thread");
  }
  notes.push_back(linpack().found() ? "R: LINPACK of " + linpack().file() + " on " +
                                          homeOf(linpack().symbol("daxpy_"))
                                    : "R: not installed, left out (r-base-core)");
  return notes;
}

}  // namespace bench
