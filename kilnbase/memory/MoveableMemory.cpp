#include <kilnbase/memory/MoveableMemory.h>
#include <vx/File.h>

namespace vxKilnBase {

using vxString::CString;
using vxUtil::Error;

namespace {

// Makes the folder when there is nothing under the path.
Error makeFolder(const CString& path) {
  vxOS::FileStatus status;
  if (Error error = vxOS::File::query(path, status)) return error;
  return status.exists ? Error() : vxOS::File::makeDirectoryAll(path);
}

}  // namespace

Error MoveableMemory::initialize(const vxString::IString& directory,
                                 const vxString::IString& prefix) {
  directory_ = directory;
  const CString path = directory.asMultibyte();
  if (Error error = makeFolder(path)) return error;
  if (!vxOS::File::isWritable(path))
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
