// Frame shaping for the GIF file host: visible bounds, cropping and the
// palette of a true-colour frame.
#include "host/cli/gif_frames.h"

#include <algorithm>
#include <cstring>

#include "image/frame_list.h"
#include "output/pixel_rows.h"
#include "output/quantize.h"
#include "output/remap.h"

namespace tess::cli {
namespace {

// Row y as one index per byte: the block's own row at 8 bits, else unpacked
// into `scratch`.
const uint8_t* IndexRow(const ImageBlock& image, int y, uint8_t* scratch) {
  if (image.bits() == 8) return image.Row(y);
  UnpackIndexRow(image, y, scratch);
  return scratch;
}

}  // namespace

PixelBox VisibleBounds(const ImageBlock& image, int transparent) {
  const int32_t width = image.width();
  Buffer<uint8_t> scratch;
  if (image.bits() != 8) {
    scratch = AllocBuffer<uint8_t>(static_cast<size_t>(width));
    // Without room to unpack, claim the whole picture: correct, only larger.
    if (!scratch) return PixelBox{0, 0, width, image.height()};
  }
  int32_t min_x = width, max_x = -1, min_y = -1, max_y = -1;
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* row = IndexRow(image, y, scratch.get());
    int32_t x = 0;
    while (x < width && row[x] == transparent) ++x;
    if (x == width) continue;
    if (min_y < 0) min_y = y;
    max_y = y;
    min_x = std::min(min_x, x);
    // Only pixels right of the box so far can widen it.
    for (int32_t r = width - 1; r > max_x && r >= x; --r) {
      if (row[r] != transparent) {
        max_x = r;
        break;
      }
    }
  }
  if (min_y < 0) return PixelBox{};
  return PixelBox{min_x, min_y, max_x - min_x + 1, max_y - min_y + 1};
}

ImageBlock CropIndices(const ImageBlock& image, const PixelBox& box) {
  ImageBlock out = ImageCreate(box.width, box.height, nullptr, image.bits());
  if (!out) return out;
  std::memcpy(out.colour_table(), image.colour_table(), 4 * static_cast<size_t>(image.colour_table_entries()));
  if (image.bits() == 8) {
    for (int y = 0; y < box.height; ++y)
      std::memcpy(out.Row(y), image.Row(box.top + y) + box.left, static_cast<size_t>(box.width));
    return out;
  }
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(static_cast<size_t>(image.width()));
  if (!scratch) return ImageBlock();
  for (int y = 0; y < box.height; ++y) {
    UnpackIndexRow(image, box.top + y, scratch.get());
    PackIndexRow(out, y, scratch.get() + box.left);
  }
  return out;
}

ImageBlock PalettiseTrueColour(const ImageBlock& image, uint8_t* rgb, int* bits) {
  // The quantizer reads frame lists; one frame's copy is cheap next to the
  // octree pass over it.
  FrameList one;
  ImageBlock copy = DuplicateGlobalBlock(image);
  if (!copy || !FrameListAddImage(one, std::move(copy), 0)) return ImageBlock();
  int count = 256;
  if (!AdaptivePalette(&count, rgb, one)) return ImageBlock();
  // Two colours at least: a 1-bit remap thresholds brightness instead of
  // looking colours up, which would swap the entries of a two-colour frame.
  *bits = std::max(2, BitsForColours(count));
  Remapper remapper;
  if (!remapper.Init(rgb, *bits, count, RemapOptions{})) return ImageBlock();
  return remapper.Remap(image);
}

}  // namespace tess::cli
