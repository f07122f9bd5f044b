#include <algorithm>
#include <cstdint>
#include <windows.h>
// clang-format off: needs the types of windows.h
#include <psapi.h>
// clang-format on

#include <vx/os/SysInfo.h>

namespace vxOS::sysInfo {

namespace {

// How many bytes the job that the process runs in lets the process commit. A container is a job.
std::uint64_t commitLimit() {
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION job = {};
  if (QueryInformationJobObject(nullptr, JobObjectExtendedLimitInformation, &job, sizeof job,
                                nullptr) == 0)
    return UINT64_MAX;
  const DWORD flags = job.BasicLimitInformation.LimitFlags;
  std::uint64_t limit = UINT64_MAX;
  if ((flags & JOB_OBJECT_LIMIT_PROCESS_MEMORY) != 0) limit = job.ProcessMemoryLimit;
  if ((flags & JOB_OBJECT_LIMIT_JOB_MEMORY) != 0)
    limit = std::min<std::uint64_t>(limit, job.JobMemoryLimit);
  return limit;
}

// What other processes of the job have committed is not known.
std::uint64_t committed() {
  PROCESS_MEMORY_COUNTERS counters = {};
  counters.cb = sizeof counters;
  return GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) != 0
             ? counters.PagefileUsage
             : 0;
}

}  // namespace

std::size_t pageSize() {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  return info.dwPageSize;
}

MemoryFigures memory() {
  MEMORYSTATUSEX status = {};
  status.dwLength = sizeof status;
  if (GlobalMemoryStatusEx(&status) == 0) return {};
  const std::uint64_t limit = commitLimit();
  const std::uint64_t left = limit - std::min(limit, committed());
  const auto kilobytes = [](std::uint64_t bytes, std::uint64_t most) {
    return std::min(bytes, most) / 1024;
  };
  return {kilobytes(status.ullTotalPhys, limit), kilobytes(status.ullAvailPhys, left),
          kilobytes(status.ullTotalPageFile, limit), kilobytes(status.ullAvailPageFile, left)};
}

}  // namespace vxOS::sysInfo
