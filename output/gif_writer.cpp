// GIF89a blocks, one function each. Every check happens before the first byte
// of a block is written; each block is assembled field by field and handed to
// the sink in as few writes as possible.
#include "output/gif_writer.h"

#include <cstring>

#include "base/bytes.h"

namespace tess {
namespace {

constexpr uint8_t kExtensionIntroducer = 0x21;
constexpr uint8_t kImageSeparator = 0x2C;
constexpr uint8_t kTrailer = 0x3B;
constexpr uint8_t kGraphicControlLabel = 0xF9;
constexpr uint8_t kCommentLabel = 0xFE;
constexpr uint8_t kApplicationLabel = 0xFF;
constexpr uint8_t kTableFlag = 0x80;  // a colour table follows (screen and descriptor)
constexpr size_t kSubBlockMax = 255;
constexpr int kMaxDimension = 65535;

bool InRange(int v, int lo, int hi) { return v >= lo && v <= hi; }

size_t TableBytes(int bits) { return 3 * (size_t{1} << bits); }

}  // namespace

const char* GifStatusText(GifStatus status) {
  switch (status) {
    case GifStatus::kOk:
      return "ok";
    case GifStatus::kOutOfOrder:
      return "GIF block out of order";
    case GifStatus::kBadArgument:
      return "bad GIF block argument";
    case GifStatus::kIndexTooLarge:
      return "pixel index too large for the code size";
    case GifStatus::kWriteFailed:
      return "GIF write failed";
    case GifStatus::kNoMemory:
      return "out of memory";
  }
  return "unknown GIF status";
}

// Every refusal passes through here: a breakpoint here catches them all.
GifStatus GifWriter::Refuse(GifStatus status) const {
  return m_state == State::kFailed ? GifStatus::kWriteFailed : status;
}

bool GifWriter::Put(const void* data, size_t size) {
  if (m_sink.Write(data, size)) return true;
  m_state = State::kFailed;
  return false;
}

GifStatus GifWriter::Advance(State next) {
  if (m_state == State::kFailed) return GifStatus::kWriteFailed;
  m_state = next;
  return GifStatus::kOk;
}

GifStatus GifWriter::WriteHeader(const GifScreen& s) {
  if (m_state != State::kStart) return Refuse(GifStatus::kOutOfOrder);
  if (!InRange(s.width, 1, kMaxDimension) || !InRange(s.height, 1, kMaxDimension) ||
      !InRange(s.colour_resolution, 0, 7) || (s.global_table && !InRange(s.table_bits, 1, 8)))
    return Refuse(GifStatus::kBadArgument);

  uint8_t b[13];
  std::memcpy(b, "GIF89a", 6);                        // signature and version
  put_u16le(b + 6, static_cast<uint16_t>(s.width));   // logical screen width
  put_u16le(b + 8, static_cast<uint16_t>(s.height));  // logical screen height
  b[10] = static_cast<uint8_t>(                       // packed fields:
      (s.global_table ? kTableFlag : 0) |             //   global table present
      s.colour_resolution << 4 |                      //   colour resolution
      (s.table_sorted ? 0x08 : 0) |                   //   table sorted
      (s.global_table ? s.table_bits - 1 : 0));       //   table size: 2^(n+1) entries
  b[11] = s.background_index;                         // background colour index
  b[12] = s.pixel_aspect;                             // pixel aspect ratio
  if (!Put(b, sizeof b)) return GifStatus::kWriteFailed;
  if (s.global_table && !Put(s.global_table, TableBytes(s.table_bits)))
    return GifStatus::kWriteFailed;

  m_screen_width = s.width;
  m_screen_height = s.height;
  return Advance(State::kBody);
}

GifStatus GifWriter::WriteLoopExtension(uint16_t loop_count) {
  if (m_state != State::kBody || m_frames > 0 || m_loop_written)
    return Refuse(GifStatus::kOutOfOrder);
  uint8_t b[19];
  b[0] = kExtensionIntroducer;            // extension introducer
  b[1] = kApplicationLabel;               // application extension label
  b[2] = 11;                              // block size: identifier and code
  std::memcpy(b + 3, "NETSCAPE2.0", 11);  // application identifier and code
  b[14] = 3;                              // sub-block size
  b[15] = 1;                              // sub-block id: loop count
  put_u16le(b + 16, loop_count);          // loop count, 0 = forever
  b[18] = 0;                              // block terminator
  if (!Put(b, sizeof b)) return GifStatus::kWriteFailed;
  m_loop_written = true;
  return Advance(State::kBody);
}

GifStatus GifWriter::WriteGraphicControl(const GifGraphicControl& c) {
  if (m_state != State::kBody) return Refuse(GifStatus::kOutOfOrder);
  uint8_t b[8];
  b[0] = kExtensionIntroducer;  // extension introducer
  b[1] = kGraphicControlLabel;  // graphic control label
  b[2] = 4;                     // block size
  b[3] = c.flags;               // disposal, user input, transparency flag
  put_u16le(b + 4, c.delay);    // delay in hundredths of a second
  b[6] = c.transparent_index;   // transparent colour index
  b[7] = 0;                     // block terminator
  if (!Put(b, sizeof b)) return GifStatus::kWriteFailed;
  return Advance(State::kControl);
}

GifStatus GifWriter::CheckDescriptor(const GifImageDescriptor& d) const {
  if (m_state != State::kBody && m_state != State::kControl) return Refuse(GifStatus::kOutOfOrder);
  if (!InRange(d.width, 1, kMaxDimension) || !InRange(d.height, 1, kMaxDimension) ||
      !InRange(d.bits, 1, 8) || d.left < 0 || d.top < 0 || d.left > m_screen_width - d.width ||
      d.top > m_screen_height - d.height)
    return Refuse(GifStatus::kBadArgument);
  return GifStatus::kOk;
}

GifStatus GifWriter::WriteImageDescriptor(const GifImageDescriptor& d) {
  if (GifStatus st = CheckDescriptor(d); st != GifStatus::kOk) return st;
  uint8_t b[10];
  b[0] = kImageSeparator;                             // image separator
  put_u16le(b + 1, static_cast<uint16_t>(d.left));    // left position on the screen
  put_u16le(b + 3, static_cast<uint16_t>(d.top));     // top position on the screen
  put_u16le(b + 5, static_cast<uint16_t>(d.width));   // image width
  put_u16le(b + 7, static_cast<uint16_t>(d.height));  // image height
  b[9] = static_cast<uint8_t>(                        // packed fields:
      (d.local_table ? kTableFlag : 0) |              //   local table present; not
      (d.bits - 1));                                  //   interlaced or sorted; table size
  if (!Put(b, sizeof b)) return GifStatus::kWriteFailed;
  if (d.local_table && !Put(d.local_table, TableBytes(d.bits))) return GifStatus::kWriteFailed;

  m_descriptor = d;
  m_descriptor.local_table = nullptr;  // not kept past this call
  return Advance(State::kDescriptor);
}

GifStatus GifWriter::CheckImage(const ImageBlock& image, const GifImageDescriptor& d) const {
  if (!image || image.width() != d.width || image.height() != d.height ||
      (image.bits() != 1 && image.bits() != 4 && image.bits() != 8))
    return Refuse(GifStatus::kBadArgument);
  if (!LzwIndicesFit(image, d.bits)) return Refuse(GifStatus::kIndexTooLarge);
  return GifStatus::kOk;
}

GifStatus GifWriter::WriteImageData(const ImageBlock& image) {
  if (m_state != State::kDescriptor) return Refuse(GifStatus::kOutOfOrder);
  if (GifStatus st = CheckImage(image, m_descriptor); st != GifStatus::kOk) return st;
  GifStatus st = m_lzw.Encode(m_sink, image, m_descriptor.bits);
  if (st == GifStatus::kWriteFailed) m_state = State::kFailed;
  if (st != GifStatus::kOk) return Refuse(st);
  ++m_frames;
  return Advance(State::kBody);
}

GifStatus GifWriter::WriteEncodedImageData(const uint8_t* block, size_t size) {
  if (m_state != State::kDescriptor) return Refuse(GifStatus::kOutOfOrder);
  // A code size byte, then at least the terminator.
  if (!block || size < 2 || block[0] != LzwCodeSize(m_descriptor.bits) || block[size - 1] != 0)
    return Refuse(GifStatus::kBadArgument);
  if (!Put(block, size)) return GifStatus::kWriteFailed;
  ++m_frames;
  return Advance(State::kBody);
}

GifStatus GifWriter::CheckFrame(const GifImageDescriptor& d, const ImageBlock& image) const {
  if (GifStatus st = CheckDescriptor(d); st != GifStatus::kOk) return st;
  return CheckImage(image, d);
}

GifStatus GifWriter::WriteFrame(const GifImageDescriptor& d, const ImageBlock& image) {
  GifStatus st = CheckFrame(d, image);
  if (st != GifStatus::kOk) return st;
  if ((st = WriteImageDescriptor(d)) != GifStatus::kOk) return st;
  return WriteImageData(image);
}

GifStatus GifWriter::WriteComment(std::string_view text) {
  if (m_state != State::kBody) return Refuse(GifStatus::kOutOfOrder);
  const uint8_t head[2] = {
      kExtensionIntroducer,  // extension introducer
      kCommentLabel,         // comment label
  };
  if (!Put(head, sizeof head)) return GifStatus::kWriteFailed;
  uint8_t block[kSubBlockMax + 1];
  while (!text.empty()) {
    const size_t n = text.size() < kSubBlockMax ? text.size() : kSubBlockMax;
    block[0] = static_cast<uint8_t>(n);      // sub-block size
    std::memcpy(block + 1, text.data(), n);  // comment text, no terminating zero
    if (!Put(block, n + 1)) return GifStatus::kWriteFailed;
    text.remove_prefix(n);
  }
  const uint8_t terminator = 0;  // block terminator
  if (!Put(&terminator, 1)) return GifStatus::kWriteFailed;
  return Advance(State::kBody);
}

GifStatus GifWriter::WriteTrailer() {
  if (m_state != State::kBody) return Refuse(GifStatus::kOutOfOrder);
  const uint8_t trailer = kTrailer;  // end of the GIF data stream
  if (!Put(&trailer, 1)) return GifStatus::kWriteFailed;
  return Advance(State::kDone);
}

}  // namespace tess
