#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <kilnbase/detail/assert.h>
#include <kilnbase/detail/heapText.h>
#include <kilnbase/util/db_filename.h>
#include <kilnbase/util/detail/expansion.h>
#include <kilnbase/util/mr_string.h>
#include <vx/File.h>
#include <vx/Filename.h>
#include <vx/Process.h>
#include <vx/Report.h>

using vxKilnBase::detail::Expansion;
using vxKilnBase::detail::heapText;
using vxKilnBase::detail::kLongestPath;
using vxString::CString;

namespace {

constexpr std::size_t kUserNameSize = 1024;

// A text in an array of 260 characters.
using Setting = char[260];

constinit Setting projectPath = "";
constinit Setting projectName = "";
constinit Setting currentProjectPath = "";
constinit Setting currentProjectName = "";
constinit Setting workingFolder = "";
constinit char* projectExtension = nullptr;

// Subdirectories and types. Kept as they are: sounds lie in "wire", and there are no rows for the
// types 23 and 33.
constexpr Db_Path kDefaultPaths[] = {{"anim", 0},
                                     {"pix", 1},
                                     {"pix", 21},
                                     {"mask", 4},
                                     {"sdl", 2},
                                     {"rib", 25},
                                     {".", 6},
                                     {".", 11},
                                     {".", 19},
                                     {"..", 7},
                                     {"misc_data", 9},
                                     {"option", 12},
                                     {"option", 24},
                                     {"plot", 15},
                                     {"wire", 3},
                                     {"wire", 20},
                                     {"wire", 10},
                                     {"wire", 8},
                                     {"sla", 16},
                                     {"shader", 17},
                                     {"texture", 18},
                                     {"light", 26},
                                     {"environment", 27},
                                     {"layeredshader", 45},
                                     {"switchshader", 47},
                                     {"canvas", 28},
                                     {"stencil", 31},
                                     {"colors", 38},
                                     {"shapes", 32},
                                     {"imageLayers", 39},
                                     {"textureLayers", 40},
                                     {"geometryLayers", 41},
                                     {"brushes", 42},
                                     {"spTextures", 43},
                                     {"spTextureScripts", 44},
                                     {"..\\..", 22},
                                     {"depth", 29},
                                     {"sdl", 30},
                                     {"stageset", 34},
                                     {"cloud", 35},
                                     {"wire", 37},
                                     {"..\\..", 36},
                                     {"reference", 46},
                                     {nullptr, 0}};

// The table of folders, with texts from `malloc`. The row with a null path ends the table.
constinit Db_Path folders[std::size(kDefaultPaths)] = {};

// Whether the text fits. Keeps nothing of a text that is too long: a part would name something
// else.
bool keep(Setting& setting, const char* text) {
  const std::size_t length = text ? std::strlen(text) : 0;
  const bool fits = length < sizeof setting;
  if (fits && length > 0) std::memmove(setting, text, length);
  setting[fits ? length : 0] = '\0';
  return fits;
}

void set(Setting& setting, const char* text) {
  [[maybe_unused]] const bool fits = keep(setting, text);
  KILN_ASSERT(fits);
}

[[noreturn]] void refuse(const char* function, const char* what, std::size_t length) {
  rptError("%s: a %s of %zu characters is too long\n", function, what, length);
  std::abort();
}

bool isSeparator(char c) {
  return c == '\\' || c == vxOS::Filename::separator();
}

bool isDrive(std::string_view text) {
  return text.size() == 2 && text[1] == ':' &&
         ((text[0] >= 'A' && text[0] <= 'Z') || (text[0] >= 'a' && text[0] <= 'z'));
}

void freeFolders() {
  for (Db_Path& folder : folders) {
    std::free(const_cast<char*>(std::exchange(folder, {}).path));
  }
}

CString drivePrefix() {
  const int drive = vxOS::currentDrive();
  if (drive == 0 || vxOS::Filename(CString(projectPath)).isAbsolute()) return {};
  return CString::format("%c:", 'A' + drive - 1);
}

CString folderOf(const char* subdirectory) {
  const std::string_view kind = subdirectory;
  if (kind == ".") return CString::format("%s%s\\", projectPath, projectName);
  if (kind == "..") return projectPath;
  if (kind == "..\\..") return CString::format("%s\\", workingFolder);
  return CString::format("%s%s%s\\%s\\", drivePrefix().c_str(), projectPath, projectName,
                         subdirectory);
}

void buildFolders() {
  for (std::size_t i = 0; kDefaultPaths[i].path; ++i) {
    folders[i] = {heapText(folderOf(kDefaultPaths[i].path).view()), kDefaultPaths[i].type};
    if (!folders[i].path) throw std::bad_alloc();
  }
}

bool isLocal(const CString& path) {
  return vxOS::URL(path).isLocalFile();
}

// The number of characters up to the last separator, which is included; 0 without one.
std::size_t lengthOfFolder(const CString& path) {
  const std::string_view text = path.view();
  for (std::size_t i = text.size(); i > 1; --i) {
    if (isSeparator(text[i - 1])) return i;
  }
  const std::size_t slash = isLocal(path) ? text.npos : text.rfind('/');
  return slash != text.npos && slash > 0 ? slash + 1 : 0;
}

CString folderPart(const CString& path) {
  const std::size_t length = lengthOfFolder(path);
  return path.substring(0, length > 0 ? length : 1);
}

// Nothing for a type without a folder and for a folder that is too long.
std::optional<CString> folderFor(int type) {
  const Db_Path* const row = Db_default_path(type);
  if (!row) return std::nullopt;
  CString folder = folderPart(row->path);
  if (folder.length() > kLongestPath) return std::nullopt;
  if (!vxKilnBase::detail::exists(folder)) vxOS::Filename(folder).makeDir();
  return folder;
}

// The path of a program without the name of the program and from the first "\bin" on.
CString installationOf(const CString& program) {
  std::string_view folder = program.view();
  std::size_t last = folder.size();
  while (last > 0 && !isSeparator(folder[last - 1])) --last;
  folder = folder.substr(0, last > 0 ? last - 1 : 0);
  for (std::size_t i = 0; i < folder.size(); ++i) {
    if (isSeparator(folder[i]) && folder.substr(i + 1).starts_with("bin")) {
      return CString(folder.substr(0, i));
    }
  }
  return CString(folder);
}

// The name of the user up to the next '/'; the user of this process when there is none.
CString userName(std::string_view text) {
  const std::string_view name = text.substr(0, text.find('/'));
  return name.empty() ? vxOS::environmentVariable("USER") : CString(name);
}

int kindOf(const CString& path) {
  vxOS::FileStatus status;
  return vxOS::File::query(path, status) ? SB_NOTHING : static_cast<int>(status.type);
}

}  // namespace

Expansion vxKilnBase::detail::expand(char* name, int type) {
  const bool isAddress = !isLocal(name);
  if (name && *name == '"' && !isAddress) MR_string_leading_trailing_remove(name, '"');
  const CString text = name;
  const bool isWhole = isAddress || isSeparator(text[0]) || text[1] == ':';
  const std::optional<CString> folder = isWhole ? CString() : folderFor(type);
  if (folder && name && folder->length() + text.length() <= kLongestPath) {
    return {*folder + text, true};
  }
  return {isWhole ? std::nullopt : folder, false};
}

void vxKilnBase::detail::copyText(char* out, const CString& text) {
  std::memcpy(out, text.c_str(), text.length() + 1);
}

bool vxKilnBase::detail::exists(const CString& path) {
  vxOS::FileStatus status;
  return !vxOS::File::query(path, status) && status.exists;
}

void Db_set_project_path(const char* path) {
  set(projectPath, path);
}

const char* Db_get_project_path() {
  return projectPath;
}

void Db_set_project_name(const char* name) {
  set(projectName, name);
}

const char* Db_get_project_name() {
  return projectName;
}

void Db_set_current_project_path(const char* path) {
  set(currentProjectPath, path);
}

void Db_set_current_project_name(const char* name) {
  set(currentProjectName, name);
}

const char* Db_user_current_project_path() {
  static char path[2 * sizeof(Setting)];
  const bool hasCurrent = *currentProjectPath != '\0' || *currentProjectName != '\0';
  std::snprintf(path, sizeof path, "%s%s", hasCurrent ? currentProjectPath : projectPath,
                hasCurrent ? currentProjectName : projectName);
  return path;
}

void Db_set_mr_cwd(const char* path) {
  set(workingFolder, path);
}

const char* Db_get_mr_cwd() {
  return workingFolder;
}

void Db_set_project_extension(const char* extension) {
  std::free(std::exchange(projectExtension, extension ? heapText(extension) : nullptr));
}

const char* Db_get_project_extension() {
  return projectExtension;
}

const Db_Path* Db_get_default_paths() {
  return kDefaultPaths;
}

void Db_init_paths() try {
  freeFolders();
  buildFolders();
} catch (const std::bad_alloc&) {
  freeFolders();
}

const Db_Path* Db_get_paths() {
  return folders;
}

const Db_Path* Db_default_path(int type) {
  if (!folders[0].path) Db_init_paths();
  const Db_Path* row = folders;
  while (row->path && row->type != type) ++row;
  return row->path ? row : nullptr;
}

int Db_make_dirname(char* out, const char* path) try {
  KILN_ASSERT(out != nullptr);
  if (!out || !path) return 0;
  const CString folder = folderPart(path);
  KILN_ASSERT(folder.length() <= kLongestPath);
  vxKilnBase::detail::copyText(out, folder.length() <= kLongestPath ? folder : CString());
  return 1;
} catch (const std::bad_alloc&) {
  *out = '\0';
  return 1;
}

void expand_filename(char* out, char* name, int type) try {
  KILN_ASSERT(out != nullptr);
  if (!out) return;
  const std::optional<CString> path = vxKilnBase::detail::expand(name, type).path;
  KILN_ASSERT(path.has_value() || !folders[0].path);
  vxKilnBase::detail::copyText(out, path.value_or(""));
} catch (const std::bad_alloc&) {
  *out = '\0';
}

const char* getMorlaPath() {
  static Setting path;
  *path = '\0';
  try {
    const bool isSet = vxOS::hasEnvironmentVariable("MORLA_LOCATION");
    if (isSet && keep(path, vxOS::environmentVariable("MORLA_LOCATION").c_str())) return path;
    keep(path, installationOf(vxOS::programPath()).c_str());
  } catch (const std::bad_alloc&) {
    return path;
  }
  return path;
}

char* ExpandPathname(const char* name) try {
  if (!name) return nullptr;
  const std::size_t length = *name == '~' ? userName(name + 1).length() : 0;
  if (length >= kUserNameSize) refuse("ExpandPathname", "user name", length);
  return heapText(name);
} catch (const std::bad_alloc&) {
  return nullptr;
}

char* convertFilename(const char* name, int to_forward) {
  char* const copy = name ? heapText(name) : nullptr;
  if (copy)
    std::replace(copy, copy + std::strlen(copy), to_forward ? '\\' : '/', to_forward ? '/' : '\\');
  return copy;
}

int SB_FileExists(const char* path) try {
  std::string text = path ? path : "";
  if (text.size() > kLongestPath) refuse("SB_FileExists", "path", text.size());
  if (isDrive(text)) return kindOf(CString(text + '\\'));
  const bool isCut = text.size() > 1 && isSeparator(text.back()) && text[text.size() - 2] != ':';
  if (isCut) text.pop_back();
  return kindOf(CString(text));
} catch (const std::bad_alloc&) {
  return SB_NOTHING;
}

struct Win32_Directory {
  std::string names;  // a terminator after each
  std::size_t next;   // the position of the next name
  Win32_DirectoryEntry entry;
};

Win32_Directory* win32_opendir(char* path) try {
  if (!path || std::strlen(path) > kLongestPath) return nullptr;
  if (isDrive(path)) vxKilnBase::detail::copyText(path + 2, "\\");
  vx::vector<CString> names;
  if (kindOf(path) != SB_DIRECTORY || vxOS::File::readDirectory(path, names)) return nullptr;
  std::string all;
  for (const CString& name : names) all.append(name.c_str(), name.length() + 1);
  return new Win32_Directory{std::move(all), 0, {}};
} catch (const std::bad_alloc&) {
  return nullptr;
}

Win32_DirectoryEntry* win32_readdir(Win32_Directory* directory) {
  static constinit std::uint32_t entriesRead = 0;
  if (!directory || directory->next >= directory->names.size()) return nullptr;
  Win32_DirectoryEntry& entry = directory->entry;
  const char* const name = directory->names.c_str() + directory->next;
  const std::size_t length = std::strlen(name);
  directory->next += length + 1;
  if (length >= sizeof entry.name) return win32_readdir(directory);
  entry.number = ++entriesRead;
  entry.length = static_cast<std::uint32_t>(length);
  std::memcpy(entry.name, name, length + 1);
  return &entry;
}

void win32_rewinddir(Win32_Directory* directory) {
  win32_seekdir(directory, 0);
}

long win32_telldir(const Win32_Directory* directory) {
  return directory ? static_cast<long>(directory->next) : 0;
}

void win32_seekdir(Win32_Directory* directory, long place) {
  if (!directory || place < 0) return;
  const auto next = static_cast<std::size_t>(place);
  const std::string& names = directory->names;
  if (next > names.size() || (next > 0 && names[next - 1] != '\0')) return;
  directory->next = next;
}

int win32_closedir(Win32_Directory* directory) {
  delete directory;
  return 1;
}
