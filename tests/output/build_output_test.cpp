// The driver's entry for frames made elsewhere and the preview folder option:
// frames go through palette, supercompression, remapping and delivery as a
// style's would, no style is consulted, and no background colour enters the
// palette.
#include <gtest/gtest.h>

#include <filesystem>

#include "base/bytes.h"
#include "output/build_driver.h"
#include "shell/main_dialog_ids.h"
#include "tests/output/build_test_style.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_platform.h"
#include "tests/support/gif_decoder.h"

namespace tess {
namespace {

using namespace tess::testing;

constexpr size_t kGrowth = sizeof(HostHandle) - 4;

// Frame k: red on the left, white on the right, the border moving with k.
FrameList TwoColourFrames(int count, int width, int height, int32_t delay) {
  FrameList frames;
  for (int k = 0; k < count; ++k) {
    ImageBlock image = ImageCreate(width, height, nullptr, 24);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        ImageSetPixel(image, x, y, x < 2 + k ? MakeColour(255, 0, 0) : MakeColour(255, 255, 255));
    EXPECT_TRUE(FrameListAddImage(frames, std::move(image), delay));
  }
  return frames;
}

class OutputBuildTest : public ::testing::Test {
 protected:
  OutputBuildTest() {
    dialog.values[kPaletteList] = 6;
    dialog.values[kDelayEdit] = 99;  // frames bring their own delays
    dialog.values[kCustomPalette] = 1;
    dialog.values[kMaskBackground] = 1;  // nothing to mask without a style
  }
  bool Run(FrameList frames, BuildMode mode = BuildMode::kOk) {
    BuildContext context{dialog, styles, random, host, 0, reporter, platform, nullptr, options};
    return RunOutputBuild(context, mode, std::move(frames));
  }

  MapReader dialog;
  std::vector<StyleEntry> styles = TestStyles();
  Random random;
  FakeHost host;
  RecordingReporter reporter;
  FakePlatform platform;
  BuildOptions options;
};

TEST_F(OutputBuildTest, FramesAreDeliveredWithTheirDelaysAndNoStyleRenders) {
  dialog.values[kEffectList] = kStyleNoInit;  // would fail if it were asked
  ASSERT_TRUE(Run(TwoColourFrames(3, 9, 5, 7))) << reporter.messages.size();
  EXPECT_EQ(host.TaskCommands(), (std::vector<int32_t>{kHostCreateTask, kHostAddImage, kHostAddImage,
                                                        kHostAddImage, kHostCloseTask}));
  const auto& task = host.Of(kHostCreateTask)[0]->record;
  EXPECT_EQ(get_u32le(&task[12 + kGrowth]), 9u);
  EXPECT_EQ(get_u32le(&task[16 + kGrowth]), 5u);
  // Two colours and no background made exact beside them: one bit.
  EXPECT_EQ(get_u32le(&task[20 + kGrowth]), 1u);
  for (const auto* add : host.Of(kHostAddImage)) {
    EXPECT_EQ(get_i32le(&add->record[16 + kGrowth]), 7);
    EXPECT_EQ(get_i32le(&add->record[36 + kGrowth]), -1);  // masking was switched off
  }
}

TEST_F(OutputBuildTest, SupercompressMarksUnchangedPixelsOfGivenFrames) {
  dialog.values[kSupercompress] = 1;
  ASSERT_TRUE(Run(TwoColourFrames(3, 9, 5, 2)));
  auto adds = host.Of(kHostAddImage);
  ASSERT_EQ(adds.size(), 3u);
  EXPECT_EQ(get_i32le(&adds[0]->record[36 + kGrowth]), -1);
  EXPECT_GE(get_i32le(&adds[1]->record[36 + kGrowth]), 0);
  EXPECT_GE(get_i32le(&adds[2]->record[36 + kGrowth]), 0);
}

TEST_F(OutputBuildTest, NoFramesIsAMemoryErrorAndNoFileObject) {
  EXPECT_FALSE(Run(FrameList()));
  EXPECT_EQ(reporter.messages, std::vector<std::string>{"Memory error"});
  EXPECT_EQ(host.Count(kHostCreateTask), 0);
}

TEST_F(OutputBuildTest, PreviewGoesToTheFolderTheOptionsName) {
  std::filesystem::path folder = std::filesystem::temp_directory_path() / "tess-build-output-test";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  options.preview_folder = folder.string();
  ASSERT_TRUE(Run(TwoColourFrames(2, 6, 4, 3), BuildMode::kPreview));
  EXPECT_TRUE(std::filesystem::exists(folder / "preview.html"));
  EXPECT_TRUE(std::filesystem::exists(folder / "preview.gif"));
  ASSERT_EQ(platform.opened_documents.size(), 1u);
  EXPECT_EQ(platform.opened_documents[0].target, (folder / "preview.html").string());
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace tess
