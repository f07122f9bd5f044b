#include <new>
#include <system_error>

#include <vx/File.h>
#include <vx/Filename.h>
#include <vx/Process.h>
#include <vx/detail/newFile.h>
#include <vx/detail/paths.h>
#include <vx/os/File.h>

namespace vxOS {

using vxString::CString;
using vxUtil::Error;

namespace {

using detail::kSeparators;

Error failure(const char* action, const CString& path, int error) {
  if (error == 0) return {};
  return {error, CString("cannot ") + action + " \"" + path + "\": " + file::errorText(error)};
}

// The result of an action that returns the number of the system's error.
template <class Action>
Error attempt(const char* name, const CString& path, Action action) {
  if (!detail::holdsZero(path.view())) return failure(name, path, action());
  return {1, CString("cannot ") + name + " \"" + path + "\": the path holds a zero byte"};
}

// The path of the parent folder; empty above a root and above a single name.
std::string_view parent(std::string_view path) {
  const std::size_t name = detail::withoutSeparators(path).find_last_of(kSeparators) + 1;
  return detail::withoutSeparators(path.substr(0, name));
}

// `folder` with the next name that `path` has after it.
std::string_view child(std::string_view path, std::string_view folder) {
  const std::size_t name = path.find_first_not_of(kSeparators, folder.size());
  return path.substr(0, path.find_first_of(kSeparators, name));
}

// Makes a folder whose parent exists. The system's answer to a folder that exists depends on the
// system and the folder, and another process may make the folder at the same time.
int makeFolder(std::string_view folder) {
  const CString path(folder);
  const int error = file::makeFolder(path);
  if (error == 0) return 0;
  FileStatus status;
  return file::query(path, status) == 0 && status.isDirectory ? 0 : error;
}

// Goes up to the first folder that can be made or exists, then down again. A file in the place of a
// parent is in the way.
int makeFolders(std::string_view path) {
  std::string_view made = path;
  int error = makeFolder(made);
  while (file::meansMissing(error) && !parent(made).empty()) {
    made = parent(made);
    error = makeFolder(made);
  }
  while (error == 0 && made.size() < path.size()) {
    made = child(path, made);
    error = makeFolder(made);
  }
  const bool isParent = made.size() < path.size();
  return isParent && file::meansExists(error) ? file::kNotAFolder : error;
}

}  // namespace

std::FILE* openFile(std::string_view path, const char* mode) noexcept {
  try {
    return detail::holdsZero(path) ? nullptr : file::open(CString(path), mode);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

Error File::query(const CString& path, FileStatus& status) {
  status = {};
  if (detail::holdsZero(path.view())) return {};
  const int error = file::query(path, status);
  return file::meansMissing(error) ? Error() : failure("look at", path, error);
}

bool File::isWritable(const CString& path) {
  return !detail::holdsZero(path.view()) && file::isWritable(path);
}

Error File::makeDirectoryAll(const CString& path) {
  return attempt("make the folder", path, [&] { return makeFolders(path.view()); });
}

Error File::readDirectory(const CString& path, vx::vector<CString>& names) {
  return attempt("read the folder", path, [&] { return file::readFolder(path, names); });
}

Error File::remove(const CString& path) {
  return attempt("delete", path, [&] { return file::remove(path); });
}

Error Filename::makeDir() const {
  return attempt("make the folder", path_, [&] { return makeFolder(path_.view()); });
}

bool Filesystem::stat(const CString& path, FilesystemStatus& status) {
  status = {};
  return !detail::holdsZero(path.view()) && file::queryFilesystem(path, status) == 0;
}

CString temporaryDirectory() {
  const CString folder = environmentVariable("TMPDIR");
  return folder.isEmpty() ? file::kTemporaryFolder : folder;
}

CString createTmpFilename() {
  try {
    return detail::makeNewFile(Filename::join(temporaryDirectory(), "vx"), 12, file::makeFile);
  } catch (const std::system_error&) {  // no random numbers
    return {};
  }
}

}  // namespace vxOS
