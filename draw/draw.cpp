// Pixel operations for the styles. Sections: wrap index and small helpers;
// blends; attach mask; rolls; quarter turns; scaling.
//
// Blends work per run: a mask row is split into the few pieces that stay
// contiguous in the target (one more each time it crosses the right edge), so
// the wrap is computed once per piece, never per pixel. Images of 24 and 32
// bits take the row-pointer paths; other depths go pixel by pixel through
// ImageGetPixel/ImageSetPixel with the same arithmetic.
#include "draw/draw.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>

namespace tess {
namespace {

// ---- Helpers ---------------------------------------------------------------

// Bytes per pixel of 8, 24 and 32-bit images; 0 below 8 bits.
int BytesPerPixel(const ImageBlock& image) { return image.bits() >= 8 ? image.bits() / 8 : 0; }

bool IsTrueColour(const ImageBlock& image) { return image.bits() == 24 || image.bits() == 32; }

// A zeroed image of the given size with the source's depth and colour table.
ImageBlock CreateLike(const ImageBlock& source, int64_t width, int64_t height) {
  if (width <= 0 || height <= 0 || width > INT32_MAX || height > INT32_MAX) return {};
  ImageBlock out = ImageCreate(static_cast<int32_t>(width), static_cast<int32_t>(height), nullptr,
                               source.bits());
  if (out && source.colour_table())
    std::memcpy(out.colour_table(), source.colour_table(), 4 * size_t(source.colour_table_entries()));
  return out;
}

// One per-channel blend step: c * a / 255 + d * (255 - a) / 255.
inline uint8_t Mix(unsigned c, unsigned d, unsigned a) {
  return static_cast<uint8_t>(c * a / 255 + d * (255 - a) / 255);
}

// The low three bytes of `d` blended towards `c` with coverage a; the top byte
// of `d` stays.
Colour MixColour(Colour c, Colour d, unsigned a) {
  Colour out = d & 0xFF000000u;
  for (int shift = 0; shift < 24; shift += 8)
    out |= static_cast<Colour>(Mix((c >> shift) & 0xFF, (d >> shift) & 0xFF, a)) << shift;
  return out;
}

// Calls run(target_x, source_x, count) for the pieces of a source row of
// `length` pixels starting at target column wrap(x): each piece is contiguous
// in the target, in source order.
template <class Run>
void ForEachWrappedRun(int64_t x, int32_t length, int32_t target_width, Run run) {
  int32_t tx = WrapIndex(x, target_width);
  for (int32_t sx = 0; sx < length;) {
    int32_t count = std::min(length - sx, target_width - tx);
    run(tx, sx, count);
    sx += count;
    tx = 0;
  }
}

// ---- Blends ----------------------------------------------------------------

struct MaskInk {
  uint8_t cover[256];      // mask value -> coverage after opacity
  uint8_t term[3][256];    // coverage -> c * a / 255 for blue, green, red
  uint8_t bgr[3];
};

void PrepareInk(MaskInk& ink, Colour colour, unsigned opacity) {
  ink.bgr[0] = ColourBlue(colour);
  ink.bgr[1] = ColourGreen(colour);
  ink.bgr[2] = ColourRed(colour);
  for (unsigned a = 0; a < 256; ++a) {
    ink.cover[a] = static_cast<uint8_t>(opacity == 255 ? a : a * opacity / 255);
    for (int c = 0; c < 3; ++c) ink.term[c][a] = static_cast<uint8_t>(ink.bgr[c] * a / 255);
  }
}

// Hot loop of the sprite styles: skips uncovered pixels and copies fully
// covered ones, which is most of a bubble.
void MaskRun(uint8_t* t, int t_step, const uint8_t* m, int m_step, int32_t count,
             const MaskInk& ink) {
  for (int32_t i = 0; i < count; ++i, t += t_step, m += m_step) {
    unsigned a = ink.cover[m[0]];
    if (a == 0) continue;
    if (a == 255) {
      t[0] = ink.bgr[0], t[1] = ink.bgr[1], t[2] = ink.bgr[2];
      continue;
    }
    unsigned rest = 255 - a;
    t[0] = static_cast<uint8_t>(ink.term[0][a] + t[0] * rest / 255);
    t[1] = static_cast<uint8_t>(ink.term[1][a] + t[1] * rest / 255);
    t[2] = static_cast<uint8_t>(ink.term[2][a] + t[2] * rest / 255);
  }
}

// MaskRun with the ink read from a source run beside the mask. The ink
// changes per pixel, so its term cannot come from a table.
void MaskImageRun(uint8_t* t, int t_step, const uint8_t* m, int m_step, const uint8_t* s,
                  int s_step, int32_t count, const uint8_t (&cover)[256]) {
  for (int32_t i = 0; i < count; ++i, t += t_step, m += m_step, s += s_step) {
    unsigned a = cover[m[0]];
    if (a == 0) continue;
    if (a == 255) {
      t[0] = s[0], t[1] = s[1], t[2] = s[2];
      continue;
    }
    t[0] = Mix(s[0], t[0], a);
    t[1] = Mix(s[1], t[1], a);
    t[2] = Mix(s[2], t[2], a);
  }
}

void AlphaRun(uint8_t* t, int t_step, const uint8_t* s, int32_t count) {
  for (int32_t i = 0; i < count; ++i, t += t_step, s += 4) {
    unsigned a = s[3];
    if (a == 0) continue;
    if (a == 255) {
      t[0] = s[0], t[1] = s[1], t[2] = s[2];
      continue;
    }
    t[0] = Mix(s[0], t[0], a);
    t[1] = Mix(s[1], t[1], a);
    t[2] = Mix(s[2], t[2], a);
  }
}

// Any depth, pixel by pixel; `blend(target_value, source_value)` gives the new
// target value.
template <class Blend>
void BlendByPixel(ImageBlock& target, const ImageBlock& source, int32_t x, int32_t y, Blend blend) {
  for (int32_t sy = 0; sy < source.height(); ++sy) {
    int32_t ty = WrapIndex(int64_t{y} + sy, target.height());
    for (int32_t sx = 0; sx < source.width(); ++sx) {
      int32_t tx = WrapIndex(int64_t{x} + sx, target.width());
      ImageSetPixel(target, tx, ty,
                    blend(ImageGetPixel(target, tx, ty), ImageGetPixel(source, sx, sy)));
    }
  }
}

// ---- Rolls -----------------------------------------------------------------

// Copies `count` whole rows, top-down indices; rows are contiguous in memory
// (bottom-up), so this is one block move.
void CopyRows(ImageBlock& dest, int32_t dest_top, const ImageBlock& source, int32_t source_top,
              int32_t count) {
  if (count <= 0) return;
  std::memcpy(dest.Row(dest_top + count - 1), source.Row(source_top + count - 1),
              size_t(count) * source.stride());
}

// Row y of the result is source row y - shift.
ImageBlock RollRows(const ImageBlock& image, int64_t shift) {
  if (!image) return {};
  ImageBlock out = CreateLike(image, image.width(), image.height());
  if (!out) return {};
  int32_t h = image.height(), k = WrapIndex(shift, h);
  CopyRows(out, k, image, 0, h - k);
  CopyRows(out, 0, image, h - k, k);
  return out;
}

// Column x of the result is source column x - shift.
ImageBlock RollColumns(const ImageBlock& image, int64_t shift) {
  if (!image) return {};
  ImageBlock out = CreateLike(image, image.width(), image.height());
  if (!out) return {};
  int32_t w = image.width(), h = image.height(), k = WrapIndex(shift, w);
  int bpp = BytesPerPixel(image);
  for (int32_t y = 0; y < h; ++y) {
    if (bpp == 0) {  // 1 and 4 bits: columns are not whole bytes
      for (int32_t x = 0; x < w; ++x)
        ImageSetPixel(out, x, y, ImageGetPixel(image, WrapIndex(int64_t{x} - k, w), y));
      continue;
    }
    const uint8_t* s = image.Row(y);
    uint8_t* d = out.Row(y);
    std::memcpy(d + size_t(bpp) * k, s, size_t(bpp) * (w - k));
    std::memcpy(d, s + size_t(bpp) * (w - k), size_t(bpp) * k);
  }
  return out;
}

// ---- Quarter turns ---------------------------------------------------------

// Source (x, y) goes to (y, w - 1 - x) when anticlockwise, (h - 1 - y, x)
// otherwise, where w and h are the source's size.
ImageBlock Turn(const ImageBlock& image, bool anticlockwise) {
  if (!image) return {};
  int32_t w = image.width(), h = image.height();
  ImageBlock out = CreateLike(image, h, w);
  if (!out) return {};
  int bpp = BytesPerPixel(image);
  for (int32_t y = 0; y < h; ++y) {
    int32_t dx = anticlockwise ? y : h - 1 - y;
    if (bpp == 0) {
      for (int32_t x = 0; x < w; ++x)
        ImageSetPixel(out, dx, anticlockwise ? w - 1 - x : x, ImageGetPixel(image, x, y));
      continue;
    }
    const uint8_t* s = image.Row(y);
    for (int32_t x = 0; x < w; ++x, s += bpp)
      std::memcpy(out.Row(anticlockwise ? w - 1 - x : x) + size_t(bpp) * dx, s, size_t(bpp));
  }
  return out;
}

// ---- Scaling ---------------------------------------------------------------

// Every depth is handled as rows of one byte per channel: 8, 24 and 32-bit
// rows are used in place, 1 and 4-bit rows are unpacked to one index a byte.
int Channels(const ImageBlock& image) { return std::max(BytesPerPixel(image), 1); }

void UnpackRow(const ImageBlock& image, int32_t y, uint8_t* out) {
  const uint8_t* row = image.Row(y);
  for (int32_t x = 0; x < image.width(); ++x)
    out[x] = image.bits() == 4 ? ((x & 1) ? row[x / 2] & 0x0F : row[x / 2] >> 4)
                               : (row[x / 8] >> (7 - x % 8)) & 1;
}

void PackRow(ImageBlock& image, int32_t y, const uint8_t* in) {
  uint8_t* row = image.Row(y);
  std::memset(row, 0, image.stride());
  for (int32_t x = 0; x < image.width(); ++x) {
    if (image.bits() == 4)
      row[x / 2] |= static_cast<uint8_t>((in[x] & 0x0F) << ((x & 1) ? 0 : 4));
    else
      row[x / 8] |= static_cast<uint8_t>((in[x] & 1) << (7 - x % 8));
  }
}

// Row y as channel bytes: in place, or unpacked into `scratch`.
const uint8_t* ReadChannels(const ImageBlock& image, int32_t y, uint8_t* scratch) {
  if (BytesPerPixel(image)) return image.Row(y);
  UnpackRow(image, y, scratch);
  return scratch;
}
uint8_t* WriteChannels(ImageBlock& image, int32_t y, uint8_t* scratch) {
  return BytesPerPixel(image) ? image.Row(y) : scratch;
}
void FinishChannels(ImageBlock& image, int32_t y, const uint8_t* scratch) {
  if (!BytesPerPixel(image)) PackRow(image, y, scratch);
}

// The source pixels averaged into one output pixel of a reduced axis.
struct SourceSpan {
  int32_t start;
  int32_t count;
  uint64_t reciprocal;  // see DivideBySpan
};

// A percent of at least 1 makes a span at most 100 pixels long, so a sum is at
// most 255 * 100 and sum * count stays far below 2^32: in that range
// (sum * (2^32 / count + 1)) >> 32 is exactly sum / count, without a divide.
uint64_t SpanReciprocal(int32_t count) { return (uint64_t{1} << 32) / uint64_t(std::max(count, 1)) + 1; }
inline uint8_t DivideBySpan(uint32_t sum, uint64_t reciprocal) {
  return static_cast<uint8_t>((sum * reciprocal) >> 32);
}

Buffer<SourceSpan> ReductionSpans(int32_t length, int percent, int32_t out_length) {
  Buffer<SourceSpan> spans = AllocBuffer<SourceSpan>(size_t(out_length));
  if (!spans) return spans;
  int64_t previous = 0;
  for (int32_t j = 0; j < out_length; ++j) {
    int64_t end = std::min<int64_t>((int64_t{j} + 1) * 100 / percent, length);
    end = std::max(end, previous);
    int32_t count = static_cast<int32_t>(end - previous);
    spans[j] = {static_cast<int32_t>(previous), count, SpanReciprocal(count)};
    previous = end;
  }
  return spans;
}

// trunc(length * percent / 100), or 0 when that is not a usable size.
int64_t ScaledLength(int32_t length, int percent) {
  int64_t out = int64_t{length} * percent / 100;
  return out > INT32_MAX ? 0 : out;
}

// Averages channel bytes of each span; CH is 1, 3 or 4. The sums are separate
// scalars so they stay in registers (an array of sums went through memory).
template <int CH>
void ReduceRow(const uint8_t* in, uint8_t* out, const SourceSpan* spans, int32_t out_width) {
  for (int32_t j = 0; j < out_width; ++j, out += CH) {
    const uint8_t* p = in + size_t(CH) * spans[j].start;
    uint32_t s0 = 0, s1 = 0, s2 = 0, s3 = 0;
    for (int32_t k = 0; k < spans[j].count; ++k, p += CH) {
      s0 += p[0];
      if constexpr (CH >= 3) s1 += p[1], s2 += p[2];
      if constexpr (CH == 4) s3 += p[3];
    }
    uint64_t r = spans[j].reciprocal;
    out[0] = DivideBySpan(s0, r);
    if constexpr (CH >= 3) out[1] = DivideBySpan(s1, r), out[2] = DivideBySpan(s2, r);
    if constexpr (CH == 4) out[3] = DivideBySpan(s3, r);
  }
}

// The supersampled frames reduce by exactly 2 or 4 pixels a span (50 and 25
// percent) at 24 bits; spelled out, the span needs no loop and the division
// by a power of two is a shift.
template <int N>
void ReduceRgbFixed(const uint8_t* in, uint8_t* out, int32_t out_width) {
  static_assert(N == 2 || N == 4);
  constexpr int kShift = N == 2 ? 1 : 2;
  for (int32_t j = 0; j < out_width; ++j, in += 3 * N, out += 3) {
    uint32_t b = in[0] + in[3], g = in[1] + in[4], r = in[2] + in[5];
    if constexpr (N == 4) b += in[6] + in[9], g += in[7] + in[10], r += in[8] + in[11];
    out[0] = static_cast<uint8_t>(b >> kShift);
    out[1] = static_cast<uint8_t>(g >> kShift);
    out[2] = static_cast<uint8_t>(r >> kShift);
  }
}

// The span count shared by every output pixel, or 0 when they differ.
int32_t UniformCount(const SourceSpan* spans, int32_t n) {
  for (int32_t j = 1; j < n; ++j)
    if (spans[j].count != spans[0].count) return 0;
  return spans[0].count;
}

ImageBlock ReduceWidth(const ImageBlock& image, int percent) {
  int32_t w = image.width(), h = image.height();
  int64_t out_w = ScaledLength(w, percent);
  ImageBlock out = CreateLike(image, out_w, h);
  Buffer<SourceSpan> spans = ReductionSpans(w, percent, static_cast<int32_t>(out_w));
  Buffer<uint8_t> scratch_in = AllocBuffer<uint8_t>(size_t(w));
  Buffer<uint8_t> scratch_out = AllocBuffer<uint8_t>(size_t(out_w));
  if (!out || !spans || !scratch_in || !scratch_out) return {};
  int ch = Channels(image);
  int32_t uniform = UniformCount(spans.get(), out.width());
  for (int32_t y = 0; y < h; ++y) {
    const uint8_t* in = ReadChannels(image, y, scratch_in.get());
    uint8_t* row = WriteChannels(out, y, scratch_out.get());
    if (ch == 3 && uniform == 4)
      ReduceRgbFixed<4>(in, row, out.width());
    else if (ch == 3 && uniform == 2)
      ReduceRgbFixed<2>(in, row, out.width());
    else if (ch == 3)
      ReduceRow<3>(in, row, spans.get(), out.width());
    else if (ch == 4)
      ReduceRow<4>(in, row, spans.get(), out.width());
    else
      ReduceRow<1>(in, row, spans.get(), out.width());
    FinishChannels(out, y, scratch_out.get());
  }
  return out;
}

// Bit count of a power-of-two span, or -1: those divide by a shift, which the
// compiler can do many bytes at a time.
int SpanShift(int32_t count) {
  for (int shift = 0; shift < 8; ++shift)
    if (count == 1 << shift) return shift;
  return -1;
}

ImageBlock ReduceHeight(const ImageBlock& image, int percent) {
  int32_t w = image.width(), h = image.height();
  int64_t out_h = ScaledLength(h, percent);
  ImageBlock out = CreateLike(image, w, out_h);
  Buffer<SourceSpan> spans = ReductionSpans(h, percent, static_cast<int32_t>(out_h));
  size_t n = size_t(w) * size_t(Channels(image));
  // A sum is at most 255 * 100 (see SpanReciprocal), so 16 bits hold it.
  Buffer<uint16_t> sums = AllocBuffer<uint16_t>(n);
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(n);
  if (!out || !spans || !sums || !scratch) return {};
  for (int32_t i = 0; i < out.height(); ++i) {
    const SourceSpan& span = spans[i];
    std::fill(sums.get(), sums.get() + n, uint16_t{0});
    for (int32_t r = span.start; r < span.start + span.count; ++r) {
      const uint8_t* in = ReadChannels(image, r, scratch.get());
      for (size_t k = 0; k < n; ++k) sums[k] = static_cast<uint16_t>(sums[k] + in[k]);
    }
    uint8_t* row = WriteChannels(out, i, scratch.get());
    int shift = SpanShift(span.count);
    if (shift >= 0)
      for (size_t k = 0; k < n; ++k) row[k] = static_cast<uint8_t>(sums[k] >> shift);
    else
      for (size_t k = 0; k < n; ++k) row[k] = DivideBySpan(sums[k], span.reciprocal);
    FinishChannels(out, i, scratch.get());
  }
  return out;
}

ImageBlock EnlargeWidth(const ImageBlock& image, int percent) {
  int32_t w = image.width(), h = image.height();
  int64_t out_w = ScaledLength(w, percent);
  ImageBlock out = CreateLike(image, out_w, h);
  Buffer<uint8_t> scratch_in = AllocBuffer<uint8_t>(size_t(w));
  Buffer<uint8_t> scratch_out = AllocBuffer<uint8_t>(size_t(out_w));
  if (!out || !scratch_in || !scratch_out) return {};
  int ch = Channels(image);
  for (int32_t y = 0; y < h; ++y) {
    const uint8_t* in = ReadChannels(image, y, scratch_in.get());
    uint8_t* row = WriteChannels(out, y, scratch_out.get());
    for (int32_t j = 0; j < out.width(); ++j) {
      int64_t x = std::min<int64_t>(int64_t{j} * 100 / percent, w - 1);
      std::memcpy(row + size_t(ch) * j, in + size_t(ch) * x, size_t(ch));
    }
    FinishChannels(out, y, scratch_out.get());
  }
  return out;
}

ImageBlock EnlargeHeight(const ImageBlock& image, int percent) {
  int32_t h = image.height();
  ImageBlock out = CreateLike(image, image.width(), ScaledLength(h, percent));
  if (!out) return {};
  for (int32_t i = 0; i < out.height(); ++i)
    CopyRows(out, i, image, static_cast<int32_t>(std::min<int64_t>(int64_t{i} * 100 / percent, h - 1)), 1);
  return out;
}

// 2 for 50 percent, 4 for 25: the reductions of the supersampling styles.
int FixedSpan(int percent) { return percent == 50 ? 2 : percent == 25 ? 4 : 0; }

// Both axes at once for a fixed reduction at 24 bits: each source row is
// reduced across into one row and summed down, so no image of the reduced
// width and full height is made (a quarter of a supersampled frame, per
// frame). The truncations are those of the two passes, across then down, so
// the bytes are the same.
ImageBlock ReduceRgbBothFixed(const ImageBlock& image, int across_span, int down_span) {
  const int32_t out_w = image.width() / across_span, out_h = image.height() / down_span;
  ImageBlock out = CreateLike(image, out_w, out_h);
  const size_t n = 3 * size_t(out_w);
  Buffer<uint8_t> across = AllocBuffer<uint8_t>(n);
  Buffer<uint16_t> sums = AllocBuffer<uint16_t>(n);
  if (!out || !across || !sums) return {};
  const int shift = down_span == 2 ? 1 : 2;
  for (int32_t i = 0; i < out_h; ++i) {
    std::fill(sums.get(), sums.get() + n, uint16_t{0});
    for (int32_t r = i * down_span; r < (i + 1) * down_span; ++r) {
      if (across_span == 2)
        ReduceRgbFixed<2>(image.Row(r), across.get(), out_w);
      else
        ReduceRgbFixed<4>(image.Row(r), across.get(), out_w);
      for (size_t k = 0; k < n; ++k) sums[k] = static_cast<uint16_t>(sums[k] + across[k]);
    }
    uint8_t* row = out.Row(i);
    for (size_t k = 0; k < n; ++k) row[k] = static_cast<uint8_t>(sums[k] >> shift);
  }
  return out;
}

ImageBlock ScaleWidth(const ImageBlock& image, int percent) {
  return percent < 100 ? ReduceWidth(image, percent) : EnlargeWidth(image, percent);
}
ImageBlock ScaleHeight(const ImageBlock& image, int percent) {
  return percent < 100 ? ReduceHeight(image, percent) : EnlargeHeight(image, percent);
}

}  // namespace

// ---- Public operations -------------------------------------------------------

int32_t WrapIndex(int64_t c, int32_t length) {
  if (c >= 0) return static_cast<int32_t>(c < length ? c : c % length);
  int64_t r = (-c) % length;
  return r == 0 ? 0 : static_cast<int32_t>(length - r);
}

ImageBlock SolidImage(const Rect& rect, Colour colour) {
  ImageBlock image = ImageCreate(rect.width(), rect.height(), nullptr, 24);
  if (!image) return {};
  uint8_t* first = image.Row(0);
  for (int32_t x = 0; x < image.width(); ++x) {
    first[3 * x + 0] = ColourBlue(colour);
    first[3 * x + 1] = ColourGreen(colour);
    first[3 * x + 2] = ColourRed(colour);
  }
  for (int32_t y = 1; y < image.height(); ++y) std::memcpy(image.Row(y), first, image.stride());
  return image;
}

void MaskBlendWrap(ImageBlock& target, const ImageBlock& mask, int32_t x, int32_t y, Colour colour,
                   int opacity) {
  if (!target || !mask) return;
  unsigned op = static_cast<unsigned>(std::clamp(opacity, 0, 255));
  if (!IsTrueColour(target) || !IsTrueColour(mask)) {
    BlendByPixel(target, mask, x, y, [&](Colour d, Colour m) {
      unsigned a = ColourBlue(m);
      if (op != 255) a = a * op / 255;
      return MixColour(colour, d, a);
    });
    return;
  }
  MaskInk ink;
  PrepareInk(ink, colour, op);
  int t_step = BytesPerPixel(target), m_step = BytesPerPixel(mask);
  for (int32_t sy = 0; sy < mask.height(); ++sy) {
    uint8_t* t_row = target.Row(WrapIndex(int64_t{y} + sy, target.height()));
    const uint8_t* m_row = mask.Row(sy);
    ForEachWrappedRun(x, mask.width(), target.width(), [&](int32_t tx, int32_t sx, int32_t n) {
      MaskRun(t_row + size_t(t_step) * tx, t_step, m_row + size_t(m_step) * sx, m_step, n, ink);
    });
  }
}

void MaskBlendImageWrap(ImageBlock& target, const ImageBlock& mask, int32_t x, int32_t y,
                        const ImageBlock& source, int32_t source_x, int32_t source_y,
                        int opacity) {
  if (!target || !mask || !source) return;
  unsigned op = static_cast<unsigned>(std::clamp(opacity, 0, 255));
  auto coverage = [op](unsigned a) { return op == 255 ? a : a * op / 255; };
  if (!IsTrueColour(target) || !IsTrueColour(mask) || !IsTrueColour(source)) {
    for (int32_t sy = 0; sy < mask.height(); ++sy) {
      int32_t ty = WrapIndex(int64_t{y} + sy, target.height());
      int32_t py = WrapIndex(int64_t{source_y} + sy, source.height());
      for (int32_t sx = 0; sx < mask.width(); ++sx) {
        int32_t tx = WrapIndex(int64_t{x} + sx, target.width());
        Colour ink = ImageGetPixel(source, WrapIndex(int64_t{source_x} + sx, source.width()), py);
        unsigned a = coverage(ColourBlue(ImageGetPixel(mask, sx, sy)));
        ImageSetPixel(target, tx, ty, MixColour(ink, ImageGetPixel(target, tx, ty), a));
      }
    }
    return;
  }
  uint8_t cover[256];
  for (unsigned a = 0; a < 256; ++a) cover[a] = static_cast<uint8_t>(coverage(a));
  int t_step = BytesPerPixel(target), m_step = BytesPerPixel(mask), s_step = BytesPerPixel(source);
  for (int32_t sy = 0; sy < mask.height(); ++sy) {
    uint8_t* t_row = target.Row(WrapIndex(int64_t{y} + sy, target.height()));
    const uint8_t* m_row = mask.Row(sy);
    const uint8_t* s_row = source.Row(WrapIndex(int64_t{source_y} + sy, source.height()));
    // Each piece contiguous in the target is split again where the source
    // wraps, so both pointers just step along every innermost run.
    ForEachWrappedRun(x, mask.width(), target.width(), [&](int32_t tx, int32_t sx, int32_t n) {
      ForEachWrappedRun(int64_t{source_x} + sx, n, source.width(),
                        [&](int32_t px, int32_t offset, int32_t count) {
                          MaskImageRun(t_row + size_t(t_step) * (tx + offset), t_step,
                                       m_row + size_t(m_step) * (sx + offset), m_step,
                                       s_row + size_t(s_step) * px, s_step, count, cover);
                        });
    });
  }
}

void AlphaBlitWrap(ImageBlock& target, const ImageBlock& sprite, int32_t x, int32_t y) {
  if (!target || !sprite) return;
  if (!IsTrueColour(target) || sprite.bits() != 32) {
    BlendByPixel(target, sprite, x, y,
                 [](Colour d, Colour s) { return MixColour(s, d, s >> 24); });
    return;
  }
  int t_step = BytesPerPixel(target);
  for (int32_t sy = 0; sy < sprite.height(); ++sy) {
    uint8_t* t_row = target.Row(WrapIndex(int64_t{y} + sy, target.height()));
    const uint8_t* s_row = sprite.Row(sy);
    ForEachWrappedRun(x, sprite.width(), target.width(), [&](int32_t tx, int32_t sx, int32_t n) {
      AlphaRun(t_row + size_t(t_step) * tx, t_step, s_row + 4 * size_t(sx), n);
    });
  }
}

ImageBlock AttachMask(const ImageBlock& colour, const ImageBlock& mask) {
  if (!colour || !mask) return {};
  ImageBlock out = ImageCreate(colour.width(), colour.height(), nullptr, 32);
  if (!out) return {};
  bool direct = IsTrueColour(colour) && IsTrueColour(mask) && mask.width() >= colour.width() &&
                mask.height() >= colour.height();
  int c_step = BytesPerPixel(colour), m_step = BytesPerPixel(mask);
  for (int32_t y = 0; y < colour.height(); ++y) {
    if (!direct) {
      for (int32_t x = 0; x < colour.width(); ++x) {
        Colour c = ImageGetPixel(colour, x, y) & 0x00FFFFFFu;
        ImageSetPixel(out, x, y, c | (Colour{ColourBlue(ImageGetPixel(mask, x, y))} << 24));
      }
      continue;
    }
    const uint8_t* c = colour.Row(y);
    const uint8_t* m = mask.Row(y);
    uint8_t* d = out.Row(y);
    for (int32_t x = 0; x < colour.width(); ++x, c += c_step, m += m_step, d += 4) {
      d[0] = c[0], d[1] = c[1], d[2] = c[2];
      d[3] = m[0];
    }
  }
  return out;
}

Colour ColourMix(Colour a, Colour b, int w) {
  unsigned wa = static_cast<unsigned>(std::clamp(w, 0, 255)), wb = 255 - wa;
  Colour out = 0;
  for (int shift = 0; shift < 24; shift += 8)
    out |= ((((a >> shift) & 0xFF) * wa + ((b >> shift) & 0xFF) * wb) / 255) << shift;
  return out;
}

ImageBlock RollDown(const ImageBlock& image, int32_t n) { return RollRows(image, n); }
ImageBlock RollUp(const ImageBlock& image, int32_t n) { return RollRows(image, -int64_t{n}); }
ImageBlock RollRight(const ImageBlock& image, int32_t n) { return RollColumns(image, n); }
ImageBlock RollLeft(const ImageBlock& image, int32_t n) { return RollColumns(image, -int64_t{n}); }

ImageBlock TurnAnticlockwise(const ImageBlock& image) { return Turn(image, true); }
ImageBlock TurnClockwise(const ImageBlock& image) { return Turn(image, false); }

ImageBlock ScaleByPercent(const ImageBlock& image, int horizontal_percent, int vertical_percent) {
  if (!image || horizontal_percent <= 0 || vertical_percent <= 0) return {};
  if (horizontal_percent == 100 && vertical_percent == 100) return DuplicateGlobalBlock(image);
  // A 100 percent pass would only copy, so it is skipped; the other pass makes
  // the new image.
  if (horizontal_percent == 100) return ScaleHeight(image, vertical_percent);
  const int across_span = FixedSpan(horizontal_percent), down_span = FixedSpan(vertical_percent);
  if (image.bits() == 24 && across_span && down_span && image.width() >= across_span &&
      image.height() >= down_span)
    return ReduceRgbBothFixed(image, across_span, down_span);
  ImageBlock wide = ScaleWidth(image, horizontal_percent);
  if (!wide || vertical_percent == 100) return wide;
  return ScaleHeight(wide, vertical_percent);
}

}  // namespace tess
