#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <utility>

#include <kilnbase/services/MorlaBehaviour.h>

namespace {

struct Painter : MorlaBehaviour {
  explicit Painter(int* alive) : alive_(alive) { ++*alive_; }
  ~Painter() override { --*alive_; }
  bool paintEnabled() const override { return true; }
  int* alive_;
};

// Answers every question of the flat functions unlike the defaults, but for paintEnabled.
struct Numbered : MorlaBehaviour {
  bool wantSinglePerspWindow() override { return true; }
  bool documentSettingsOverrideSessionSettings() override { return true; }
  bool largeModelingWindowSize() override { return true; }
  bool autoKilnWindows() override { return true; }
  bool enablePaintUI() const override { return true; }
  bool enableNukeAllOnRetrieve() const override { return true; }
  bool saveOnExit() const override { return false; }
  const char* getUserPrefsFileName() const override { return "14"; }
  const char* getBrowserPrefsFileName() override { return "16"; }
  double modelingWindowScale() override { return 19.0; }
  vxString::IString getProductIconName() override { return icon; }
  vxString::IString icon = L"\u00fc";
};

class MorlaBehaviourTest : public testing::Test {
 protected:
  void TearDown() override { MorlaBehaviour::set(nullptr); }
};

using Text = std::unique_ptr<char, decltype(&std::free)>;

// The place of a virtual function in the table of its class: a pointer to the function begins with
// 1 + 8 * place in the Itanium C++ ABI.
template <class Function>
std::size_t slotOf(Function function) {
  std::size_t words[2];
  static_assert(sizeof function == sizeof words);
  std::memcpy(words, &function, sizeof words);
  return (words[0] - 1) / sizeof(void*);
}

Text iconName() {
  return {MorlaBehaviour_getProductIconName(), &std::free};
}

}  // namespace

TEST_F(MorlaBehaviourTest, WithoutAProductTheDefaultsHold) {
  MorlaBehaviour& defaults = *MorlaBehaviour::get();
  const bool on[] = {defaults.userInformationEnabled(), defaults.supportSingleStage(),
                     defaults.splashAtStartup(), defaults.saveOnExit(),
                     defaults.hardwareReflectionsEnabled()};
  EXPECT_THAT(on, testing::Each(true));
  const bool off[] = {defaults.wantSinglePerspWindow(),
                      defaults.isMultipleKilnSessionsAllowed(),
                      defaults.documentSettingsOverrideSessionSettings(),
                      defaults.largeModelingWindowSize(),
                      defaults.paintEnabled(),
                      defaults.enablePaintUI(),
                      defaults.paintOnOverlaysOnly(),
                      defaults.paintAddBookmarkToOverlays(),
                      defaults.autoKilnWindows(),
                      defaults.enableNukeAllOnRetrieve()};
  EXPECT_THAT(off, testing::Each(false));
  const std::pair<const char*, vxString::CString> names[] = {
      {"Morla", defaults.getProductPrefix().asMultibyte()},
      {"Morla", iconName().get()},
      {"UserPrefs", defaults.getUserPrefsFileName()},
      {"user_options", defaults.getUserOptionsFileName()},
      {".MorlaBrowserPrefs", defaults.getBrowserPrefsFileName()},
      {"Help.hta", defaults.getHelpFileName()},
      {"MorlaPrefs.scm", defaults.getMorlaPrefsFilename()}};
  for (const auto& [expected, name] : names) EXPECT_EQ(expected, name);
  EXPECT_EQ(1.0, MorlaBehaviour_modelingWindowScale());
}

TEST_F(MorlaBehaviourTest, EveryFlatFunctionAsksTheInstalledObject) {
  auto* const product = new Numbered;
  MorlaBehaviour::set(product);
  const bool on[] = {MorlaBehaviour_wantSinglePerspWindow(),
                     MorlaBehaviour_documentSettingsOverrideSessionSettings(),
                     MorlaBehaviour_largeModelingWindowSize(),
                     MorlaBehaviour_autoKilnWindows(),
                     MorlaBehaviour_enablePaintUI(),
                     MorlaBehaviour_enableNukeAllOnRetrieve()};
  EXPECT_THAT(on, testing::Each(true));
  EXPECT_FALSE(MorlaBehaviour_saveOnExit());
  EXPECT_FALSE(MorlaBehaviour_paintEnabled());
  EXPECT_STREQ("14", MorlaBehaviour_getUserPrefsFileName());
  EXPECT_STREQ("16", MorlaBehaviour_getBrowserPrefsFileName());
  EXPECT_STREQ("\xc3\xbc", iconName().get());
  EXPECT_EQ(19.0, MorlaBehaviour_modelingWindowScale());
  product->icon = L"";
  EXPECT_EQ(nullptr, MorlaBehaviour_getProductIconName());
}

TEST_F(MorlaBehaviourTest, TheInstalledObjectLivesUntilAnotherTakesItsPlace) {
  int alive = 0;
  auto* const painter = new Painter(&alive);
  MorlaBehaviour::set(painter);
  MorlaBehaviour::set(painter);
  EXPECT_EQ(1, alive);
  EXPECT_TRUE(MorlaBehaviour_paintEnabled());
  MorlaBehaviour::set(new Painter(&alive));
  EXPECT_EQ(1, alive);
  MorlaBehaviour::set(nullptr);
  EXPECT_EQ(0, alive);
  EXPECT_FALSE(MorlaBehaviour_paintEnabled());
  MorlaBehaviour::set(new Painter(&alive));
  EXPECT_TRUE(MorlaBehaviour_paintEnabled());
}

TEST_F(MorlaBehaviourTest, TheOrderOfTheFunctionsIsTheBinaryInterface) {
  using Asked = MorlaBehaviour;
  const std::size_t slots[] = {slotOf(&Asked::wantSinglePerspWindow),
                               slotOf(&Asked::isMultipleKilnSessionsAllowed),
                               slotOf(&Asked::getProductPrefix),
                               slotOf(&Asked::getProductIconName),
                               slotOf(&Asked::userInformationEnabled),
                               slotOf(&Asked::supportSingleStage),
                               slotOf(&Asked::documentSettingsOverrideSessionSettings),
                               slotOf(&Asked::largeModelingWindowSize),
                               slotOf(&Asked::paintEnabled),
                               slotOf(&Asked::enablePaintUI),
                               slotOf(&Asked::paintOnOverlaysOnly),
                               slotOf(&Asked::paintAddBookmarkToOverlays),
                               slotOf(&Asked::autoKilnWindows),
                               slotOf(&Asked::getUserPrefsFileName),
                               slotOf(&Asked::getUserOptionsFileName),
                               slotOf(&Asked::getBrowserPrefsFileName),
                               slotOf(&Asked::getHelpFileName),
                               slotOf(&Asked::getMorlaPrefsFilename),
                               slotOf(&Asked::modelingWindowScale),
                               slotOf(&Asked::splashAtStartup),
                               slotOf(&Asked::enableNukeAllOnRetrieve),
                               slotOf(&Asked::saveOnExit),
                               slotOf(&Asked::hardwareReflectionsEnabled)};
  std::size_t expected = 2;  // after the two entries of the destructor
  for (const std::size_t slot : slots) EXPECT_EQ(expected++, slot);
}
