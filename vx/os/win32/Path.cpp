#include <windows.h>

#include <vx/os/win32/Path.h>

namespace vxOS {

namespace {

// The path of a folder that is made leaves room for a file name of 8 + 1 + 3 characters.
constexpr std::size_t kShortPath = MAX_PATH - 12;

}  // namespace

// A long path gets a prefix ("Maximum Path Length Limitation" in the Windows documentation).
std::wstring systemPath(const vxString::CString& path) {
  const vxString::IString given = path.asWide();
  const DWORD size = GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  full.resize(GetFullPathNameW(given.c_str(), size, full.data(), nullptr));
  if (full.size() < kShortPath || full.starts_with(L"\\\\?\\")) return full;
  return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

}  // namespace vxOS
