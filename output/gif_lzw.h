// The GIF image-data block: the hashed variable-length-code LZW encoder over
// the indices of a palettised image block (1, 4 or 8 bits), taken top-down and
// left to right. Output is the minimum code size byte, the code
// stream in sub-blocks of at most 255 bytes, then a zero-length terminator.
#pragma once

#include <cstdint>

#include "base/alloc.h"
#include "base/byte_sink.h"
#include "image/image.h"
#include "output/gif_status.h"

namespace tess {

// The LZW minimum code size for a frame's bit count: 1 becomes 2 (two colours
// still need room for the clear and end codes); 2..9 are kept; anything else
// gives 0, which makes the frame fail.
int LzwCodeSize(int bit_count);

// True when every index of the 1-, 4- or 8-bit image is below 2^code size for
// this bit count, so the stream cannot confuse a pixel with a control code.
bool LzwIndicesFit(const ImageBlock& image, int bit_count);

// Keeps its hash tables between frames, so a writer allocates them once.
class LzwEncoder {
 public:
  LzwEncoder() = default;
  LzwEncoder(LzwEncoder&&) noexcept = default;
  LzwEncoder& operator=(LzwEncoder&&) noexcept = default;

  // Writes one image-data block. Refused before anything is written when the
  // bit count has no code size, the image is not 1, 4 or 8 bits, an index is
  // 2^code size or more, or memory is short. kWriteFailed when the sink fails.
  GifStatus Encode(ByteSink& sink, const ImageBlock& image, int bit_count);

 private:
  bool EnsureTables();

  Buffer<uint32_t> m_table;  // string table, allocated on first use
};

}  // namespace tess
