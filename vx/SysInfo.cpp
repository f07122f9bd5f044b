#include <new>
#include <vector>

#include <vx/File.h>
#include <vx/SysInfo.h>
#include <vx/os/Process.h>
#include <vx/os/SysInfo.h>

namespace process = vxOS::process;
using vxString::CString;

namespace {

// Folders end with a separator in this file. An empty folder stands for one that is not known.
CString folderOf(const CString& file) {
  const std::size_t last = file.findLast(process::kSeparator);
  return last != CString::npos ? file.substring(0, last + 1) : CString();
}

const CString& ownFolder() {
  static const CString folder = folderOf(process::ownProgram());
  return folder;
}

vxOS::MemoryFigures (*memorySource)() = nullptr;

// Where programs of this program and of its installation may stand, in the order of the search. An
// installation and a build tree place programs and libraries alike.
const std::vector<CString>& programFolders() {
  static const std::vector<CString> folders = [] {
    std::vector<CString> found;
    if (!ownFolder().isEmpty()) found.push_back(ownFolder());
    const CString library = folderOf(process::ownLibrary());
    for (const char* way : {KILN_LIBRARY_TO_PROGRAMS})
      if (!library.isEmpty()) found.push_back(library + way);
    return found;
  }();
  return folders;
}

// The folder that the host has set.
CString& hostFolder() {
  static CString folder;
  return folder;
}

bool isFile(const CString& path) {
  vxOS::FileStatus status;
  return !vxOS::File::query(path, status) && status.exists && !status.isDirectory;
}

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
  const bool isComplete = name.toLower().endsWith(process::kProgramEnding);
  const CString file = isComplete ? name : name + process::kProgramEnding;
  if (!hostFolder().isEmpty()) return hostFolder() + file;
  for (const CString& folder : programFolders())
    if (isFile(folder + file)) return folder + file;
  return ownFolder().isEmpty() ? CString() : ownFolder() + file;
}

void APP_setBinaryFolder(const CString& folder) {
  const bool isComplete = folder.isEmpty() || folder.endsWith("/") || folder.endsWith("\\");
  hostFolder() = isComplete ? folder : folder + process::kSeparator;
}
