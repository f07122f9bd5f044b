#include <cstddef>
#include <new>
#include <utility>

#include <kilnbase/detail/heapText.h>
#include <kilnbase/services/MorlaBehaviour.h>

using vxString::CString;
using vxString::IString;

namespace {

constinit MorlaBehaviour* installed = nullptr;

// Memory for the defaults, so that the first question cannot fail. Nobody destroys the object.
alignas(MorlaBehaviour) std::byte defaultsMemory[sizeof(MorlaBehaviour)];

bool isDefaults(const MorlaBehaviour* behaviour) {
  return static_cast<const void*>(behaviour) == defaultsMemory;
}

}  // namespace

MorlaBehaviour::MorlaBehaviour() = default;
MorlaBehaviour::~MorlaBehaviour() = default;

MorlaBehaviour* MorlaBehaviour::get() {
  if (!installed) installed = new (defaultsMemory) MorlaBehaviour;
  return installed;
}

// The old object is no longer installed when its destructor runs.
void MorlaBehaviour::set(MorlaBehaviour* behaviour) {
  MorlaBehaviour* const old = std::exchange(installed, behaviour);
  if (old != behaviour && !isDefaults(old)) delete old;
}

bool MorlaBehaviour::wantSinglePerspWindow() {
  return false;
}

bool MorlaBehaviour::isMultipleKilnSessionsAllowed() {
  return false;
}

IString MorlaBehaviour::getProductPrefix() {
  return L"Morla";
}

IString MorlaBehaviour::getProductIconName() {
  return L"Morla";
}

bool MorlaBehaviour::userInformationEnabled() {
  return true;
}

bool MorlaBehaviour::supportSingleStage() {
  return true;
}

bool MorlaBehaviour::documentSettingsOverrideSessionSettings() {
  return false;
}

bool MorlaBehaviour::largeModelingWindowSize() {
  return false;
}

bool MorlaBehaviour::paintEnabled() const {
  return false;
}

bool MorlaBehaviour::enablePaintUI() const {
  return false;
}

bool MorlaBehaviour::paintOnOverlaysOnly() const {
  return false;
}

bool MorlaBehaviour::paintAddBookmarkToOverlays() const {
  return false;
}

bool MorlaBehaviour::autoKilnWindows() {
  return false;
}

const char* MorlaBehaviour::getUserPrefsFileName() const {
  return "UserPrefs";
}

const char* MorlaBehaviour::getUserOptionsFileName() {
  return "user_options";
}

const char* MorlaBehaviour::getBrowserPrefsFileName() {
  return ".MorlaBrowserPrefs";
}

const char* MorlaBehaviour::getHelpFileName() {
  return "Help.hta";
}

CString MorlaBehaviour::getMorlaPrefsFilename() {
  return "MorlaPrefs.scm";
}

double MorlaBehaviour::modelingWindowScale() {
  return 1.0;
}

bool MorlaBehaviour::splashAtStartup() const {
  return true;
}

bool MorlaBehaviour::enableNukeAllOnRetrieve() const {
  return false;
}

bool MorlaBehaviour::saveOnExit() const {
  return true;
}

bool MorlaBehaviour::hardwareReflectionsEnabled() const {
  return true;
}

bool MorlaBehaviour_autoKilnWindows() {
  return MorlaBehaviour::get()->autoKilnWindows();
}

bool MorlaBehaviour_documentSettingsOverrideSessionSettings() {
  return MorlaBehaviour::get()->documentSettingsOverrideSessionSettings();
}

bool MorlaBehaviour_enableNukeAllOnRetrieve() {
  return MorlaBehaviour::get()->enableNukeAllOnRetrieve();
}

bool MorlaBehaviour_enablePaintUI() {
  return MorlaBehaviour::get()->enablePaintUI();
}

bool MorlaBehaviour_largeModelingWindowSize() {
  return MorlaBehaviour::get()->largeModelingWindowSize();
}

bool MorlaBehaviour_paintEnabled() {
  return MorlaBehaviour::get()->paintEnabled();
}

bool MorlaBehaviour_saveOnExit() {
  return MorlaBehaviour::get()->saveOnExit();
}

bool MorlaBehaviour_wantSinglePerspWindow() {
  return MorlaBehaviour::get()->wantSinglePerspWindow();
}

double MorlaBehaviour_modelingWindowScale() {
  return MorlaBehaviour::get()->modelingWindowScale();
}

const char* MorlaBehaviour_getBrowserPrefsFileName() {
  return MorlaBehaviour::get()->getBrowserPrefsFileName();
}

const char* MorlaBehaviour_getUserPrefsFileName() {
  return MorlaBehaviour::get()->getUserPrefsFileName();
}

char* MorlaBehaviour_getProductIconName() try {
  const CString name = MorlaBehaviour::get()->getProductIconName().asMultibyte();
  return name.isEmpty() ? nullptr : vxKilnBase::detail::heapText(name.view());
} catch (const std::bad_alloc&) {
  return nullptr;
}
