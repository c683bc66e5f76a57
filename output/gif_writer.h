// A block-level GIF89a writer over a ByteSink: one function per block, every
// field written on its own, little-endian. It is a small state machine: the
// header (signature, logical screen, global colour table) comes first, then any
// run of extensions and frames, then the trailer. A block the current state
// does not allow, or a bad argument, is refused before any byte is written, so
// misuse gives an error result and never a broken file; a failing sink leaves
// the writer failed for good.
//
// Typical use for a size-optimised animation: header with a global table,
// loop extension, then per frame a graphic control block (disposal "keep" for
// frames cropped to the changed rectangle, a transparent index for unchanged
// pixels), a descriptor at the crop's offset, with a local table when the
// frame has its own palette, and the frame's indices; comments anywhere between
// frames; the trailer last.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/byte_sink.h"
#include "image/image.h"
#include "output/gif_lzw.h"
#include "output/gif_status.h"

namespace tess {

// Logical screen descriptor and global colour table.
struct GifScreen {
  int width = 0;   // 1..65535
  int height = 0;  // 1..65535
  // Red, green, blue triples, 2^table_bits of them; null for no global table.
  const uint8_t* global_table = nullptr;
  int table_bits = 0;            // 1..8 when there is a table
  int colour_resolution = 0;     // the 3-bit field as written: bits per primary - 1
  bool table_sorted = false;     // entries in order of decreasing importance
  uint8_t background_index = 0;  // into the global table
  uint8_t pixel_aspect = 0;      // 0: no aspect information
};

// How a decoder treats a frame's area before drawing the next one.
enum class GifDisposal : uint8_t {
  kUnspecified = 0,
  kKeep = 1,        // leave the frame in place ("do not dispose")
  kBackground = 2,  // restore the area to the background
  kPrevious = 3,    // restore what was there before the frame
};

// The flags byte of a graphic control block built from its three fields.
constexpr uint8_t GifControlFlags(GifDisposal disposal, bool has_transparency,
                                  bool wait_for_input = false) {
  return static_cast<uint8_t>((static_cast<unsigned>(disposal) & 7) << 2 |
                              (wait_for_input ? 0x02 : 0) | (has_transparency ? 0x01 : 0));
}

// Graphic control extension: applies to the next frame only.
struct GifGraphicControl {
  uint8_t flags = 0;              // written as given; GifControlFlags builds a conventional one
  uint16_t delay = 0;             // hundredths of a second
  uint8_t transparent_index = 0;  // meaningful when flags bit 0 is set
};

// Image descriptor, optional local colour table, and the frame's code size.
struct GifImageDescriptor {
  int left = 0;  // the frame must lie inside the logical screen
  int top = 0;
  int width = 0;   // 1..65535, equal to the image's width
  int height = 0;  // 1..65535, equal to the image's height
  // 1..8. Sets the LZW code size (1 becomes 2), the local table's size, and the
  // descriptor's size field, which holds bits - 1 even without a local table
  // (decoders ignore it then).
  int bits = 8;
  // Red, green, blue triples, 2^bits of them; null to use the global table.
  const uint8_t* local_table = nullptr;
};

class GifWriter {
 public:
  enum class State {
    kStart,       // nothing written; only the header is allowed
    kBody,        // between frames: extensions, frames or the trailer
    kControl,     // a graphic control block waits for its frame's descriptor
    kDescriptor,  // a descriptor waits for its image data
    kDone,        // trailer written; nothing more is allowed
    kFailed,      // the sink failed; every call returns kWriteFailed
  };

  explicit GifWriter(ByteSink& sink) : m_sink(sink) {}
  GifWriter(const GifWriter&) = delete;
  GifWriter& operator=(const GifWriter&) = delete;

  // "GIF89a", logical screen descriptor and global colour table.
  GifStatus WriteHeader(const GifScreen& screen);
  // NETSCAPE2.0 application extension; 0 loops forever. Only before the first
  // frame, and once, because decoders look for it there.
  GifStatus WriteLoopExtension(uint16_t loop_count);
  GifStatus WriteGraphicControl(const GifGraphicControl& control);
  // Also writes the local colour table when there is one.
  GifStatus WriteImageDescriptor(const GifImageDescriptor& descriptor);
  // The image's indices as LZW data; the image must have the descriptor's size.
  GifStatus WriteImageData(const ImageBlock& image);
  // Image data encoded elsewhere (an LzwEncoder's block, code size byte
  // through terminator), as a frame optimiser that tried several encodings
  // hands over the smallest. Taken as it stands.
  GifStatus WriteEncodedImageData(const uint8_t* block, size_t size);
  // Descriptor and data together, with every check made before either is written.
  GifStatus WriteFrame(const GifImageDescriptor& descriptor, const ImageBlock& image);
  // Whether WriteFrame would take this frame now (or right after a graphic
  // control block), so a caller can check before writing that block.
  GifStatus CheckFrame(const GifImageDescriptor& descriptor, const ImageBlock& image) const;
  // Comment extension; the text is cut into sub-blocks of at most 255 bytes.
  GifStatus WriteComment(std::string_view text);
  GifStatus WriteTrailer();

  State state() const { return m_state; }
  int frame_count() const { return m_frames; }

 private:
  GifStatus Refuse(GifStatus status) const;
  GifStatus CheckDescriptor(const GifImageDescriptor& descriptor) const;
  GifStatus CheckImage(const ImageBlock& image, const GifImageDescriptor& descriptor) const;
  // Writes bytes; on failure the writer becomes failed.
  bool Put(const void* data, size_t size);
  GifStatus Advance(State next);

  ByteSink& m_sink;
  LzwEncoder m_lzw;
  State m_state = State::kStart;
  int m_screen_width = 0;
  int m_screen_height = 0;
  GifImageDescriptor m_descriptor;  // of the frame whose data comes next
  int m_frames = 0;
  bool m_loop_written = false;
};

}  // namespace tess
