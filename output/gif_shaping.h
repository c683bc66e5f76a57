// Frame shaping: how each image a build delivers becomes the GIF frame that
// shows the same picture in the fewest bytes. This is the one place that
// decides the crop box, which pixels the transparent index stands for, the
// disposal, the global or a local table and the LZW variant; the command-line
// host only hands frames over and writes what comes back.
//
// For frames drawn over what the viewer already shows ("do not dispose"),
// the shaper keeps that picture as global-table indices. Every pixel the new
// frame leaves as it was may then be written as the transparent index or as
// its own index, and the frame is cropped to the pixels that change. Which
// pixels get which is left to the LZW encoder (the index that extends its
// current string), and the shaper keeps whichever of a few such encodings is
// smallest. Loops work on whole rows; the tests hold the references.
#pragma once

#include <cstdint>
#include <vector>

#include "base/alloc.h"
#include "base/byte_sink.h"
#include "image/image.h"
#include "output/gif_lzw.h"
#include "output/gif_writer.h"

namespace tess {

// A rectangle of pixels, top-down; empty when width or height is 0.
struct PixelBox {
  int32_t left = 0;
  int32_t top = 0;
  int32_t width = 0;
  int32_t height = 0;

  bool empty() const { return width <= 0 || height <= 0; }
  bool operator==(const PixelBox&) const = default;
};

// The smallest box holding every pixel of a 1-, 4- or 8-bit image whose index
// is not `transparent`; empty when every pixel is transparent.
PixelBox VisibleBounds(const ImageBlock& image, int transparent);

// A true-colour (24- or 32-bit) frame reduced to a palette of its own: at
// most 256 colours, exact when the frame has no more. `rgb` (768 bytes)
// receives the palette, *bits its GIF bit count (2..8). Null when memory is
// short.
ImageBlock PalettiseTrueColour(const ImageBlock& image, uint8_t* rgb, int* bits);

// One image as the build hands it over.
struct GifFrameInput {
  const ImageBlock* image = nullptr;  // indices (1, 4, 8 bits) or true colour, at the screen's origin
  int transparent = -1;               // the index that means "as before", -1 for none
  bool clear_behind = false;          // transparent background: each frame alone over the page
  uint16_t delay = 0;                 // hundredths of a second
};

// What the file gets for it: the graphic control block, the descriptor (its
// local table, if any, points into this object, which is therefore neither
// copied nor moved) and the encoded image data. Between Plan and Encode it
// also holds the crop box's pixels; they are kept for the next frame planned
// into the same object.
struct GifShapedFrame {
  GifShapedFrame() = default;
  GifShapedFrame(const GifShapedFrame&) = delete;
  GifShapedFrame& operator=(const GifShapedFrame&) = delete;

  GifGraphicControl control;
  GifImageDescriptor descriptor;
  uint8_t local_rgb[768] = {};
  MemorySink data;

  // The box's pixels: `own` what the viewer must see, `masked` the
  // transparent index wherever that already shows.
  Buffer<uint8_t> own, masked;
  size_t capacity = 0;  // of own and masked
  size_t count = 0;     // pixels in the box
  int coded_bits = 0;
  bool choices = false;  // some pixel may be either
};

class GifFrameShaper {
 public:
  // The logical screen and its global table (2^bits red, green, blue triples).
  // False when memory is short.
  bool Start(int width, int height, const uint8_t* global_rgb, int bits);

  // Shapes the next frame: Plan, then Encode. kBadArgument when it does not
  // fit the screen, kIndexTooLarge when its indices fit no table, kNoMemory
  // when memory is short.
  GifStatus Shape(const GifFrameInput& input, GifShapedFrame* out);

  // The two halves of Shape. Plan decides everything but the image data and
  // brings the viewer's picture up to date; Encode, the bulk of the work,
  // encodes what Plan left in `out`. Frames are planned in order and encoded
  // in the same order, but the encoding of one frame may run on another
  // thread while the next ones are planned (into other objects): the halves
  // share only the LZW state, which Plan never touches.
  GifStatus Plan(const GifFrameInput& input, GifShapedFrame* out);
  GifStatus Encode(GifShapedFrame* out);

 private:
  bool TableMatchesGlobal(const ImageBlock& image) const;

  // Plan's side.
  int m_width = 0, m_height = 0, m_bits = 0;
  uint8_t m_global[768] = {};
  uint8_t m_global_first[256] = {};  // each index's first index of the same colour
  bool m_canvas_known = false;  // every pixel of m_canvas is what the viewer shows
  Buffer<uint8_t> m_canvas;     // the screen as global-table indices
  Buffer<uint8_t> m_indices;    // the frame, one index per byte

  // Encode's side.
  Buffer<uint8_t> m_chosen;  // the encoder's picks, which nothing needs
  LzwEncoder m_lzw;
  // The way the last full trial found smallest, the frames from one trial to
  // the next and those left until it. m_tried: a trial has set m_variant;
  // m_lean_tried: one with choices has set m_lean. Until then the remembered
  // way is only the default, so the first trial never counts as the same.
  static constexpr int kShortestTrialGap = 8, kLongestTrialGap = 32;
  int m_lean = 0;
  LzwVariant m_variant;
  int m_trial_gap = kShortestTrialGap;
  int m_until_trial = 0;
  bool m_tried = false, m_lean_tried = false;
};

// The shaped frame's three blocks, in order.
GifStatus WriteShapedFrame(GifWriter& writer, const GifShapedFrame& frame);

}  // namespace tess
