#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>

#include <kilnbase/util/mr_filename.h>
#include <vx/Memory.h>
#include <vx/PixName.h>

#include "tests/support/Project.h"

using kilntest::Project;

static_assert(sizeof(MR_Filename) == 32 && !std::is_copy_constructible_v<MR_Filename>);

namespace {

// What a call of Filename finds and stores. The text must fit into 264 characters.
struct Found {
  explicit Found(MR_Filename& file) {
    std::string out(264 + 16, '#');
    result = file.Filename(out.data());
    EXPECT_EQ(std::string(16, '#'), out.substr(264));
    path = out.c_str();
  }

  int result;
  std::string path;
};

std::string imageFile;   // what the image library answers; "" for null
std::string askedImage;  // what it was asked for

char* expandImage(char* name, int flag) {
  askedImage = name + std::to_string(flag);
  if (imageFile.empty()) return nullptr;
  void* const copy = MA_malloc(imageFile.size() + 1, __LINE__, __FILE__);
  return static_cast<char*>(std::memcpy(copy, imageFile.c_str(), imageFile.size() + 1));
}

}  // namespace

TEST(Filename, ANameIsTakenApartAtTheDotInFrontOfItsFrame) {
  constexpr int kLargest = std::numeric_limits<int>::max();
  const struct {
    const char *name, *base;
    int sequence, frame, width;
  } table[] = {{"shot.0007", "shot", 1, 7, 3},
               {"shot.00007", "shot", 1, 7, 4},
               {"shot.0000", "shot", 1, 0, 4},
               {"name.0012.Z", "name", 1, 12, 3},
               {"name.00000.Z", "name", 1, 0, 5},
               {"a.b.12x", "a.b", 1, 12, 3},
               {"a/b.1/c", "a/b.1/c", 0, -1, 3},
               {"a\\b.1\\c", "a\\b.1\\c", 0, -1, 3},
               {"a.5/b.Z", "a", 1, 5, 3},
               {".5", ".5", 0, -1, 3},
               {".Z", ".Z", 0, -1, 3},
               {"a.-5", "a.-5", 0, -1, 3},
               {"", "", 0, -1, 3},
               {"a.99999999999999999999", "a", 1, kLargest, 3}};
  for (const auto& [name, base, sequence, frame, width] : table) {
    const MR_Filename file(name, WIRE_DATA);
    EXPECT_STREQ(base, file.BaseFilename());
    EXPECT_STREQ(sequence != 0 ? nullptr : base, file.name);
    EXPECT_EQ(sequence, file.sequence) << name;
    EXPECT_EQ(frame, file.frame) << name;
    EXPECT_EQ(width, file.width) << name;
  }
}

TEST(Filename, SettingReplacesTheNameExceptByItself) {
  MR_Filename file;
  EXPECT_EQ(PIX_DATA, file.type);
  EXPECT_STREQ("", file.BaseFilename());
  EXPECT_EQ(1, file.setFilename("plain"));
  EXPECT_EQ(-1, file.setFrame(5));
  EXPECT_EQ(1, file.setFilename("plain"));
  EXPECT_EQ(1, file.sequence);
  EXPECT_EQ(5, file.setFrame(5));
  EXPECT_EQ(1, file.setFilename("shot.00009"));
  EXPECT_EQ(1, file.setFilename(file.basename));
  EXPECT_STREQ("shot", file.BaseFilename());
  EXPECT_EQ(0, file.sequence);
  EXPECT_EQ(9, file.setFrame(9));
  EXPECT_EQ(0, file.sequence);
  EXPECT_EQ(4, file.width);
  EXPECT_EQ(1, file.setFilename(nullptr));
  EXPECT_EQ(nullptr, file.BaseFilename());
  EXPECT_EQ(0, file.CheckStatus());
}

TEST(Filename, AFileIsFoundUnderEachFormInTurn) {
  const Project project;
  for (const char* name : {"plain", "packed.Z", "f.007", "f.0007", "g.00003.Z", "h.12", "n.-04"}) {
    project.makeFile(std::string("option/") + name);
  }
  const struct {
    const char *name, *found;
  } table[] = {{"plain", "plain"},         {"\"plain\"", "plain"}, {"packed", "packed.Z"},
               {"f.7", "f.007"},           {"f.0007", "f.007"},    {"g.00003", "g.00003.Z"},
               {"g.00003.Z", "g.00003.Z"}, {"h.0012", "h.12"}};
  for (const auto& [name, found] : table) {
    MR_Filename file(name, OPTION_DATA);
    const Found call(file);
    EXPECT_EQ(1, call.result) << name;
    EXPECT_EQ(project.path("option\\") + found, call.path);
  }
  MR_Filename negative("n.1", OPTION_DATA);
  negative.setFrame(-4);
  EXPECT_EQ(1, negative.CheckStatus());
  EXPECT_EQ(0, negative.Filename(nullptr));
}

TEST(Filename, WhatIsNotFoundLeavesTheLastPath) {
  const Project project;
  project.makeFile("plot/deep.00001");
  const struct {
    const char* name;
    int type;
    const char* path;
  } table[] = {{"none", PLOT_DATA, "plot\\none.Z"}, {"deep.0001", PLOT_DATA, "plot\\deep"},
               {"a.png", PIX_DATA, "pix\\a.png"},   {"a.png", MASK_DATA, "mask\\a.png"},
               {"shot.7", PIX_DATA, "pix\\shot"},   {"a.png", SOURCEPIX_DATA, "pix\\a.png.Z"}};
  for (const auto& [name, type, path] : table) {
    MR_Filename file(name, type);
    const Found call(file);
    EXPECT_EQ(0, call.result) << name;
    EXPECT_EQ(project.path(path), call.path);
  }
  MR_Filename plain("plain", PLOT_DATA);
  plain.setFrame(5);
  EXPECT_EQ(0, Found(plain).result);
  EXPECT_EQ(1, plain.setFilename(nullptr));
  EXPECT_EQ("", Found(plain).path);
}

TEST(Filename, TheImageLibraryKnowsTheFilesOfImagesAndMasks) {
  const Project project;
  project.makeFile("pix/real.7.tif");
  rtbInit_Ar_expand_pixname(expandImage);
  MR_Filename shot("shot.7", MASK_DATA), other("shot.7", SOURCEPIX_DATA);
  imageFile = project.path("pix\\real.7.tif");
  imageFile.insert(imageFile.rfind('\\'), 259 - imageFile.size(), '\\');
  const Found call(shot);
  EXPECT_EQ(1, call.result);
  EXPECT_EQ(imageFile, call.path);
  EXPECT_EQ(project.path("mask\\shot.71"), askedImage);
  EXPECT_EQ(0, other.CheckStatus());
  const std::string longer = std::string(imageFile).insert(imageFile.rfind('\\'), "\\");
  for (const std::string& answer : {std::string(), project.path("pix\\lost.tif"), longer}) {
    imageFile = answer;
    EXPECT_EQ(0, Found(shot).result) << answer;
  }
  rtbInit_Ar_expand_pixname(nullptr);
}

TEST(Filename, NamesWithoutRoomAreNotFound) {
  const Project project;
  const std::string folder = project.path("wire\\");
  const std::string full(260 - folder.size(), 'x');
  const std::string zeros = "f." + std::string(5000, '0') + "1";
  const struct {
    std::string name, path;
  } table[] = {{full, folder + full + ".Z"},       {full + "x", folder},
               {std::string(5000, 'x'), folder},   {std::string(5000, 'x') + ".1", folder},
               {"\\" + std::string(260, 'x'), ""}, {zeros, folder + "f"}};
  for (const auto& [name, path] : table) {
    MR_Filename file(name.c_str(), WIRE_DATA);
    const Found call(file);
    EXPECT_EQ(0, call.result);
    EXPECT_EQ(path, call.path);
  }
}

TEST(Filename, NoFrameNarrowsTheRange) {
  MR_Filename file("shot.7", PIX_DATA);
  int first = 0, last = 0, count = 1;
  EXPECT_EQ(1, file.getFrameRange(&first, &last, &count));
  EXPECT_EQ(-1, first);
  EXPECT_EQ(2147483647, last);
  EXPECT_EQ(0, count);
}

TEST(Filename, DebugShowsThePathOnlyOfAFileThatIsNotThere) {
  const Project project;
  project.makeFile("anim/here.1");
  const auto shown = [](const char* name, int type, int frame) {
    MR_Filename file(name, type);
    file.setFrame(frame);
    testing::internal::CaptureStdout();
    file.debug();
    return testing::internal::GetCapturedStdout();
  };
  EXPECT_EQ(
      "TYPE: MR_Filename\n  Filename:  NULL\n  Basename:  here\n  Expanded:  (none)\n"
      "  Sequence:  YES\n  Type:      ANIM_DATA\n  Frame:     1\n",
      shown("here.1", ANIM_DATA, 1));
  EXPECT_EQ("TYPE: MR_Filename\n  Filename:  \"lost\"\n  Basename:  NULL\n  Expanded:  " +
                project.path("canvas\\lost.Z") +
                "\n  Sequence:  NO\n  Type:      UNKNOWN\n  Frame:     -1\n",
            shown("\"lost\"", 28, -1));
  std::string types;
  for (int type = 0; type <= 47; ++type) {
    const std::string text = shown("x", type, -1);
    const std::size_t name = text.find("Type: ") + 11;
    types += text.substr(name, text.find('\n', name) - name) + ' ';
  }
  EXPECT_EQ(
      "ANIM_DATA PIX_DATA SDL_DATA WIRE_DATA MASK_DATA PIXAR_DATA DIR_DATA PROJ_DATA ANY_DATA "
      "MISC_DATA DEFAULT_DATA ANYDIR_DATA OPTION_DATA FBI_DATA BROWSE_DATA PLOT_DATA SLA_DATA "
      "SHADER_DATA TEXTURE_DATA TEXT_DATA STAGE_DATA SOURCEPIX_DATA DEBUG_DATA UNKNOWN "
      "WINDOW_DATA RIB_DATA LIGHT_DATA ENVIRONMENT_DATA UNKNOWN UNKNOWN UNKNOWN UNKNOWN UNKNOWN "
      "UNKNOWN UNKNOWN UNKNOWN UNKNOWN SOUND_DATA UNKNOWN UNKNOWN UNKNOWN UNKNOWN UNKNOWN "
      "UNKNOWN UNKNOWN UNKNOWN UNKNOWN UNKNOWN ",
      types);
}
