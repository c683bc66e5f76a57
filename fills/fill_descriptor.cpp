// The fill record's byte form, one function per block of the layout, and its
// pattern file. Reading never fails loudly: a file that is missing, short or
// foreign leaves the defaults. Writing replaces the file only once every byte
// has reached a temporary file beside it.
#include "fills/fill_descriptor.h"

#include <algorithm>
#include <cstring>

#include "base/byte_sink.h"
#include "base/bytes.h"
#include "fills/file_io.h"

namespace tess {
namespace {

void PutRect(uint8_t* p, const Rect& r) {
  put_i32le(p + 0, r.left);
  put_i32le(p + 4, r.top);
  put_i32le(p + 8, r.right);
  put_i32le(p + 12, r.bottom);
}

Rect GetRect(const uint8_t* p) {
  return {get_i32le(p + 0), get_i32le(p + 4), get_i32le(p + 8), get_i32le(p + 12)};
}

// Bytes 0..288: magic, stamp, size, path, kind, press flags, Simple colour.
void PutHeader(uint8_t* b, const FillDescriptor& r) {
  std::memcpy(b, kFillMagic.data(), kFillMagic.size());
  put_u32le(b + kFillStampOffset, r.stamp);
  put_u32le(b + kFillSizeOffset, r.size);
  std::memcpy(b + kFillPathOffset, r.path.data(), kFillPathSize);
  put_u32le(b + kFillKindOffset, r.kind);
  put_u32le(b + kFillPressFlagsOffset, r.press_flags);
  put_u32le(b + kFillColourOffset, r.colour);
}

void GetHeader(const uint8_t* b, FillDescriptor& r) {
  r.stamp = get_u32le(b + kFillStampOffset);
  r.size = get_u32le(b + kFillSizeOffset);
  std::memcpy(r.path.data(), b + kFillPathOffset, kFillPathSize);
  r.kind = get_u32le(b + kFillKindOffset);
  r.press_flags = get_u32le(b + kFillPressFlagsOffset);
  r.colour = get_u32le(b + kFillColourOffset);
}

// Bytes 289..332, from `g` = the record's byte 289.
void PutGradient(uint8_t* g, const GradientRecord& r) {
  put_u32le(g + 0, r.grad_start);
  put_u32le(g + 4, r.grad_end);
  put_u32le(g + 8, r.grad_type);
  put_i32le(g + 12, r.rotation);
  put_i32le(g + 16, r.centre_x);
  put_i32le(g + 20, r.centre_y);
  put_u32le(g + 24, 0);  // the swatch image belongs to the button, not the bytes
  PutRect(g + 28, r.grad_rect);
}

void GetGradient(const uint8_t* g, GradientRecord& r) {
  r.grad_start = get_u32le(g + 0);
  r.grad_end = get_u32le(g + 4);
  r.grad_type = get_u32le(g + 8);
  r.rotation = get_i32le(g + 12);
  r.centre_x = get_i32le(g + 16);
  r.centre_y = get_i32le(g + 20);
  r.grad_rect = GetRect(g + 28);
}

// Bytes 333..853: the texture and tile blocks and tile_rect.
void PutPatterns(uint8_t* b, const FillDescriptor& r) {
  std::memcpy(b + kFillTextureOffset, r.texture.data(), kFillTextureSize);
  std::memcpy(b + kFillTileOffset, r.tile.data(), kFillTileSize);
  put_u32le(b + kFillTileOffset + kTileHandleOffset, 0);  // run-time pattern handle
  PutRect(b + kFillTileRectOffset, r.tile_rect);
}

void GetPatterns(const uint8_t* b, FillDescriptor& r) {
  std::memcpy(r.texture.data(), b + kFillTextureOffset, kFillTextureSize);
  std::memcpy(r.tile.data(), b + kFillTileOffset, kFillTileSize);
  put_u32le(r.tile.data() + kTileHandleOffset, 0);
  r.tile_rect = GetRect(b + kFillTileRectOffset);
}

}  // namespace

FillTextureBlock InitTextureBlock() {
  FillTextureBlock block{};
  SetTextureRect(block, {0, 0, 128, 128});
  return block;
}

FillTileBlock InitTileBlock() { return FillTileBlock{}; }

Rect TextureRect(const FillTextureBlock& texture) {
  return GetRect(texture.data() + kTextureRectOffset);
}

void SetTextureRect(FillTextureBlock& texture, const Rect& rect) {
  PutRect(texture.data() + kTextureRectOffset, rect);
}

std::string_view FillPath(const FillDescriptor& record) {
  const char* begin = record.path.data();
  return {begin, static_cast<size_t>(std::find(begin, begin + kFillPathSize, '\0') - begin)};
}

bool SetFillPath(FillDescriptor& record, std::string_view path) {
  if (path.size() >= kFillPathSize) return false;
  record.path.fill('\0');
  std::copy(path.begin(), path.end(), record.path.begin());
  return true;
}

FillBytes SerializeFillDescriptor(const FillDescriptor& record) {
  FillBytes bytes{};
  PutHeader(bytes.data(), record);
  PutGradient(bytes.data() + kFillGradientOffset, record.gradient);
  PutPatterns(bytes.data(), record);
  return bytes;
}

bool ParseFillDescriptor(const uint8_t* data, size_t size, FillDescriptor& record) {
  if (!data || size < kFillDescriptorSize) return false;
  if (std::memcmp(data, kFillMagic.data(), kFillMagic.size()) != 0) return false;
  GetHeader(data, record);
  GetGradient(data + kFillGradientOffset, record.gradient);
  GetPatterns(data, record);
  return true;
}

FillDescriptor CreateFillDescriptor(const std::string& path, Colour default_colour,
                                    bool read_file) {
  FillDescriptor record;
  record.colour = default_colour;
  if (SetFillPath(record, path) && read_file) {
    FillBytes bytes;
    if (ReadFileStart(path, bytes)) ParseFillDescriptor(bytes.data(), bytes.size(), record);
  }
  record.press_flags &= ~(kFillSwatchPressed | kFillArrowPressed);
  return record;
}

bool SaveFillDescriptor(const FillDescriptor& record, std::string* reason) {
  const FillBytes bytes = SerializeFillDescriptor(record);
  return ReplaceFile(
      FillPath(record), [&bytes](ByteSink& sink) { return sink.Write(bytes.data(), bytes.size()); }, reason);
}

}  // namespace tess
