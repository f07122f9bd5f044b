// Files and folders, on each operating system.
//
// No path holds a zero byte. A function that returns an int returns the number of the system's
// error, and 0 when it succeeds.
#pragma once

#include <cstdio>

#include <vx/File.h>
#include <vx/String.h>

namespace vxOS::file {

extern const char kSeparator;
/// The folder for temporary files when the environment names none.
extern const char* const kTemporaryFolder;

/// Opens a file as `fopen` does. Null when there is no such file.
std::FILE* open(const vxString::CString& path, const char* mode);

/// Fails when there is nothing under `path`.
int query(const vxString::CString& path, FileStatus& status);
/// Whether this process may write to the file, or make files in the folder.
bool isWritable(const vxString::CString& path);
/// Fails when there is something under `path`.
int makeFolder(const vxString::CString& path);
/// Makes an empty file for this user alone. Fails when there is something under `path`.
int makeFile(const vxString::CString& path);
/// Appends the names of all entries.
int readFolder(const vxString::CString& path, vx::vector<vxString::CString>& names);
int remove(const vxString::CString& path);
int queryFilesystem(const vxString::CString& path, FilesystemStatus& status);

/// The error that says that something is no folder.
extern const int kNotAFolder;
/// Whether an error says that there is nothing under a path.
bool meansMissing(int error);
/// Whether an error says that there is something under a path already.
bool meansExists(int error);
/// What an error means, without a full stop or line end.
vxString::CString errorText(int error);

}  // namespace vxOS::file
