// Sample composition. Rows are written through row pointers: the sample is
// redrawn after every pause in typing, and the tests hold these loops to the
// per-pixel reference.
#include "dialog/sample_view.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tess {
namespace {

struct Span {
  int32_t begin = 0, end = 0;  // half-open, already clipped
};

Span Clip(int32_t begin, int32_t length, int32_t limit) {
  return {std::clamp(begin, 0, limit), std::clamp(begin + length, 0, limit)};
}

void FillRow(uint8_t* row, Span span, Colour colour) {
  for (int32_t x = span.begin; x < span.end; ++x) {
    uint8_t* p = row + 3 * x;
    p[0] = ColourBlue(colour);
    p[1] = ColourGreen(colour);
    p[2] = ColourRed(colour);
  }
}

void FillPicture(ImageBlock& picture, Colour colour) {
  for (int32_t y = 0; y < picture.height(); ++y)
    FillRow(picture.Row(y), {0, picture.width()}, colour);
}

// The displayed colour of a pixel of any depth: palettised pixels through
// their colour table, 32-bit ones without their coverage byte.
Colour DisplayColour(const ImageBlock& image, int32_t x, int32_t y) {
  Colour value = ImageGetPixel(image, x, y);
  if (image.bits() > 8) return value & 0x00FFFFFFu;
  const uint8_t* entry = image.colour_table() + 4 * static_cast<size_t>(value);
  return MakeColour(entry[2], entry[1], entry[0]);
}

// Copies the visible part of a 24-bit image; other depths go pixel by pixel.
void PaintImage(ImageBlock& picture, const ImageBlock& image, const SamplePlacement& at) {
  Span xs = Clip(at.x, image.width(), picture.width());
  Span ys = Clip(at.y, image.height(), picture.height());
  for (int32_t y = ys.begin; y < ys.end; ++y) {
    if (image.bits() == 24) {
      std::memcpy(picture.Row(y) + 3 * xs.begin, image.Row(y - at.y) + 3 * (xs.begin - at.x),
                  3 * static_cast<size_t>(xs.end - xs.begin));
      continue;
    }
    for (int32_t x = xs.begin; x < xs.end; ++x)
      ImageSetPixel(picture, x, y, DisplayColour(image, x - at.x, y - at.y));
  }
}

// One pixel outside the image, clipped to the picture.
void DrawKeyLine(ImageBlock& picture, const SamplePlacement& at) {
  int32_t left = at.x - 1, top = at.y - 1;
  int32_t right = at.x + at.width, bottom = at.y + at.height;  // inclusive
  Span xs = Clip(left, right - left + 1, picture.width());
  for (int32_t y : {top, bottom})
    if (y >= 0 && y < picture.height()) FillRow(picture.Row(y), xs, kSampleKeyLineColour);
  Span ys = Clip(top, bottom - top + 1, picture.height());
  for (int32_t y = ys.begin; y < ys.end; ++y)
    for (int32_t x : {left, right})
      if (x >= 0 && x < picture.width()) FillRow(picture.Row(y), {x, x + 1}, kSampleKeyLineColour);
}

}  // namespace

SamplePlacement PlaceSample(int32_t inner_width, int32_t inner_height, int32_t image_width,
                            int32_t image_height) {
  // Integer division truncates toward zero, which is the rounding wanted for
  // images larger than the sample as well.
  return {(inner_width - image_width) / 2, (inner_height - image_height) / 2, image_width,
          image_height};
}

std::string SampleSizeText(int32_t width, int32_t height) {
  char text[64];
  std::snprintf(text, sizeof text, "%d x %d pixels", static_cast<int>(width),
                static_cast<int>(height));
  return text;
}

ImageBlock ComposeSample(const ImageBlock& image, int32_t inner_width, int32_t inner_height,
                         Colour surround, bool key_line) {
  if (!image || inner_width <= 0 || inner_height <= 0) return {};
  ImageBlock picture = ImageCreate(inner_width, inner_height, nullptr, 24);
  if (!picture) return {};
  SamplePlacement at = PlaceSample(inner_width, inner_height, image.width(), image.height());
  FillPicture(picture, surround);
  PaintImage(picture, image, at);
  if (key_line) DrawKeyLine(picture, at);
  return picture;
}

SampleRender RenderSample(const StyleEntry& style, const ParamReader& reader, Random& random,
                          int32_t inner_width, int32_t inner_height, Colour no_background,
                          bool key_line) {
  SampleRender result;
  ImageBlock image = StylePreview(style, reader, random);
  if (!image) return result;
  Colour background = style.background ? style.background(reader, 0) : kNoColour;
  if (background == kNoColour) background = no_background;
  result.picture = ComposeSample(image, inner_width, inner_height, background, key_line);
  result.image_width = image.width();
  result.image_height = image.height();
  return result;
}

}  // namespace tess
