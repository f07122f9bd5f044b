#include <windows.h>
#include <winioctl.h>

#include <vx/os/win32/OwnerOnly.h>
#include <vx/os/win32/Space.h>

namespace vxOS {

// A file system that cannot compress refuses the request, which is as good.
HANDLE makeUncompressed(const std::wstring& path, DWORD sharing, DWORD flags) {
  OwnerOnly owner;
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, sharing, owner.get(),
                                  CREATE_NEW, flags, nullptr);
  if (file == INVALID_HANDLE_VALUE) return file;
  USHORT format = COMPRESSION_FORMAT_NONE;
  DWORD answered = 0;
  DeviceIoControl(file, FSCTL_SET_COMPRESSION, &format, sizeof format, nullptr, 0, &answered,
                  nullptr);
  return file;
}

bool takeSpace(HANDLE file, std::uint64_t size) {
  if (size > INT64_MAX) return false;
  FILE_END_OF_FILE_INFO end;
  end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
  return SetFileInformationByHandle(file, FileEndOfFileInfo, &end, sizeof end) != 0;
}

}  // namespace vxOS
