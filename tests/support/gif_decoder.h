// A strict GIF decoder for tests: parses every block of a GIF87a/GIF89a
// stream, decodes the LZW data back to indices and keeps every field it read,
// so tests can check a writer's output field by field. Anything malformed or
// merely doubtful (truncation, unknown blocks, codes beyond the table, a stream
// without its clear or end code, stray data, interlacing, which no writer here
// uses) is refused with a message naming the byte offset. Clarity over speed;
// never used by the product.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tess::testing {

struct GifControlBlock {
  uint8_t flags = 0;
  uint16_t delay = 0;
  uint8_t transparent_index = 0;

  int disposal() const { return (flags >> 2) & 7; }
  bool has_transparency() const { return (flags & 1) != 0; }
};

// What one LZW image-data block held besides its indices.
struct LzwStreamInfo {
  int min_code_size = 0;
  std::vector<int> block_sizes;  // data sub-block lengths, terminator excluded
  int clear_codes = 0;           // including the leading one
  int max_code_width = 0;
  size_t bytes_consumed = 0;  // code size byte through terminator
};

struct GifDecodedFrame {
  std::optional<GifControlBlock> control;  // the graphic control block before it
  int left = 0, top = 0, width = 0, height = 0;
  uint8_t descriptor_flags = 0;
  std::vector<uint8_t> local_table;  // red, green, blue triples; empty when none
  LzwStreamInfo lzw;
  std::vector<uint8_t> indices;  // width x height, top-down
};

struct DecodedGif {
  std::string version;  // "87a" or "89a"
  int width = 0, height = 0;
  uint8_t screen_flags = 0;
  uint8_t background_index = 0;
  uint8_t pixel_aspect = 0;
  std::vector<uint8_t> global_table;  // red, green, blue triples; empty when none
  std::optional<int> loop_count;      // from a NETSCAPE2.0 block
  std::vector<std::string> comments;
  std::vector<GifDecodedFrame> frames;
};

// False, with the reason in *error, when the stream is malformed.
bool DecodeGif(const uint8_t* data, size_t size, DecodedGif* out, std::string* error);
bool DecodeGif(const std::vector<uint8_t>& bytes, DecodedGif* out, std::string* error);

// One image-data block on its own (code size byte, sub-blocks, terminator),
// decoded to exactly `pixel_count` indices. Accepts code sizes 2..11, wider
// than GIF files allow, so encoders can be tested at their limits.
bool DecodeLzwBlock(const uint8_t* data, size_t size, size_t pixel_count,
                    std::vector<uint8_t>* indices, LzwStreamInfo* info, std::string* error);

// What a viewer shows after each frame: 0xRRGGBB per screen pixel, -1 where
// nothing has been drawn (or disposal restored the background, which a page
// shows through). Applies transparency and all four disposals.
std::vector<std::vector<int32_t>> ComposeFrames(const DecodedGif& gif);

}  // namespace tess::testing
