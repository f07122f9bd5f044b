// The process's store of memory outside the heap.
#pragma once

#include <kilnbase/export.h>
#include <vx/Error.h>
#include <vx/MoveableStore.h>
#include <vx/Reference.h>
#include <vx/String.h>

namespace vxKilnBase {

/// A store of blocks in a folder of the host's choice. The blocks themselves are the matter of
/// `vxOS::MoveableMemory`.
///
///     const vxString::IString folder = vxOS::temporaryDirectory().asWide();
///     const vxUtil::Error error = vxKilnBase::moveableMemory().initialize(folder, L"model-");
///     if (error) rptError("%s", error.message().c_str());
///     else vxKilnBase::moveableMemory().get()->allocate(1000000);
///
/// Copies share the store, which goes with the last copy. For the application's main thread.
class KILNBASE_API MoveableMemory {
 public:
  /// Makes the store in `directory`, which is made with all its parents when it does not exist;
  /// `prefix` begins the name of the file in it. The store that there was before goes, with its
  /// blocks, unless copies of this object hold that store.
  ///
  /// The error of the system when the folder cannot be looked at or made, and code 1 with
  /// "directory not writeable: ..." when no files can be made in it: the store that there was stays
  /// then. Code 1 with "Failed to initialize moveable memory." when the file cannot be made: then
  /// there is no store. `getDirectory` answers `directory` in all cases.
  vxUtil::Error initialize(const vxString::IString& directory, const vxString::IString& prefix);

  /// The store, which stays with this object; null before `initialize` succeeds.
  vxOS::MoveableMemory* get() const { return memory_.get(); }

  /// The folder that `initialize` was given last.
  const vxString::IString& getDirectory() const { return directory_; }

 private:
  vx::Reference<vxOS::MoveableMemory> memory_;
  vxString::IString directory_;
};

/// The one object of the process. Made on first use, destroyed when the process exits.
KILNBASE_API MoveableMemory& moveableMemory();

}  // namespace vxKilnBase
