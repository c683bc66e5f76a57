// The fill record: what one fill button holds and what a style paints with.
// Its 854-byte little-endian form is at once the button's ".flp" pattern file
// and the payload of a document's FILLBT line, so every offset is format.
// FillDescriptor keeps the fields typed; bytes exist only when serialised
// field by field. Run-time handles (the button's swatch image, the tile's
// pattern data) live beside the record with its owner, never in it: their
// slots are written as 0 and ignored when read.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "image/image.h"
#include "draw/raster.h"

namespace tess {

// Layout of the 854 bytes (u32/i32 little-endian, no padding):
//   off  size  field
//     0     8  magic "BRNDFILB", no terminator
//     8     4  stamp        u32, 0x02006101 when created; never checked
//    12     4  size         u32, 854 when created; never checked
//    16   261  path         this fill's own .flp file, NUL-terminated
//   277     4  kind         FillKind
//   281     4  press_flags  bit 0 swatch held down, bit 1 menu arrow held down
//   285     4  colour       the Simple fill, 0x00BBGGRR
//   289     4  grad_start   gradient start colour          } GradientRecord:
//   293     4  grad_end     gradient end colour            } the part that
//   297     4  grad_type    GradientType                   } fountain records
//   301     4  rotation     i32 degrees                    } share
//   305     4  centre_x     i32 per cent, 0 = middle       }
//   309     4  centre_y     i32 per cent, 0 = middle, + up }
//   313     4  (swatch image handle at run time: 0)        }
//   317    16  grad_rect    i32 left, top, right, bottom   }
//   333   236  texture      the texture generator's block; bytes 4..19 are
//                           the i32 rectangle its square is generated at
//   569   269  tile         bytes 0..260 tile library path, NUL-terminated
//                           (empty = no library pattern); 261..264 u32 entry
//                           index; 265..268 (pattern handle at run time: 0)
//   838    16  tile_rect    i32 left, top, right, bottom
inline constexpr size_t kFillDescriptorSize = 854;
inline constexpr std::string_view kFillMagic = "BRNDFILB";
inline constexpr uint32_t kFillStamp = 0x02006101u;
inline constexpr size_t kFillPathSize = 261;
inline constexpr size_t kFillTextureSize = 236;
inline constexpr size_t kFillTileSize = 269;

inline constexpr size_t kFillStampOffset = 8;
inline constexpr size_t kFillSizeOffset = 12;
inline constexpr size_t kFillPathOffset = 16;
inline constexpr size_t kFillKindOffset = 277;
inline constexpr size_t kFillPressFlagsOffset = 281;
inline constexpr size_t kFillColourOffset = 285;
inline constexpr size_t kFillGradientOffset = 289;
inline constexpr size_t kFillPreviewImageOffset = 313;
inline constexpr size_t kFillTextureOffset = 333;
inline constexpr size_t kFillTileOffset = 569;
inline constexpr size_t kFillTileRectOffset = 838;

// Within the texture block.
inline constexpr size_t kTextureRectOffset = 4;
// Within the tile block.
inline constexpr size_t kTileLibraryPathSize = 261;
inline constexpr size_t kTileIndexOffset = 261;
inline constexpr size_t kTileHandleOffset = 265;

enum FillKind : uint32_t {
  kFillSimple = 0,
  kFillGradient = 1,
  kFillTexture = 2,
  kFillTile = 3,
};

// As the gradient editor names them. Radial and square reach the texture
// engine as its shape codes 2 and 1 (see RenderGradient).
enum GradientType : uint32_t {
  kGradientLinear = 0,
  kGradientRadial = 1,
  kGradientSquare = 2,
  kGradientConical = 3,
};

inline constexpr uint32_t kFillSwatchPressed = 1u << 0;
inline constexpr uint32_t kFillArrowPressed = 1u << 1;

using FillBytes = std::array<uint8_t, kFillDescriptorSize>;
using FillTextureBlock = std::array<uint8_t, kFillTextureSize>;
using FillTileBlock = std::array<uint8_t, kFillTileSize>;

// Bytes 289..332 of a fill. RenderGradient takes this part alone, so records
// of fountains and styles that share the layout render through it too.
struct GradientRecord {
  Colour grad_start = 0x000000;
  Colour grad_end = 0xFFFFFF;
  uint32_t grad_type = kGradientLinear;
  int32_t rotation = 0;
  int32_t centre_x = 0;
  int32_t centre_y = 0;
  Rect grad_rect;  // the size to render at; set by whoever renders
};

// The texture generator's defaults. Its own parameters are not settled yet,
// so the block is zero apart from the generation square (0, 0, 128, 128).
FillTextureBlock InitTextureBlock();
// The tile library's defaults: no library pattern (empty path), entry 0.
FillTileBlock InitTileBlock();

Rect TextureRect(const FillTextureBlock& texture);
void SetTextureRect(FillTextureBlock& texture, const Rect& rect);

// A default-constructed record holds the created defaults with an empty path
// and black as the Simple colour. Trivially copyable: a working copy cannot fail.
struct FillDescriptor {
  uint32_t stamp = kFillStamp;
  uint32_t size = kFillDescriptorSize;
  std::array<char, kFillPathSize> path{};  // bytes after the NUL are kept as read
  uint32_t kind = kFillSimple;
  uint32_t press_flags = 0;
  Colour colour = 0x000000;
  GradientRecord gradient;
  FillTextureBlock texture = InitTextureBlock();
  FillTileBlock tile = InitTileBlock();
  Rect tile_rect;
};

// The path up to its NUL (all 261 bytes when a foreign record has none).
std::string_view FillPath(const FillDescriptor& record);
// False, leaving the field alone, when `path` needs more than 260 characters.
bool SetFillPath(FillDescriptor& record, std::string_view path);

FillBytes SerializeFillDescriptor(const FillDescriptor& record);

// False, with `record` untouched, when fewer than 854 bytes are given or the
// magic is not "BRNDFILB". Bytes past 854 are ignored.
bool ParseFillDescriptor(const uint8_t* data, size_t size, FillDescriptor& record);

// A new record for the fill button whose pattern file is `path`: the defaults
// (kind Simple in `default_colour`, gradient black to white, linear, rotation
// and centre 0). With `read_file`, a pattern file of at least 854 bytes with
// the magic replaces them, path field included, as the file has it; anything
// else keeps the defaults silently. The press flags start cleared either way.
// A path too long for the record leaves its path empty and reads nothing.
FillDescriptor CreateFillDescriptor(const std::string& path, Colour default_colour, bool read_file);

// Writes all 854 bytes to the file named in the path field, through a
// temporary file beside it renamed into place: false when anything failed,
// with the system's reason in *reason, and then neither a partial file nor a
// changed old one is left.
bool SaveFillDescriptor(const FillDescriptor& record, std::string* reason = nullptr);

}  // namespace tess
