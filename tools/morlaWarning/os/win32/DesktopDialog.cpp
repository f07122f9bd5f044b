// The window, a modal dialog of the system.
#include <algorithm>
#include <exception>
#include <string>
#include <windows.h>
// clang-format off: needs windows.h
#include <commctrl.h>
// clang-format on

#include <vx/String.h>

#include "tools/morlaWarning/Dialog.h"

namespace morlawarning {

namespace {

// The control of button k, from 1, has the number kFirstButton + k - 1.
constexpr int kFirstButton = 100;
constexpr int kText = 10;

std::wstring wide(const std::string& text) {
  return std::wstring(vxString::CString(std::string_view(text)).asWide().view());
}

// The text with the line ends of the system.
std::wstring fullText(const Warning& warning) {
  const bool hasBoth = !warning.message.empty() && !warning.extra.empty();
  std::string text = warning.message + (hasBoth ? "\n" : "") + warning.extra;
  if (text.ends_with('\n')) text.pop_back();
  return wide(std::string(vxString::CString(std::string_view(text)).replaced("\n", "\r\n").view()));
}

// A label in which `&` stands for itself.
std::wstring labelText(const std::string& label) {
  return wide(std::string(vxString::CString(std::string_view(label)).replaced("&", "&&").view()));
}

// The font of the system for messages.
class Font {
 public:
  Font() {
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    font_ = CreateFontIndirectW(&metrics.lfMessageFont);
  }
  ~Font() { DeleteObject(font_); }
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;

  WPARAM get() const { return reinterpret_cast<WPARAM>(font_); }

  // The size of a text whose lines are at most `width` wide.
  SIZE measure(const std::wstring& text, LONG width) const {
    const HDC screen = GetDC(nullptr);
    const HGDIOBJ before = SelectObject(screen, font_);
    RECT area = {0, 0, width, 0};
    DrawTextW(screen, text.c_str(), static_cast<int>(text.size()), &area,
              DT_CALCRECT | DT_WORDBREAK | DT_EDITCONTROL | DT_EXPANDTABS | DT_NOPREFIX);
    SelectObject(screen, before);
    ReleaseDC(nullptr, screen);
    return {area.right, area.bottom};
  }

 private:
  HFONT font_;
};

// The part of the screen that the window may cover.
RECT workArea() {
  MONITORINFO monitor = {};
  monitor.cbSize = sizeof monitor;
  POINT mouse = {};
  GetCursorPos(&mouse);
  if (GetMonitorInfoW(MonitorFromPoint(mouse, MONITOR_DEFAULTTOPRIMARY), &monitor) == 0)
    monitor.rcWork = {0, 0, 800, 600};
  return monitor.rcWork;
}

LONG widthOf(const RECT& area) {
  return area.right - area.left;
}
LONG heightOf(const RECT& area) {
  return area.bottom - area.top;
}

// Fills the window: the icon and the text, which scrolls when it is too high, and below them the
// buttons in rows.
class Layout {
 public:
  Layout(HWND window, const Warning& warning, const Font& font)
      : window_(window),
        font_(font),
        em_(font.measure(L"M", 1000).cy),
        area_(workArea()),
        width_(std::min(45 * em_, widthOf(area_) * 3 / 4)) {
    const std::wstring text = fullText(warning);
    const LONG textBottom = addText(text);
    for (const std::string& label : warning.buttons) sizeButton(labelText(label));
    width_ = std::clamp(std::max(textRight_ + em_, rowOfAllButtons()), 20 * em_, width_);
    while (rowsOfButtons(0, false) > heightOf(area_) / 3 && width_ < widthOf(area_) * 9 / 10)
      width_ += 5 * em_;
    for (const std::string& label : warning.buttons) makeButton(labelText(label));
    const LONG bottom = rowsOfButtons(textBottom + em_, true);
    MoveWindow(text_, textLeft_, em_, width_ - textLeft_ - em_, textBottom - em_, FALSE);
    SetWindowTextW(text_, text.c_str());  // wrapped for the final width
    placeWindow(bottom);
  }

 private:
  HWND add(const wchar_t* type, const std::wstring& text, DWORD style, int number) {
    const HWND control = CreateWindowExW(
        0, type, text.c_str(), WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, window_,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(number)), GetModuleHandleW(nullptr), nullptr);
    SendMessageW(control, WM_SETFONT, font_.get(), FALSE);
    return control;
  }

  // Returns where the text ends.
  LONG addText(const std::wstring& text) {
    const HWND icon = add(L"STATIC", L"", SS_ICON, 0);
    SendMessageW(icon, STM_SETICON,
                 reinterpret_cast<WPARAM>(LoadIconW(nullptr, MAKEINTRESOURCEW(32515))), 0);
    const LONG iconSize = GetSystemMetrics(SM_CXICON);
    MoveWindow(icon, em_, em_, iconSize, iconSize, FALSE);
    textLeft_ = 2 * em_ + iconSize;

    const LONG highest = heightOf(area_) / 2;
    const LONG widest = width_ - textLeft_ - 2 * em_ - GetSystemMetrics(SM_CXVSCROLL);
    const SIZE size = font_.measure(text, widest);
    textRight_ = width_ - em_ - (widest - size.cx);
    const DWORD scrolls = size.cy > highest ? WS_VSCROLL : 0;
    text_ = add(L"EDIT", L"", ES_MULTILINE | ES_READONLY | WS_TABSTOP | scrolls, kText);
    return em_ + std::clamp(size.cy + em_ / 2, iconSize, highest);
  }

  void sizeButton(const std::wstring& label) {
    const SIZE size = font_.measure(label, width_ - 4 * em_);
    sizes_.push_back({std::max(size.cx + 2 * em_, 6 * em_), size.cy + em_});
  }

  // The width of the window when all buttons stand in one row.
  LONG rowOfAllButtons() const {
    LONG width = 2 * em_ - em_ / 2;
    for (const SIZE& size : sizes_) width += size.cx + em_ / 2;
    return width;
  }

  void makeButton(const std::wstring& label) {
    const DWORD kind = buttons_.empty() ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
    const int number = kFirstButton + static_cast<int>(buttons_.size());
    buttons_.push_back(add(L"BUTTON", label, kind | BS_MULTILINE | WS_TABSTOP, number));
  }

  // Sets the buttons in rows from `top` on, or only measures them. Returns where they end.
  LONG rowsOfButtons(LONG top, bool places) {
    LONG left = em_;
    LONG rowHeight = 0;
    for (std::size_t i = 0; i < sizes_.size(); ++i) {
      if (left > em_ && left + sizes_[i].cx + em_ > width_) {
        top += rowHeight + em_ / 2;
        left = em_;
        rowHeight = 0;
      }
      if (places) MoveWindow(buttons_[i], left, top, sizes_[i].cx, sizes_[i].cy, FALSE);
      left += sizes_[i].cx + em_ / 2;
      rowHeight = std::max(rowHeight, sizes_[i].cy);
    }
    return top + rowHeight + em_;
  }

  // Around an interior of `width_` and `height`, in the middle of the screen.
  void placeWindow(LONG height) {
    RECT frame = {0, 0, width_, height};
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongW(window_, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongW(window_, GWL_EXSTYLE)));
    const LONG left = area_.left + (widthOf(area_) - widthOf(frame)) / 2;
    const LONG top = area_.top + (heightOf(area_) - heightOf(frame)) / 2;
    MoveWindow(window_, left, std::max(top, area_.top), widthOf(frame), heightOf(frame), TRUE);
  }

  HWND window_;
  const Font& font_;
  LONG em_;
  RECT area_;
  LONG width_;
  LONG textLeft_ = 0;
  LONG textRight_ = 0;
  HWND text_ = nullptr;
  std::vector<SIZE> sizes_;
  std::vector<HWND> buttons_;
};

struct Content {
  const Warning& warning;
  Font font;
};

void fill(HWND window, const Content& content) {
  const Layout layout(window, content.warning, content.font);
  SendMessageW(window, DM_SETDEFID, kFirstButton, 0);
  SetFocus(GetDlgItem(window, kFirstButton));
  SetWindowTextW(window, wide(content.warning.title).c_str());  // last: who finds it finds all
}

// Escape and the cross in the frame send IDCANCEL.
INT_PTR CALLBACK onMessage(HWND window, UINT message, WPARAM first, LPARAM second) noexcept {
  if (message == WM_INITDIALOG) {
    try {
      fill(window, *reinterpret_cast<const Content*>(second));
    } catch (const std::exception&) {
      EndDialog(window, -1);
    }
    return FALSE;  // the keyboard is where `fill` has set it
  }
  if (message != WM_COMMAND) return FALSE;
  const int control = LOWORD(first);
  if (control == IDCANCEL) EndDialog(window, kFirstButton - 1 + kNoButton);
  if (control >= kFirstButton && GetDlgItem(window, control) != nullptr) EndDialog(window, control);
  return TRUE;
}

}  // namespace

std::optional<int> showOnDesktop(const Warning& warning) {
  InitCommonControls();
  // A dialog without controls, and after it its empty menu, class and title.
  struct {
    DLGTEMPLATE dialog;
    WORD texts[3];
  } empty = {};
  empty.dialog.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SETFOREGROUND;
  empty.dialog.dwExtendedStyle = WS_EX_TOPMOST;
  Content content{warning, {}};
  const INT_PTR ended = DialogBoxIndirectParamW(GetModuleHandleW(nullptr), &empty.dialog, nullptr,
                                                onMessage, reinterpret_cast<LPARAM>(&content));
  if (ended < kFirstButton - 1) return std::nullopt;
  return static_cast<int>(ended) - kFirstButton + 1;
}

}  // namespace morlawarning
