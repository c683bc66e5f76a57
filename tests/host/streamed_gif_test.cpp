// The command line streams its builds, given frames too, and writes frames
// in the background; the GIF it writes must be the one the whole-list build
// writes in turn, byte for byte, in every output mode. Both run the
// driver's small test styles through this host's GifFileHost.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "driver/build_driver.h"
#include "host/cli/gif_file_host.h"
#include "shell/main_dialog_ids.h"
#include "styles/style.h"
#include "tests/driver/build_test_style.h"
#include "tests/support/fake_platform.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_support.h"

namespace tess::cli {
namespace {

using namespace tess::testing;

class StreamedGif : public ::testing::Test {
 protected:
  // The GIF of one build from a fresh generator: whole and written in turn,
  // or streamed and written by the background writer, as the command line
  // does. `given` hands the driver the style's frames, as encode does.
  std::vector<uint8_t> Build(bool stream, bool given = false) {
    const std::string path = dir / (stream ? "streamed.gif" : "whole.gif");
    GifFileHost host(path, nullptr, stream ? FrameWriting::kBackground : FrameWriting::kInline);
    Random random;
    BuildOptions options;
    options.host_capabilities = kHostCapOptimise;
    options.stream_frames = stream;
    BuildContext context{dialog, styles, random, host, 0, reporter, platform, nullptr, options};
    if (given) {
      FrameList frames;
      const StyleEntry& style = styles[static_cast<size_t>(dialog.values[kEffectList])];
      EXPECT_TRUE(StyleBuild(style, dialog, random, 5, frames, [](int, int) {}));
      EXPECT_TRUE(RunOutputBuild(context, BuildMode::kOk, std::move(frames)));
    } else {
      EXPECT_TRUE(RunBuild(context, BuildMode::kOk));
    }
    EXPECT_TRUE(host.finished()) << host.error();
    return ReadBytes(path);
  }

  TempFolder dir;
  MapReader dialog;
  std::vector<StyleEntry> styles = TestStyles();
  RecordingReporter reporter;
  FakePlatform platform;
};

TEST_F(StreamedGif, SameBytesAsTheWholeBuildInEveryMode) {
  struct Case {
    const char* what;
    std::map<int, int32_t> set;
  };
  const Case cases[] = {
      {"true colour", {{kTrueColour, 1}}},
      {"fixed palette", {}},
      {"fixed palette, dithered", {{kDither, 1}}},
      {"adaptive", {{kCustomPalette, 1}}},
      {"adaptive, supercompressed", {{kCustomPalette, 1}, {kSupercompress, 1}}},
      {"adaptive, dithered, supercompressed", {{kCustomPalette, 1}, {kSupercompress, 1}, {kDither, 1}}},
      {"masked background", {{kCustomPalette, 1}, {kMaskBackground, 1}}},
      {"transparent background",
       {{kCustomPalette, 1}, {kEffectList, kStyleTransparent}, {kTransparentBackground, 1}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    dialog.values = {{kEffectList, kStyleMoving}, {kDelayEdit, 5},  {kPaletteList, 6},  {kAddComment, 1},
                     {kTestFrames, 5},            {kTestWidth, 23}, {kTestHeight, 11}, {kTestRich, 1},
                     {kTestDrawn, 1},             {kTestBackground, 0x00336699}};
    for (const auto& [id, value] : c.set) dialog.values[id] = value;
    const std::vector<uint8_t> whole = Build(false);
    ASSERT_GT(whole.size(), 13u);
    EXPECT_EQ(Build(true), whole);
    const std::vector<uint8_t> given = Build(false, true);
    ASSERT_GT(given.size(), 13u);
    EXPECT_EQ(Build(true, true), given);
  }
  EXPECT_TRUE(reporter.messages.empty());
}

}  // namespace
}  // namespace tess::cli
