// The texture engine's one entry point and its request block: a 1000-byte
// block whose little-endian 32-bit word at byte 24 is the command. The shell
// starts the engine before the main dialog opens and shuts it down after;
// fills send gradient requests (command 8) through the same entry.
//
// Invariants: the engine only reads request blocks, never writes them; an
// unknown command is refused (0). Requests that make an image hand it back in
// a result slot beside the block, as a new ImageBlock the caller owns.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "image/image.h"

namespace tess {

inline constexpr size_t kTextureBlockSize = 1000;
inline constexpr size_t kTextureCommandOffset = 24;

enum TextureCommand : uint32_t {
  kTextureStart = 1,
  kTextureShutDown = 2,
  kTextureGradient = 8,
};

// A request block as the shell and the fills fill it in: zeroed, then the
// command word and the command's parameters.
using TextureBlock = std::array<uint8_t, kTextureBlockSize>;

uint32_t TextureBlockCommand(const TextureBlock& block);
void SetTextureBlockCommand(TextureBlock& block, uint32_t command);

// Carries out one request. Start and shut down return 1. A gradient request
// moves its new image into *result and returns 1; it returns 0, leaving
// *result alone, when there is no result slot, the request is invalid or
// memory is short. Unknown commands return 0.
int32_t TextureEngineProc(TextureBlock& block, ImageBlock* result = nullptr);

// ------------------------------------------------------- gradient request
//
// Layout (every other byte of the block is 0):
//   24   u32  8 (kTextureGradient)
//   44   768  palette table: BuildFixedPalette choice 8 (256 grey levels) as
//             red, green, blue triples; an 8-bit image would take it as its
//             colour table, a 24-bit one ignores it
//   964  i32  width in pixels
//   968  i32  height in pixels
//   972  u32  shape code (GradientShape)
//   976  u32  start colour, 0x00BBGGRR
//   980  u32  end colour, 0x00BBGGRR
//   984  i32  rotation in degrees (linear shape)
//   988  u32  bits per pixel of the wanted image; the engine makes 24 only
//   992  i32  centre x in per cent (centred shapes), 0 = middle, + = right
//   996  i32  centre y in per cent (centred shapes), 0 = middle, + = up
inline constexpr size_t kGradientPaletteOffset = 44;
inline constexpr size_t kGradientWidthOffset = 964;
inline constexpr size_t kGradientHeightOffset = 968;
inline constexpr size_t kGradientShapeOffset = 972;
inline constexpr size_t kGradientStartOffset = 976;
inline constexpr size_t kGradientEndOffset = 980;
inline constexpr size_t kGradientRotationOffset = 984;
inline constexpr size_t kGradientBitsOffset = 988;
inline constexpr size_t kGradientCentreXOffset = 992;
inline constexpr size_t kGradientCentreYOffset = 996;
inline constexpr int kGradientPaletteChoice = 8;

// Gradient formulas. W, H = width, height; (x, y) = pixel column and row from
// the top-left; S, E = start and end colour. Every shape computes a level
// k in 0..255 per pixel and paints colour C[k], each channel
//   C[k] = (S * (255 - k) + E * k + 127) / 255     (integer division)
// so level 0 is exactly the start colour and level 255 exactly the end colour.
// Doubles appear only in single, unfused operations (+, -, *, /, sqrt), which
// IEEE arithmetic rounds the same way everywhere.
//
// kGradientShapeLinear (0): a straight sweep. R = rotation mod 360 (0..359);
//   c = round(65536 cos R), s = round(65536 sin R) from a table built at
//   compile time from a Taylor series, so no library trigonometry is involved.
//   u(x, y) = x*c + y*s; umin and umax are its extremes over the four corner
//   pixels (0,0), (W-1,0), (0,H-1), (W-1,H-1); D = umax - umin;
//   k = D = 0 ? 0 : min(255, trunc((u - umin) * (256.0 / D))).
//   Rotation 0 puts the start colour on the left column and the end colour on
//   the right one; 90 puts the start on top; larger angles turn the start
//   side clockwise on screen, as the conical sweep's rotation does.
//
// Centred shapes: cx, cy = centre x and y clamped to -50..50; the centre is
//   px = trunc(W * (cx * 0.01 + 0.5)), py = trunc(H * (0.5 - cy * 0.01))
//   (the conical gradient's centre, so switching shape keeps it in place;
//   -50..50 spans the picture from edge to edge). dx = x - px, dy = y - py.
//   Distances are measured after scaling the picture to a square, so the
//   rings follow its proportions.
//
// kGradientShapeSquare (1): rectangular rings.
//   m = max(|dx| * H, |dy| * W); M = its largest value over the four corner
//   pixels; k = M = 0 ? 0 : min(255, (256 * m) / M)  (64-bit integers).
//
// kGradientShapeRadial (2): elliptical rings.
//   q = (dx * H)^2 + (dy * W)^2 (as doubles); Q = its largest value over the
//   four corner pixels; k = Q = 0 ? 0 : min(255, trunc(sqrt(q / Q) * 256)).
//
// Both centred shapes have the start colour at the centre pixel and the end
// colour at the farthest corner.
enum GradientShape : uint32_t {
  kGradientShapeLinear = 0,
  kGradientShapeSquare = 1,
  kGradientShapeRadial = 2,
};

// The fields of a gradient request as typed values.
struct GradientRequest {
  int32_t width = 0;
  int32_t height = 0;
  uint32_t shape = kGradientShapeLinear;
  Colour start = 0x000000;
  Colour end = 0xFFFFFF;
  int32_t rotation = 0;
  uint32_t bits = 24;
  int32_t centre_x = 0;
  int32_t centre_y = 0;
};

// Zeroes the whole block, then writes the command word, the palette table
// and the fields at the offsets above.
void WriteGradientRequest(TextureBlock& block, const GradientRequest& request);
GradientRequest ReadGradientRequest(const TextureBlock& block);

// The engine's renderer: a new 24-bit width x height image, or null when a
// size is not positive, the shape or the bit count is not one it makes, or
// memory is short.
ImageBlock TextureEngineGradient(const GradientRequest& request);

}  // namespace tess
