// The marker editor's model: columns agree with the renderer's offsets,
// hits pick the right handle, edits keep the table in order around the
// marker they touch and respect the 64-marker limit, and the picture puts
// the band and handles where the hits look for them. Also the drag cursor
// resource, whose bytes the Windows build compiles in unchecked.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "base/alloc.h"
#include "base/bytes.h"
#include "fills/fountain_editor.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

constexpr Colour kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000;

FountainRecord Three(uint32_t mode = kFountainClosed) {
  FountainRecord r;
  r.mode = mode;
  r.start_colour = 0xAA000000;  // the unused top byte must survive edits
  r.end_colour = 0xFFFFFFFF;
  r.markers = {MakeMarker(64, kRed), MakeMarker(128, kGreen), MakeMarker(192, kBlue)};
  r.marker_count = 3;
  return r;
}

std::vector<uint32_t> Positions(const FountainRecord& r) {
  std::vector<uint32_t> p;
  for (size_t i = 0; i < FountainMarkerCount(r); ++i) p.push_back(MarkerPosition(r.markers[i]));
  return p;
}

// 401 x 60: a band 351 wide, wider than 255, as the dialog's is.
const FountainEditorLayout kLayout = FountainEditorLayoutFor(401, 60);

// ------------------------------------------------------------------ layout

TEST(FountainEditorLayout, ColumnsAreTheRenderersOffsets) {
  EXPECT_EQ(kLayout.band.width(), 351);
  EXPECT_EQ(MarkerX(kLayout, 0), kLayout.band.left);
  EXPECT_EQ(MarkerX(kLayout, 255), kLayout.band.right);
  const FountainRecord r;  // the seven default markers
  const MarkerOffsetTable offsets = MarkerOffsets(r, kLayout.band.width());
  for (size_t i = 0; i < 7; ++i)
    EXPECT_EQ(MarkerX(kLayout, MarkerPosition(r.markers[i])), kLayout.band.left + offsets[i]);
  for (uint32_t p = 0; p <= 255; ++p) ASSERT_EQ(PositionAtX(kLayout, MarkerX(kLayout, p)), p);
  EXPECT_EQ(PositionAtX(kLayout, -50), 0u);
  EXPECT_EQ(PositionAtX(kLayout, 5000), 255u);
}

TEST(FountainEditorLayout, NarrowBandsAndTinyWindowsStaySane) {
  // Fewer columns than positions: several share one, and the lowest answers.
  const FountainEditorLayout narrow = FountainEditorLayoutFor(150, 40);
  ASSERT_EQ(narrow.band.width(), 100);
  EXPECT_EQ(PositionAtX(narrow, MarkerX(narrow, 3)), 3u);  // 3 * 100 / 255 = 1.17: alone at column 1
  EXPECT_EQ(MarkerX(narrow, PositionAtX(narrow, MarkerX(narrow, 5))), MarkerX(narrow, 5));
  const FountainEditorLayout tiny = FountainEditorLayoutFor(0, 0);
  EXPECT_GE(tiny.band.width(), 1);
  EXPECT_GE(tiny.band.height(), 1);
  EXPECT_LT(tiny.band.bottom, tiny.handle_top);
}

// ------------------------------------------------------------------ hits

TEST(FountainEditorHits, HandlesBandBoxesAndEmptyPlaces) {
  const FountainRecord r = Three();
  const int strip = kLayout.handle_bottom - 2, band = kLayout.band.top + 5;
  const int x128 = MarkerX(kLayout, 128);
  EXPECT_EQ(HitFountainEditor(r, kLayout, {x128 + 6, strip}), MarkerHit(1));
  EXPECT_EQ(HitFountainEditor(r, kLayout, {x128 - 6, strip}), MarkerHit(1));
  EXPECT_EQ(HitFountainEditor(r, kLayout, {x128 + 7, strip}).kind, FountainHitKind::kNone);
  // In the band a press must be close, so markers can be added near others.
  EXPECT_EQ(HitFountainEditor(r, kLayout, {x128 + 2, band}), MarkerHit(1));
  EXPECT_EQ(HitFountainEditor(r, kLayout, {x128 + 3, band}).kind, FountainHitKind::kNone);
  EXPECT_TRUE(InMarkerArea(kLayout, {x128 + 3, band}));
  EXPECT_FALSE(InMarkerArea(kLayout, {x128, kLayout.handle_bottom}));
  EXPECT_FALSE(InMarkerArea(kLayout, {kLayout.start_box.left, band}));

  const Point start{kLayout.start_box.left + 3, kLayout.start_box.top + 3};
  const Point end{kLayout.end_box.left + 3, kLayout.end_box.top + 3};
  EXPECT_EQ(HitFountainEditor(r, kLayout, start).kind, FountainHitKind::kStart);
  EXPECT_EQ(HitFountainEditor(r, kLayout, end).kind, FountainHitKind::kNone);  // closed: no end box
  EXPECT_EQ(HitFountainEditor(Three(kFountainOpen), kLayout, end).kind, FountainHitKind::kEnd);
}

TEST(FountainEditorHits, NearestWinsAndTheLaterOneOnATie) {
  FountainRecord r = Three();
  r.markers[1] = MakeMarker(64, kGreen);  // two markers on one column
  const int strip = kLayout.handle_bottom - 2;
  EXPECT_EQ(HitFountainEditor(r, kLayout, {MarkerX(kLayout, 64), strip}), MarkerHit(1));
  r.markers[1] = MakeMarker(66, kGreen);
  EXPECT_EQ(HitFountainEditor(r, kLayout, {MarkerX(kLayout, 64), strip}), MarkerHit(0));
  // A count beyond 64 from a foreign file reads only the 64 markers there are.
  r.marker_count = 1000;
  EXPECT_NO_FATAL_FAILURE(HitFountainEditor(r, kLayout, {MarkerX(kLayout, 255), strip}));
}

// ------------------------------------------------------------------ edits

TEST(FountainEditorEdits, AddKeepsOrderAndStopsAt64) {
  FountainRecord r = Three();
  EXPECT_EQ(AddFountainMarker(r, 10, 0x111111), 0u);
  EXPECT_EQ(AddFountainMarker(r, 128, 0x222222), 3u);  // after the marker already at 128
  EXPECT_EQ(AddFountainMarker(r, 255, 0x333333), 5u);
  EXPECT_EQ(Positions(r), (std::vector<uint32_t>{10, 64, 128, 128, 192, 255}));
  EXPECT_EQ(MarkerColour(r.markers[3]), 0x222222u);
  while (FountainMarkerCount(r) < kFountainMaxMarkers) ASSERT_TRUE(AddFountainMarker(r, 100, 0));
  const FountainBytes full = SerializeFountainRecord(r);
  EXPECT_FALSE(AddFountainMarker(r, 5, 0));
  EXPECT_EQ(SerializeFountainRecord(r), full);
  r.marker_count = 70;  // a foreign count is full too
  EXPECT_FALSE(AddFountainMarker(r, 5, 0));
}

TEST(FountainEditorEdits, MovePassesNeighboursButNotEqualOnes) {
  FountainRecord r = Three();
  EXPECT_EQ(MoveFountainMarker(r, 2, 100), 1u);
  EXPECT_EQ(Positions(r), (std::vector<uint32_t>{64, 100, 128}));
  EXPECT_EQ(r.markers[1], MakeMarker(100, kBlue));
  EXPECT_EQ(MoveFountainMarker(r, 0, 128), 1u);  // passes 100, stops at the equal 128
  EXPECT_EQ(Positions(r), (std::vector<uint32_t>{100, 128, 128}));
  EXPECT_EQ(MarkerColour(r.markers[2]), kGreen);
  EXPECT_EQ(MoveFountainMarker(r, 2, 0), 0u);
  EXPECT_EQ(Positions(r), (std::vector<uint32_t>{0, 100, 128}));
  // An unsorted table is only reordered around the marker that moves.
  FountainRecord u = Three();
  u.markers = {MakeMarker(20, kRed), MakeMarker(50, kGreen), MakeMarker(200, kBlue), MakeMarker(10, 0)};
  u.marker_count = 4;
  EXPECT_EQ(MoveFountainMarker(u, 1, 60), 1u);
  EXPECT_EQ(Positions(u), (std::vector<uint32_t>{20, 60, 200, 10}));
}

TEST(FountainEditorEdits, DeleteClosesTheGapAndClearsTheSlot) {
  FountainRecord r = Three();
  EXPECT_TRUE(DeleteFountainMarker(r, 0));
  EXPECT_EQ(Positions(r), (std::vector<uint32_t>{128, 192}));
  EXPECT_EQ(r.markers[2], 0u);
  EXPECT_FALSE(DeleteFountainMarker(r, 2));
  EXPECT_TRUE(DeleteFountainMarker(r, 1));
  EXPECT_TRUE(DeleteFountainMarker(r, 0));
  EXPECT_FALSE(DeleteFountainMarker(r, 0));
  EXPECT_EQ(r.marker_count, 0u);
}

TEST(FountainEditorEdits, ColoursOfHandles) {
  FountainRecord r = Three();
  EXPECT_EQ(HitColour(r, {FountainHitKind::kStart, 0}), 0u);
  EXPECT_EQ(HitColour(r, {FountainHitKind::kEnd, 0}), 0u);  // closed: back to the start
  EXPECT_EQ(HitColour(Three(kFountainOpen), {FountainHitKind::kEnd, 0}), 0xFFFFFFu);
  EXPECT_FALSE(HitColour(r, MarkerHit(3)));
  EXPECT_FALSE(HitColour(r, {}));
  EXPECT_TRUE(SetHitColour(r, {FountainHitKind::kStart, 0}, 0xFF123456));
  EXPECT_EQ(r.start_colour, 0xAA123456u);
  EXPECT_TRUE(SetHitColour(r, MarkerHit(2), 0x654321));
  EXPECT_EQ(r.markers[2], MakeMarker(192, 0x654321));
  EXPECT_FALSE(SetHitColour(r, MarkerHit(3), 0));
  EXPECT_FALSE(SetHitColour(r, {}, 0));
}

// ------------------------------------------------------------------ picture

TEST(FountainEditorPicture, BandHandlesAndSelectionWhereTheHitsLook) {
  const FountainRecord r = Three(kFountainOpen);
  FountainEditorLook look;
  look.selected = MarkerHit(1);
  ImageBlock picture = RenderFountainEditor(r, 401, 60, look);
  ASSERT_TRUE(picture);
  ImageBlock band = RenderFountain(r, kLayout.band.width(), kLayout.band.height());
  for (int y = 0; y < kLayout.band.height(); y += 7)
    for (int x = 0; x < kLayout.band.width(); ++x)
      ASSERT_EQ(ImageGetPixel(picture, kLayout.band.left + x, kLayout.band.top + y), ImageGetPixel(band, x, y));
  EXPECT_EQ(ImageGetPixel(picture, kLayout.band.left - 1, kLayout.band.top), look.frame);
  // Each swatch shows its marker's colour; the selected one has a thick edge.
  const int swatch_y = kLayout.handle_bottom - 4;
  EXPECT_EQ(ImageGetPixel(picture, MarkerX(kLayout, 64), swatch_y), kRed);
  EXPECT_EQ(ImageGetPixel(picture, MarkerX(kLayout, 192), swatch_y), kBlue);
  EXPECT_EQ(ImageGetPixel(picture, MarkerX(kLayout, 128), swatch_y), kGreen);
  EXPECT_EQ(ImageGetPixel(picture, MarkerX(kLayout, 128) - kEditorHandleHalfWidth + 1, swatch_y), look.selection);
  EXPECT_EQ(ImageGetPixel(picture, MarkerX(kLayout, 64) - kEditorHandleHalfWidth + 1, swatch_y), kRed);
  EXPECT_EQ(ImageGetPixel(picture, kLayout.end_box.left + 5, kLayout.end_box.top + 5), 0xFFFFFFu);
  ImageBlock closed = RenderFountainEditor(Three(), 401, 60, look);
  EXPECT_EQ(ImageGetPixel(closed, kLayout.end_box.left + 5, kLayout.end_box.top + 5), look.background);
}

TEST(FountainEditorPicture, ColourAtAColumnIsWhatTheBandShows) {
  const FountainRecord r = Three();
  ImageBlock picture = RenderFountainEditor(r, 401, 60, {});
  for (int x : {kLayout.band.left, MarkerX(kLayout, 32), MarkerX(kLayout, 100), kLayout.band.right - 1})
    EXPECT_EQ(FountainColourAtX(r, kLayout, x), ImageGetPixel(picture, x, kLayout.band.top));
  EXPECT_EQ(FountainColourAtX(r, kLayout, -100), ImageGetPixel(picture, kLayout.band.left, kLayout.band.top));
}

TEST(FountainEditorPicture, ShortMemoryGivesNothingAndSizesMustBePositive) {
  EXPECT_FALSE(RenderFountainEditor(Three(), 0, 60, {}));
  for (long fail_at = 0;; ++fail_at) {
    AllocFailureScope failure(fail_at);
    ImageBlock picture = RenderFountainEditor(Three(), 120, 40, {});
    if (failure.Count() <= fail_at) {
      EXPECT_TRUE(picture);
      EXPECT_GT(fail_at, 5) << "canvas, band, segments and the pointers' polygons";
      break;
    }
    EXPECT_FALSE(picture) << "allocation " << fail_at;
  }
  AllocFailureScope failure(0);
  EXPECT_FALSE(FountainColourAtX(Three(), kLayout, 10));
}

// ------------------------------------------------------------------ drag cursor

// resources/fountain_drag.cur: one 32 x 32 monochrome image (header, two
// palette entries, colour rows, then mask rows) with its hot spot on the
// arrow's tip, which must be opaque.
TEST(FountainDragCursor, IsOneMonochromeCursorWithTheHotSpotOnInk) {
  std::ifstream in(testing::SourceDir() + "/resources/fountain_drag.cur", std::ios::binary);
  std::vector<uint8_t> b((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  ASSERT_EQ(b.size(), 22u + 40 + 8 + 128 + 128);
  EXPECT_EQ(get_u16le(&b[0]), 0);  // reserved
  EXPECT_EQ(get_u16le(&b[2]), 2);  // a cursor
  EXPECT_EQ(get_u16le(&b[4]), 1);  // one image
  EXPECT_EQ(b[6], 32);
  EXPECT_EQ(b[7], 32);
  const int hot_x = get_u16le(&b[10]), hot_y = get_u16le(&b[12]);
  EXPECT_EQ(get_u32le(&b[14]), b.size() - 22);
  ASSERT_EQ(get_u32le(&b[18]), 22u);
  const uint8_t* bih = &b[22];
  EXPECT_EQ(get_u32le(bih), 40u);
  EXPECT_EQ(static_cast<int32_t>(get_u32le(bih + 4)), 32);
  EXPECT_EQ(static_cast<int32_t>(get_u32le(bih + 8)), 64);  // colour and mask rows
  EXPECT_EQ(get_u16le(bih + 12), 1);
  EXPECT_EQ(get_u16le(bih + 14), 1);
  EXPECT_EQ(get_u32le(bih + 16), 0u);
  const uint8_t* mask = bih + 40 + 8 + 128;  // bottom-up rows of 4 bytes
  const int row = 31 - hot_y;
  EXPECT_EQ((mask[row * 4 + hot_x / 8] >> (7 - hot_x % 8)) & 1, 0) << "the hot spot is transparent";
}

}  // namespace
}  // namespace tess
