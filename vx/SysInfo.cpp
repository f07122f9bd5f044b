#include <new>

#include <vx/SysInfo.h>
#include <vx/os/Process.h>
#include <vx/os/SysInfo.h>

namespace process = vxOS::process;
using vxString::CString;

namespace {

// Folders end with a separator in this file. An empty folder stands for one that is not known.
CString ownFolder() {
  const CString program = process::ownProgram();
  const std::size_t last = program.findLast(process::kSeparator);
  return last != CString::npos ? program.substring(0, last + 1) : CString();
}

CString& binaryFolder() {
  static CString folder = ownFolder();
  return folder;
}

vxOS::MemoryFigures (*memorySource)() = nullptr;

}  // namespace

namespace vxOS {

std::size_t SysInfo::getPageSize() {
  static const std::size_t size = sysInfo::pageSize();
  return size;
}

MemoryFigures SysInfo::getMemory() {
  if (memorySource != nullptr) return memorySource();
  try {
    return sysInfo::memory();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

void SysInfo::setMemorySource(MemoryFigures (*source)()) {
  memorySource = source;
}

}  // namespace vxOS

CString APP_getBinaryPath(const CString& name) {
  const CString& folder = binaryFolder();
  if (folder.isEmpty()) return {};
  const bool isComplete = name.toLower().endsWith(process::kProgramEnding);
  return folder + name + (isComplete ? "" : process::kProgramEnding);
}

void APP_setBinaryFolder(const CString& folder) {
  const bool isComplete = folder.endsWith("/") || folder.endsWith("\\");
  binaryFolder() = folder.isEmpty() ? ownFolder()
                   : isComplete     ? folder
                                    : folder + process::kSeparator;
}
