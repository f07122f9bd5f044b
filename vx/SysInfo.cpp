#include <new>

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

// An installation and a build tree place programs and libraries alike.
const CString& installationFolder() {
  static const CString library = folderOf(process::ownLibrary());
  static const CString folder = library.isEmpty() ? CString() : library + KILN_LIBRARY_TO_PROGRAMS;
  return folder;
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
  for (const CString& folder : {ownFolder(), installationFolder()})
    if (!folder.isEmpty() && isFile(folder + file)) return folder + file;
  return ownFolder().isEmpty() ? CString() : ownFolder() + file;
}

void APP_setBinaryFolder(const CString& folder) {
  const bool isComplete = folder.isEmpty() || folder.endsWith("/") || folder.endsWith("\\");
  hostFolder() = isComplete ? folder : folder + process::kSeparator;
}
