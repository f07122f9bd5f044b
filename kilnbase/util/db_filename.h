/* The project: where its files lie, and how a file name becomes a path.
 *
 * The files of a project lie in a folder, which has the project's name and stands in the project
 * path, with one folder in it for each kind of data. The application sets the project, then builds
 * the table of folders; a change of the project takes effect when the table is built again.
 *
 *     char path[264], name[] = "wing";
 *     Db_set_project_path("D:\\work\\");
 *     Db_set_project_name("demo");
 *     Db_init_paths();
 *     Db_make_dirname(path, Db_default_path(WIRE_DATA)->path);
 *     puts(path);
 *
 * prints D:\work\demo\wire\ here.
 *
 * Paths are UTF-8, with '\' between the names. On POSIX '/' stands for '\' wherever a text is
 * looked at, and '\' becomes '/' where a path reaches the system.
 *
 * Lengths. Settings have at most 259 characters, and a path that is made here at most 260 (262
 * with the ".Z" that `MR_Filename` appends): an array of 264 characters has room for each. What is
 * longer is not cut, as a part of a path names another file, but gives an empty text. Callers keep
 * within these lengths: asserted in debug builds.
 *
 * Nothing is locked: everything here is for the application's main thread.
 */
#ifndef KILNBASE_UTIL_DB_FILENAME_H
#define KILNBASE_UTIL_DB_FILENAME_H

#include <stdint.h>

#include <kilnbase/export.h>
#include <kilnbase/util/mr_filename.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The folder in which the project lies, with a separator at its end. Null stands for "", here and
 * in the other settings. */
KILNBASE_API void Db_set_project_path(const char* path);
KILNBASE_API const char* Db_get_project_path(void);
/** The name of the project and its folder. */
KILNBASE_API void Db_set_project_name(const char* name);
KILNBASE_API const char* Db_get_project_name(void);
/** The project in which the user works, when that is another one. */
KILNBASE_API void Db_set_current_project_path(const char* path);
KILNBASE_API void Db_set_current_project_name(const char* name);
/** Path and name of the user's project: the current project, or the project when both settings of
 * the current one are empty. At most 518 characters. Valid until the next call. */
KILNBASE_API const char* Db_user_current_project_path(void);
/** The working folder of the application. */
KILNBASE_API void Db_set_mr_cwd(const char* path);
KILNBASE_API const char* Db_get_mr_cwd(void);
/** The extension of the project, of any length; null for none. The text that is returned is valid
 * until the next call that sets one. If there is no memory for the copy, the extension is null
 * afterwards. */
KILNBASE_API void Db_set_project_extension(const char* extension);
KILNBASE_API const char* Db_get_project_extension(void);

/** A row of a table of folders. */
typedef struct Db_Path {
  const char* path; /**< Null in the row that ends the table. */
  int32_t type;     /**< The type of data. */
} Db_Path;

/** The folders of the types of data in a project: "." stands for the project's folder, ".." for the
 * project path, and "..\.." for the working folder. */
KILNBASE_API const Db_Path* Db_get_default_paths(void);

/** Builds the table of folders, a row for each row of `Db_get_default_paths`, in the same order.
 * The texts of the table before are no longer valid. Without memory the table is empty.
 *
 * A project path that is not absolute belongs to the current drive, whose letter and ':' go in
 * front, except for "..". On systems without drives nothing goes in front. */
KILNBASE_API void Db_init_paths(void);
/** The table that `Db_init_paths` built; empty before. */
KILNBASE_API const Db_Path* Db_get_paths(void);
/** The row of the table for a type. Builds the table if there is none. Null when no row has the
 * type. */
KILNBASE_API const Db_Path* Db_default_path(int type);

/** Stores the part of `path` up to its last separator, which is included, at `out`. In an address
 * such as http://host/wing the separator is '/'. Returns 1. A null path stores nothing and
 * returns 0.
 *
 * A separator that begins the path does not count. Kept as it is: without a separator the first
 * character of `path` is stored. */
KILNBASE_API int Db_make_dirname(char* out, const char* path);

/** Makes a file name into a path:
 * - an address with "://" and another scheme than file is stored at `out` as it is;
 * - double quotes around other names are removed, in the caller's text;
 * - a name whose second character is ':' and one that begins with '\' are stored as they are;
 * - any other name, such as file:///wing and an address that stood in quotes, goes into the folder
 *   of its type, which is made if there is none. Whether that succeeds is not told. A null name and
 *   a path that would have more than 260 characters give the folder alone.
 *
 * The table of folders has the type. Asserted in debug builds; gives "" in release builds. */
KILNBASE_API void expand_filename(char* out, char* name, int type);

/** The folder of the installation: the environment variable MORLA_LOCATION, or else the folder of
 * the running program, cut in front of its first "\bin". A value of the variable with more than 259
 * characters is ignored. If the program's folder is longer than that, the text is empty. Valid
 * until the next call. */
KILNBASE_API const char* getMorlaPath(void);

/** A copy of the name from `malloc`, which the caller frees; null for null and when there is no
 * memory. Kept as it is: a '~' that begins the name stays, but a user name of 1024 characters or
 * more behind it (or in the environment variable USER, for '~' alone) aborts the process with an
 * error report. */
KILNBASE_API char* ExpandPathname(const char* name);

/** A copy of the name with '/' in place of every '\', or for 0 with '\' in place of every '/'. The
 * copy is from `malloc`, and the caller frees it. Null for null and when there is no memory. */
KILNBASE_API char* convertFilename(const char* name, int to_forward);

/** What `SB_FileExists` finds: the type bits of the mode that the system tells. */
enum {
  SB_NOTHING = 0,
  SB_PIPE = 0x1000,
  SB_DEVICE = 0x2000, /**< For characters, such as "NUL" and "/dev/null". */
  SB_DIRECTORY = 0x4000,
  SB_BLOCK_DEVICE = 0x6000,
  SB_REGULAR_FILE = 0x8000,
  SB_SOCKET = 0xC000
};

/** Tells what there is under a path. One separator at the end of the path does not count,
 * unless the separator follows ':' or is the whole path. A path of more than 260 characters aborts
 * the process with an error report. */
KILNBASE_API int SB_FileExists(const char* path);

/** A folder whose names have been read. */
typedef struct Win32_Directory Win32_Directory;

/** One name of a folder. */
typedef struct Win32_DirectoryEntry {
  uint32_t number; /**< Counts the entries that the process reads, from 1. */
  uint32_t length; /**< Of the name, in bytes. */
  char name[1024]; /**< No system has longer names. */
} Win32_DirectoryEntry;

/** Reads the names of all entries of a folder, on every system: "." and ".." with the others where
 * the system has them, in the system's order. Null when there is no such folder, when the path has
 * more than 260 characters, and when there is no memory.
 *
 * For a drive (a letter and ':') '\' is appended to the caller's text, which has room for that. */
KILNBASE_API Win32_Directory* win32_opendir(char* path);
/** The next entry; null at the end. The entry belongs to the stream and is valid until its next
 * one. A null stream has no entries, here and below. */
KILNBASE_API Win32_DirectoryEntry* win32_readdir(Win32_Directory* directory);
/** Starts again with the first name. The names are not read again. */
KILNBASE_API void win32_rewinddir(Win32_Directory* directory);
/** The place of the next entry, for `win32_seekdir` on the same stream. */
KILNBASE_API long win32_telldir(const Win32_Directory* directory);
/** Goes to a place from `win32_telldir`. Other numbers are ignored. */
KILNBASE_API void win32_seekdir(Win32_Directory* directory, long place);
/** Frees the stream. Returns 1. */
KILNBASE_API int win32_closedir(Win32_Directory* directory);

#ifdef __cplusplus
}
#endif

#endif
