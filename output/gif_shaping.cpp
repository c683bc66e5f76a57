// Frame shaping. Sections: bounds and palettes · the shaper · writing.
#include "output/gif_shaping.h"

#include <algorithm>
#include <cstring>

#include "image/frame_list.h"
#include "output/pixel_rows.h"
#include "output/quantize.h"
#include "output/remap.h"

namespace tess {

// ---------------------------------------------------------------- bounds and palettes

namespace {

// Row y as one index per byte: the block's own row at 8 bits, else unpacked
// into `scratch`.
const uint8_t* IndexRow(const ImageBlock& image, int y, uint8_t* scratch) {
  if (image.bits() == 8) return image.Row(y);
  UnpackIndexRow(image, y, scratch);
  return scratch;
}

}  // namespace

PixelBox VisibleBounds(const ImageBlock& image, int transparent) {
  const int32_t width = image.width();
  Buffer<uint8_t> scratch;
  if (image.bits() != 8) {
    scratch = AllocBuffer<uint8_t>(static_cast<size_t>(width));
    // Without room to unpack, claim the whole picture: correct, only larger.
    if (!scratch) return PixelBox{0, 0, width, image.height()};
  }
  int32_t min_x = width, max_x = -1, min_y = -1, max_y = -1;
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* row = IndexRow(image, y, scratch.get());
    int32_t x = 0;
    while (x < width && row[x] == transparent) ++x;
    if (x == width) continue;
    if (min_y < 0) min_y = y;
    max_y = y;
    min_x = std::min(min_x, x);
    // Only pixels right of the box so far can widen it.
    for (int32_t r = width - 1; r > max_x && r >= x; --r) {
      if (row[r] != transparent) {
        max_x = r;
        break;
      }
    }
  }
  if (min_y < 0) return PixelBox{};
  return PixelBox{min_x, min_y, max_x - min_x + 1, max_y - min_y + 1};
}

ImageBlock PalettiseTrueColour(const ImageBlock& image, uint8_t* rgb, int* bits) {
  // The quantizer reads frame lists; one frame's copy is cheap next to the
  // octree pass over it.
  FrameList one;
  ImageBlock copy = DuplicateGlobalBlock(image);
  if (!copy || !FrameListAddImage(one, std::move(copy), 0)) return ImageBlock();
  int count = 256;
  if (!AdaptivePalette(&count, rgb, one)) return ImageBlock();
  // Two colours at least: a 1-bit remap thresholds brightness instead of
  // looking colours up, which would swap the entries of a two-colour frame.
  *bits = std::max(2, BitsForColours(count));
  Remapper remapper;
  if (!remapper.Init(rgb, *bits, count, RemapOptions{})) return ImageBlock();
  return remapper.Remap(image);
}

// ---------------------------------------------------------------- the shaper

namespace {

// The box of the pixels of a w x h index array (row stride `stride`) for which
// `differs(row, x)` holds; empty when none does.
template <class Differs>
PixelBox BoundsWhere(int w, int h, Differs differs) {
  int32_t min_x = w, max_x = -1, min_y = -1, max_y = -1;
  for (int y = 0; y < h; ++y) {
    int32_t x = 0;
    while (x < w && !differs(y, x)) ++x;
    if (x == w) continue;
    if (min_y < 0) min_y = y;
    max_y = y;
    min_x = std::min(min_x, x);
    for (int32_t r = w - 1; r > max_x && r >= x; --r) {
      if (differs(y, r)) {
        max_x = r;
        break;
      }
    }
  }
  if (min_y < 0) return PixelBox{};
  return PixelBox{min_x, min_y, max_x - min_x + 1, max_y - min_y + 1};
}

constexpr uint64_t kOnes = 0x0101010101010101u;

// 0xFF in each byte where a and b are equal, 0 elsewhere; exact, as no byte's
// sum carries into the next.
inline uint64_t EqualBytes(uint64_t a, uint64_t b) {
  const uint64_t z = a ^ b, low = 0x7F7F7F7F7F7F7F7Fu;
  const uint64_t zero = ~(((z & low) + low) | z | low);  // 0x80 where z's byte is 0
  return (zero >> 7) * 0xFF;
}

// Eight index bytes as one word in the machine's own order: every operation
// on these words works byte by byte without carries, so the order cannot
// change a result, and memcpy compiles to one load or store.
inline uint64_t LoadWord(const uint8_t* p) {
  uint64_t v;
  std::memcpy(&v, p, 8);
  return v;
}

inline void StoreWord(uint8_t* p, uint64_t v) { std::memcpy(p, &v, 8); }

// Every byte of p[0, n) equal to `from` becomes `to`.
void ReplaceByte(uint8_t* p, size_t n, uint8_t from, uint8_t to) {
  const uint64_t from8 = kOnes * from, to8 = kOnes * to;
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    const uint64_t v = LoadWord(p + i), hit = EqualBytes(v, from8);
    StoreWord(p + i, (to8 & hit) | (v & ~hit));
  }
  for (; i < n; ++i) p[i] = p[i] == from ? to : p[i];
}

// `row` takes every byte of `drawn` but those equal to `t`; true when some
// byte was `t`.
bool DrawOver(uint8_t* row, const uint8_t* drawn, size_t n, uint8_t t) {
  const uint64_t t8 = kOnes * t;
  uint64_t seen = 0;
  size_t x = 0;
  for (; x + 8 <= n; x += 8) {
    const uint64_t d = LoadWord(drawn + x), keep = EqualBytes(d, t8);
    StoreWord(row + x, (LoadWord(row + x) & keep) | (d & ~keep));
    seen |= keep;
  }
  for (; x < n; ++x) {
    seen |= drawn[x] == t;
    row[x] = drawn[x] == t ? row[x] : drawn[x];
  }
  return seen != 0;
}

// For each index of a table of 2^bits red, green, blue triples, the first
// index with the same colour: a picture drawn with one index per colour gives
// the LZW encoder fewer different strings.
void FirstOfEachColour(const uint8_t* rgb, int bits, uint8_t* map) {
  const int n = 1 << bits;
  for (int i = 0; i < 256; ++i) map[i] = static_cast<uint8_t>(i);
  for (int i = 1; i < n; ++i)
    for (int j = 0; j < i; ++j)
      if (std::memcmp(rgb + 3 * i, rgb + 3 * j, 3) == 0) {
        map[i] = static_cast<uint8_t>(j);
        break;
      }
}

}  // namespace

bool GifFrameShaper::Start(int width, int height, const uint8_t* global_rgb, int bits) {
  m_width = width, m_height = height, m_bits = bits;
  std::memset(m_global, 0, sizeof m_global);
  if (global_rgb) std::memcpy(m_global, global_rgb, 3u << std::clamp(bits, 0, 8));
  m_canvas_known = false;
  m_lean = 0, m_variant = LzwVariant(), m_trial_gap = kShortestTrialGap, m_until_trial = 0;
  m_tried = m_lean_tried = false;
  FirstOfEachColour(m_global, std::clamp(bits, 1, 8), m_global_first);
  const size_t n = static_cast<size_t>(width) * static_cast<size_t>(height);
  for (Buffer<uint8_t>* b : {&m_canvas, &m_indices, &m_chosen}) {
    *b = AllocBuffer<uint8_t>(n);
    if (!*b) return false;
  }
  return m_lzw.Reserve();
}

// True when the image's colour table agrees with the global table wherever
// both have entries, so the frame can use the global one.
bool GifFrameShaper::TableMatchesGlobal(const ImageBlock& image) const {
  int entries = std::min(image.colour_table_entries(), 1 << m_bits);
  const uint8_t* table = image.colour_table();
  for (int i = 0; i < entries; ++i) {
    const uint8_t* bgr = table + 4 * i;
    const uint8_t* rgb = m_global + 3 * i;
    if (bgr[2] != rgb[0] || bgr[1] != rgb[1] || bgr[0] != rgb[2]) return false;
  }
  return true;
}

GifStatus GifFrameShaper::Shape(const GifFrameInput& input, GifShapedFrame* out) {
  if (GifStatus st = Plan(input, out); st != GifStatus::kOk) return st;
  return Encode(out);
}

GifStatus GifFrameShaper::Plan(const GifFrameInput& input, GifShapedFrame* out) {
  if (!m_canvas || !input.image || !*input.image) return GifStatus::kBadArgument;
  const ImageBlock& image = *input.image;
  if (image.width() > m_width || image.height() > m_height) return GifStatus::kBadArgument;

  ImageBlock palettised;
  const ImageBlock* pixels = &image;
  const uint8_t* local = nullptr;
  int bits = m_bits;
  int transparent = input.transparent;
  if (image.bits() > 8) {
    palettised = PalettiseTrueColour(image, out->local_rgb, &bits);
    if (!palettised) return GifStatus::kNoMemory;
    pixels = &palettised;
    local = out->local_rgb;
    transparent = -1;  // an index means nothing before the frame had a palette
  } else if (!TableMatchesGlobal(image) || !LzwIndicesFit(image, m_bits)) {
    // Its own colours, or indices past the global table: its own table.
    bits = image.bits();
    ImageGetPalette(image, out->local_rgb);
    local = out->local_rgb;
  }
  if (transparent > 255 || transparent >= (1 << bits)) transparent = -1;

  // One index per colour; the transparent index keeps its meaning, and no
  // colour becomes it.
  uint8_t local_first[256];
  const uint8_t* first_of = m_global_first;
  if (local) {
    FirstOfEachColour(local, bits, local_first);
    first_of = local_first;
  }
  uint8_t map[256];
  for (int i = 0; i < 256; ++i)
    map[i] = i == transparent || first_of[i] == transparent ? static_cast<uint8_t>(i) : first_of[i];
  const int w = pixels->width(), h = pixels->height();
  uint8_t* const frame = m_indices.get();
  bool identity = true;
  for (int i = 0; i < 256; ++i) identity = identity && map[i] == i;
  for (int y = 0; y < h; ++y) {
    uint8_t* row = frame + static_cast<size_t>(y) * static_cast<size_t>(w);
    if (pixels->bits() == 8 && identity) {
      std::memcpy(row, pixels->Row(y), static_cast<size_t>(w));
    } else if (pixels->bits() == 8) {
      const uint8_t* in = pixels->Row(y);
      for (int x = 0; x < w; ++x) row[x] = map[in[x]];
    } else {
      UnpackIndexRow(*pixels, y, row);
      for (int x = 0; x < w; ++x) row[x] = map[row[x]];
    }
  }

  // Drawn over the viewer's picture only when both speak of the global table
  // and nothing clears the screen between frames.
  const bool over_canvas = m_canvas_known && !local && !input.clear_behind;
  const uint8_t* const canvas = m_canvas.get();
  const size_t cw = static_cast<size_t>(m_width);
  const size_t fw = static_cast<size_t>(w);
  auto frame_row = [&](int y) { return frame + static_cast<size_t>(y) * fw; };
  auto canvas_row = [&](int y) { return canvas + static_cast<size_t>(y) * cw; };
  PixelBox box;
  if (over_canvas) {
    // A pixel changes when it is neither "as before" nor what already shows.
    const int t = transparent;
    box = BoundsWhere(w, h, [&](int y, int x) {
      const uint8_t v = frame_row(y)[x];
      return v != canvas_row(y)[x] && v != t;
    });
  } else if (transparent >= 0) {
    box = BoundsWhere(w, h, [&](int y, int x) { return frame_row(y)[x] != transparent; });
  } else {
    box = PixelBox{0, 0, w, h};
  }
  // Nothing to draw: the smallest frame a GIF allows, one pixel as it was.
  if (box.empty()) box = PixelBox{0, 0, 1, 1};

  // The box's pixels: `second` what the viewer must see, `first` the
  // transparent index where that already shows.
  const size_t bw = static_cast<size_t>(box.width);
  const size_t n = bw * static_cast<size_t>(box.height);
  if (out->capacity < n) {
    out->own = AllocBuffer<uint8_t>(n);
    out->masked = AllocBuffer<uint8_t>(n);
    out->capacity = out->own && out->masked ? n : 0;
    if (out->capacity == 0) return GifStatus::kNoMemory;
  }
  uint8_t* first = out->masked.get();
  uint8_t* second = out->own.get();
  bool choices = false;
  for (int y = box.top; y < box.top + box.height; ++y, first += bw, second += bw) {
    const uint8_t* fr = frame_row(y) + box.left;
    if (!over_canvas || transparent < 0) {  // nothing to choose: the frame's own pixels
      std::memcpy(first, fr, bw);
      std::memcpy(second, fr, bw);
      continue;
    }
    const uint8_t* cv = canvas_row(y) + box.left;
    // Eight pixels a word, then the rest one by one with byte masks.
    const uint8_t t = static_cast<uint8_t>(transparent);
    uint8_t any = 0;
    size_t x = 0;
    uint64_t any8 = 0;
    for (; x + 8 <= bw; x += 8) {
      const uint64_t v = LoadWord(fr + x), c = LoadWord(cv + x), t8 = kOnes * t;
      const uint64_t keep = EqualBytes(v, t8) | EqualBytes(v, c);
      const uint64_t shown = (c & keep) | (v & ~keep);
      const uint64_t masked = (t8 & keep) | (shown & ~keep);
      StoreWord(second + x, shown);
      StoreWord(first + x, masked);
      any8 |= masked ^ shown;
    }
    any = any8 != 0;
    for (; x < bw; ++x) {
      const uint8_t v = fr[x], c = cv[x];
      const uint8_t keep = static_cast<uint8_t>(-static_cast<int>((v == t) | (v == c)));
      const uint8_t shown = static_cast<uint8_t>((c & keep) | (v & ~keep));
      const uint8_t masked = static_cast<uint8_t>((t & keep) | (shown & ~keep));
      second[x] = shown;
      first[x] = masked;
      any |= static_cast<uint8_t>(masked ^ shown);
    }
    choices |= any != 0;
  }

  // The code size only has to hold the indices the frame writes, whatever
  // the table's size: a frame of few, low indices codes in fewer bits. Over
  // the picture the transparent index is free to be any index no pixel shows,
  // so it becomes the lowest such.
  bool used[256] = {};
  for (size_t i = 0; i < n; ++i) used[out->own[i]] = true;
  int highest = 0;
  for (int i = 0; i < 256; ++i)
    if (used[i]) highest = i;
  if (over_canvas && transparent >= 0) {
    int lowest_free = 0;
    while (lowest_free < 256 && used[lowest_free]) ++lowest_free;
    if (lowest_free < transparent) {
      ReplaceByte(out->masked.get(), n, static_cast<uint8_t>(transparent), static_cast<uint8_t>(lowest_free));
      transparent = lowest_free;
    }
  }
  const int coded_bits = local ? bits : std::min(bits, BitsForColours(std::max(highest, transparent) + 1));

  out->count = n;
  out->coded_bits = coded_bits;
  out->choices = choices;

  // The viewer's picture after this frame. Whichever of a pixel's two
  // indices the encoder picks, the viewer shows `own`: the transparent index
  // is offered only where `own` already shows. So the picture is known
  // before the frame is encoded.
  if (local || input.clear_behind) {
    m_canvas_known = false;
  } else {
    // Without a transparent index every pixel is drawn; with one, a
    // transparent pixel keeps what shows, which is known only over the canvas.
    const uint8_t* best = out->own.get();
    bool any_transparent = false;
    for (int y = box.top; y < box.top + box.height; ++y, best += bw) {
      uint8_t* row = m_canvas.get() + static_cast<size_t>(y) * cw + box.left;
      if (transparent < 0) {
        std::memcpy(row, best, bw);
        continue;
      }
      any_transparent |= DrawOver(row, best, bw, static_cast<uint8_t>(transparent));
    }
    m_canvas_known = over_canvas || (box == PixelBox{0, 0, m_width, m_height} && !any_transparent);
  }

  GifDisposal disposal = input.clear_behind       ? GifDisposal::kBackground
                         : local && transparent < 0 ? GifDisposal::kUnspecified
                                                    : GifDisposal::kKeep;
  out->control.flags = GifControlFlags(disposal, transparent >= 0);
  out->control.delay = input.delay;
  out->control.transparent_index = static_cast<uint8_t>(transparent >= 0 ? transparent : 0);
  out->descriptor.left = box.left;
  out->descriptor.top = box.top;
  out->descriptor.width = box.width;
  out->descriptor.height = box.height;
  out->descriptor.bits = coded_bits;
  out->descriptor.local_table = local;
  return GifStatus::kOk;
}

// The candidates: at each choice, leaning to the pixel's own index (the
// transparent index only where it extends the string) and leaning to the
// transparent index, both parsed with the look-ahead and the table cleared
// when full; the better lean parsed without the look-ahead; then, when the
// table filled, the better lean with the wary look-ahead, and the best parse
// with the full table kept instead. Which lean wins depends on how much of
// the box is unchanged, so both are tried; the pure forms (every unchanged
// pixel transparent, or none) never beat the better lean on the effects
// measured. Which parse wins depends on the picture: the look-ahead saves up
// to a quarter on smooth adaptive-palette frames, and can nearly double the
// repeating patterns of dithered fixed-palette frames, whose strings it
// stops from growing. Consecutive frames of an animation are alike and so
// are their winners: between full trials a frame is encoded once, the last
// trial's way, and while trials keep finding the same way they grow further
// apart.
GifStatus GifFrameShaper::Encode(GifShapedFrame* out) {
  if (!m_chosen || !out->own || !out->masked || out->count == 0) return GifStatus::kBadArgument;
  const size_t count = out->count;
  const int bits = out->coded_bits;
  const bool choices = out->choices;
  const uint8_t* own = out->own.get();
  const uint8_t* masked = out->masked.get();
  const uint8_t* leans[2][2] = {{own, masked}, {masked, own}};
  size_t best = SIZE_MAX;
  bool filled = false;
  int best_lean = 0;
  LzwVariant best_variant;
  out->data = MemorySink();
  auto attempt = [&](int lean, LzwVariant variant) {
    MemorySink sink;
    GifStatus st = m_lzw.EncodeChoosing(sink, leans[lean][0], leans[lean][1], count, bits, variant, m_chosen.get());
    if (st == GifStatus::kWriteFailed) return GifStatus::kNoMemory;  // only memory fails in memory
    if (st != GifStatus::kOk) return st;
    filled |= m_lzw.table_filled();
    if (sink.bytes().size() < best) {
      best = sink.bytes().size();
      best_lean = lean, best_variant = variant;
      out->data = std::move(sink);
    }
    return GifStatus::kOk;
  };
  // Frames without a choice (the first, or all without a transparent index)
  // follow the same turns, but the lean is only tried, remembered and used
  // where there is a choice; the first frame that has one is always tried.
  if (m_until_trial > 0 && (!choices || m_lean_tried)) {
    --m_until_trial;
    return attempt(choices ? m_lean : 0, m_variant);
  }
  for (int lean = 0; lean < (choices ? 2 : 1); ++lean)
    if (GifStatus st = attempt(lean, {LzwParse::kLookAhead, LzwFullTable::kClear}); st != GifStatus::kOk) return st;
  if (GifStatus st = attempt(best_lean, {LzwParse::kLongest, LzwFullTable::kClear}); st != GifStatus::kOk) return st;
  // Unless the table filled, the wary look-ahead did not pay on the frames
  // measured, and keeping the table full changes nothing.
  if (filled) {
    if (GifStatus st = attempt(best_lean, {LzwParse::kLookAheadWary, LzwFullTable::kClear}); st != GifStatus::kOk)
      return st;
    if (GifStatus st = attempt(best_lean, {best_variant.parse, LzwFullTable::kKeep}); st != GifStatus::kOk) return st;
  }
  const bool same = m_tried && best_variant == m_variant && (!choices || (m_lean_tried && best_lean == m_lean));
  m_trial_gap = same ? std::min(2 * m_trial_gap, kLongestTrialGap) : kShortestTrialGap;
  m_until_trial = m_trial_gap - 1;
  m_variant = best_variant, m_tried = true;
  if (choices) m_lean = best_lean, m_lean_tried = true;
  return GifStatus::kOk;
}

// ---------------------------------------------------------------- writing

GifStatus WriteShapedFrame(GifWriter& writer, const GifShapedFrame& frame) {
  if (GifStatus st = writer.WriteGraphicControl(frame.control); st != GifStatus::kOk) return st;
  if (GifStatus st = writer.WriteImageDescriptor(frame.descriptor); st != GifStatus::kOk) return st;
  return writer.WriteEncodedImageData(frame.data.bytes().data(), frame.data.bytes().size());
}

}  // namespace tess
