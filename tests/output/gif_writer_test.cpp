// The block writer: a whole animation read back by the test decoder, single
// fields pinned at their offsets, and misuse or a failing sink refused
// without a stray byte.
#include <gtest/gtest.h>

#include <string>

#include "output/gif_writer.h"
#include "tests/output/gif_test_images.h"

namespace tess {
namespace {

using testing::DecodedGif;
using testing::MustDecode;
using testing::IndexImage;
using testing::Indices;

std::vector<uint8_t> Ramp(int entries, int offset) {
  std::vector<uint8_t> t;
  for (int i = 0; i < entries; ++i)
    for (int c = 0; c < 3; ++c) t.push_back(static_cast<uint8_t>(i * 3 + c + offset));
  return t;
}

GifScreen Screen(int w, int h, const std::vector<uint8_t>* table, int bits) {
  GifScreen s;
  s.width = w;
  s.height = h;
  s.global_table = table ? table->data() : nullptr;
  s.table_bits = bits;
  return s;
}

// The shape a size-optimising host writes: global table, loop, comments
// (one longer than a sub-block, one empty), a full first frame, then a
// cropped frame at an offset with its own table of another size.
TEST(GifWriter, OptimisedAnimationDecodesFieldByField) {
  const std::vector<uint8_t> global = Ramp(256, 0), local = Ramp(32, 100);
  ImageBlock full = IndexImage(47, 33, 8, 255, 1, false);
  ImageBlock crop = IndexImage(13, 7, 8, 31, 2, true);
  const std::string long_comment(600, 'x');
  MemorySink sink;
  GifWriter w(sink);
  GifScreen screen = Screen(47, 33, &global, 8);
  screen.background_index = 9;
  ASSERT_EQ(w.WriteHeader(screen), GifStatus::kOk);
  ASSERT_EQ(w.WriteLoopExtension(3), GifStatus::kOk);
  ASSERT_EQ(w.WriteComment("made by a test"), GifStatus::kOk);
  ASSERT_EQ(w.WriteGraphicControl({GifControlFlags(GifDisposal::kKeep, false), 10, 0}), GifStatus::kOk);
  ASSERT_EQ(w.WriteFrame({0, 0, 47, 33, 8, nullptr}, full), GifStatus::kOk);
  ASSERT_EQ(w.WriteGraphicControl({GifControlFlags(GifDisposal::kKeep, true), 7, 31}), GifStatus::kOk);
  ASSERT_EQ(w.WriteImageDescriptor({34, 26, 13, 7, 5, local.data()}), GifStatus::kOk);
  ASSERT_EQ(w.WriteImageData(crop), GifStatus::kOk);
  ASSERT_EQ(w.WriteComment(long_comment), GifStatus::kOk);
  ASSERT_EQ(w.WriteComment(""), GifStatus::kOk);
  ASSERT_EQ(w.WriteTrailer(), GifStatus::kOk);
  EXPECT_EQ(w.frame_count(), 2);

  DecodedGif gif = MustDecode(sink.bytes());
  EXPECT_EQ(gif.version, "89a");
  EXPECT_EQ(gif.screen_flags, 0x87);
  EXPECT_EQ(gif.background_index, 9);
  EXPECT_EQ(gif.global_table, global);
  EXPECT_EQ(gif.loop_count, 3);
  EXPECT_EQ(gif.comments, (std::vector<std::string>{"made by a test", long_comment, ""}));
  ASSERT_EQ(gif.frames.size(), 2u);
  EXPECT_EQ(gif.frames[0].control->flags, 0x04);
  EXPECT_EQ(gif.frames[0].descriptor_flags, 0x07);
  EXPECT_EQ(gif.frames[0].indices, Indices(full));
  const auto& f1 = gif.frames[1];
  EXPECT_EQ((std::vector<int>{f1.control->flags, f1.control->transparent_index, f1.control->delay}),
            (std::vector<int>{0x05, 31, 7}));
  EXPECT_EQ((std::vector<int>{f1.left, f1.top, f1.descriptor_flags, f1.lzw.min_code_size}),
            (std::vector<int>{34, 26, 0x84, 5}));
  EXPECT_EQ(f1.local_table, local);
  EXPECT_EQ(f1.indices, Indices(crop));
}

// Offsets of single fields, so a swapped or mis-sized field shows up even if
// the decoder had the same mistake.
TEST(GifWriter, PinsBlockBytes) {
  const std::vector<uint8_t> table = Ramp(2, 0);
  MemorySink sink;
  GifWriter w(sink);
  GifScreen screen = Screen(0x1234, 0x0102, &table, 1);
  screen.colour_resolution = 7;
  screen.table_sorted = true;
  screen.pixel_aspect = 49;
  ASSERT_EQ(w.WriteHeader(screen), GifStatus::kOk);
  ASSERT_EQ(w.WriteLoopExtension(0x0203), GifStatus::kOk);
  ASSERT_EQ(w.WriteGraphicControl({0x1D, 0x0A0B, 0xEE}), GifStatus::kOk);
  ASSERT_EQ(w.WriteImageDescriptor({0x0304, 0x0005, 2, 1, 1, nullptr}), GifStatus::kOk);
  const std::vector<uint8_t> expected = {
      'G', 'I', 'F', '8', '9', 'a', 0x34, 0x12, 0x02, 0x01, 0xF8, 0, 49,  // screen
      0, 1, 2, 3, 4, 5,                                                   // global table
      0x21, 0xFF, 11, 'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E', '2', '.', '0', 3, 1, 0x03, 0x02, 0,
      0x21, 0xF9, 4, 0x1D, 0x0B, 0x0A, 0xEE, 0,           // graphic control
      0x2C, 0x04, 0x03, 0x05, 0x00, 2, 0, 1, 0, 0x00,     // descriptor
  };
  EXPECT_EQ(sink.bytes(), expected);
  EXPECT_EQ(w.state(), GifWriter::State::kDescriptor);

  MemorySink bare;  // no global table: no table flag, size field or table
  ASSERT_EQ(GifWriter(bare).WriteHeader(Screen(1, 1, nullptr, 5)), GifStatus::kOk);
  EXPECT_EQ(bare.bytes().size(), 13u);
  EXPECT_EQ(bare.bytes()[10], 0x00);
}

// Misuse is refused without writing a byte, and the writer can go on.
TEST(GifWriter, BlocksOutOfOrderAreRefusedAndWriteNothing) {
  const std::vector<uint8_t> table = Ramp(16, 0);
  ImageBlock img = IndexImage(4, 4, 4, 15, 1, true);
  MemorySink sink;
  GifWriter w(sink);
  auto refused = [&](GifStatus st) {
    EXPECT_EQ(st, GifStatus::kOutOfOrder);
    return sink.bytes().size();
  };
  // Before the header; then after it, between a control block and its frame,
  // after a descriptor, after the first frame and after the trailer.
  const size_t none = refused(w.WriteGraphicControl({})) + refused(w.WriteFrame({0, 0, 4, 4, 4, nullptr}, img)) +
                      refused(w.WriteComment("x")) + refused(w.WriteLoopExtension(0)) + refused(w.WriteTrailer());
  EXPECT_EQ(none, 0u);
  ASSERT_EQ(w.WriteHeader(Screen(8, 8, &table, 4)), GifStatus::kOk);
  size_t size = sink.bytes().size();
  EXPECT_EQ(refused(w.WriteHeader(Screen(8, 8, &table, 4))) + refused(w.WriteImageData(img)), 2 * size);
  ASSERT_EQ(w.WriteGraphicControl({}), GifStatus::kOk);
  size = sink.bytes().size();
  EXPECT_EQ(refused(w.WriteGraphicControl({})) + refused(w.WriteComment("between")) + refused(w.WriteTrailer()),
            3 * size);
  ASSERT_EQ(w.WriteImageDescriptor({4, 4, 4, 4, 4, nullptr}), GifStatus::kOk);
  refused(w.WriteComment("x"));
  refused(w.WriteImageDescriptor({0, 0, 4, 4, 4, nullptr}));
  ASSERT_EQ(w.WriteImageData(img), GifStatus::kOk);
  refused(w.WriteLoopExtension(0));  // only before the first frame
  ASSERT_EQ(w.WriteTrailer(), GifStatus::kOk);
  size = sink.bytes().size();
  EXPECT_EQ(refused(w.WriteComment("late")) + refused(w.WriteFrame({0, 0, 4, 4, 4, nullptr}, img)) +
                refused(w.WriteTrailer()),
            3 * size);
  EXPECT_EQ(MustDecode(sink.bytes()).frames.size(), 1u);
}

TEST(GifWriter, BadArgumentsAreRefusedAndWriteNothing) {
  const std::vector<uint8_t> table = Ramp(256, 0);
  MemorySink sink;
  GifWriter w(sink);
  for (GifScreen bad : {Screen(0, 5, &table, 8), Screen(65536, 5, &table, 8), Screen(5, 5, &table, 9),
                        Screen(5, 5, &table, 0)})
    EXPECT_EQ(w.WriteHeader(bad), GifStatus::kBadArgument) << bad.width << " " << bad.table_bits;
  EXPECT_TRUE(sink.bytes().empty());
  ASSERT_EQ(w.WriteHeader(Screen(20, 10, &table, 8)), GifStatus::kOk);
  const size_t size = sink.bytes().size();

  ImageBlock img = IndexImage(10, 5, 8, 255, 1, true);
  // Past the right, past the bottom, off the left, 9 and 0 bits, size mismatch.
  for (GifImageDescriptor d : {GifImageDescriptor{11, 0, 10, 5, 8, nullptr}, {0, 6, 10, 5, 8, nullptr},
                               {-1, 0, 10, 5, 8, nullptr}, {0, 0, 10, 5, 9, nullptr},
                               {0, 0, 10, 5, 0, nullptr}, {0, 0, 9, 5, 8, nullptr}})
    EXPECT_EQ(w.WriteFrame(d, img), GifStatus::kBadArgument) << d.left << "," << d.top << " " << d.bits;
  EXPECT_EQ(w.WriteFrame({0, 0, 10, 5, 4, nullptr}, img), GifStatus::kIndexTooLarge);
  EXPECT_EQ(w.WriteFrame({0, 0, 10, 5, 8, nullptr}, ImageCreate(10, 5, nullptr, 24)),
            GifStatus::kBadArgument);
  EXPECT_EQ(sink.bytes().size(), size);
  EXPECT_EQ(w.WriteFrame({10, 5, 10, 5, 8, nullptr}, img), GifStatus::kOk);  // in the corner
}

// Data encoded elsewhere goes in as it stands, after its descriptor only and
// with the descriptor's code size; the frame decodes as if written here.
TEST(GifWriter, EncodedImageDataFollowsItsDescriptor) {
  const std::vector<uint8_t> table = Ramp(16, 0);
  ImageBlock img = IndexImage(4, 4, 4, 15, 1, true);
  MemorySink encoded;
  LzwEncoder lzw;
  ASSERT_EQ(lzw.Encode(encoded, img, 4), GifStatus::kOk);
  const std::vector<uint8_t>& block = encoded.bytes();

  MemorySink sink;
  GifWriter w(sink);
  ASSERT_EQ(w.WriteHeader(Screen(8, 8, &table, 4)), GifStatus::kOk);
  EXPECT_EQ(w.WriteEncodedImageData(block.data(), block.size()), GifStatus::kOutOfOrder);
  ASSERT_EQ(w.WriteImageDescriptor({2, 2, 4, 4, 3, nullptr}), GifStatus::kOk);
  const size_t size = sink.bytes().size();
  EXPECT_EQ(w.WriteEncodedImageData(block.data(), block.size()), GifStatus::kBadArgument);  // code size 4, not 3
  EXPECT_EQ(w.WriteEncodedImageData(block.data(), block.size() - 1), GifStatus::kBadArgument);  // no terminator
  EXPECT_EQ(sink.bytes().size(), size);

  MemorySink good;
  GifWriter g(good);
  ASSERT_EQ(g.WriteHeader(Screen(8, 8, &table, 4)), GifStatus::kOk);
  ASSERT_EQ(g.WriteImageDescriptor({2, 2, 4, 4, 4, nullptr}), GifStatus::kOk);
  ASSERT_EQ(g.WriteEncodedImageData(block.data(), block.size()), GifStatus::kOk);
  ASSERT_EQ(g.WriteTrailer(), GifStatus::kOk);
  DecodedGif gif = MustDecode(good.bytes());
  ASSERT_EQ(gif.frames.size(), 1u);
  EXPECT_EQ(gif.frames[0].indices, Indices(img));
}

// A sink that fails part-way leaves the writer failed: every later call says
// so instead of appending to a broken file.
TEST(GifWriter, AFailingSinkFailsTheWriterForGood) {
  const std::vector<uint8_t> table = Ramp(256, 0);
  ImageBlock img = IndexImage(64, 64, 8, 255, 4, true);
  for (size_t budget : {size_t{5}, size_t{800}, size_t{2000}}) {  // header, table, image data
    SCOPED_TRACE(budget);
    testing::FailingSink sink(budget);
    GifWriter w(sink);
    GifStatus st = w.WriteHeader(Screen(64, 64, &table, 8));
    if (st == GifStatus::kOk) st = w.WriteGraphicControl({});
    if (st == GifStatus::kOk) st = w.WriteFrame({0, 0, 64, 64, 8, nullptr}, img);
    EXPECT_EQ(st, GifStatus::kWriteFailed);
    EXPECT_EQ(w.state(), GifWriter::State::kFailed);
    EXPECT_EQ(w.WriteComment("x"), GifStatus::kWriteFailed);
    EXPECT_EQ(w.WriteTrailer(), GifStatus::kWriteFailed);
  }
}

}  // namespace
}  // namespace tess
