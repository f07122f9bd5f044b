#include <algorithm>
#include <cstdio>
#include <io.h>
#include <new>
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

// The console limits the length of a text, and may write only a part of it.
void writeWide(HANDLE console, std::wstring_view text) {
  constexpr std::size_t kPiece = 8192;
  while (!text.empty()) {
    const auto count = static_cast<DWORD>(std::min(text.size(), kPiece));
    DWORD written = 0;
    if (WriteConsoleW(console, text.data(), count, &written, nullptr) == 0 || written == 0) return;
    text.remove_prefix(std::min<std::size_t>(written, count));
  }
}

// False when there is no memory for the wide text.
bool writeToConsole(HANDLE console, std::string_view text) {
  try {
    const vxString::IString wide = vxString::CString(text).asWide();
    writeWide(console, wide.view());
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
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
  if (isConsole(handle) && writeToConsole(handle, text)) return;
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

bool mayReadInput() {
  return isConsole(GetStdHandle(STD_INPUT_HANDLE));
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

long processId() {
  return static_cast<long>(GetCurrentProcessId());
}

}  // namespace vxOS::console
