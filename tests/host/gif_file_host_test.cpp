// The GIF file host driven command by command, as the build driver drives it,
// with every file decoded back by the strict test decoder: screen and tables,
// frames cropped to their visible pixels with "do not dispose", local tables
// where the global one does not fit, and the output path holding nothing but
// complete files whatever happens.
#include "host/cli/gif_file_host.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <tuple>

#include "tests/support/temp_folder.h"
#include "tests/support/gif_decoder.h"
#include "tests/support/test_support.h"
#include "tests/support/write_failure_sweep.h"

namespace tess::cli {
namespace {

using testing::DecodedGif;
using testing::ReadBytes;
using testing::TempFolder;

// Four colours: black, red, green, blue.
constexpr uint8_t kPalette4[12] = {0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255};

TaskRecord Task(int width, int height, int bits) {
  TaskRecord task = MakeTaskRecord();
  task.width = static_cast<uint32_t>(width);
  task.height = static_cast<uint32_t>(height);
  task.bits = static_cast<uint32_t>(bits);
  std::memcpy(task.palette, kPalette4, sizeof kPalette4);
  return task;
}

// An 8-bit frame over the four-colour palette, every pixel `fill`.
ImageBlock Frame(int width, int height, int fill) {
  uint8_t rgb[kPaletteBytes] = {};
  std::memcpy(rgb, kPalette4, sizeof kPalette4);
  ImageBlock image = ImageCreate(width, height, rgb, 8);
  for (int y = 0; y < height; ++y) std::memset(image.Row(y), fill, static_cast<size_t>(width));
  return image;
}

class Session {
 public:
  Session(GifFileHost& host, TaskRecord task) : m_host(host), m_task(task) {}
  int32_t Create(int32_t command = kHostCreateTask) { return m_host.Call(0, command, 0, &m_task); }
  int32_t Add(const ImageBlock& image, int delay, int transparent, int number) {
    ImageRecord r = MakeImageRecord();
    r.image = m_host.LendImage(image);
    r.delay = delay;
    r.frame_number = number;
    r.transparent_index = transparent;
    int32_t result = m_host.Call(Object(), kHostAddImage, 0, &r);
    m_host.ReturnImage(r.image);
    return result;
  }
  int32_t Comment(const char* text) { return m_host.Call(Object(), kHostAddComment, 0, const_cast<char*>(text)); }
  int32_t Close(intptr_t how) { return m_host.Call(Object(), kHostCloseTask, how, nullptr); }
  HostHandle Object() { return reinterpret_cast<HostHandle>(&m_task); }

 private:
  GifFileHost& m_host;
  TaskRecord m_task;
};

DecodedGif Decode(const std::string& path) {
  DecodedGif gif;
  std::string error;
  EXPECT_TRUE(testing::DecodeGif(ReadBytes(path), &gif, &error)) << error;
  return gif;
}

TEST(GifFileHost, WritesScreenFramesDelaysCommentAndLoop) {
  TempFolder dir;
  GifFileHost host(dir / "out.gif", nullptr);
  Session s(host, Task(10, 6, 2));
  ASSERT_EQ(s.Create(), 1);
  ImageBlock a = Frame(10, 6, 1), b = Frame(10, 6, 2);
  ASSERT_EQ(s.Add(a, 7, -1, 0), 1);
  ASSERT_EQ(s.Add(b, 12, -1, 1), 1);
  ASSERT_EQ(s.Comment("CREATED BY...\r\n"), 1);
  EXPECT_FALSE(host.finished());
  EXPECT_NE(dir.Files(), std::vector<std::string>{"out.gif"});  // only the temporary file so far
  ASSERT_EQ(s.Close(kHostTaskFinished), 1);
  EXPECT_EQ(host.frames_written(), 2);
  EXPECT_EQ(dir.Files(), std::vector<std::string>{"out.gif"});

  DecodedGif gif = Decode(dir / "out.gif");
  EXPECT_EQ(gif.width, 10);
  EXPECT_EQ(gif.height, 6);
  EXPECT_EQ(gif.global_table, std::vector<uint8_t>(kPalette4, kPalette4 + 12));
  EXPECT_EQ(gif.loop_count, 0);
  ASSERT_EQ(gif.comments.size(), 1u);
  EXPECT_EQ(gif.comments[0], "CREATED BY...\r\n");
  ASSERT_EQ(gif.frames.size(), 2u);
  for (int i = 0; i < 2; ++i) {
    const auto& f = gif.frames[static_cast<size_t>(i)];
    ASSERT_TRUE(f.control.has_value());
    EXPECT_EQ(f.control->delay, i == 0 ? 7 : 12);
    EXPECT_FALSE(f.control->has_transparency());
    EXPECT_TRUE(f.local_table.empty());  // the frame's table is the global one
    EXPECT_EQ(f.lzw.min_code_size, 2);   // coded at the global table's size
    EXPECT_EQ(f.indices, std::vector<uint8_t>(60, static_cast<uint8_t>(i + 1)));  // the whole 10 x 6
  }
}

TEST(GifFileHost, TransparentFramesAreCroppedAndKept) {
  TempFolder dir;
  GifFileHost host(dir / "out.gif", nullptr);
  Session s(host, Task(16, 12, 2));
  ASSERT_EQ(s.Create(), 1);
  ImageBlock first = Frame(16, 12, 1);
  ImageBlock changed = Frame(16, 12, 3);  // 3 = unchanged
  ImageSetPixel(changed, 4, 2, 2);
  ImageSetPixel(changed, 9, 7, 0);
  ImageBlock unchanged = Frame(16, 12, 3);
  ASSERT_EQ(s.Add(first, 4, -1, 0), 1);
  ASSERT_EQ(s.Add(changed, 4, 3, 1), 1);
  ASSERT_EQ(s.Add(unchanged, 4, 3, 2), 1);
  ASSERT_EQ(s.Close(kHostTaskFinished), 1);

  DecodedGif gif = Decode(dir / "out.gif");
  ASSERT_EQ(gif.frames.size(), 3u);
  const auto& crop = gif.frames[1];
  EXPECT_EQ(crop.control->disposal(), 1);  // do not dispose
  EXPECT_EQ(crop.control->transparent_index, 3);
  EXPECT_EQ(std::tuple(crop.left, crop.top, crop.width, crop.height), std::tuple(4, 2, 6, 6));
  // Nothing changed: one pixel in the corner.
  const auto& empty = gif.frames[2];
  EXPECT_EQ(std::tuple(empty.left, empty.top, empty.width, empty.height), std::tuple(0, 0, 1, 1));
  EXPECT_EQ(empty.control->disposal(), 1);
  // What the viewer sees: the first frame with two pixels changed, twice.
  auto shown = testing::ComposeFrames(gif);
  auto rgb = [](int i) { return kPalette4[3 * i] << 16 | kPalette4[3 * i + 1] << 8 | kPalette4[3 * i + 2]; };
  std::vector<int32_t> expected(16 * 12, rgb(1));
  EXPECT_EQ(shown[0], expected);
  expected[2 * 16 + 4] = rgb(2);
  expected[7 * 16 + 9] = rgb(0);
  EXPECT_EQ(shown[1], expected);
  EXPECT_EQ(shown[2], expected);
}

TEST(GifFileHost, FramesOutsideTheGlobalTableBringTheirOwn) {
  TempFolder dir;
  GifFileHost host(dir / "out.gif", nullptr);
  Session s(host, Task(5, 3, 2));
  ASSERT_EQ(s.Create(), 1);
  // Index 7 is past the four-entry global table.
  ImageBlock wide = Frame(5, 3, 7);
  // Same indices, different colours in the frame's own table.
  ImageBlock recoloured = Frame(5, 3, 1);
  recoloured.colour_table()[4 * 1 + 1] = 99;
  ImageBlock true_colour = testing::NoiseImage(5, 3, 11);
  ASSERT_EQ(s.Add(wide, 1, -1, 0), 1);
  ASSERT_EQ(s.Add(recoloured, 1, -1, 1), 1);
  ASSERT_EQ(s.Add(true_colour, 1, 0, 2), 1);  // an index means nothing for true colour
  ASSERT_EQ(s.Close(kHostTaskFinished), 1);

  DecodedGif gif = Decode(dir / "out.gif");
  ASSERT_EQ(gif.frames.size(), 3u);
  EXPECT_EQ(gif.frames[0].local_table.size(), 3u * 256);
  EXPECT_EQ(testing::ComposeFrames(gif)[0], std::vector<int32_t>(15, 0));  // entry 7 is black
  ASSERT_EQ(gif.frames[1].local_table.size(), 3u * 256);
  EXPECT_EQ(gif.frames[1].local_table[4], 99);  // green of entry 1
  const auto& tc = gif.frames[2];
  EXPECT_FALSE(tc.control->has_transparency());
  ASSERT_FALSE(tc.local_table.empty());
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 5; ++x) {
      const uint8_t* e = &tc.local_table[3 * tc.indices[static_cast<size_t>(y * 5 + x)]];
      EXPECT_EQ(MakeColour(e[0], e[1], e[2]), ImageGetPixel(true_colour, x, y));
    }
}

TEST(GifFileHost, AbandonedTaskLeavesThePreviousFileAlone) {
  TempFolder dir;
  testing::WriteBytes(dir / "out.gif", {'o', 'l', 'd'});
  {
    GifFileHost host(dir / "out.gif", nullptr);
    Session s(host, Task(4, 4, 2));
    ASSERT_EQ(s.Create(), 1);
    ImageBlock a = Frame(4, 4, 1);
    ASSERT_EQ(s.Add(a, 1, -1, 0), 1);
    s.Close(kHostTaskAbandoned);
    EXPECT_FALSE(host.finished());
  }
  EXPECT_EQ(dir.Files(), std::vector<std::string>{"out.gif"});
  EXPECT_EQ(ReadBytes(dir / "out.gif"), (std::vector<uint8_t>{'o', 'l', 'd'}));

  // A host that goes away with the task open cleans up too.
  {
    GifFileHost host(dir / "new.gif", nullptr);
    Session s(host, Task(4, 4, 2));
    ASSERT_EQ(s.Create(kHostCreateTestTask), 1);
  }
  EXPECT_EQ(dir.Files(), std::vector<std::string>{"out.gif"});
}

// A full disk at any byte of the GIF: the task fails naming the cause, the
// previous file stays as it was and no temporary is left.
TEST(GifFileHost, AFullDiskAtAnyByteKeepsThePreviousFile) {
  TempFolder dir;
  const std::string path = dir / "out.gif";
  const auto write = [&] {
    GifFileHost host(path, nullptr);
    Session s(host, Task(6, 5, 2));
    ImageBlock a = Frame(6, 5, 1), b = Frame(6, 5, 2);
    const bool ok = s.Create() == 1 && s.Add(a, 4, -1, 0) == 1 && s.Add(b, 4, 2, 1) == 1 &&
                    s.Comment("made here") == 1 && s.Close(kHostTaskFinished) == 1;
    EXPECT_EQ(ok, host.finished());
    if (!ok) {
      EXPECT_EQ(host.error(), "error writing '" + path + "': No space left on device");
    }
    return ok;
  };
  EXPECT_GT(testing::SweepWriteFailures({path}, [&] { testing::WriteBytes(path, {'o', 'l', 'd'}); }, write), 40u);
}

// Frames encoded on the writer thread make the same file as frames encoded
// in turn; its failures still reach the caller, and abandoning drops what
// waits in its queue.
TEST(GifFileHost, TheBackgroundWriterMakesTheSameFileAndReportsItsFailures) {
  TempFolder dir;
  const auto write = [&](const std::string& path, FrameWriting writing, intptr_t close) {
    GifFileHost host(path, nullptr, writing);
    Session s(host, Task(9, 7, 2));
    bool ok = s.Create() == 1;
    for (int i = 0; ok && i < 12; ++i) {
      ImageBlock frame = Frame(9, 7, i % 4);
      for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x)
          if ((x * y + i) % 5 == 0) ImageSetPixel(frame, x, y, static_cast<Colour>((x + i) % 4));
      ok = s.Add(frame, 3 + i, i > 0 ? 3 : -1, i) == 1;
    }
    ok = ok && s.Comment("both ways") == 1 && s.Close(close) == 1;
    return std::pair{ok, host.error()};
  };
  ASSERT_TRUE(write(dir / "inline.gif", FrameWriting::kInline, kHostTaskFinished).first);
  ASSERT_TRUE(write(dir / "background.gif", FrameWriting::kBackground, kHostTaskFinished).first);
  EXPECT_EQ(ReadBytes(dir / "background.gif"), ReadBytes(dir / "inline.gif"));
  Decode(dir / "background.gif");

  write(dir / "dropped.gif", FrameWriting::kBackground, kHostTaskAbandoned);
  EXPECT_EQ(dir.Files(), (std::vector<std::string>{"background.gif", "inline.gif"}));

  const auto [ok, error] = write("/dev/full", FrameWriting::kBackground, kHostTaskFinished);
  EXPECT_FALSE(ok);
  EXPECT_EQ(error, "error writing '/dev/full': No space left on device");
}

TEST(GifFileHost, RefusalsExplainThemselves) {
  TempFolder dir;
  GifFileHost nowhere(dir / "missing/out.gif", nullptr);
  Session lost(nowhere, Task(4, 4, 2));
  EXPECT_EQ(lost.Create(), 0);
  EXPECT_EQ(nowhere.error(), "cannot create '" + dir / "missing/out.gif" + "': No such file or directory");

  GifFileHost host(dir / "out.gif", nullptr);
  Session s(host, Task(4, 4, 2));
  ImageBlock big = Frame(5, 4, 1);
  EXPECT_EQ(s.Add(big, 1, -1, 0), 0);  // no task yet
  ASSERT_EQ(s.Create(), 1);
  EXPECT_EQ(s.Create(), 0);  // one at a time
  EXPECT_EQ(s.Add(big, 1, -1, 0), 0);
  EXPECT_NE(host.error().find("does not fit"), std::string::npos);
  EXPECT_EQ(host.Call(12345, kHostAddComment, 0, const_cast<char*>("x")), 0);  // not our task
  EXPECT_EQ(host.Call(0, kHostChooseColour, 0, nullptr), 0);
  ASSERT_EQ(s.Close(kHostTaskAbandoned), 1);
  EXPECT_TRUE(dir.Files().empty());

  TaskRecord bad = Task(4, 4, 9);
  GifFileHost odd(dir / "odd.gif", nullptr);
  EXPECT_EQ(odd.Call(0, kHostCreateTask, 0, &bad), 0);
  EXPECT_TRUE(dir.Files().empty());
}

TEST(GifFileHost, StatusAndProgressReachTheBar) {
  std::ostringstream err;
  ProgressBar bar(err, true);
  GifFileHost host("unused.gif", &bar);
  EXPECT_EQ(host.Call(0, kHostStatusText, 0, const_cast<char*>("Remapping")), 1);
  EXPECT_EQ(host.Call(0, kHostProgress, 3, reinterpret_cast<void*>(intptr_t{4})), 1);
  EXPECT_NE(err.str().find(FormatProgressLine("Remapping", 3, 4)), std::string::npos);
}

}  // namespace
}  // namespace tess::cli
