#include <gtest/gtest.h>

#include <string>

#include "shell/settings.h"

namespace tess {
namespace {

std::string_view NameAt(int index) { return ConfigKeys()[static_cast<size_t>(index)].name; }

TEST(ConfigKeys, OrderAndCountArePinned) {
  ASSERT_EQ(ConfigKeys().size(), 303u);
  EXPECT_EQ(NameAt(0), "AddDescriptiveCommentBlock");
  EXPECT_EQ(NameAt(8), "MainDelay");
  EXPECT_EQ(NameAt(23), "ShowFileOpenPreview");
  EXPECT_EQ(NameAt(24), "Style000Background");
  EXPECT_EQ(NameAt(44), "Style001Background");
  EXPECT_EQ(NameAt(299), "Style019Width");
  EXPECT_EQ(NameAt(300), "Truecolour");
  EXPECT_EQ(NameAt(302), "VersionNumber");

  int style_keys = 0;
  for (const ConfigKey& key : ConfigKeys()) style_keys += key.name.starts_with("Style") ? 1 : 0;
  EXPECT_EQ(style_keys, 276);
}

TEST(ConfigKeys, GumdropsColoursStandInDescendingOrder) {
  int first = FindConfigKey("Style007FillColor5");
  ASSERT_GE(first, 0);
  EXPECT_EQ(NameAt(first - 1), "Style007Drift");
  for (int n = 4; n >= 1; --n)
    EXPECT_EQ(NameAt(first + 5 - n), "Style007FillColor" + std::to_string(n));
  EXPECT_EQ(NameAt(first + 5), "Style007FillEnable2");
  // Every other style lists them ascending.
  EXPECT_LT(FindConfigKey("Style015FillColor1"), FindConfigKey("Style015FillColor5"));
}

TEST(ConfigKeys, GeneralKeysMapToTheirNames) {
  const char* names[] = {
      "AddDescriptiveCommentBlock", "AccentCompensation", "CurrentFileName", "DefaultTextureFileName",
      "DitherBrightness", "DitherContrast", "FastRemap", "FirstRun", "MainDelay", "MainDepth",
      "MainDither", "MainEffect", "MainMaskBackground", "MainPalette", "MainRolling", "MainSteps",
      "MainSupercompress", "MatrixLibrary", "MatrixDefaultTile", "OpenPath", "PatchLevel",
      "SampleWindowKeyLine", "SolidBackground", "ShowFileOpenPreview", "Truecolour", "UpdateDelay",
      "VersionNumber"};
  ASSERT_EQ(std::size(names), static_cast<size_t>(kGeneralKeyCount));
  for (int k = 0; k < kGeneralKeyCount; ++k) EXPECT_EQ(NameAt(KeyIndex(static_cast<Key>(k))), names[k]);
}

TEST(ConfigKeys, FlagsAndItemsSitOnTheirKeysOnly) {
  for (const ConfigKey& key : ConfigKeys()) {
    SCOPED_TRACE(std::string(key.name));
    bool informational = key.name == "PatchLevel" || key.name == "VersionNumber";
    bool dialog_item = key.name == "AddDescriptiveCommentBlock" || key.name == "FastRemap";
    bool dither = key.name == "DitherBrightness" || key.name == "DitherContrast";
    EXPECT_EQ(key.file_flags, (informational ? kFileWrittenOnly : 0) | (dialog_item ? kFileDialogItem : 0));
    EXPECT_EQ((key.kind & kKindDither) != 0, dither);
    EXPECT_EQ(key.item != 0, dialog_item || dither);
  }
  EXPECT_EQ(ConfigKeys()[4].kind, kKindNumber | kKindDither);
  EXPECT_EQ(ConfigKeys()[4].item, 100);
  EXPECT_EQ(ConfigKeys()[5].item, 101);
  EXPECT_EQ(ConfigKeys()[6].item, 102);
  EXPECT_EQ(ConfigKeys()[0].item, 103);
}

TEST(ConfigKeys, KindsOfStyleParameters) {
  auto kind = [](const char* name) { return ConfigKeys()[static_cast<size_t>(FindConfigKey(name))].kind; };
  EXPECT_EQ(kind("Style016DirUp"), kKindSwitch);
  EXPECT_EQ(kind("Style010LineWest2South"), kKindSwitch);
  EXPECT_EQ(kind("Style009RandomDelay"), kKindSwitch);
  EXPECT_EQ(kind("Style003Style1"), kKindNumber);
  EXPECT_EQ(kind("Style004Scroll"), kKindNumber);
  EXPECT_EQ(kind("Style012Start"), kKindNumber);
  EXPECT_EQ(kind("MatrixDefaultTile"), kKindText);
}

TEST(ConfigKeys, LookUpByExactNameAndByStyle) {
  EXPECT_EQ(FindConfigKey("Style000Frames"), 38);
  EXPECT_EQ(FindConfigKey("Style000Frame"), -1);
  EXPECT_EQ(FindConfigKey("mainDelay"), -1);
  EXPECT_EQ(StyleKeyIndex(0, "Frames"), 38);
  EXPECT_EQ(StyleKeyIndex(19, "Width"), 299);
  EXPECT_EQ(StyleKeyIndex(7, "FillColor1"), FindConfigKey("Style007FillColor1"));
  EXPECT_EQ(StyleKeyIndex(12, "Frames"), -1);  // Machine has no frame count
  EXPECT_EQ(StyleKeyIndex(0, "Fram"), -1);
  EXPECT_EQ(StyleKeyIndex(0, ""), -1);
  EXPECT_EQ(StyleKeyIndex(20, "Frames"), -1);
  EXPECT_EQ(StyleKeyIndex(-1, "Frames"), -1);
}

TEST(Settings, StartsAtDefaultsAndResetsToThem) {
  Settings s;
  EXPECT_EQ(s.Number(Key::AddDescriptiveCommentBlock), 1);
  EXPECT_EQ(s.Number(Key::MainEffect), 5);
  EXPECT_EQ(s.Number(Key::UpdateDelay), 1000);
  EXPECT_EQ(s.Number(Key::VersionNumber), 64);
  EXPECT_EQ(s.Text(Key::CurrentFileName), "untitled.ts1");
  EXPECT_EQ(s.Text(Key::MatrixDefaultTile), "");
  EXPECT_EQ(s.StyleNumber(16, "Background"), 0x002051);
  EXPECT_EQ(s.StyleNumber(7, "FillColor5"), 0xEAE3DB);
  EXPECT_EQ(s.StyleNumber(18, "Width"), 12);

  Settings changed;
  changed.SetNumber(Key::MainDelay, -3);
  changed.SetText(Key::OpenPath, "/somewhere");
  changed.SetStyleNumber(3, "Style6", 9);
  EXPECT_NE(changed, s);
  changed.ResetToDefaults();
  EXPECT_EQ(changed, s);
}

TEST(Settings, TextIsCutAt260CharactersAndAtAZeroByte) {
  Settings s;
  s.SetText(Key::OpenPath, std::string(300, 'p'));
  EXPECT_EQ(s.Text(Key::OpenPath), std::string(260, 'p'));
  s.SetText(Key::OpenPath, std::string_view("ab\0cd", 5));
  EXPECT_EQ(s.Text(Key::OpenPath), "ab");
}

TEST(Settings, SlotsEditTheValueInPlace) {
  Settings s;
  int32_t* slot = s.NumberSlot(StyleKeyIndex(0, "Density"));
  ASSERT_NE(slot, nullptr);
  *slot = 77;
  EXPECT_EQ(s.StyleNumber(0, "Density"), 77);
  EXPECT_EQ(s.NumberSlot(KeyIndex(Key::CurrentFileName)), nullptr);
  EXPECT_EQ(s.NumberSlot(303), nullptr);
}

}  // namespace
}  // namespace tess
