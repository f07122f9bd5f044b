#include <vx/SysInfo.h>
#include <vx/os/Process.h>

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

}  // namespace

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
