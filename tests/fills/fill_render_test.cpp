// Fill rendering: every kind, the gradient type crossing, the conical sweep
// at its edge cases and pinned by checksum, the texture's centre crop, and
// short memory at every allocation.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "base/bytes.h"
#include "fills/fill_render.h"
#include "tests/support/golden.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_support.h"
#include "textures/texture_engine.h"

namespace tess {
namespace {

constexpr Colour kStart = 0x00204080, kEnd = 0x00F0C010;

GradientRecord Conical(int32_t w, int32_t h, int32_t rotation = 0, int32_t cx = 0, int32_t cy = 0) {
  return {kStart, kEnd, kGradientConical, rotation, cx, cy, {0, 0, w, h}};
}

ImageBlock Render(GradientRecord g) { return RenderGradient(g); }

TEST(Conical, EdgeCases) {
  const Colour mid = MakeColour((0x80 + 0x10) / 2, (0x40 + 0xC0) / 2, (0x20 + 0xF0) / 2);  // t = 1/2
  // With dx = 0 the angle is 90 above the centre and on its row, 270 below;
  // rotation 90 turns those into the start and end colours.
  ImageBlock column = Render(Conical(1, 5, 90));
  for (int y = 0; y < 5; ++y) EXPECT_EQ(ImageGetPixel(column, 0, y), y <= 2 ? kStart : kEnd) << y;
  ImageBlock row = Render(Conical(5, 1));
  const Colour along[] = {kStart, kStart, mid, kEnd, kEnd};
  for (int x = 0; x < 5; ++x) EXPECT_EQ(ImageGetPixel(row, x, 0), along[x]) << x;
  ImageBlock square = Render(Conical(100, 100));
  EXPECT_EQ(ImageGetPixel(square, 0, 50), kStart);
  EXPECT_EQ(ImageGetPixel(square, 99, 50), kEnd);
  // r = 360 + 90: above the centre 540 - 360 = 180, below 720 - 360 -> 0.
  ImageBlock turned = Render(Conical(100, 100, -90));
  EXPECT_EQ(ImageGetPixel(turned, 50, 0), kEnd);
  EXPECT_EQ(ImageGetPixel(turned, 50, 99), kStart);
  // centre x = 50 puts the centre at x = W, -50 at x = 0.
  ImageBlock right = Render(Conical(100, 100, 0, 50));
  ImageBlock left = Render(Conical(100, 100, 0, -50));
  for (int x = 0; x < 100; ++x) {
    EXPECT_EQ(ImageGetPixel(right, x, 50), kStart) << x;
    EXPECT_EQ(ImageGetPixel(left, x, 50), x == 0 ? mid : kEnd) << x;
  }
}

// Radial and square reach the engine crossed over as shape codes 2 and 1.
TEST(RenderGradient, TypesCrossOverToTheEngineShapes) {
  const struct { uint32_t type, after; int engine_shape; } cases[] = {
      {kGradientLinear, 0, kGradientShapeLinear}, {kGradientRadial, 2, kGradientShapeRadial},
      {kGradientSquare, 1, kGradientShapeSquare}, {kGradientConical, 3, -1}, {4, 4, -1}};
  for (const auto& c : cases) {
    GradientRecord g{kStart, kEnd, c.type, 30, 10, -10, {0, 0, 47, 33}};
    ImageBlock image = RenderGradient(g);
    EXPECT_EQ(g.grad_type, c.after) << c.type;
    EXPECT_EQ(bool(image), c.type <= kGradientConical) << c.type;
    if (c.engine_shape < 0) continue;
    GradientRequest request{47, 33, uint32_t(c.engine_shape), kStart, kEnd, 30, 24, 10, -10};
    EXPECT_EQ(testing::Pixels(image), testing::Pixels(TextureEngineGradient(request))) << c.type;
  }
}

TEST(RenderFill, SimpleAndUnknownKinds) {
  FillDescriptor r;
  r.colour = 0x00123456;
  for (Colour c : testing::Pixels(RenderFill(r, 47, 33))) ASSERT_EQ(c, 0x00123456u);
  r.kind = 7;
  ImageBlock unknown = RenderFill(r, 47, 33);
  EXPECT_EQ(unknown.width(), 47);
  for (Colour c : testing::Pixels(unknown)) ASSERT_EQ(c, 0u);
  EXPECT_FALSE(RenderFill(r, 0, 5));
}

// The texture is made square and its centre taken: 200 x 100 takes rows
// 50..149 of a 200 x 200 square.
TEST(RenderFill, TextureTakesTheCentreOfItsSquare) {
  FillDescriptor r;
  r.kind = kFillTexture;
  const struct { int w, h, x0, y0; } cases[] = {{200, 100, 0, 50}, {100, 200, 50, 0}, {47, 33, 0, 7}};
  for (const auto& c : cases) {
    const int side = std::max(c.w, c.h);
    FillTextureBlock block = r.texture;
    SetTextureRect(block, {0, 0, side, side});
    ImageBlock square = GenerateTexture(block), fill = RenderFill(r, c.w, c.h);
    ASSERT_TRUE(fill);
    for (int y = 0; y < c.h; ++y)
      for (int x = 0; x < c.w; ++x)
        ASSERT_EQ(ImageGetPixel(fill, x, y), ImageGetPixel(square, c.x0 + x, c.y0 + y)) << c.w;
  }
}

// Every allocation failing in turn gives null, for every kind (ASan checks
// that nothing leaks on the way out).
TEST(RenderFill, ShortMemoryAtAnyAllocationGivesNull) {
  for (uint32_t kind : {0u, 1u, 2u, 3u, 7u})
    for (uint32_t type : {0u, 1u, 2u, 3u}) {
      FillDescriptor r;
      r.kind = kind;
      r.gradient.grad_type = type;
      for (long fail_at = 0;; ++fail_at) {
        AllocFailureScope fail(fail_at);
        ImageBlock image = RenderFill(r, 200, 100);
        if (fail.Count() <= fail_at) {
          EXPECT_TRUE(image);
          break;
        }
        EXPECT_FALSE(image) << "kind " << kind << " type " << type << " allocation " << fail_at;
      }
    }
}

// A pattern file made byte by byte, as another program would write it.
TEST(RenderFill, HandMadeConicalPatternFile) {
  testing::TempFolder folder;
  const std::string path = folder / "Fill03001.flp";
  std::vector<uint8_t> bytes(854);
  std::memcpy(bytes.data(), "BRNDFILB", 8);
  const struct { size_t offset; uint32_t value; } fields[] = {
      {277, kFillGradient}, {289, kStart}, {293, kEnd}, {297, 3}, {301, 90}, {305, 0}, {309, 0}};
  for (const auto& f : fields) put_u32le(bytes.data() + f.offset, f.value);
  testing::WriteBytes(path, bytes);
  ImageBlock image = RenderFill(CreateFillDescriptor(path, 0, true), 100, 100);
  // r = 270: above the centre a = 90 + 270 = 360 -> 0; below 270 + 270 - 360
  // = 180; left of it 0 + 270 -> 360 - 270 = 90, halfway.
  EXPECT_EQ(ImageGetPixel(image, 50, 0), kStart);
  EXPECT_EQ(ImageGetPixel(image, 50, 99), kEnd);
  EXPECT_EQ(ImageGetPixel(image, 0, 50), MakeColour(0x48, 0x80, 0x88));
}

TEST(FillGolden, ConicalMatchesItsChecksums) {
  testing::GoldenSet golden("fills");
  golden.Add("conical_0", testing::ImageChecksum(Render(Conical(47, 33))));
  golden.Add("conical_30_13_minus7", testing::ImageChecksum(Render(Conical(47, 33, 30, 13, -7))));
  golden.Add("conical_minus120_50_50", testing::ImageChecksum(Render(Conical(47, 33, -120, 50, 50))));
  EXPECT_TRUE(golden.Verify());
}

}  // namespace
}  // namespace tess
