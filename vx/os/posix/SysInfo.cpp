#include <fstream>
#include <iterator>
#include <sys/resource.h>
#include <unistd.h>

#include <vx/os/SysInfo.h>
#include <vx/os/posix/MemoryTexts.h>

namespace vxOS::sysInfo {

namespace {

std::optional<std::string> readFile(const std::string& path) {
  std::ifstream file(path);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The first number of proc_pid_statm(5) is the size of the address space in pages.
AddressSpace addressSpace() {
  rlimit limit;
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return {};
  std::uint64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return {limit.rlim_cur / 1024, pages * (pageSize() / 1024)};
}

}  // namespace

std::size_t pageSize() {
  return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

MemoryFigures memory() {
  return memoryFromTexts(readFile, addressSpace());
}

}  // namespace vxOS::sysInfo
