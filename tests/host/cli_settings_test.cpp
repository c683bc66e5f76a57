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

TEST_F(SetTest, FullKeysInAnyCaseAndShortKeysOfTheSelectedEffect) {
  ASSERT_TRUE(Set("style016glare=10")) << failure.message;
  EXPECT_EQ(Value("Style016Glare"), 10);
  ASSERT_TRUE(Set("Glare=11")) << failure.message;
  EXPECT_EQ(Value("Style016Glare"), 11);
  ASSERT_TRUE(Set("shadowoffset=3")) << failure.message;
  EXPECT_EQ(Value("Style016ShadowOffset"), 3);
  ASSERT_TRUE(Set("Style000Frames=32")) << failure.message;  // another effect's key, by its full name
  EXPECT_EQ(Value("Style000Frames"), 32);
  ASSERT_TRUE(Set("MainDelay=6"));
  EXPECT_EQ(settings.Number(Key::MainDelay), 6);
  ASSERT_TRUE(Set("CurrentFileName=night sky.ts1"));
  EXPECT_EQ(settings.Text(Key::CurrentFileName), "night sky.ts1");
  // The selected effect decides what a short key means.
  settings.SetNumber(Key::MainEffect, 1);  // Bubbles, style 000
  EXPECT_FALSE(Set("Glare=1"));
  EXPECT_EQ(failure.exit_code, kExitUsage);
  EXPECT_NE(failure.message.find("unknown setting 'Glare'"), std::string::npos);
}

TEST_F(SetTest, ValuesAreCheckedAsTheirControlChecksThem) {
  EXPECT_FALSE(Set("Glare=256"));
  EXPECT_NE(failure.message.find("from 0 to 255"), std::string::npos) << failure.message;
  EXPECT_FALSE(Set("Glare=-1"));
  EXPECT_FALSE(Set("Glare="));
  EXPECT_FALSE(Set("Glare=12abc"));
  EXPECT_TRUE(Set("Glare=0x10"));
  EXPECT_EQ(Value("Style016Glare"), 16);

  for (auto [text, expected] : {std::pair{"off", 0}, {"YES", 1}, {"0", 0}, {"true", 1}}) {
    ASSERT_TRUE(Set(std::string("DirUp=") + text)) << text;
    EXPECT_EQ(Value("Style016DirUp"), expected) << text;
  }
  EXPECT_FALSE(Set("DirUp=2"));

  // #RRGGBB keeps the top byte that belongs to a fill description.
  settings.SetNumberAt(FindConfigKey("Style016FillColor1"), static_cast<int32_t>(0x7F000000));
  ASSERT_TRUE(Set("FillColor1=#102030")) << failure.message;
  EXPECT_EQ(static_cast<uint32_t>(Value("Style016FillColor1")), 0x7F302010u);
  ASSERT_TRUE(Set("Background=0x00FF00")) << failure.message;
  EXPECT_EQ(Value("Style016Background"), 0x00FF00);
  EXPECT_FALSE(Set("Background=#GG0000"));

  EXPECT_FALSE(Set("MainDelay=1001"));
  EXPECT_FALSE(Set("MainEffect=20"));
  ASSERT_TRUE(Set("MainPalette=256 gray levels"));
  EXPECT_EQ(settings.Number(Key::MainPalette), 8);
  EXPECT_FALSE(Set("MainSupercompress=2"));
  EXPECT_FALSE(Set(std::string("OpenPath=") + std::string(261, 'x')));
}

TEST(CliNames, EffectsByIndexOrForgivingName) {
  std::span<const StyleEntry> table = StyleTable();
  EXPECT_EQ(FindEffect("13", table), 13);
  EXPECT_EQ(FindEffect("phasers-on-stun", table), 13);
  EXPECT_EQ(FindEffect("NEURAL_NETWORK", table), 11);
  EXPECT_EQ(FindEffect("White Noise", table), 19);
  EXPECT_EQ(FindEffect("20", table), -1);
  EXPECT_EQ(FindEffect("-1", table), -1);
  EXPECT_EQ(FindEffect("Bubble", table), -1);
}

TEST(CliNames, PalettesByIndexNameOrAdaptive) {
  int choice = -1;
  bool adaptive = false;
  EXPECT_TRUE(FindPalette("216-COLOR SAFE", &choice, &adaptive));
  EXPECT_EQ(choice, 5);
  EXPECT_TRUE(FindPalette("0", &choice, &adaptive));
  EXPECT_EQ(choice, 0);
  EXPECT_FALSE(adaptive);
  EXPECT_TRUE(FindPalette("adaptive", &choice, &adaptive));
  EXPECT_TRUE(adaptive);
  EXPECT_FALSE(FindPalette("9", &choice, &adaptive));
  EXPECT_FALSE(FindPalette("websafe", &choice, &adaptive));
}

CliArgs Args(std::initializer_list<const char*> words) {
  std::vector<std::string> args(words.begin(), words.end());
  CliArgs parsed;
  std::string error;
  EXPECT_TRUE(ParseArgs(args, &parsed, &error)) << error;
  return parsed;
}

TEST(CliBuildOptions, PaletteOptionsTurnTrueColourOffUnlessItIsAskedFor) {
  for (auto words : {Args({"render", "--dither"}), Args({"render", "--palette", "3"}),
                     Args({"render", "--custom-palette"}), Args({"render", "--supercompress"})}) {
    Settings settings;
    SessionChoices session;
    Failure failure;
    ASSERT_TRUE(ApplyBuildOptions(words, settings, StyleTable(), &session, &failure));
    EXPECT_EQ(settings.Number(Key::Truecolour), 0);
  }
  Settings settings;
  SessionChoices session;
  Failure failure;
  ASSERT_TRUE(ApplyBuildOptions(Args({"render", "--dither", "--true-color"}), settings, StyleTable(), &session,
                                &failure));
  EXPECT_EQ(settings.Number(Key::Truecolour), 1);
  EXPECT_EQ(settings.Number(Key::MainDither), 1);
  // --no-dither is no request for a palette.
  Settings plain;
  ASSERT_TRUE(ApplyBuildOptions(Args({"render", "--no-dither"}), plain, StyleTable(), &session, &failure));
  EXPECT_EQ(plain.Number(Key::Truecolour), 1);
}

TEST(CliBuildOptions, EffectFirstThenOptionsThenEachSetInTurn) {
  Settings settings;
  SessionChoices session;
  Failure failure;
  CliArgs args = Args({"render", "-s", "Frames=9", "-e", "Gridlock", "-d", "5", "-s", "MainDelay=7",
                       "-s", "MainEffect=2", "-s", "Frames=10", "--palette", "adaptive"});
  ASSERT_TRUE(ApplyBuildOptions(args, settings, StyleTable(), &session, &failure)) << failure.message;
  EXPECT_EQ(settings.StyleNumber(16, "Frames"), 9);   // Gridlock's, before MainEffect changed
  EXPECT_EQ(settings.StyleNumber(13, "Frames"), 10);  // then Carpet's
  EXPECT_EQ(settings.Number(Key::MainDelay), 7);
  EXPECT_EQ(settings.Number(Key::MainEffect), 2);
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
  EXPECT_EQ(dialog.Selection(kEffectList), testing::kTiles);
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
