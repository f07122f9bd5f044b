// What it costs to load the library: a process that loads it, beside processes that load something
// else or nothing.

#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>

#include "families/Families.h"
#include "peers/Fortran.h"

namespace bench {

namespace {

// An empty name loads nothing. The result is 0 where the library could be loaded.
Maker loading(const std::string& library) {
  return [library](const Shape&) {
    const auto run = [library] {
      std::string program = BENCH_LOAD_PROGRAM;
      std::string argument = library;
      char* const arguments[] = {program.data(), library.empty() ? nullptr : argument.data(),
                                 nullptr};
      pid_t child = -1;
      int status = -1;
      if (posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0 ||
          waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error("cannot load " + library);
      return status;
    };
    return contestant(run, [](int status) { return Values{static_cast<double>(status)}; });
  };
}

}  // namespace

void addLoading(Suite& suite) {
  Operation& operation = suite.add({"load the library",
                                    {{1, 1}},
                                    {},
                                    [](const Shape&) { return Limits(); },
                                    loading(BENCH_LIBRARY),
                                    {}});
  operation.peers.push_back({"nothing", loading("")});
  operation.peers.push_back({"libstdc++", loading("libstdc++.so.6")});
  if (lapack().found()) operation.peers.push_back({lapackName(), loading(lapack().file())});
}

}  // namespace bench
