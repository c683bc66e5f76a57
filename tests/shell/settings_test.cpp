// The settings object and its key table: general keys name their entries,
// look-ups by name and by style, defaults, text limits and slots.
#include <gtest/gtest.h>

#include <string>

#include "shell/settings.h"

namespace tess {
namespace {

// The Key enumeration and the table are written separately: a key must name
// its own entry.
TEST(ConfigKeys, GeneralKeysMapToTheirNames) {
  const char* names[] = {
      "AddDescriptiveCommentBlock", "AccentCompensation", "CurrentFileName", "DefaultTextureFileName",
      "DitherBrightness", "DitherContrast", "FastRemap", "FirstRun", "MainDelay", "MainDepth",
      "MainDither", "MainEffect", "MainMaskBackground", "MainPalette", "MainRolling", "MainSteps",
      "MainSupercompress", "MatrixLibrary", "MatrixDefaultTile", "OpenPath", "PatchLevel",
      "SampleWindowKeyLine", "SolidBackground", "ShowFileOpenPreview", "Truecolour", "UpdateDelay",
      "VersionNumber"};
  ASSERT_EQ(std::size(names), static_cast<size_t>(kGeneralKeyCount));
  for (int k = 0; k < kGeneralKeyCount; ++k)
    EXPECT_EQ(ConfigKeys()[static_cast<size_t>(KeyIndex(static_cast<Key>(k)))].name, names[k]);
}

TEST(ConfigKeys, LookUpByExactNameAndByStyle) {
  EXPECT_EQ(FindConfigKey("Style000Frames"), 38);
  EXPECT_EQ(FindConfigKey("Style000Frame"), -1);
  EXPECT_EQ(FindConfigKey("mainDelay"), -1);
  EXPECT_EQ(StyleKeyIndex(0, "Frames"), 38);
  EXPECT_EQ(StyleKeyIndex(19, "Width"), 299);
  EXPECT_EQ(StyleKeyIndex(12, "Frames"), -1);  // Machine has no frame count
  EXPECT_EQ(StyleKeyIndex(0, ""), -1);
  EXPECT_EQ(StyleKeyIndex(20, "Frames"), -1);
  EXPECT_EQ(StyleKeyIndex(-1, "Frames"), -1);
}

TEST(Settings, StartsAtDefaultsResetsToThemAndEditsInPlace) {
  Settings s;
  EXPECT_EQ(s.Number(Key::MainEffect), 5);
  EXPECT_EQ(s.Text(Key::CurrentFileName), "untitled.ts1");
  EXPECT_EQ(s.StyleNumber(16, "Background"), 0x002051);

  Settings changed;
  changed.SetNumber(Key::MainDelay, -3);
  changed.SetText(Key::OpenPath, "/somewhere");
  *changed.NumberSlot(StyleKeyIndex(0, "Density")) = 77;
  EXPECT_EQ(changed.StyleNumber(0, "Density"), 77);
  EXPECT_NE(changed, s);
  changed.ResetToDefaults();
  EXPECT_EQ(changed, s);
  EXPECT_EQ(s.NumberSlot(KeyIndex(Key::CurrentFileName)), nullptr);  // text has no number slot
  EXPECT_EQ(s.NumberSlot(kConfigKeyCount), nullptr);

  s.SetText(Key::OpenPath, std::string(300, 'p'));
  EXPECT_EQ(s.Text(Key::OpenPath), std::string(260, 'p'));
  s.SetText(Key::OpenPath, std::string_view("ab\0cd", 5));
  EXPECT_EQ(s.Text(Key::OpenPath), "ab");
}

}  // namespace
}  // namespace tess
