#include <kilnbase/memory/MoveableMemory.h>
#include <vx/File.h>

namespace vxKilnBase {

using vxString::CString;
using vxUtil::Error;

namespace {

// Looks at a folder, which is made when it does not exist.
Error makeFolder(const CString& path, vxOS::FileStatus& status) {
  if (const Error error = vxOS::File::query(path, status)) return error;
  if (status.exists) return {};
  if (const Error error = vxOS::File::makeDirectoryAll(path)) return error;
  return vxOS::File::query(path, status);
}

}  // namespace

Error MoveableMemory::initialize(const vxString::IString& directory,
                                 const vxString::IString& prefix) {
  directory_ = directory;
  const CString path = directory.asMultibyte();
  vxOS::FileStatus status;
  if (Error error = makeFolder(path, status)) return error;
  if (!status.isWritable)
    return {1, CString::format("directory not writeable: %s\n", path.c_str())};
  memory_ = new vxOS::MoveableMemory;
  if (memory_->initializeFiles(directory, prefix)) return {};
  memory_ = nullptr;
  return {1, "Failed to initialize moveable memory."};
}

MoveableMemory& moveableMemory() {
  static MoveableMemory instance;
  return instance;
}

}  // namespace vxKilnBase
