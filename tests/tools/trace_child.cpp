// trace_child FOLDER SIZE: traces numbered lines into a ring in the folder until the process is
// killed, and counts the finished lines in the folder's file "count".
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <kilnbase/services/MorlaTrace.h>
#include <vx/Filename.h>
#include <vx/MappedFile.h>

#include "tests/support/traceMessage.h"

int main(int argc, char** argv) {
  if (argc != 3 || !MorlaTrace::initialize(argv[1], std::strtoul(argv[2], nullptr, 10), 1))
    return 2;
  vxOS::MemoryMappedFile file;
  vxOS::FileMapping view;
  file.createFile(vxOS::Filename::join(argv[1], "count"), sizeof(std::uint64_t),
                  vxOS::MemoryMappedFile::kReadWrite);
  auto* const count = static_cast<std::uint64_t*>(view.map(file, 0, sizeof(std::uint64_t)));
  if (!count) return 2;
  for (std::uint64_t i = 0;; ++i) {
    MorlaTrace::trace1(MorlaTrace::UI, "%s", kilntest::traceMessage(i).c_str());
    std::atomic_ref(*count).store(i + 1, std::memory_order_release);
  }
}
