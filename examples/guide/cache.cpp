// The program of docs/guide/cache.md.
#include <fstream>
#include <string>

#include <kilnbase/net/FileCache.h>
#include <vx/File.h>
#include <vx/Process.h>
#include <vx/SysInfo.h>

#include "examples/guide/ScratchFolder.h"
#include "examples/guide/expect.h"

namespace {

using guide::expect;
using vxKilnBase::FileCache;
using vxString::CString;

int gMade = 0;

//! [shortest]
// What is costly to make; false when it cannot be written.
bool makeMesh(double tolerance, const CString& path) {
  ++gMade;
  std::ofstream file(path.c_str(), std::ios::binary);
  file << "a mesh within " << tolerance << '\n';
  file.close();
  return file.good();
}

// The key says everything that the content depends on: the model, the tolerance, the version.
CString keyOf(double tolerance) {
  return CString::format("wing-7/mesh/%.17g/v1", tolerance);
}

std::string meshText(FileCache& cache, double tolerance) {
  vx::Reference<vxKilnBase::FileCacheItem> item = cache.find(keyOf(tolerance));
  CString path = item ? item->getPath() : cache.generatePath();
  if (!item) {
    if (path.isEmpty()) path = vxOS::createTmpFilename();  // there is no cache: do without
    if (!makeMesh(tolerance, path)) return "";
    item = cache.add(keyOf(tolerance), path);  // null: refused, and the file is still ours
  }
  std::string text;
  std::getline(std::ifstream(path.c_str(), std::ios::binary), text);
  if (!item) vxOS::File::remove(path);
  return text;
}
//! [shortest]

void use(const CString& folder) {
  //! [use]
  FileCache cache;
  if (const vxUtil::Error error = cache.initialize(folder, 2, 1 << 20))  // 2 files, 1 MiB
    std::puts(error.message().c_str());                                  // and go on
  expect(meshText(cache, 0.01) == "a mesh within 0.01");
  expect(meshText(cache, 0.01) == "a mesh within 0.01");
  expect(gMade == 1);
  //! [use]
}

void later(const CString& folder) {
  //! [later]
  FileCache cache;  // in another process, or tomorrow
  expect(!cache.initialize(folder, 2, 1 << 20));
  expect(meshText(cache, 0.01) == "a mesh within 0.01");
  expect(gMade == 1);  // found, not made
  //! [later]
}

void room(const CString& folder) {
  //! [room]
  FileCache cache;
  expect(!cache.initialize(folder, 2, 1 << 20));
  meshText(cache, 0.01);
  meshText(cache, 0.02);
  {
    const auto held = cache.find(keyOf(0.01));  // held: it stays, whatever comes
    meshText(cache, 0.03);                      // a third file: the oldest that is not held goes
    expect(!cache.find(keyOf(0.02)));
    expect(vxOS::File::isWritable(held->getPath()));
  }
  cache.remove(cache.find(keyOf(0.03)));  // not needed any more
  expect(!cache.find(keyOf(0.03)));
  //! [room]
}

void withoutDaemon(const CString& folder) {
  //! [without]
  APP_setBinaryFolder(folder);  // a folder without vxcached: no daemon can be started
  FileCache cache;
  expect(cache.initialize(folder, 0, 0).code() != 0);
  gMade = 0;
  expect(meshText(cache, 0.05) == "a mesh within 0.05");
  expect(meshText(cache, 0.05) == "a mesh within 0.05");
  expect(gMade == 2);  // slower, and right
  APP_setBinaryFolder("");
  //! [without]
}

}  // namespace

int main() {
  const guide::ScratchFolder scratch("guide_cache_out");
  const guide::ScratchFolder empty("guide_cache_empty");
  const CString folder(scratch.string().c_str());
  use(folder);
  later(folder);
  room(folder);
  //! [stop]
  // The daemon ends by itself when nobody came for ten minutes. Tests do not wait so long.
  vxOS::ProcessManager::getInstance().startSync({APP_getBinaryPath("vxcached"), "--stop", folder});
  //! [stop]
  withoutDaemon(empty.string().c_str());
}
