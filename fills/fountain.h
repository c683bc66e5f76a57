// The fountain record: a horizontal gradient through up to 64 coloured
// markers, what a fountain control holds and a style paints with. Its
// 585-byte little-endian form is at once the control's pattern file and the
// payload of a document's FOUNTN line, so every offset is format. Only the
// first min(marker_count, 64) markers are ever read, whatever a file says.
//
// Sections: layout · record · bytes and files · document value · rendering ·
// built-in fountains.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "image/image.h"

namespace tess {

// ---------------------------------------------------------------- layout

// The 585 bytes (u32 little-endian, no padding):
//   off  size  field
//     0     8  magic "BRNDFOUN", no terminator
//     8     4  stamp         u32, 0x02006101 when created; never checked
//    12     4  size          u32, 585 when created; never checked
//    16     4  press_flags   bit 0 while the control is held down
//    20     4  mode          1 = open (start and end colours apart); any other
//                            value = closed (the end returns to the start
//                            colour). A library entry in memory keeps its
//                            library selector here, which picks the same way.
//    24   261  path          this fountain's own pattern file, NUL-terminated
//   285     4  (the control's preview image handle at run time: 0)
//   289     4  marker_count  u32, markers in use; only 64 exist
//   293     4  start_colour  0x00BBGGRR; the top byte is kept, never used
//   297     4  end_colour    the same; used by open fountains only
//   301   256  markers       64 u32 words: bits 24..31 position 0..255 along
//                            the gradient (255 = the right edge), bits 0..23
//                            the colour 0x00BBGGRR
//   557    28  reserved      zero in a new record, kept as read
inline constexpr size_t kFountainRecordSize = 585;
inline constexpr std::string_view kFountainMagic = "BRNDFOUN";
inline constexpr uint32_t kFountainStamp = 0x02006101u;
inline constexpr size_t kFountainPathSize = 261;
inline constexpr size_t kFountainMaxMarkers = 64;
inline constexpr size_t kFountainReservedSize = 28;

inline constexpr size_t kFountainStampOffset = 8;
inline constexpr size_t kFountainSizeOffset = 12;
inline constexpr size_t kFountainPressFlagsOffset = 16;
inline constexpr size_t kFountainModeOffset = 20;
inline constexpr size_t kFountainPathOffset = 24;
inline constexpr size_t kFountainPreviewImageOffset = 285;
inline constexpr size_t kFountainMarkerCountOffset = 289;
inline constexpr size_t kFountainStartColourOffset = 293;
inline constexpr size_t kFountainEndColourOffset = 297;
inline constexpr size_t kFountainMarkersOffset = 301;
inline constexpr size_t kFountainReservedOffset = 557;

inline constexpr uint32_t kFountainOpen = 1;
inline constexpr uint32_t kFountainClosed = 0;  // what new records hold; any value but 1 is closed
inline constexpr uint32_t kFountainPressed = 1u << 0;

using FountainBytes = std::array<uint8_t, kFountainRecordSize>;
using FountainMarkers = std::array<uint32_t, kFountainMaxMarkers>;

constexpr uint32_t MakeMarker(uint32_t position, Colour colour) {
  return (position & 0xFF) << 24 | (colour & 0xFFFFFF);
}
constexpr uint32_t MarkerPosition(uint32_t marker) { return marker >> 24; }
constexpr Colour MarkerColour(uint32_t marker) { return marker & 0xFFFFFF; }

// Blue, cyan, green, yellow, red, magenta and a purple, every 32 positions.
inline constexpr FountainMarkers kDefaultFountainMarkers = {
    0x20FF0000, 0x40FFFF00, 0x6000FF00, 0x8000FFFF, 0xA00000FF, 0xC0FF00FF, 0xE0CC0099};

// ---------------------------------------------------------------- record

// A default-constructed record holds the created defaults: closed, empty
// path, black start colour, end colour 0xFFFFFFFF (white once masked), the
// seven default markers. Trivially copyable: a working copy cannot fail.
struct FountainRecord {
  uint32_t stamp = kFountainStamp;
  uint32_t size = kFountainRecordSize;
  uint32_t press_flags = 0;
  uint32_t mode = kFountainClosed;
  std::array<char, kFountainPathSize> path{};  // bytes after the NUL are kept as read
  uint32_t marker_count = 7;
  Colour start_colour = 0x000000;
  Colour end_colour = 0xFFFFFFFF;
  FountainMarkers markers = kDefaultFountainMarkers;
  std::array<uint8_t, kFountainReservedSize> reserved{};
};

// Resets every field to the created defaults above.
void InitFountainRecord(FountainRecord& record);

// min(marker_count, 64): the markers a reader may look at.
size_t FountainMarkerCount(const FountainRecord& record);
bool IsOpenFountain(const FountainRecord& record);
// The colour the last segment runs to: the end colour when open, else the
// start colour, so a closed fountain tiles seamlessly; low 24 bits.
Colour FountainFinalColour(const FountainRecord& record);

// The path up to its NUL (all 261 bytes when a foreign record has none).
std::string_view FountainPath(const FountainRecord& record);
// False, leaving the field alone, when `path` needs more than 260 characters.
bool SetFountainPath(FountainRecord& record, std::string_view path);

// ---------------------------------------------------------------- bytes and files

// The run-time preview slot is written as 0; every other field as held.
FountainBytes SerializeFountainRecord(const FountainRecord& record);

// False, with `record` untouched, when fewer than 585 bytes are given or the
// magic is not "BRNDFOUN". Bytes past 585 are ignored.
bool ParseFountainRecord(const uint8_t* data, size_t size, FountainRecord& record);

// A new record for the fountain control whose pattern file is `path`: the
// defaults with `mode`. With `read_file`, a pattern file of at least 585
// bytes with the magic replaces them, mode and path included, as the file
// has them; anything else keeps the defaults silently. A path too long for
// the record leaves its path empty and reads nothing.
FountainRecord CreateFountainRecord(const std::string& path, uint32_t mode, bool read_file);

// Writes all 585 bytes to the file named in the path field, through a
// temporary file beside it renamed into place: false when anything failed,
// with the system's reason in *reason, and then neither a partial file nor a
// changed old one is left.
bool SaveFountainRecord(const FountainRecord& record, std::string* reason = nullptr);

// ---------------------------------------------------------------- document value

// The FOUNTN line's value: the 585 bytes as 1,170 upper-case hex digits.
// Empty when memory is short.
std::string FountainValueText(const FountainRecord& record);

// Takes a FOUNTN value: 585 bytes of hex digits (either case; more are
// ignored) replace every field but the path, which stays the record's own so
// that a document can never choose where a file is written. The magic is not
// asked for, as a line's tag already says what it holds. False, with
// `record` untouched, when the digits run out or memory is short.
bool TakeFountainValue(std::string_view value, FountainRecord& record);

// ---------------------------------------------------------------- rendering

// Entry i = trunc(position_i * (1 / 255.0) * width) for each marker in use,
// in doubles exactly so (a marker at 255 lies at x = width; with width 100
// the default markers fall at 12, 25, 37, 50, 62, 75, 87); 0 elsewhere.
using MarkerOffsetTable = std::array<int32_t, kFountainMaxMarkers>;
MarkerOffsetTable MarkerOffsets(const FountainRecord& record, int32_t width);

// A new width x height 24-bit image of the fountain, left to right. From
// x_prev = 0 and the start colour, each marker in table order (never sorted)
// ends a segment at its offset: when the segment is wider than 0 it is
// painted with the linear gradient of fill_render.h (RenderGradient, type
// linear, rotation 0) from the previous colour to the marker's; either way
// the marker's offset and colour become the previous ones. So equal
// positions make the colour jump, a marker at 0 starts the picture with its
// colour, and a marker left of its predecessor paints over what lies there.
// The last segment runs on to width in FountainFinalColour. Null when a size
// is not positive or memory is short; never half made.
ImageBlock RenderFountain(const FountainRecord& record, int32_t width, int32_t height);

// ---------------------------------------------------------------- built-in fountains

// The ids of the built-in fountains, which the fountain controls of the same
// ids take on a first run: Fountain 270, Solid 290, Shaped Fountain 306,
// Atmosphere 451, Carpet 496. Every one is closed, so it loops seamlessly.
std::span<const int> BuiltInFountainIds();

// False, with `record` untouched, for an id that is not a built-in. The
// record carries an empty path: the control that takes it keeps its own.
bool BuiltInFountain(int id, FountainRecord& record);

// A closed fountain through `markers` (at most 64 are taken) that starts and
// ends at `start`; the end colour is the same, should the fountain be
// switched to open. The built-ins are made with it at compile time.
constexpr FountainRecord MakeClosedFountain(Colour start, std::initializer_list<uint32_t> markers) {
  FountainRecord record;
  record.start_colour = start;
  record.end_colour = start;
  record.marker_count = 0;
  record.markers = {};
  for (uint32_t marker : markers)
    if (record.marker_count < kFountainMaxMarkers) record.markers[record.marker_count++] = marker;
  return record;
}

}  // namespace tess
