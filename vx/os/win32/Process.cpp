#include <algorithm>
#include <cstddef>
#include <direct.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

#include <vx/os/Process.h>
#include <vx/os/win32/Handle.h>
#include <vx/os/win32/Path.h>

namespace vxOS::process {

namespace {

using vxString::CString;

// Quotes by the rules of "Parsing C command-line arguments" in the Microsoft C documentation: a
// backslash stands for itself, except before a quote, where each backslash is doubled.
void appendQuoted(std::wstring& line, std::wstring_view argument) {
  line += L" \"";
  std::size_t backslashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'"') line.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    line += c;
  }
  line.append(backslashes, L'\\') += L'"';
}

// The name of the program is read without escapes. No file name holds a quote.
std::wstring commandLine(const vx::vector<CString>& command) {
  std::wstring line = L'"' + std::wstring(command.front().asWide().view()) + L'"';
  for (std::size_t i = 1; i < command.size(); ++i) appendQuoted(line, command[i].asWide().view());
  return line;
}

// A copy of a standard stream of this process, which a child can inherit. Null when there is no
// such stream.
HANDLE inheritableStream(DWORD stream) {
  const HANDLE original = GetStdHandle(stream);
  if (original == nullptr || original == INVALID_HANDLE_VALUE) return nullptr;
  const HANDLE self = GetCurrentProcess();
  HANDLE copy = nullptr;
  DuplicateHandle(self, original, self, &copy, 0, TRUE, DUPLICATE_SAME_ACCESS);
  return copy;
}

// A handle of the null device, which a child can inherit.
HANDLE inheritableNull() {
  SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
  return CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                     &inheritable, OPEN_EXISTING, 0, nullptr);
}

// Starts a child that inherits its standard streams and no other handle. A stream may be null, and
// several may be the same.
class Startup {
 public:
  Startup(HANDLE input, HANDLE output, HANDLE error) {
    info_.StartupInfo.cb = sizeof info_;
    info_.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    info_.StartupInfo.hStdInput = input;
    info_.StartupInfo.hStdOutput = output;
    info_.StartupInfo.hStdError = error;
    for (const HANDLE stream : {input, output, error}) addInherited(stream);
    isComplete_ = inherited_.empty() || (makeList() && listInherited());
  }
  ~Startup() {
    if (info_.lpAttributeList != nullptr) DeleteProcThreadAttributeList(info_.lpAttributeList);
  }
  Startup(const Startup&) = delete;
  Startup& operator=(const Startup&) = delete;

  // Starts the command in `folder`, or where this process is when that is null. Null when the
  // system refuses.
  HANDLE start(const vx::vector<CString>& command, DWORD flags, const wchar_t* folder) {
    std::wstring line = commandLine(command);
    PROCESS_INFORMATION created = {};
    if (!isComplete_ ||
        CreateProcessW(command.front().asWide().c_str(), line.data(), nullptr, nullptr,
                       !inherited_.empty(), flags | EXTENDED_STARTUPINFO_PRESENT, nullptr, folder,
                       &info_.StartupInfo, &created) == 0)
      return nullptr;
    CloseHandle(created.hThread);
    return created.hProcess;
  }

 private:
  // The system refuses a list that holds a handle twice.
  void addInherited(HANDLE stream) {
    if (stream != nullptr &&
        std::find(inherited_.begin(), inherited_.end(), stream) == inherited_.end())
      inherited_.push_back(stream);
  }

  bool makeList() {
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    memory_ = std::make_unique<std::byte[]>(size);
    auto* list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.get());
    if (InitializeProcThreadAttributeList(list, 1, 0, &size) == 0) return false;
    info_.lpAttributeList = list;
    return true;
  }

  bool listInherited() {
    return UpdateProcThreadAttribute(info_.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                     inherited_.data(), inherited_.size() * sizeof(HANDLE), nullptr,
                                     nullptr) != 0;
  }

  std::vector<HANDLE> inherited_;
  std::unique_ptr<std::byte[]> memory_;
  STARTUPINFOEXW info_ = {};
  bool isComplete_ = false;
};

// A console program shares the console of this process. Without such a console the program gets one
// that has no window.
DWORD consoleFlags() {
  const bool hasConsole = GetConsoleCP() != 0;
  return hasConsole ? 0U : CREATE_NO_WINDOW;
}

std::optional<int> waitFor(HANDLE process) {
  DWORD exitCode = 0;
  if (WaitForSingleObject(process, INFINITE) != WAIT_OBJECT_0 ||
      GetExitCodeProcess(process, &exitCode) == 0)
    return std::nullopt;
  return static_cast<int>(exitCode);
}

// The file of a program (null: the one that runs) or of a library.
CString fileOf(HMODULE module) {
  std::wstring path(MAX_PATH, L'\0');
  for (;; path.resize(2 * path.size())) {
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size())
      return vxString::IString(std::wstring_view(path).substr(0, length)).asMultibyte();
  }
}

// The system ignores blanks and dots at the end of a file name.
bool isBatchFile(const CString& program) {
  const std::size_t length = program.view().find_last_not_of(" .") + 1;
  const CString name = program.substring(0, length).toLower();
  return name.endsWith(".bat") || name.endsWith(".cmd");
}

}  // namespace

const char* const kSeparator = "\\";
const char* const kProgramEnding = ".exe";

CString ownProgram() {
  return fileOf(nullptr);
}

CString ownLibrary() {
  HMODULE library = nullptr;
  const DWORD byAddress =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  const auto* here = reinterpret_cast<const wchar_t*>(&ownLibrary);
  return GetModuleHandleExW(byAddress, here, &library) != 0 ? fileOf(library) : CString();
}

CString environmentVariable(const char* name) {
  const vxString::IString wide = CString(name).asWide();
  std::wstring value(GetEnvironmentVariableW(wide.c_str(), nullptr, 0), L'\0');
  const auto size = static_cast<DWORD>(value.size());
  value.resize(std::min(GetEnvironmentVariableW(wide.c_str(), value.data(), size), size));
  return vxString::IString(value).asMultibyte();
}

bool hasEnvironmentVariable(const char* name) noexcept {
  return GetEnvironmentVariableA(name, nullptr, 0) != 0;
}

int currentDrive() noexcept {
  return _getdrive();
}

std::optional<int> run(const vx::vector<CString>& command) {
  if (isBatchFile(command.front())) return std::nullopt;
  const Handle input(inheritableStream(STD_INPUT_HANDLE));
  const Handle output(inheritableStream(STD_OUTPUT_HANDLE));
  const Handle error(inheritableStream(STD_ERROR_HANDLE));
  Startup startup(input.get(), output.get(), error.get());
  const Handle process(startup.start(command, consoleFlags(), nullptr));
  return process ? waitFor(process.get()) : std::nullopt;
}

int startDetached(const vx::vector<CString>& command, const CString& folder) {
  if (isBatchFile(command.front())) return ERROR_BAD_EXE_FORMAT;
  const Handle null(inheritableNull());
  if (!null) return static_cast<int>(GetLastError());
  const std::wstring place = systemPath(folder);
  Startup startup(null.get(), null.get(), null.get());
  const Handle process(startup.start(command, DETACHED_PROCESS | CREATE_NEW_PROCESS_GROUP,
                                     folder.isEmpty() ? nullptr : place.c_str()));
  return process ? 0 : static_cast<int>(GetLastError());
}

}  // namespace vxOS::process
