// The preview files: the page and a whole 1-bit GIF pinned byte for byte,
// every bit count read back by the test decoder, and refusals that leave no
// half-written block.
#include <gtest/gtest.h>

#include <string>

#include "output/gif_preview.h"
#include "tests/output/gif_test_images.h"
#include "tests/support/temp_folder.h"
#include "tests/support/write_failure_sweep.h"

namespace tess {
namespace {

using testing::DecodedGif;
using testing::MustDecode;
using testing::IndexImage;
using testing::Indices;
using testing::ReadBytes;
using testing::TempFolder;
using testing::WriteBytes;

std::vector<uint8_t> Palette() {
  std::vector<uint8_t> p(kPaletteBytes);
  for (size_t i = 0; i < p.size(); ++i) p[i] = static_cast<uint8_t>(i * 7 + 1);
  return p;
}

TEST(PreviewHtml, IsTheExactPageWithCrLfAndNoFinalBreak) {
  EXPECT_EQ(PreviewHtmlText(),
            "<html>\r\n<head>\r\n<title>Preview</title>\r\n</head>\r\n"
            "<body background=\"preview.gif\">\r\n</body>\r\n</html>");
}

TEST(PreviewControlFlags, KeepsTheDeliberateRule) {
  EXPECT_EQ(PreviewControlFlags(0, -1), 0x00);
  EXPECT_EQ(PreviewControlFlags(1, -1), 0x08);
  EXPECT_EQ(PreviewControlFlags(1, 200), 0xC8);  // 200 already has bit 3 set
  EXPECT_EQ(PreviewControlFlags(1, 5), 0x0D);
  EXPECT_EQ(PreviewControlFlags(0, 5), 0x05);    // odd index sets the transparency bit
  EXPECT_EQ(PreviewControlFlags(2, 4), 0x04);    // only exactly 1 counts
  EXPECT_EQ(PreviewControlFlags(0, 0x1F0), 0xF0);
}

// A whole 1-bit preview pinned byte for byte.
TEST(PreviewGif, OneBitPreviewBytes) {
  const std::vector<uint8_t> pal = Palette();
  ImageBlock img = ImageCreate(2, 1, nullptr, 1);
  ImageSetPixel(img, 1, 0, 1);
  MemorySink sink;
  PreviewGif gif(sink);
  ASSERT_TRUE(gif.Begin(3, 2, pal.data(), 1));
  ASSERT_TRUE(gif.AddFrame(0, 0, 0, -1, 0x0105, img));
  ASSERT_TRUE(gif.Finish());
  const std::vector<uint8_t> expected = {
      'G', 'I', 'F', '8', '9', 'a', 3, 0, 2, 0, 0x80, 0, 0,
      pal[0], pal[1], pal[2], pal[3], pal[4], pal[5],
      0x21, 0xFF, 11, 'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E', '2', '.', '0', 3, 1, 0, 0, 0,
      0x21, 0xF9, 4, 0x00, 0x05, 0x01, 0xFF, 0,
      0x2C, 0, 0, 0, 0, 2, 0, 1, 0, 0x00,
      // code size 2; codes (3 bits) clear 4, 0, 1, end 5, LSB first.
      2, 2, 0x44, 0x0A, 0,
      0x3B,
  };
  EXPECT_EQ(sink.bytes(), expected);
}

// Every palette bit count, frames of the depth that holds it, smaller than the
// screen, with and without transparency.
TEST(PreviewGif, EveryBitCountRoundTrips) {
  const std::vector<uint8_t> pal = Palette();
  for (int bits = 1; bits <= 8; ++bits) {
    SCOPED_TRACE(bits);
    const int depth = testing::DepthForGifBits(bits);
    ImageBlock a = IndexImage(47, 33, depth, (1 << bits) - 1, 1, false);
    ImageBlock b = IndexImage(30, 20, depth, (1 << bits) - 1, 2, true);
    MemorySink sink;
    PreviewGif gif(sink);
    ASSERT_TRUE(gif.Begin(47, 33, pal.data(), bits));
    ASSERT_TRUE(gif.AddFrame(1, 0, 0, 200, 12, a));
    ASSERT_TRUE(gif.AddFrame(0, 0, 0, -1, 70000, b));
    ASSERT_TRUE(gif.Finish());

    DecodedGif d = MustDecode(sink.bytes());
    EXPECT_EQ(d.width * 100 + d.height, 4733);
    EXPECT_EQ(d.screen_flags, 0x80 | (bits - 1));
    EXPECT_EQ(d.global_table, std::vector<uint8_t>(pal.begin(), pal.begin() + 3 * (1 << bits)));
    EXPECT_EQ(d.loop_count, 0);
    ASSERT_EQ(d.frames.size(), 2u);
    // Flags, transparent index and delay (clamped to 16 bits) of each frame.
    const auto& c0 = *d.frames[0].control;
    const auto& c1 = *d.frames[1].control;
    EXPECT_EQ((std::vector<int>{c0.flags, c0.transparent_index, c0.delay}), (std::vector<int>{0xC8, 200, 12}));
    EXPECT_EQ((std::vector<int>{c1.flags, c1.transparent_index, c1.delay}), (std::vector<int>{0, 0xFF, 0xFFFF}));
    for (const auto& f : d.frames) {
      EXPECT_EQ(f.left + f.top, 0);
      EXPECT_EQ(f.descriptor_flags, depth - 1);  // size bits, no local table
      EXPECT_EQ(f.lzw.min_code_size, depth == 1 ? 2 : depth);
    }
    EXPECT_EQ(d.frames[0].indices, Indices(a));
    EXPECT_EQ(d.frames[1].indices, Indices(b));
  }
}

TEST(PreviewGif, RefusesWhatItCannotWriteAndFailsWithItsSink) {
  const std::vector<uint8_t> pal = Palette();
  MemorySink sink;
  EXPECT_FALSE(PreviewGif(sink).Begin(10, 10, pal.data(), 9) || PreviewGif(sink).Begin(10, 10, pal.data(), 0) ||
               PreviewGif(sink).Begin(0, 10, pal.data(), 8) || PreviewGif(sink).Begin(10, 10, nullptr, 8));
  EXPECT_TRUE(sink.bytes().empty());

  PreviewGif gif(sink);
  ASSERT_TRUE(gif.Begin(10, 10, pal.data(), 8));
  const size_t head = sink.bytes().size();
  EXPECT_FALSE(gif.AddFrame(0, 0, 0, -1, 5, ImageCreate(10, 10, nullptr, 24)));
  EXPECT_FALSE(gif.AddFrame(0, 0, 0, -1, 5, ImageCreate(11, 10, nullptr, 8)));
  EXPECT_FALSE(gif.AddFrame(0, 5, 0, -1, 5, ImageCreate(6, 10, nullptr, 8)));
  EXPECT_EQ(sink.bytes().size(), head);  // no control block left without its frame

  testing::FailingSink full(1000);
  PreviewGif failing(full);
  ASSERT_TRUE(failing.Begin(100, 100, pal.data(), 8));
  EXPECT_FALSE(failing.AddFrame(0, 0, 0, -1, 5, IndexImage(100, 100, 8, 255, 3, true)));
  EXPECT_FALSE(failing.Finish());
}

TEST(JoinPath, AddsOneSeparator) {
  EXPECT_EQ(JoinPath("/a/b", "preview.gif"), "/a/b/preview.gif");
  EXPECT_EQ(JoinPath("/a/b/", "preview.gif"), "/a/b/preview.gif");
  EXPECT_EQ(JoinPath("C:\\Data\\Tessarine 1", "preview.html", '\\'),
            "C:\\Data\\Tessarine 1\\preview.html");
  EXPECT_EQ(JoinPath("", "preview.gif"), "preview.gif");
}

// The build driver's preview tests write and read back whole files; here,
// what it cannot reach.
TEST(PreviewWriter, OpenStatesAndFailures) {
  TempFolder dir;
  const std::vector<uint8_t> pal = Palette();
  PreviewWriter writer;
  EXPECT_EQ(writer.Open(dir / "missing", 8, 8, pal.data(), 8), "");
  EXPECT_EQ(writer.Open(dir.path(), 8, 8, pal.data(), 9), "");
  EXPECT_FALSE(writer.IsOpen());
  ASSERT_EQ(writer.Open(dir.path(), 8, 8, pal.data(), 8), dir / "preview.html");
  EXPECT_TRUE(writer.IsOpen());
  ASSERT_TRUE(writer.AddFrame(1, 0, 0, 3, 10, IndexImage(8, 8, 8, 255, 1, true)));
  // A frame that fails abandons both files: nothing half-written appears.
  EXPECT_FALSE(writer.AddFrame(0, 0, 0, -1, 10, ImageCreate(8, 8, nullptr, 32)));
  EXPECT_FALSE(writer.IsOpen());
  EXPECT_FALSE(writer.AddFrame(0, 0, 0, -1, 10, ImageCreate(8, 8, nullptr, 8)));
  EXPECT_FALSE(writer.Close());
  EXPECT_TRUE(testing::FolderEntries(dir.path()).empty());
}

// A full disk anywhere in either file keeps the previous preview, page and
// animation both, and leaves no temporary.
TEST(PreviewWriter, AFullDiskAtAnyByteKeepsThePreviousPreview) {
  TempFolder dir;
  const std::vector<uint8_t> pal = Palette();
  const auto write = [&] {
    PreviewWriter writer;
    return !writer.Open(dir.path(), 12, 10, pal.data(), 4).empty() &&
           writer.AddFrame(1, 0, 0, 3, 10, IndexImage(12, 10, 4, 15, 1, true)) &&
           writer.AddFrame(0, 2, 1, -1, 10, IndexImage(9, 8, 4, 15, 2, false)) && writer.Close();
  };
  const uint64_t swept = testing::SweepWriteFailures(
      {dir / "preview.gif", dir / "preview.html"},
      [&] {
        WriteBytes(dir / "preview.gif", {'o', 'l', 'd'});
        WriteBytes(dir / "preview.html", {'p', 'a', 'g', 'e'});
      },
      write);
  EXPECT_GT(swept, PreviewHtmlText().size());
  PreviewWriter writer;
  SafeFileFailureScope full_disk(50);
  ASSERT_FALSE(writer.Open(dir.path(), 12, 10, pal.data(), 4).empty());
  EXPECT_FALSE(writer.Close());
  EXPECT_EQ(writer.error(), "No space left on device");
}

}  // namespace
}  // namespace tess
