#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include <kilnbase/services/FontProperties.h>

#include "tests/support/Reports.h"

TEST(FontProperties, InvalidNumbersAreReplacedAndReported) {
  using Font = FontProperties;
  const std::string size = "Size invalid fontsize %d, clamping to allowed range %d";
  const std::string weight = "Weight invalid weight given %d, setting to default %d";
  const std::string pitch = "Pitch invalid pitch given %d, setting to default %d";
  const std::string style = "Style invalid style given %d, ignoring";
  const struct {
    void (Font::*set)(int);
    int (Font::*get)() const;
    int value, result;
    std::string message;  // none for a valid value
  } table[] = {{&Font::setFontSize, &Font::getFontSize, 721, 720, size},
               {&Font::setFontSize, &Font::getFontSize, 0, 1, size},
               {&Font::setFontSize, &Font::getFontSize, std::numeric_limits<int>::min(), 1, size},
               {&Font::setFontWeight, &Font::getFontWeight, 50, 50, ""},
               {&Font::setFontWeight, &Font::getFontWeight, 75, 0, weight},
               {&Font::setFontPitch, &Font::getFontPitch, 1, 1, ""},
               {&Font::setFontPitch, &Font::getFontPitch, -1, 0, pitch},
               {&Font::setFontStyle, &Font::getFontStyle, 1, 1, ""},
               {&Font::setFontStyle, &Font::getFontStyle, 2, 3, ""},
               {&Font::setFontStyle, &Font::getFontStyle, 8, 3, style},
               {&Font::setFontStyle, &Font::getFontStyle, 0, 3, ""}};
  kilntest::RecordedReports reports;
  Font font;
  for (const auto& [set, get, value, result, message] : table) {
    (font.*set)(value);
    EXPECT_EQ(result, (font.*get)()) << message << value;
    const std::string format = "debug 0: FontProperties::setFont" + message + "\n";
    const std::string text(vxString::CString::format(format.c_str(), value, result).c_str());
    using Reports = std::vector<std::string>;
    EXPECT_EQ(message.empty() ? Reports{} : Reports{text}, reports.takeAll());
  }
}

TEST(FontProperties, AnEmptyFamilyBecomesHelvetica) {
  kilntest::RecordedReports reports;
  FontProperties font("Courier", 12, 50, 1, 1);
  EXPECT_EQ("Courier", font.getFontFamily());
  font.setFontFamily("");
  EXPECT_EQ("Helvetica", font.getFontFamily());
  const auto hasForm = testing::AllOf(
      testing::StartsWith("debug 0: FontProperties::setFontFamily invalid name given "),
      testing::HasSubstr(", setting to default "));
  EXPECT_THAT(reports.takeAll(), testing::ElementsAre(hasForm));
}

TEST(FontProperties, TheFirstAskedPropertyThatDiffersDecides) {
  const FontProperties font("Courier", 12, 50, 2, 0);
  const vxString::CString family = "Courier";
  const struct {
    FontProperties other;
    int mask, result;
  } table[] = {{{"Courier", 15, 0, 0, 0}, 1, -1},
               {{"Courier", 11, 100, 0, 0}, 255, 1},
               {{"Courier", 12, 100, 1, 0}, 255, -1},
               {{"Courier", 12, 50, 1, 1}, 255, 1},
               {{"Arial", 12, 50, 2, 1}, 255, -1},
               {{"Arial", 12, 50, 2, 1}, 23, family.compare("Arial")},
               {{"Dingbats", 12, 50, 2, 0}, 16, family.compare("Dingbats")},
               {{"Dingbats", 13, 100, 3, 1}, 0, 0},
               {font, 255, 0}};
  for (const auto& [other, mask, result] : table)
    EXPECT_EQ(result, font.compare(other, mask)) << mask;
  EXPECT_TRUE(font.isScaledEquivalent({"Courier", 99, 50, 2, 0}));
  EXPECT_FALSE(font.isScaledEquivalent({"courier", 12, 50, 2, 0}));
}

TEST(FontProperties, AssignmentReplacesEveryPropertyAndNullIsHarmless) {
  FontProperties* font = FontProperties_alloc();
  EXPECT_EQ(0, font->compare(FontProperties("Helvetica", 10, 0, 0, 0), 255));
  font->setFontStyle(4);
  const FontProperties other("Courier", 12, 50, 2, 1);
  FontProperties_assign(font, &other);
  EXPECT_EQ(0, font->compare(other, 255));
  FontProperties_setFontSize(font, 1000);
  EXPECT_EQ(720, FontProperties_getFontSize(font));
  FontProperties_free(font);
  FontProperties_free(nullptr);
  FontProperties_setFontSize(nullptr, 5);
  EXPECT_EQ(0, FontProperties_getFontSize(nullptr));
}

TEST(FontProperties, UsersAreOfferedTheStandardSizes) {
  EXPECT_THAT(FontProperties::getStandardFontSizes(),
              testing::ElementsAre(8, 9, 10, 11, 12, 14, 16, 18, 20, 22, 24, 26, 28, 36, 48, 72));
}
