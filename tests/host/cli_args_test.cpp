// The command-line grammar: option forms, which command takes which option,
// operand counts, and that every command's help names its options.
#include "host/cli/cli_args.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace tess::cli {
namespace {

struct Parsed {
  bool ok;
  CliArgs args;
  std::string error;
};

Parsed Parse(const std::vector<std::string>& words) {
  Parsed p;
  p.ok = ParseArgs(words, &p.args, &p.error);
  return p;
}

TEST(CliArgs, LongShortAndInlineValuesAllReachTheirField) {
  Parsed p = Parse({"render", "--effect", "Bubbles", "-o", "a.gif", "--set=Frames=4", "-sSeed=9",
                    "--delay=7", "-qp", "3"});
  ASSERT_TRUE(p.ok) << p.error;
  EXPECT_EQ(p.args.command, Command::kRender);
  EXPECT_EQ(p.args.effect, "Bubbles");
  EXPECT_EQ(p.args.output, "a.gif");
  EXPECT_EQ(p.args.sets, (std::vector<std::string>{"Frames=4", "Seed=9"}));
  EXPECT_EQ(p.args.delay, "7");
  EXPECT_TRUE(p.args.quiet);
  EXPECT_EQ(p.args.palette, "3");  // bundled -q then -p with the next argument
}

TEST(CliArgs, SwitchesTakeTheirNoFormAndTheLastOneWins) {
  Parsed p = Parse({"render", "--dither", "--no-dither", "--no-comment", "--true-colour", "--no-mask-background",
                    "--supercompress"});
  ASSERT_TRUE(p.ok) << p.error;
  EXPECT_EQ(p.args.dither, false);
  EXPECT_EQ(p.args.comment, false);
  EXPECT_EQ(p.args.true_colour, true);
  EXPECT_EQ(p.args.supercompress, true);
  EXPECT_EQ(p.args.mask_background, false);
  EXPECT_FALSE(p.args.custom_palette.has_value());
}

TEST(CliArgs, RefusesWhatTheCommandDoesNotTake) {
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"encode", "a.ppm", "--effect", "Bubbles"}, "unknown option '--effect' for 'encode'"},
      {{"render", "-x"}, "unknown option '-x'"},
      {{"render", "--no-save"}, "unknown option '--no-save'"},
      {{"render", "--save=yes"}, "takes no value"},
      {{"render", "-o"}, "'-o' needs a value"},
      {{"render", "--effect"}, "'--effect' needs a value"},
      {{"list", "Bubbles", "Snow"}, "unexpected argument 'Snow'"},
      {{"encode", "-o", "x.gif"}, "missing operand"},
      {{"help", "paint"}, "unknown command or topic 'paint'"},
      {{"--verbose", "list"}, "unknown option '--verbose'"},
      {{}, "no command given"},
  };
  for (const auto& [words, fragment] : cases) {
    Parsed p = Parse(words);
    EXPECT_FALSE(p.ok) << fragment;
    EXPECT_NE(p.error.find(fragment), std::string::npos) << p.error;
  }
}

TEST(CliArgs, OperandsDashAndDoubleDash) {
  Parsed p = Parse({"encode", "a.ppm", "-", "-o", "out.gif", "--", "-weird.ppm"});
  ASSERT_TRUE(p.ok) << p.error;
  EXPECT_EQ(p.args.operands, (std::vector<std::string>{"a.ppm", "-", "-weird.ppm"}));
  EXPECT_EQ(p.args.output, "out.gif");
}

TEST(CliArgs, EveryCommandHelpListsItsOptionsAndTheExitCodes) {
  std::string render = CommandHelp(Command::kRender);
  for (const char* option : {"--[no-]custom-palette", "--no-config", "--save", "256-color orthogonal"})
    EXPECT_NE(render.find(option), std::string::npos) << option;
  for (Command c : {Command::kList, Command::kRender, Command::kTest, Command::kPreview, Command::kEncode})
    EXPECT_NE(CommandHelp(c).find("2  usage error"), std::string::npos);
  for (const char* name : {"list", "render", "test", "preview", "encode"})
    EXPECT_NE(GeneralHelp().find(std::string("  ") + name), std::string::npos) << name;
}

}  // namespace
}  // namespace tess::cli
