// Fill rendering: one small function per fill kind, the gradient dispatch
// with its conical sweep, and the placeholder texture and tile sources.
// Loops run over row pointers; everything that does not change per pixel
// (colours, centre, the sweep's level colours) is worked out before them.
#include "fills/fill_render.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "textures/texture_engine.h"

namespace tess {
namespace {

// Width and height of `r`, or false when either is not a positive int32.
bool RectSize(const Rect& r, int32_t& width, int32_t& height) {
  const int64_t w = int64_t{r.right} - r.left, h = int64_t{r.bottom} - r.top;
  if (w <= 0 || h <= 0 || w > std::numeric_limits<int32_t>::max() ||
      h > std::numeric_limits<int32_t>::max())
    return false;
  width = static_cast<int32_t>(w);
  height = static_cast<int32_t>(h);
  return true;
}

bool HasSize(const ImageBlock& image, int32_t width, int32_t height) {
  return image && image.width() == width && image.height() == height && image.bits() == 24;
}

inline void PutColour(uint8_t* p, Colour c) {
  p[0] = ColourBlue(c);
  p[1] = ColourGreen(c);
  p[2] = ColourRed(c);
}

// ------------------------------------------------------------ fill kinds

ImageBlock RenderSimple(Colour colour, int32_t width, int32_t height) {
  ImageBlock image = ImageCreate(width, height, nullptr, 24);
  if (!image) return {};
  uint8_t* first = image.Row(0);
  for (int32_t x = 0; x < width; ++x) PutColour(first + 3 * static_cast<size_t>(x), colour);
  for (int32_t y = 1; y < height; ++y) std::memcpy(image.Row(y), first, 3 * static_cast<size_t>(width));
  return image;
}

ImageBlock RenderGradientFill(const GradientRecord& gradient, int32_t width, int32_t height) {
  GradientRecord copy = gradient;
  copy.grad_rect = {0, 0, width, height};
  ImageBlock image = RenderGradient(copy);
  return HasSize(image, width, height) ? std::move(image) : ImageBlock();
}

// The centre of the generated square, taken straight from it rather than
// through an intermediate crop: same pixels, one image fewer.
ImageBlock RenderTextureFill(const FillTextureBlock& texture, int32_t width, int32_t height) {
  const int32_t side = std::max(width, height);
  FillTextureBlock copy = texture;
  SetTextureRect(copy, {0, 0, side, side});
  ImageBlock square = GenerateTexture(copy);
  if (!HasSize(square, side, side)) return {};
  if (width == side && height == side) return square;
  ImageBlock image = ImageCreate(width, height, nullptr, 24);
  if (!image) return {};
  const size_t x0 = static_cast<size_t>((side - width) / 2);
  const int32_t y0 = (side - height) / 2;
  for (int32_t y = 0; y < height; ++y)
    std::memcpy(image.Row(y), square.Row(y0 + y) + 3 * x0, 3 * static_cast<size_t>(width));
  return image;
}

ImageBlock RenderTileFill(const FillTileBlock& tile, int32_t width, int32_t height) {
  ImageBlock image = RenderTile(tile, width, height);
  return HasSize(image, width, height) ? std::move(image) : ImageBlock();
}

// ------------------------------------------------------------- gradients

// The texture engine's shape code for each gradient type it renders.
constexpr uint32_t kEngineShape[] = {
    kGradientShapeLinear,  // kGradientLinear
    kGradientShapeRadial,  // kGradientRadial
    kGradientShapeSquare,  // kGradientSquare
};

ImageBlock RenderEngineGradient(const GradientRecord& record, int32_t width, int32_t height) {
  GradientRequest request;
  request.width = width;
  request.height = height;
  request.shape = record.grad_type;
  request.start = record.grad_start;
  request.end = record.grad_end;
  request.rotation = record.rotation;
  request.centre_x = record.centre_x;
  request.centre_y = record.centre_y;
  TextureBlock block;
  WriteGradientRequest(block, request);
  ImageBlock image;
  TextureEngineProc(block, &image);
  return image;
}

// The sweep step by step as fill_render.h gives it; only the colours of the
// 257 levels and each row's dy are worked out outside the pixel loop.
ImageBlock RenderConical(const GradientRecord& g, int32_t width, int32_t height) {
  ImageBlock image = ImageCreate(width, height, nullptr, 24);
  if (!image) return {};
  // Keeps r within 0..720, so each "while" below turns at most twice even
  // for a foreign record's rotation; within +-360 nothing changes.
  int32_t rotation = g.rotation;
  if (rotation > 360 || rotation < -360) rotation %= 360;
  double r = 360 - rotation;
  if (r < 0) r += 360;
  const double px = std::trunc(width * (g.centre_x * 0.01 + 0.5));
  const double py = std::trunc(height * (0.5 - g.centre_y * 0.01));

  // The colour of each quantised t = j / 256, j = 0..256.
  const Colour s = g.grad_start, e = g.grad_end;
  const double start[3] = {static_cast<double>(ColourBlue(s)), static_cast<double>(ColourGreen(s)),
                           static_cast<double>(ColourRed(s))};
  const double end[3] = {static_cast<double>(ColourBlue(e)), static_cast<double>(ColourGreen(e)),
                         static_cast<double>(ColourRed(e))};
  uint8_t level[257][3];
  for (int j = 0; j <= 256; ++j) {
    const double t = j / 256.0;
    for (int c = 0; c < 3; ++c)
      level[j][c] = static_cast<uint8_t>(static_cast<int>((1 - t) * start[c] + t * end[c]) & 0xFF);
  }

  for (int32_t y = 0; y < height; ++y) {
    const double dy = y - py;
    const double a_vertical = dy >= 1 ? 270 : 90;
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < width; ++x, p += 3) {
      const double dx = x - px;
      double a = a_vertical;
      if (dx != 0) {
        a = std::atan(dy / dx) * 57.29577951308232;
        if (dx > 0) a += 180;
        while (a < 0) a += 360;
      }
      a = r + a;
      while (a > 360) a -= 360;
      if (a > 180) a = 360 - a;
      const double t = a * (1.0 / 180);  // not a / 180: they differ in the last bit
      const int j = std::clamp(static_cast<int>(t * 256), 0, 256);
      p[0] = level[j][0];
      p[1] = level[j][1];
      p[2] = level[j][2];
    }
  }
  return image;
}

// -------------------------------------------------------- placeholders

// Two colours in a checker of an even number of cells of about `cell`
// pixels across each side, so opposite edges always meet unlike cells.
ImageBlock CheckerImage(int32_t width, int32_t height, int32_t cell, Colour a, Colour b) {
  ImageBlock image = ImageCreate(width, height, nullptr, 24);
  if (!image) return {};
  const int64_t across = 2 * std::max<int64_t>(1, (width + cell) / (2 * cell));
  const int64_t down = 2 * std::max<int64_t>(1, (height + cell) / (2 * cell));
  // Rows of one parity are all alike: draw the first of each, copy the rest.
  int32_t model[2] = {-1, -1};
  for (int32_t y = 0; y < height; ++y) {
    const int parity = static_cast<int>((y * down / height) & 1);
    uint8_t* row = image.Row(y);
    if (model[parity] >= 0) {
      std::memcpy(row, image.Row(model[parity]), 3 * static_cast<size_t>(width));
      continue;
    }
    model[parity] = y;
    for (int32_t x = 0; x < width; ++x)
      PutColour(row + 3 * static_cast<size_t>(x), ((x * across / width) & 1) == parity ? a : b);
  }
  return image;
}

}  // namespace

ImageBlock GenerateTexture(const FillTextureBlock& texture) {
  int32_t width = 0, height = 0;
  if (!RectSize(TextureRect(texture), width, height)) return {};
  return CheckerImage(width, height, 16, 0x00A0A0A0, 0x00707070);
}

ImageBlock RenderTile(const FillTileBlock&, int32_t width, int32_t height) {
  if (width <= 0 || height <= 0) return {};
  return CheckerImage(width, height, 8, 0x00808080, 0x00505050);
}

ImageBlock RenderGradient(GradientRecord& record) {
  int32_t width = 0, height = 0;
  const bool sized = RectSize(record.grad_rect, width, height);
  if (record.grad_type < std::size(kEngineShape)) {
    record.grad_type = kEngineShape[record.grad_type];
    return sized ? RenderEngineGradient(record, width, height) : ImageBlock();
  }
  if (record.grad_type == kGradientConical && sized) return RenderConical(record, width, height);
  return {};
}

ImageBlock RenderFill(const FillDescriptor& record, int32_t width, int32_t height) {
  if (width <= 0 || height <= 0) return {};
  switch (record.kind) {
    case kFillSimple:
      return RenderSimple(record.colour, width, height);
    case kFillGradient:
      return RenderGradientFill(record.gradient, width, height);
    case kFillTexture:
      return RenderTextureFill(record.texture, width, height);
    case kFillTile:
      return RenderTileFill(record.tile, width, height);
    default:
      return ImageCreate(width, height, nullptr, 24);
  }
}

}  // namespace tess
