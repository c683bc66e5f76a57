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

// What the encoder does once the string table holds 4096 codes: start over
// with a clear code, or keep using the full table as it stands (a deferred
// clear, which the format allows and pays off when the picture goes on as it
// began).
enum class LzwFullTable { kClear, kKeep };

// Where the encoder ends each string. kLongest takes the longest string the
// table holds, as the classic encoder does. The look-ahead parses also weigh
// ending a string one pixel short, when the next string would be short: they
// do so when the string starting one pixel earlier reaches past where the
// next string would end, by at least one pixel (kLookAhead) or two
// (kLookAheadWary). Any decoder reads the result: only the choice of strings
// differs, never how the table grows. A shortened string rarely adds a new
// string to the table (the string it would add is usually the longer one it
// gave up), so each cut spends a code; where the table fills, the wary parse
// spends fewer. On repeating patterns the spent codes are the longer strings
// the table would have learnt, and the look-ahead loses: callers compare.
enum class LzwParse { kLongest, kLookAhead, kLookAheadWary };

// One way of encoding a block.
struct LzwVariant {
  LzwParse parse = LzwParse::kLongest;
  LzwFullTable full = LzwFullTable::kClear;
  bool operator==(const LzwVariant&) const = default;
};

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

  // Writes one image-data block of `count` pixels where pixel i may be either
  // first[i] or second[i] (equal where there is no choice), as the frame
  // optimiser offers for pixels a transparent index can stand for. Greedy:
  // the index that extends the current string wins, first[i] when both or
  // neither do, and a string starts with first[i]. The variant says where
  // strings end and what a full table does. The indices written go to
  // chosen[i]. Refused as Encode is when an index does not fit the bit
  // count's code size.
  GifStatus EncodeChoosing(ByteSink& sink, const uint8_t* first, const uint8_t* second, size_t count,
                           int bit_count, LzwVariant variant, uint8_t* chosen);
  // Makes both hash tables now rather than on first use, so they belong to
  // the calling thread (allocation accounting is per thread). False when
  // memory is short.
  bool Reserve();

  // Whether the last EncodeChoosing filled the string table; when it did not,
  // both LzwFullTable rules give the same bytes.
  bool table_filled() const { return m_filled; }

 private:
  bool EnsureTables();

  Buffer<uint32_t> m_table;  // string table, allocated on first use
  Buffer<uint32_t> m_keyed;
  bool m_filled = false;  // EncodeChoosing's table, allocated on its first use
};

}  // namespace tess
