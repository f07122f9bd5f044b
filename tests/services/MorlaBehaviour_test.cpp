#include <cstdlib>
#include <gtest/gtest.h>
#include <iterator>
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

struct Nameless : MorlaBehaviour {
  vxString::IString getProductIconName() override { return L""; }
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
  vxString::IString getProductIconName() override { return L"\u00fc"; }
};

class MorlaBehaviourTest : public testing::Test {
 protected:
  void TearDown() override { MorlaBehaviour::set(nullptr); }
};

using Text = std::unique_ptr<char, decltype(&std::free)>;

Text iconName() {
  return {MorlaBehaviour_getProductIconName(), &std::free};
}

}  // namespace

TEST_F(MorlaBehaviourTest, WithoutAProductTheDefaultsHold) {
  MorlaBehaviour& defaults = *MorlaBehaviour::get();
  const std::pair<bool, bool> answers[] = {
      {false, defaults.wantSinglePerspWindow()},
      {false, defaults.isMultipleKilnSessionsAllowed()},
      {true, defaults.userInformationEnabled()},
      {true, defaults.supportSingleStage()},
      {false, defaults.documentSettingsOverrideSessionSettings()},
      {false, defaults.largeModelingWindowSize()},
      {false, defaults.paintEnabled()},
      {false, defaults.enablePaintUI()},
      {false, defaults.paintOnOverlaysOnly()},
      {false, defaults.paintAddBookmarkToOverlays()},
      {false, defaults.autoKilnWindows()},
      {true, defaults.splashAtStartup()},
      {false, defaults.enableNukeAllOnRetrieve()},
      {true, defaults.saveOnExit()},
      {true, defaults.hardwareReflectionsEnabled()}};
  for (std::size_t i = 0; i < std::size(answers); ++i) {
    EXPECT_EQ(answers[i].first, answers[i].second) << i;
  }
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
  MorlaBehaviour::set(new Numbered);
  EXPECT_TRUE(MorlaBehaviour_wantSinglePerspWindow());
  EXPECT_TRUE(MorlaBehaviour_documentSettingsOverrideSessionSettings());
  EXPECT_TRUE(MorlaBehaviour_largeModelingWindowSize());
  EXPECT_TRUE(MorlaBehaviour_autoKilnWindows());
  EXPECT_TRUE(MorlaBehaviour_enablePaintUI());
  EXPECT_TRUE(MorlaBehaviour_enableNukeAllOnRetrieve());
  EXPECT_FALSE(MorlaBehaviour_saveOnExit());
  EXPECT_FALSE(MorlaBehaviour_paintEnabled());
  EXPECT_STREQ("14", MorlaBehaviour_getUserPrefsFileName());
  EXPECT_STREQ("16", MorlaBehaviour_getBrowserPrefsFileName());
  EXPECT_STREQ("\xc3\xbc", iconName().get());
  EXPECT_EQ(19.0, MorlaBehaviour_modelingWindowScale());
  MorlaBehaviour::set(new Nameless);
  EXPECT_EQ(nullptr, MorlaBehaviour_getProductIconName());
  EXPECT_FALSE(MorlaBehaviour_autoKilnWindows());
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
