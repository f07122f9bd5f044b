#include <cstdarg>
#include <new>

#include <kilnbase/detail/assert.h>
#include <kilnbase/util/mr_warning.h>
#include <vx/Process.h>
#include <vx/SysInfo.h>

using vxKilnBase::MorlaWarningParams;
using vxString::CString;

namespace {

constexpr int kNoButton = -1;

using Command = vx::vector<CString>;

void addOption(Command& command, const char* option, const CString& value) {
  command.push_back(option);
  command.push_back(value);
}

Command commandFor(const MorlaWarningParams& warning) {
  Command command = {APP_getBinaryPath("morlaWarning")};
  if (!warning.title.isEmpty()) addOption(command, "-t", warning.title);
  for (const CString& line : warning.messages) addOption(command, "-s", line);
  if (!warning.extra.isEmpty()) addOption(command, "-f", warning.extra);
  for (const CString& label : warning.buttons) addOption(command, "-b", label);
  return command;
}

void addTagged(MorlaWarningParams& warning, int tag, std::va_list values) {
  for (; tag >= MR_WARNING_MESSAGE && tag < MR_WARNING_END; tag = va_arg(values, int)) {
    const CString text = va_arg(values, const char*);
    if (tag == MR_WARNING_MESSAGE) warning.messages.push_back(text);
    if (tag == MR_WARNING_BUTTON) warning.buttons.push_back(text);
    if (tag == MR_WARNING_EXTRA) warning.extra = text;
    if (tag == MR_WARNING_TITLE) warning.title = text;
  }
}

// C callers cannot catch std::bad_alloc: without memory no button is chosen.
int showTagged(int count, const char** labels, int tag, std::va_list values) noexcept {
  try {
    KILN_ASSERT(count <= 0 || labels != nullptr);
    MorlaWarningParams warning;
    for (int i = 0; labels != nullptr && i < count; ++i) warning.buttons.push_back(labels[i]);
    addTagged(warning, tag, values);
    return MR_warning(warning);
  } catch (const std::bad_alloc&) {
    return kNoButton;
  }
}

}  // namespace

int MR_warning_buttons(int count, const char** labels, int tag, ...) {
  std::va_list values;
  va_start(values, tag);
  const int button = showTagged(count, labels, tag, values);
  va_end(values);
  return button;
}

int MR_warning_ok(const char* message) {
  return MR_warning(MR_WARNING_MESSAGE, message, MR_WARNING_BUTTON, "OK", MR_WARNING_END);
}

int MR_warning(const MorlaWarningParams& warning) {
  const bool hasText = !warning.messages.empty() || !warning.extra.isEmpty();
  if (!hasText || warning.buttons.empty()) return kNoButton;
  const int button = vxOS::ProcessManager::getInstance().startSync(commandFor(warning)).value_or(0);
  const auto count = static_cast<int>(warning.buttons.size());
  return button >= 1 && button <= count ? button - 1 : kNoButton;
}

int MR_warning(int tag, ...) {
  std::va_list values;
  va_start(values, tag);
  const int button = showTagged(0, nullptr, tag, values);
  va_end(values);
  return button;
}
