// The texture engine's dispatcher and its gradient renderer. Start and shut
// down carry no state: the engine keeps nothing between requests. Gradient
// pixels follow the formulas in texture_engine.h exactly; each shape turns a
// pixel into a level 0..255 and paints it from one 256-entry colour table.
#include "textures/texture_engine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/bytes.h"
#include "output/palette.h"

namespace tess {
namespace {

// ------------------------------------------------------------ trigonometry

constexpr double kPi = 3.14159265358979323846;

// sin x for 0 <= x <= pi/2 from its Taylor series. The compiler evaluates it
// in IEEE double, so the table below is the same on every platform, which
// the C library's sin does not promise.
constexpr double SinSeries(double x) {
  double term = x;
  double sum = x;
  for (int n = 1; n < 15; ++n) {
    term = -term * x * x / ((2 * n) * (2 * n + 1));
    sum += term;
  }
  return sum;
}

constexpr std::array<int32_t, 91> MakeSineTable() {
  std::array<int32_t, 91> table{};
  for (int d = 0; d <= 90; ++d)
    table[static_cast<size_t>(d)] = static_cast<int32_t>(SinSeries(d * kPi / 180) * 65536 + 0.5);
  return table;
}

// round(65536 sin d) for whole degrees 0..90.
constexpr std::array<int32_t, 91> kSineQ16 = MakeSineTable();
static_assert(kSineQ16[0] == 0 && kSineQ16[30] == 32768 && kSineQ16[90] == 65536);

// `degrees` in 0..359.
int32_t SinQ16(int32_t degrees) {
  if (degrees <= 90) return kSineQ16[static_cast<size_t>(degrees)];
  if (degrees <= 180) return kSineQ16[static_cast<size_t>(180 - degrees)];
  if (degrees <= 270) return -kSineQ16[static_cast<size_t>(degrees - 180)];
  return -kSineQ16[static_cast<size_t>(360 - degrees)];
}

int32_t CosQ16(int32_t degrees) { return SinQ16((degrees + 90) % 360); }

// ------------------------------------------------------------ colour levels

// C[k] for k = 0..255, stored blue, green, red as a 24-bit row wants them.
struct LevelColours {
  uint8_t bgr[256][3];
};

LevelColours MakeLevelColours(Colour start, Colour end) {
  LevelColours out;
  const int s[3] = {ColourBlue(start), ColourGreen(start), ColourRed(start)};
  const int e[3] = {ColourBlue(end), ColourGreen(end), ColourRed(end)};
  for (int k = 0; k < 256; ++k)
    for (int c = 0; c < 3; ++c)
      out.bgr[k][c] = static_cast<uint8_t>((s[c] * (255 - k) + e[c] * k + 127) / 255);
  return out;
}

inline void PutLevel(uint8_t* p, const LevelColours& colours, int k) {
  p[0] = colours.bgr[k][0];
  p[1] = colours.bgr[k][1];
  p[2] = colours.bgr[k][2];
}

// ------------------------------------------------------------------ shapes

void RenderLinear(ImageBlock& image, const GradientRequest& r, const LevelColours& colours) {
  const int32_t w = image.width(), h = image.height();
  const int32_t degrees = ((r.rotation % 360) + 360) % 360;
  const int64_t c = CosQ16(degrees), s = SinQ16(degrees);
  const int64_t right = (w - 1) * c, bottom = (h - 1) * s;
  const int64_t umin = std::min({int64_t{0}, right, bottom, right + bottom});
  const int64_t umax = std::max({int64_t{0}, right, bottom, right + bottom});
  const int64_t span = umax - umin;
  const double scale = span == 0 ? 0.0 : 256.0 / static_cast<double>(span);
  for (int32_t y = 0; y < h; ++y) {
    uint8_t* p = image.Row(y);
    int64_t u = y * s - umin;  // u(x, y) - umin, stepped by c along the row
    for (int32_t x = 0; x < w; ++x, u += c, p += 3) {
      int k = static_cast<int>(static_cast<double>(u) * scale);
      PutLevel(p, colours, std::min(k, 255));
    }
  }
}

struct Centre {
  int64_t x;
  int64_t y;
};

Centre CentreOf(const GradientRequest& r) {
  const int32_t cx = std::clamp(r.centre_x, -50, 50), cy = std::clamp(r.centre_y, -50, 50);
  return {static_cast<int64_t>(r.width * (cx * 0.01 + 0.5)),
          static_cast<int64_t>(r.height * (0.5 - cy * 0.01))};
}

// |d| for the corner farthest from `centre` along an axis of `length` pixels.
int64_t FarthestCorner(int64_t centre, int32_t length) {
  return std::max(std::abs(centre), std::abs((length - 1) - centre));
}

// Levels are separable here: the level of max(a, b) is the larger of the two
// levels, so each column's level is computed once and each row's once.
bool RenderSquare(ImageBlock& image, const GradientRequest& r, const LevelColours& colours) {
  const int32_t w = image.width(), h = image.height();
  const Centre centre = CentreOf(r);
  const int64_t far_x = FarthestCorner(centre.x, w), far_y = FarthestCorner(centre.y, h);
  const int64_t biggest = std::max(far_x * h, far_y * w);
  Buffer<uint8_t> column_level = AllocBuffer<uint8_t>(static_cast<size_t>(w));
  if (!column_level) return false;
  auto level = [biggest](int64_t m) {
    return biggest == 0 ? 0 : static_cast<int>(std::min<int64_t>(255, 256 * m / biggest));
  };
  for (int32_t x = 0; x < w; ++x)
    column_level[static_cast<size_t>(x)] = static_cast<uint8_t>(level(std::abs(x - centre.x) * h));
  for (int32_t y = 0; y < h; ++y) {
    const int row_level = level(std::abs(y - centre.y) * w);
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < w; ++x, p += 3)
      PutLevel(p, colours, std::max<int>(column_level[static_cast<size_t>(x)], row_level));
  }
  return true;
}

void RenderRadial(ImageBlock& image, const GradientRequest& r, const LevelColours& colours) {
  const int32_t w = image.width(), h = image.height();
  const Centre centre = CentreOf(r);
  const double far_x = static_cast<double>(FarthestCorner(centre.x, w) * h);
  const double far_y = static_cast<double>(FarthestCorner(centre.y, h) * w);
  const double biggest = far_x * far_x + far_y * far_y;
  for (int32_t y = 0; y < h; ++y) {
    const double qy = static_cast<double>((y - centre.y) * w);
    const double row_part = qy * qy;
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < w; ++x, p += 3) {
      const double qx = static_cast<double>((x - centre.x) * h);
      const double q = qx * qx + row_part;
      const int k = biggest == 0 ? 0 : static_cast<int>(std::sqrt(q / biggest) * 256);
      PutLevel(p, colours, std::min(k, 255));
    }
  }
}

}  // namespace

uint32_t TextureBlockCommand(const TextureBlock& block) {
  return get_u32le(block.data() + kTextureCommandOffset);
}

void SetTextureBlockCommand(TextureBlock& block, uint32_t command) {
  put_u32le(block.data() + kTextureCommandOffset, command);
}

void WriteGradientRequest(TextureBlock& block, const GradientRequest& request) {
  block.fill(0);
  uint8_t* b = block.data();
  SetTextureBlockCommand(block, kTextureGradient);
  BuildFixedPalette(b + kGradientPaletteOffset, nullptr, kGradientPaletteChoice);
  put_i32le(b + kGradientWidthOffset, request.width);
  put_i32le(b + kGradientHeightOffset, request.height);
  put_u32le(b + kGradientShapeOffset, request.shape);
  put_u32le(b + kGradientStartOffset, request.start);
  put_u32le(b + kGradientEndOffset, request.end);
  put_i32le(b + kGradientRotationOffset, request.rotation);
  put_u32le(b + kGradientBitsOffset, request.bits);
  put_i32le(b + kGradientCentreXOffset, request.centre_x);
  put_i32le(b + kGradientCentreYOffset, request.centre_y);
}

GradientRequest ReadGradientRequest(const TextureBlock& block) {
  const uint8_t* b = block.data();
  GradientRequest r;
  r.width = get_i32le(b + kGradientWidthOffset);
  r.height = get_i32le(b + kGradientHeightOffset);
  r.shape = get_u32le(b + kGradientShapeOffset);
  r.start = get_u32le(b + kGradientStartOffset);
  r.end = get_u32le(b + kGradientEndOffset);
  r.rotation = get_i32le(b + kGradientRotationOffset);
  r.bits = get_u32le(b + kGradientBitsOffset);
  r.centre_x = get_i32le(b + kGradientCentreXOffset);
  r.centre_y = get_i32le(b + kGradientCentreYOffset);
  return r;
}

ImageBlock TextureEngineGradient(const GradientRequest& request) {
  if (request.bits != 24 || request.shape > kGradientShapeRadial) return {};
  ImageBlock image = ImageCreate(request.width, request.height, nullptr, 24);
  if (!image) return {};
  const LevelColours colours = MakeLevelColours(request.start, request.end);
  switch (request.shape) {
    case kGradientShapeLinear:
      RenderLinear(image, request, colours);
      break;
    case kGradientShapeSquare:
      if (!RenderSquare(image, request, colours)) return {};
      break;
    case kGradientShapeRadial:
      RenderRadial(image, request, colours);
      break;
  }
  return image;
}

int32_t TextureEngineProc(TextureBlock& block, ImageBlock* result) {
  switch (TextureBlockCommand(block)) {
    case kTextureStart:
    case kTextureShutDown:
      return 1;
    case kTextureGradient: {
      if (!result) return 0;
      ImageBlock image = TextureEngineGradient(ReadGradientRequest(block));
      if (!image) return 0;
      *result = std::move(image);
      return 1;
    }
    default:
      return 0;
  }
}

}  // namespace tess
