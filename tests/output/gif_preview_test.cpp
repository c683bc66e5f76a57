#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "output/gif_preview.h"
#include "tests/output/gif_test_images.h"
#include "tests/support/gif_decoder.h"

namespace tess {
namespace {

namespace fs = std::filesystem;
using testing::DecodedGif;
using testing::IndexImage;
using testing::Indices;

std::vector<uint8_t> Palette() {
  std::vector<uint8_t> p(kPaletteBytes);
  for (size_t i = 0; i < p.size(); ++i) p[i] = static_cast<uint8_t>(i * 7 + 1);
  return p;
}

DecodedGif MustDecode(const std::vector<uint8_t>& bytes) {
  DecodedGif gif;
  std::string error;
  EXPECT_TRUE(testing::DecodeGif(bytes, &gif, &error)) << error;
  return gif;
}

std::vector<uint8_t> ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A fresh folder under the system's temporary folder, removed afterwards.
class TempFolder {
 public:
  explicit TempFolder(const char* name) {
    m_path = fs::temp_directory_path() / (std::string("tess-") + name + "-" +
                                          std::to_string(reinterpret_cast<uintptr_t>(this)));
    fs::remove_all(m_path);
    fs::create_directories(m_path);
  }
  ~TempFolder() {
    std::error_code ec;
    fs::remove_all(m_path, ec);
  }
  const fs::path& path() const { return m_path; }

 private:
  fs::path m_path;
};

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
    EXPECT_EQ(d.width, 47);
    EXPECT_EQ(d.height, 33);
    EXPECT_EQ(d.screen_flags, 0x80 | (bits - 1));
    EXPECT_EQ(d.global_table, std::vector<uint8_t>(pal.begin(), pal.begin() + 3 * (1 << bits)));
    EXPECT_EQ(d.loop_count, 0);
    ASSERT_EQ(d.frames.size(), 2u);
    EXPECT_EQ(d.frames[0].control->flags, 0xC8);
    EXPECT_EQ(d.frames[0].control->transparent_index, 200);
    EXPECT_EQ(d.frames[0].control->delay, 12);
    EXPECT_EQ(d.frames[1].control->flags, 0x00);
    EXPECT_EQ(d.frames[1].control->transparent_index, 0xFF);
    EXPECT_EQ(d.frames[1].control->delay, 0xFFFF);
    for (const auto& f : d.frames) {
      EXPECT_EQ(f.left, 0);
      EXPECT_EQ(f.top, 0);
      EXPECT_EQ(f.descriptor_flags, depth - 1);  // size bits, no local table
      EXPECT_EQ(f.lzw.min_code_size, depth == 1 ? 2 : depth);
    }
    EXPECT_EQ(d.frames[0].indices, Indices(a));
    EXPECT_EQ(d.frames[1].indices, Indices(b));
  }
}

TEST(PreviewGif, RefusesWhatItCannotWrite) {
  const std::vector<uint8_t> pal = Palette();
  MemorySink sink;
  EXPECT_FALSE(PreviewGif(sink).Begin(10, 10, pal.data(), 9));
  EXPECT_FALSE(PreviewGif(sink).Begin(10, 10, pal.data(), 0));
  EXPECT_FALSE(PreviewGif(sink).Begin(0, 10, pal.data(), 8));
  EXPECT_FALSE(PreviewGif(sink).Begin(10, 10, nullptr, 8));
  EXPECT_TRUE(sink.bytes().empty());

  PreviewGif gif(sink);
  ASSERT_TRUE(gif.Begin(10, 10, pal.data(), 8));
  const size_t head = sink.bytes().size();
  EXPECT_FALSE(gif.AddFrame(0, 0, 0, -1, 5, ImageCreate(10, 10, nullptr, 24)));
  EXPECT_FALSE(gif.AddFrame(0, 0, 0, -1, 5, ImageCreate(11, 10, nullptr, 8)));
  EXPECT_FALSE(gif.AddFrame(0, 5, 0, -1, 5, ImageCreate(6, 10, nullptr, 8)));
  EXPECT_EQ(sink.bytes().size(), head);  // no control block left without its frame
}

TEST(PreviewGif, AFrameThatCannotBeWrittenFails) {
  const std::vector<uint8_t> pal = Palette();
  ImageBlock img = IndexImage(100, 100, 8, 255, 3, true);
  testing::FailingSink sink(1000);
  PreviewGif gif(sink);
  ASSERT_TRUE(gif.Begin(100, 100, pal.data(), 8));
  EXPECT_FALSE(gif.AddFrame(0, 0, 0, -1, 5, img));
  EXPECT_FALSE(gif.Finish());
}

TEST(JoinPath, AddsOneSeparator) {
  EXPECT_EQ(JoinPath("/a/b", "preview.gif"), "/a/b/preview.gif");
  EXPECT_EQ(JoinPath("/a/b/", "preview.gif"), "/a/b/preview.gif");
  EXPECT_EQ(JoinPath("C:\\Data\\Tessarine 1", "preview.html", '\\'),
            "C:\\Data\\Tessarine 1\\preview.html");
  EXPECT_EQ(JoinPath("", "preview.gif"), "preview.gif");
}

TEST(PreviewWriter, WritesBothFilesAndReturnsThePagePath) {
  TempFolder dir("preview");
  const std::vector<uint8_t> pal = Palette();
  ImageBlock a = IndexImage(47, 33, 4, 15, 1, false);
  ImageBlock b = IndexImage(47, 33, 4, 15, 2, false);
  PreviewWriter writer;
  const std::string html = writer.Open(dir.path().string(), 47, 33, pal.data(), 4);
  ASSERT_EQ(html, (dir.path() / "preview.html").string());
  EXPECT_TRUE(writer.IsOpen());
  ASSERT_TRUE(writer.AddFrame(0, 0, 0, -1, 10, a));
  ASSERT_TRUE(writer.AddFrame(1, 0, 0, 3, 10, b));
  ASSERT_TRUE(writer.Close());
  EXPECT_FALSE(writer.IsOpen());

  const std::string_view page = PreviewHtmlText();
  EXPECT_EQ(ReadFile(html), std::vector<uint8_t>(page.begin(), page.end()));
  DecodedGif d = MustDecode(ReadFile(dir.path() / "preview.gif"));
  ASSERT_EQ(d.frames.size(), 2u);
  EXPECT_EQ(d.frames[1].indices, Indices(b));
  EXPECT_EQ(d.frames[1].control->flags, 0x0B);
}

TEST(PreviewWriter, CreateAndWriteFailures) {
  TempFolder dir("preview-fail");
  const std::vector<uint8_t> pal = Palette();
  PreviewWriter writer;
  EXPECT_EQ(writer.Open((dir.path() / "missing").string(), 8, 8, pal.data(), 8), "");
  EXPECT_FALSE(writer.IsOpen());
  EXPECT_EQ(writer.Open(dir.path().string(), 8, 8, pal.data(), 9), "");
  EXPECT_FALSE(writer.IsOpen());

  // A frame that fails closes the writer; the partial file stays.
  ASSERT_NE(writer.Open(dir.path().string(), 8, 8, pal.data(), 8), "");
  EXPECT_FALSE(writer.AddFrame(0, 0, 0, -1, 10, ImageCreate(8, 8, nullptr, 32)));
  EXPECT_FALSE(writer.IsOpen());
  EXPECT_FALSE(writer.AddFrame(0, 0, 0, -1, 10, ImageCreate(8, 8, nullptr, 8)));
  EXPECT_FALSE(writer.Close());
  EXPECT_TRUE(fs::exists(dir.path() / "preview.gif"));
}

bool HaveTool(const char* name) {
  return std::system((std::string("command -v ") + name + " >/dev/null 2>&1").c_str()) == 0;
}

// ImageMagick as an independent reader, when it is installed.
TEST(PreviewWriter, ImageMagickSeesEveryFrame) {
  if (!HaveTool("identify")) GTEST_SKIP() << "ImageMagick's identify is not on PATH";
  TempFolder dir("identify");
  const std::vector<uint8_t> pal = Palette();
  PreviewWriter writer;
  ASSERT_NE(writer.Open(dir.path().string(), 47, 33, pal.data(), 8), "");
  for (int i = 0; i < 5; ++i)
    ASSERT_TRUE(writer.AddFrame(0, 0, 0, -1, 10, IndexImage(47, 33, 8, 255, i, i % 2 == 1)));
  ASSERT_TRUE(writer.Close());

  const fs::path out = dir.path() / "identify.txt";
  const std::string cmd = "identify -format '%m %w %h\\n' '" +
                          (dir.path() / "preview.gif").string() + "' > '" + out.string() + "' 2>&1";
  ASSERT_EQ(std::system(cmd.c_str()), 0);
  const std::vector<uint8_t> text = ReadFile(out);
  EXPECT_EQ(std::string(text.begin(), text.end()),
            "GIF 47 33\nGIF 47 33\nGIF 47 33\nGIF 47 33\nGIF 47 33\n");
}

// An independent LZW decoder: with a grey palette (entry i = i, i, i) the
// pixels ImageMagick decodes are the indices. The noise frame resets the code
// table several times.
TEST(PreviewWriter, ImageMagickDecodesTheSameIndices) {
  if (!HaveTool("convert")) GTEST_SKIP() << "ImageMagick's convert is not on PATH";
  TempFolder dir("convert");
  std::vector<uint8_t> grey(kPaletteBytes);
  for (size_t i = 0; i < grey.size(); ++i) grey[i] = static_cast<uint8_t>(i / 3);
  const ImageBlock frames[2] = {IndexImage(47, 33, 8, 255, 1, false),
                                IndexImage(200, 150, 8, 255, 2, true)};
  PreviewWriter writer;
  ASSERT_NE(writer.Open(dir.path().string(), 200, 150, grey.data(), 8), "");
  for (const ImageBlock& f : frames) ASSERT_TRUE(writer.AddFrame(0, 0, 0, -1, 10, f));
  ASSERT_TRUE(writer.Close());

  for (int i = 0; i < 2; ++i) {
    const fs::path out = dir.path() / ("frame" + std::to_string(i) + ".gray");
    const std::string cmd = "convert '" + (dir.path() / "preview.gif").string() + "[" +
                            std::to_string(i) + "]' -depth 8 'gray:" + out.string() + "' 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    EXPECT_EQ(ReadFile(out), Indices(frames[i])) << "frame " << i;
  }
}

}  // namespace
}  // namespace tess
