#include <future>
#include <gtest/gtest.h>
#include <string>
#include <windows.h>

#include <vx/Process.h>
#include <vx/SysInfo.h>

namespace {

// The window of a program that runs.
class WarningWindow {
 public:
  explicit WarningWindow(const vx::vector<vxString::CString>& more) {
    const vxString::CString title =
        vxString::CString::format("Warnung für %lu", GetCurrentProcessId());
    vx::vector<vxString::CString> command = {APP_getBinaryPath("morlaWarning"), "-t", title};
    command.insert(command.end(), more.begin(), more.end());
    exitCode_ = std::async(std::launch::async, [command] {
      return vxOS::ProcessManager::getInstance().startSync(command);
    });
    while (window_ == nullptr &&
           exitCode_.wait_for(std::chrono::milliseconds(10)) == std::future_status::timeout)
      window_ = FindWindowW(nullptr, title.asWide().c_str());
  }

  // The child window of this kind behind another one; null when there is none.
  HWND control(const wchar_t* type, HWND before = nullptr) const {
    return FindWindowExW(window_, before, type, nullptr);
  }
  std::optional<int> exitCodeAfter(HWND control, UINT message, WPARAM key = 0) {
    PostMessageW(control == nullptr ? window_ : control, message, key, 0);
    return exitCode_.get();
  }

 private:
  HWND window_ = nullptr;
  std::future<std::optional<int>> exitCode_;
};

std::wstring textOf(HWND control) {
  std::wstring text(static_cast<std::size_t>(SendMessageW(control, WM_GETTEXTLENGTH, 0, 0)), L'\0');
  SendMessageW(control, WM_GETTEXT, text.size() + 1, reinterpret_cast<LPARAM>(text.data()));
  return text;
}

const vx::vector<vxString::CString> kQuestion = {"-s",   "Köln 中文 😀", "-s",    "two", "-f",
                                                 "more", "-b",          "A & b", "-b",  "Über"};

}  // namespace

TEST(MorlaWarningWindow, ShowsAllTextsAndAnswersToTheButtonsAndKeys) {
  {
    WarningWindow window(kQuestion);
    const HWND first = window.control(L"Button");
    EXPECT_EQ(L"A && b", textOf(first));
    EXPECT_EQ(L"Über", textOf(window.control(L"Button", first)));
    EXPECT_EQ(L"Köln 中文 😀\r\ntwo\r\n\r\nmore", textOf(window.control(L"Edit")));
    EXPECT_EQ(2, window.exitCodeAfter(window.control(L"Button", first), BM_CLICK));
  }
  const struct {
    UINT message;
    WPARAM key;
    int exitCode;
  } cases[] = {{WM_KEYDOWN, VK_RETURN, 1}, {WM_KEYDOWN, VK_ESCAPE, 0}, {WM_CLOSE, 0, 0}};
  for (const auto& [message, key, exitCode] : cases) {
    WarningWindow window(kQuestion);
    const HWND target = message == WM_KEYDOWN ? window.control(L"Button") : nullptr;
    EXPECT_EQ(exitCode, window.exitCodeAfter(target, message, key));
  }
}

TEST(MorlaWarningWindow, LongTextsScroll) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "word " + std::to_string(i) + (i % 50 != 0 ? " " : "\n");
  for (const bool isLong : {false, true}) {
    WarningWindow window({"-s", isLong ? text.c_str() : "short", "-b", "OK"});
    const HWND edit = window.control(L"Edit");
    EXPECT_EQ(isLong, (GetWindowLongW(edit, GWL_STYLE) & WS_VSCROLL) != 0);
    EXPECT_EQ(isLong ? text.size() + 40 : 5, textOf(edit).size());
    EXPECT_EQ(0, window.exitCodeAfter(nullptr, WM_CLOSE));
  }
}
