// The fountain record's byte form (one function per block of the layout),
// its pattern file and document value, the segment renderer and the
// built-in fountains. Reading never fails loudly: a missing, short or
// foreign file leaves the defaults.
#include "fills/fountain.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "base/bytes.h"
#include "fills/file_io.h"
#include "fills/fill_render.h"
#include "shell/document.h"

namespace tess {
namespace {

// ------------------------------------------------------------ byte blocks

// Bytes 0..288: magic, stamp, size, press flags, mode, path, preview slot.
void PutHeader(uint8_t* b, const FountainRecord& r) {
  std::memcpy(b, kFountainMagic.data(), kFountainMagic.size());
  put_u32le(b + kFountainStampOffset, r.stamp);
  put_u32le(b + kFountainSizeOffset, r.size);
  put_u32le(b + kFountainPressFlagsOffset, r.press_flags);
  put_u32le(b + kFountainModeOffset, r.mode);
  std::memcpy(b + kFountainPathOffset, r.path.data(), kFountainPathSize);
  put_u32le(b + kFountainPreviewImageOffset, 0);  // the control's image, not the bytes'
}

void GetHeader(const uint8_t* b, FountainRecord& r) {
  r.stamp = get_u32le(b + kFountainStampOffset);
  r.size = get_u32le(b + kFountainSizeOffset);
  r.press_flags = get_u32le(b + kFountainPressFlagsOffset);
  r.mode = get_u32le(b + kFountainModeOffset);
  std::memcpy(r.path.data(), b + kFountainPathOffset, kFountainPathSize);
}

// Bytes 289..584: marker count, colours, marker table, reserved tail.
void PutGradient(uint8_t* b, const FountainRecord& r) {
  put_u32le(b + kFountainMarkerCountOffset, r.marker_count);
  put_u32le(b + kFountainStartColourOffset, r.start_colour);
  put_u32le(b + kFountainEndColourOffset, r.end_colour);
  for (size_t i = 0; i < kFountainMaxMarkers; ++i) put_u32le(b + kFountainMarkersOffset + 4 * i, r.markers[i]);
  std::memcpy(b + kFountainReservedOffset, r.reserved.data(), kFountainReservedSize);
}

void GetGradient(const uint8_t* b, FountainRecord& r) {
  r.marker_count = get_u32le(b + kFountainMarkerCountOffset);
  r.start_colour = get_u32le(b + kFountainStartColourOffset);
  r.end_colour = get_u32le(b + kFountainEndColourOffset);
  for (size_t i = 0; i < kFountainMaxMarkers; ++i) r.markers[i] = get_u32le(b + kFountainMarkersOffset + 4 * i);
  std::memcpy(r.reserved.data(), b + kFountainReservedOffset, kFountainReservedSize);
}

// All 585 bytes into `record`, whatever the magic. A held-down press flag
// from a file or document means nothing now: the control starts released.
void GetRecord(const uint8_t* b, FountainRecord& record) {
  GetHeader(b, record);
  GetGradient(b, record);
  record.press_flags &= ~kFountainPressed;
}

// ------------------------------------------------------------ rendering

// Paints columns from..to-1 with the linear gradient start -> end; nothing
// to do when the segment is empty. False when the gradient cannot be made.
bool PaintSegment(ImageBlock& image, int32_t from, int32_t to, Colour start, Colour end) {
  if (to - from <= 0) return true;
  const int32_t width = to - from, height = image.height();
  GradientRecord gradient{start, end, kGradientLinear, 0, 0, 0, {0, 0, width, height}};
  const ImageBlock segment = RenderGradient(gradient);
  if (!segment || segment.width() != width || segment.height() != height || segment.bits() != 24)
    return false;
  const size_t left = 3 * static_cast<size_t>(from), bytes = 3 * static_cast<size_t>(width);
  for (int32_t y = 0; y < height; ++y) std::memcpy(image.Row(y) + left, segment.Row(y), bytes);
  return true;
}

// ------------------------------------------------------------ built-ins

// Colours as one writes them in design tools, 0xRRGGBB.
constexpr Colour Rgb(uint32_t rgb) { return MakeColour(rgb >> 16, rgb >> 8, rgb); }
constexpr uint32_t At(uint32_t position, uint32_t rgb) { return MakeMarker(position, Rgb(rgb)); }

struct BuiltIn {
  int id;
  FountainRecord record;
};

constexpr BuiltIn kBuiltIns[] = {
    // Fountain: a saturated spectrum that flows from red round to red.
    {270, MakeClosedFountain(Rgb(0xFF1E3C), {At(34, 0xFF7A00), At(68, 0xFFD600), At(102, 0x38D430),
                                             At(138, 0x00C2D6), At(172, 0x1E50FF), At(206, 0x8A2BE2),
                                             At(234, 0xE0208C)})},
    // Solid: the tile steps through these one flat colour at a time, so calm
    // jewel tones with soft turns rather than sharp bands.
    {290, MakeClosedFountain(Rgb(0x2A6FDB), {At(48, 0x19A7A0), At(96, 0x7BC86C), At(144, 0xF2C14E),
                                             At(192, 0xE76F51), At(224, 0x9D4EDD)})},
    // Shaped Fountain: rings, so bright bands cut by deep ones.
    {306, MakeClosedFountain(Rgb(0x0B1D51), {At(28, 0x1B6CA8), At(52, 0x5BC0EB), At(64, 0xFDE74C),
                                             At(80, 0xFA7921), At(108, 0x9B1D20), At(132, 0x0B1D51),
                                             At(160, 0x2E8B57), At(184, 0xC5E063), At(196, 0xFFF8E7),
                                             At(212, 0xE5446D), At(236, 0x5B2A86)})},
    // Atmosphere: deep blue sky, haze and sunlit cloud, and back.
    {451, MakeClosedFountain(Rgb(0x1E4D8C), {At(40, 0x3A7BD5), At(80, 0x7FB2F0), At(110, 0xC4DEF6),
                                             At(128, 0xFFF6EA), At(146, 0xE6E4F2), At(168, 0xA9C7EE),
                                             At(208, 0x5C93DB)})},
    // Carpet: madder red, saffron, indigo and teal, as a weave repeats.
    {496, MakeClosedFountain(Rgb(0x7A1020), {At(32, 0xB0282E), At(56, 0xE0A030), At(80, 0x8A5A1C),
                                             At(112, 0x1F2F6B), At(140, 0x2D6E7E), At(164, 0xD9C7A0),
                                             At(190, 0x8E1B3A), At(222, 0x3B1A2E)})},
};

constexpr auto kBuiltInIds = [] {
  std::array<int, std::size(kBuiltIns)> ids{};
  for (size_t i = 0; i < ids.size(); ++i) ids[i] = kBuiltIns[i].id;
  return ids;
}();

}  // namespace

// ---------------------------------------------------------------- record

void InitFountainRecord(FountainRecord& record) { record = FountainRecord(); }

size_t FountainMarkerCount(const FountainRecord& record) {
  return std::min<size_t>(record.marker_count, kFountainMaxMarkers);
}

bool IsOpenFountain(const FountainRecord& record) { return record.mode == kFountainOpen; }

Colour FountainFinalColour(const FountainRecord& record) {
  return (IsOpenFountain(record) ? record.end_colour : record.start_colour) & 0xFFFFFF;
}

std::string_view FountainPath(const FountainRecord& record) {
  const char* begin = record.path.data();
  return {begin, static_cast<size_t>(std::find(begin, begin + kFountainPathSize, '\0') - begin)};
}

bool SetFountainPath(FountainRecord& record, std::string_view path) {
  if (path.size() >= kFountainPathSize) return false;
  record.path.fill('\0');
  std::copy(path.begin(), path.end(), record.path.begin());
  return true;
}

// ---------------------------------------------------------------- bytes and files

FountainBytes SerializeFountainRecord(const FountainRecord& record) {
  FountainBytes bytes{};
  PutHeader(bytes.data(), record);
  PutGradient(bytes.data(), record);
  return bytes;
}

bool ParseFountainRecord(const uint8_t* data, size_t size, FountainRecord& record) {
  if (!data || size < kFountainRecordSize) return false;
  if (std::memcmp(data, kFountainMagic.data(), kFountainMagic.size()) != 0) return false;
  GetRecord(data, record);
  return true;
}

FountainRecord CreateFountainRecord(const std::string& path, uint32_t mode, bool read_file) {
  FountainRecord record;
  record.mode = mode;
  if (SetFountainPath(record, path) && read_file) {
    FountainBytes bytes;
    if (ReadFileStart(path, bytes)) ParseFountainRecord(bytes.data(), bytes.size(), record);
  }
  return record;
}

bool SaveFountainRecord(const FountainRecord& record, std::string* reason) {
  const FountainBytes bytes = SerializeFountainRecord(record);
  return ReplaceFile(
      FountainPath(record), [&bytes](ByteSink& sink) { return sink.Write(bytes.data(), bytes.size()); }, reason);
}

// ---------------------------------------------------------------- document value

std::string FountainValueText(const FountainRecord& record) {
  try {
    return HexEncode(SerializeFountainRecord(record));
  } catch (const std::bad_alloc&) {
    return {};
  }
}

bool TakeFountainValue(std::string_view value, FountainRecord& record) {
  const Buffer<uint8_t> bytes = HexDecode(value, kFountainRecordSize);
  if (!bytes) return false;
  const std::array<char, kFountainPathSize> own_path = record.path;
  GetRecord(bytes.get(), record);
  record.path = own_path;
  return true;
}

// ---------------------------------------------------------------- rendering

MarkerOffsetTable MarkerOffsets(const FountainRecord& record, int32_t width) {
  MarkerOffsetTable offsets{};
  // position / 255 <= 1 (255 * (1 / 255.0) is exactly 1), so x <= width fits.
  for (size_t i = 0; i < FountainMarkerCount(record); ++i)
    offsets[i] = static_cast<int32_t>(MarkerPosition(record.markers[i]) * (1.0 / 255) * width);
  return offsets;
}

ImageBlock RenderFountain(const FountainRecord& record, int32_t width, int32_t height) {
  ImageBlock image = ImageCreate(width, height, nullptr, 24);
  if (!image) return {};
  const MarkerOffsetTable offsets = MarkerOffsets(record, width);
  int32_t x_prev = 0;
  Colour c_prev = record.start_colour & 0xFFFFFF;
  for (size_t i = 0; i < FountainMarkerCount(record); ++i) {
    const Colour c = MarkerColour(record.markers[i]);
    if (!PaintSegment(image, x_prev, offsets[i], c_prev, c)) return {};
    x_prev = offsets[i];
    c_prev = c;
  }
  if (!PaintSegment(image, x_prev, width, c_prev, FountainFinalColour(record))) return {};
  return image;
}

// ---------------------------------------------------------------- built-in fountains

std::span<const int> BuiltInFountainIds() { return kBuiltInIds; }

bool BuiltInFountain(int id, FountainRecord& record) {
  for (const BuiltIn& built_in : kBuiltIns) {
    if (built_in.id != id) continue;
    record = built_in.record;
    return true;
  }
  return false;
}

}  // namespace tess
