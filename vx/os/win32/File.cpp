#include <string>
#include <windows.h>

#include <vx/os/File.h>

namespace vxOS::file {

namespace {

// The complete path in the form for system functions: a path longer than MAX_PATH gets a prefix
// ("Maximum Path Length Limitation" in the Windows documentation). Empty when the system refuses.
std::wstring systemPath(const vxString::CString& path) {
  const vxString::IString given = path.asWide();
  const DWORD size = GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  full.resize(GetFullPathNameW(given.c_str(), size, full.data(), nullptr));
  if (full.size() < MAX_PATH || full.starts_with(L"\\\\?\\")) return full;
  return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

}  // namespace

std::FILE* open(const vxString::CString& path, const char* mode) {
  return _wfopen(systemPath(path).c_str(), vxString::CString(mode).asWide().c_str());
}

}  // namespace vxOS::file
