#include "Neighbour.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <sched.h>
#include <signal.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace bench {

namespace {

// More than any cache holds.
constexpr std::size_t kBytes = std::size_t{256} << 20;

bool stayOn(int cpu) {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<unsigned>(cpu), &one);
  return sched_setaffinity(0, sizeof one, &one) == 0;
}

int otherCpu(int own) {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0)
    throw std::runtime_error("cannot tell which CPUs there are");
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (cpu != own && CPU_ISSET(static_cast<unsigned>(cpu), &allowed)) return cpu;
  }
  throw std::runtime_error("there is one CPU only, and no place for a neighbour");
}

// Reads one half and writes the other, round and round.
[[noreturn]] void stream(std::vector<char>& memory) {
  const auto middle = memory.begin() + kBytes / 2;
  for (;;) {
    std::copy(memory.begin(), middle, middle);
    benchmark::DoNotOptimize(memory.data());
    benchmark::ClobberMemory();
  }
}

// Ends with its parent, also with one that has ended already.
[[noreturn]] void runOn(int cpu, pid_t parent, std::vector<char>& memory) noexcept {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent || !stayOn(cpu)) _exit(1);
  stream(memory);
}

}  // namespace

Neighbour::Neighbour() {
  const int own = sched_getcpu();
  const int other = otherCpu(own);
  std::vector<char> memory(kBytes, 1);
  const pid_t parent = getpid();
  child_ = fork();
  if (child_ < 0) throw std::runtime_error("cannot start a neighbour");
  if (child_ == 0) runOn(other, parent, memory);
  stayOn(own);
}

Neighbour::~Neighbour() {
  kill(child_, SIGKILL);
  waitpid(child_, nullptr, 0);
}

void Neighbour::requireAlive() const {
  siginfo_t ended = {};
  if (waitid(P_PID, static_cast<id_t>(child_), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
      ended.si_pid != 0)
    throw std::runtime_error("the neighbour has ended: not all was measured beside it");
}

}  // namespace bench
