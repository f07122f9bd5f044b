// Names of files and folders, and addresses that may name a file.
#pragma once

#include <vx/Error.h>
#include <vx/String.h>
#include <vx/export.h>

namespace vxOS {

/// The path of a file or folder as the application writes it: UTF-8, with `\` or `/` between the
/// names. On POSIX `\` becomes `/` where a path reaches the system.
class VX_API Filename {
 public:
  Filename() = default;
  /// The path as it stands; nothing is looked up.
  explicit Filename(const vxString::IString& path) : path_(path.asMultibyte()) {}
  explicit Filename(const vxString::CString& path) : path_(path) {}
  /// `name` in `directory`.
  Filename(const vxString::CString& directory, const vxString::CString& name)
      : path_(join(directory, name)) {}

  /// As given to the constructor, in UTF-8.
  const vxString::CString& path() const { return path_; }
  /// Whether no path was given.
  bool isEmpty() const { return path_.isEmpty(); }

  /// Whether the path does not depend on the current folder: it begins with a separator, or with a
  /// drive (a letter and ':') and a separator. Drives count on every system.
  bool isAbsolute() const;

  /// Makes the folder, whose parent must exist. A folder that exists is no error.
  vxUtil::Error makeDir() const;

  /// The separator between the names of a path that this library puts together: '\' on Windows, '/'
  /// elsewhere.
  static char separator();

  /// `name` in `directory`, with one separator between. An empty directory gives the name alone.
  static vxString::CString join(const vxString::CString& directory, const vxString::CString& name);

 private:
  vxString::CString path_;
};

/// An address of the form "scheme:...", or the path of a file.
class VX_API URL {
 public:
  /// Any text is allowed.
  explicit URL(const vxString::CString& text) : text_(text) {}

  /// Whether the text is a path or has the scheme "file". A scheme has at least two characters, so
  /// that a drive is none: a letter, then letters, digits, '+', '-' and '.', then "://".
  bool isLocalFile() const;

 private:
  vxString::CString text_;
};

}  // namespace vxOS
