#include <cstdio>
#include <io.h>
#include <windows.h>

#include <vx/String.h>
#include <vx/os/Console.h>

namespace vxOS::console {

namespace {

HANDLE errorHandle() {
  return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stderr)));
}

bool isConsole(HANDLE handle) {
  DWORD mode;
  return GetConsoleMode(handle, &mode) != 0;
}

bool isEscapeKey(const INPUT_RECORD& input) {
  return input.EventType == KEY_EVENT && input.Event.KeyEvent.bKeyDown != 0 &&
         input.Event.KeyEvent.wVirtualKeyCode == VK_ESCAPE;
}

}  // namespace

bool errorIsTerminal() {
  const HANDLE console = errorHandle();
  DWORD mode;
  return GetConsoleMode(console, &mode) != 0 &&
         SetConsoleMode(console,
                        mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void writeError(std::string_view text) {
  const HANDLE handle = errorHandle();
  if (isConsole(handle)) {
    const vxString::IString wide = vxString::CString(text).asWide();
    DWORD written;
    WriteConsoleW(handle, wide.c_str(), static_cast<DWORD>(wide.length()), &written, nullptr);
  } else {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
  }
}

bool escapePressed() {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  bool pressed = false;
  DWORD waiting;
  while (GetNumberOfConsoleInputEvents(input, &waiting) != 0 && waiting > 0) {
    INPUT_RECORD record;
    DWORD count;
    if (ReadConsoleInputW(input, &record, 1, &count) == 0) break;
    pressed |= isEscapeKey(record);
  }
  return pressed;
}

void releaseKeys() noexcept {}

}  // namespace vxOS::console
