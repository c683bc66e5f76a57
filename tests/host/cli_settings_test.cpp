// From command line to settings: key resolution (full and short, any case),
// value checking by the editing control's kind and range, effect and palette
// names, the order in which options apply, and the dialog the build reads.
#include "host/cli/cli_settings.h"

#include <gtest/gtest.h>

#include "shell/main_dialog_ids.h"
#include "styles/style_table.h"
#include "tests/host/cli_test_styles.h"

namespace tess::cli {
namespace {

constexpr int kGridlock = 5;  // list index; style number 016

class SetTest : public ::testing::Test {
 protected:
  SetTest() { settings.SetNumber(Key::MainEffect, kGridlock); }

  bool Set(std::string_view assignment) { return ApplySet(assignment, settings, StyleTable(), &failure); }
  int32_t Value(std::string_view key) { return settings.NumberAt(FindConfigKey(key)); }

  Settings settings;
  Failure failure;
};

// Full keys in any case, short keys of the selected effect; values checked
// as their control checks them.
TEST_F(SetTest, KeysResolveAndValuesAreCheckedAsTheirControlChecksThem) {
  const std::pair<const char*, std::pair<const char*, int32_t>> accepted[] = {
      {"style016glare=10", {"Style016Glare", 10}},
      {"shadowoffset=3", {"Style016ShadowOffset", 3}},
      {"Style000Frames=32", {"Style000Frames", 32}},  // another effect's key, by its full name
      {"Glare=0x10", {"Style016Glare", 16}},
      {"DirUp=off", {"Style016DirUp", 0}},
      {"DirUp=YES", {"Style016DirUp", 1}},
      {"Background=0x00FF00", {"Style016Background", 0x00FF00}},
      {"MainPalette=256 gray levels", {"MainPalette", 8}},
  };
  for (const auto& [assignment, expected] : accepted) {
    ASSERT_TRUE(Set(assignment)) << assignment << ": " << failure.message;
    EXPECT_EQ(Value(expected.first), expected.second) << assignment;
  }
  ASSERT_TRUE(Set("CurrentFileName=night sky.ts1"));
  EXPECT_EQ(settings.Text(Key::CurrentFileName), "night sky.ts1");
  // #RRGGBB keeps the top byte that belongs to a fill description.
  settings.SetNumberAt(FindConfigKey("Style016FillColor1"), static_cast<int32_t>(0x7F000000));
  ASSERT_TRUE(Set("FillColor1=#102030")) << failure.message;
  EXPECT_EQ(static_cast<uint32_t>(Value("Style016FillColor1")), 0x7F302010u);

  for (const char* refused : {"Glare=256", "Glare=-1", "Glare=", "Glare=12abc", "DirUp=2", "Background=#GG0000",
                              "MainDelay=1001", "MainEffect=20", "MainSupercompress=2"})
    EXPECT_FALSE(Set(refused)) << refused;
  EXPECT_FALSE(Set(std::string("OpenPath=") + std::string(261, 'x')));
  EXPECT_FALSE(Set("Glare=256"));
  EXPECT_NE(failure.message.find("from 0 to 255"), std::string::npos) << failure.message;
  // The selected effect decides what a short key means.
  settings.SetNumber(Key::MainEffect, 1);  // Bubbles, style 000
  EXPECT_FALSE(Set("Glare=1"));
  EXPECT_EQ(failure.exit_code, kExitUsage);
  EXPECT_NE(failure.message.find("unknown setting 'Glare'"), std::string::npos);
}

TEST(CliNames, EffectsAndPalettesByIndexOrForgivingName) {
  std::span<const StyleEntry> table = StyleTable();
  EXPECT_EQ(FindEffect("13", table), 13);
  EXPECT_EQ(FindEffect("phasers-on-stun", table), 13);
  EXPECT_EQ(FindEffect("NEURAL_NETWORK", table), 11);
  EXPECT_EQ(FindEffect("20", table), -1);
  EXPECT_EQ(FindEffect("-1", table), -1);
  EXPECT_EQ(FindEffect("Bubble", table), -1);
  int choice = -1;
  bool adaptive = false;
  EXPECT_TRUE(FindPalette("216-COLOR SAFE", &choice, &adaptive));
  EXPECT_EQ(choice, 5);
  EXPECT_FALSE(adaptive);
  EXPECT_TRUE(FindPalette("adaptive", &choice, &adaptive));
  EXPECT_TRUE(adaptive);
  EXPECT_FALSE(FindPalette("9", &choice, &adaptive));
  EXPECT_FALSE(FindPalette("websafe", &choice, &adaptive));
}

// Settings after applying the options of `words` to the defaults.
Settings Apply(const std::vector<std::string>& words, SessionChoices* session = nullptr) {
  CliArgs parsed;
  std::string error;
  EXPECT_TRUE(ParseArgs(words, &parsed, &error)) << error;
  Settings settings;
  SessionChoices own;
  Failure failure;
  EXPECT_TRUE(ApplyBuildOptions(parsed, settings, StyleTable(), session ? session : &own, &failure))
      << failure.message;
  return settings;
}

// Palette options switch true colour off unless it is asked for; the effect
// applies first, then the options, then each --set in turn.
TEST(CliBuildOptions, PaletteOptionsTurnTrueColourOffAndOptionsApplyInOrder) {
  for (const char* option : {"--dither", "--custom-palette", "--supercompress"})
    EXPECT_EQ(Apply({"render", option}).Number(Key::Truecolour), 0) << option;
  EXPECT_EQ(Apply({"render", "--palette", "3"}).Number(Key::Truecolour), 0);
  EXPECT_EQ(Apply({"render", "--dither", "--true-color"}).Number(Key::Truecolour), 1);
  EXPECT_EQ(Apply({"render", "--no-dither"}).Number(Key::Truecolour), 1);  // no request for a palette

  SessionChoices session;
  Settings settings = Apply({"render", "-s", "Frames=9", "-e", "Gridlock", "-d", "5", "-s", "MainDelay=7", "-s",
                             "MainEffect=2", "-s", "Frames=10", "--palette", "adaptive"},
                            &session);
  EXPECT_EQ(settings.StyleNumber(16, "Frames"), 9);   // Gridlock's, before MainEffect changed
  EXPECT_EQ(settings.StyleNumber(13, "Frames"), 10);  // then Carpet's
  EXPECT_EQ(settings.Number(Key::MainDelay), 7);
  EXPECT_TRUE(session.custom_palette);
  EXPECT_EQ(settings.Number(Key::MainPalette), 6);  // "adaptive" is no fixed palette
}

TEST(CliDialogReader, OutputControlsComeFromSettingsAndSessionPagesFromTheirKeys) {
  Settings settings;
  settings.SetNumber(Key::MainDelay, 5000);
  settings.SetNumber(Key::MainPalette, 3);
  settings.SetNumber(Key::MainEffect, testing::kTiles);
  settings.SetNumber(Key::MainMaskBackground, 1);
  settings.SetStyleNumber(0, "Width", 5000);
  const StyleEntry& tiles = testing::CliTestStyles()[testing::kTiles];
  SessionChoices session;
  session.custom_palette = true;
  CliDialogReader dialog(settings, &tiles, session);
  EXPECT_EQ(dialog.Spin(kDelayEdit), CliDialogReader::kMaxDelay);
  EXPECT_EQ(dialog.Selection(kPaletteList), 3);
  EXPECT_TRUE(dialog.Checked(kCustomPalette));
  EXPECT_TRUE(dialog.Checked(kMaskBackground));
  EXPECT_FALSE(dialog.Checked(kTransparentBackground));
  EXPECT_EQ(dialog.Spin(testing::TilesId(page::kWidthControl)), 1024);  // the page's range

  session.no_background = true;
  CliDialogReader frames_only(settings, nullptr, session);
  EXPECT_FALSE(frames_only.Checked(kMaskBackground));
  EXPECT_EQ(frames_only.Spin(testing::TilesId(page::kWidthControl)), 0);
}

}  // namespace
}  // namespace tess::cli
