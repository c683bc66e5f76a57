// Frame shaping: the bounds against a plain per-pixel reference, true-colour
// frames reduced to their own exact palette, the choosing LZW encoder against
// a standard decoder, the fast encoder and a plain look-ahead, and whole
// animations shaped, written and decoded back to exactly the pictures the
// build meant.
#include "output/gif_shaping.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <vector>

#include "tests/support/gif_decoder.h"
#include "tests/support/lzw_block_builder.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

// The reference: every pixel through the bounds-checked accessor.
PixelBox ReferenceBounds(const ImageBlock& image, int transparent) {
  int min_x = image.width(), min_y = image.height(), max_x = -1, max_y = -1;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (static_cast<int>(ImageGetPixel(image, x, y)) != transparent) {
        min_x = std::min(min_x, x);
        max_x = std::max(max_x, x);
        min_y = std::min(min_y, y);
        max_y = std::max(max_y, y);
      }
  if (max_x < 0) return PixelBox{};
  return PixelBox{min_x, min_y, max_x - min_x + 1, max_y - min_y + 1};
}

// An image of `bits` whose pixels are `transparent` except a scatter of
// others inside [x0, x1] x [y0, y1].
ImageBlock Scattered(int bits, int width, int height, int transparent, int x0, int y0, int x1, int y1,
                     uint32_t seed) {
  ImageBlock image = ImageCreate(width, height, nullptr, bits);
  int values = 1 << bits;
  uint32_t s = seed;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      s = s * 1103515245u + 12345u;
      bool inside = x >= x0 && x <= x1 && y >= y0 && y <= y1;
      int v = inside && (s >> 16) % 3 == 0 ? static_cast<int>((s >> 8) % values) : transparent;
      ImageSetPixel(image, x, y, static_cast<Colour>(v));
    }
  // Pin the box's corners so the expected bounds are exact.
  int other = (transparent + 1) % values;
  ImageSetPixel(image, x0, y0, static_cast<Colour>(other));
  ImageSetPixel(image, x1, y1, static_cast<Colour>(other));
  return image;
}

TEST(GifShaping, BoundsEqualTheReferenceAtEveryDepth) {
  for (int bits : {1, 4, 8}) {
    for (uint32_t seed : {1u, 2u, 3u}) {
      int width = 37 + static_cast<int>(seed), height = 23;
      int transparent = bits == 1 ? 1 : (bits == 4 ? 9 : 200);
      ImageBlock image = Scattered(bits, width, height, transparent, 3 + static_cast<int>(seed), 2, 30, 19, seed);
      PixelBox box = VisibleBounds(image, transparent);
      ASSERT_EQ(box, ReferenceBounds(image, transparent)) << bits << " " << seed;
      EXPECT_EQ(box, (PixelBox{3 + static_cast<int>(seed), 2, 28 - static_cast<int>(seed), 18}));

    }
  }
}

TEST(GifShaping, FullyTransparentHasNoBoundsAndOneVisiblePixelIsOneByOne) {
  ImageBlock image = ImageCreate(9, 7, nullptr, 8);
  for (int y = 0; y < 7; ++y) std::memset(image.Row(y), 5, 9);
  EXPECT_TRUE(VisibleBounds(image, 5).empty());
  ImageSetPixel(image, 8, 6, 4);
  EXPECT_EQ(VisibleBounds(image, 5), (PixelBox{8, 6, 1, 1}));
  EXPECT_EQ(VisibleBounds(image, 300), (PixelBox{0, 0, 9, 7}));  // no index can be 300
}

TEST(GifShaping, TrueColourFramesKeepTheirColoursExactly) {
  // Two colours, the brighter first: a luminance threshold would swap them.
  ImageBlock two = ImageCreate(6, 4, nullptr, 24);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 6; ++x) ImageSetPixel(two, x, y, x < 3 ? MakeColour(250, 250, 10) : MakeColour(20, 0, 90));
  ImageBlock noise = testing::NoiseImage(31, 17, 4, 4);  // 64 colours at most
  for (const ImageBlock* source : {&two, &noise}) {
    uint8_t rgb[kPaletteBytes];
    int bits = 0;
    ImageBlock out = PalettiseTrueColour(*source, rgb, &bits);
    ASSERT_TRUE(out);
    EXPECT_GE(bits, 2);
    EXPECT_LE(bits, 8);
    for (int y = 0; y < source->height(); ++y)
      for (int x = 0; x < source->width(); ++x) {
        Colour index = ImageGetPixel(out, x, y);
        ASSERT_LT(index, 1u << bits);
        const uint8_t* e = rgb + 3 * index;
        ASSERT_EQ(MakeColour(e[0], e[1], e[2]), ImageGetPixel(*source, x, y)) << x << "," << y;
      }
  }
}

TEST(GifShaping, ShortMemoryGivesNullNotACrash) {
  ImageBlock image = Scattered(8, 40, 30, 0, 1, 1, 20, 20, 9);
  ImageBlock colour = testing::NoiseImage(8, 8, 1);
  uint8_t rgb[kPaletteBytes];
  int bits = 0;
  {
    AllocFailureScope fail(0, true);
    EXPECT_FALSE(PalettiseTrueColour(colour, rgb, &bits));
  }
  // Every allocation of a shaped frame failing in turn: "Memory error", no crash.
  uint8_t global[kPaletteBytes] = {};
  for (int n = 0;; ++n) {
    GifFrameShaper shaper;
    GifShapedFrame out;
    GifFrameInput input;
    input.image = &image;
    bool started, shaped;
    {
      AllocFailureScope fail(n);
      started = shaper.Start(40, 30, global, 8);
      shaped = started && shaper.Shape(input, &out) == GifStatus::kOk;
      input.image = &colour;
      shaped = shaped && shaper.Shape(input, &out) == GifStatus::kOk;
    }
    if (shaped) break;
    ASSERT_LT(n, 400);
  }
}


// ---------------------------------------------------------------- choosing encoder

// Pixels with a choice at about every third: noise where the table fills
// (`levels` 256) or long runs where strings grow (`levels` 2).
struct Choices {
  std::vector<uint8_t> first, second;
};

Choices MakeChoices(size_t count, int levels, int limit, uint32_t seed) {
  Choices c{std::vector<uint8_t>(count), std::vector<uint8_t>(count)};
  uint32_t s = seed;
  uint8_t run = 0;
  for (size_t i = 0; i < count; ++i) {
    s = s * 1103515245u + 12345u;
    if ((s >> 16) % 7 == 0 || levels > 2) run = static_cast<uint8_t>((s >> 8) % static_cast<uint32_t>(limit));
    c.first[i] = run;
    c.second[i] = (s >> 20) % 3 == 0 ? static_cast<uint8_t>((s >> 4) % static_cast<uint32_t>(limit)) : run;
  }
  return c;
}

constexpr LzwParse kParses[] = {LzwParse::kLongest, LzwParse::kLookAhead, LzwParse::kLookAheadWary};

TEST(GifShaping, ChoosingEncoderDecodesToItsChoicesAtEveryCodeSizeTableRuleAndParse) {
  LzwEncoder lzw;
  for (int bits : {1, 4, 8})
    for (int levels : {2, 256})
      for (LzwParse parse : kParses)
      for (LzwFullTable full : {LzwFullTable::kClear, LzwFullTable::kKeep}) {
        const size_t count = 40000;  // fills the table several times over at 8 bits
        Choices c = MakeChoices(count, levels, 1 << bits, static_cast<uint32_t>(bits * 31 + levels));
        std::vector<uint8_t> chosen(count);
        MemorySink sink;
        ASSERT_EQ(lzw.EncodeChoosing(sink, c.first.data(), c.second.data(), count, bits, {parse, full}, chosen.data()),
                  GifStatus::kOk);
        std::vector<uint8_t> decoded;
        testing::LzwStreamInfo info;
        std::string error;
        ASSERT_TRUE(testing::DecodeLzwBlock(sink.bytes().data(), sink.bytes().size(), count, &decoded, &info, &error))
            << error;
        EXPECT_EQ(decoded, chosen) << bits << " " << levels;
        for (size_t i = 0; i < count; ++i)
          ASSERT_TRUE(chosen[i] == c.first[i] || chosen[i] == c.second[i]) << i;
        if (bits == 8 && levels == 256) {
          EXPECT_TRUE(lzw.table_filled());
          // A kept table has only the leading clear code.
          if (full == LzwFullTable::kKeep) {
            EXPECT_EQ(info.clear_codes, 1);
          } else {
            EXPECT_GT(info.clear_codes, 1);
          }
        }
      }
}

// The look-ahead spelled out plainly: a map for the table, and every string
// matched afresh from the table as it stands, where the encoder keeps the
// next string's match and takes back a string it added. Same codes, same
// bytes. A shorter string is weighed only where the next would be at most
// eight pixels, against the table as it is once the longest string's code is
// written.
std::vector<uint8_t> PlainLookAheadEncode(const Choices& c, int code_size, LzwVariant variant,
                                          std::vector<uint8_t>* chosen) {
  const size_t n = c.first.size();
  std::map<std::pair<uint32_t, uint8_t>, uint32_t> table;
  const uint32_t clear = 1u << code_size;
  uint32_t next_code = clear + 2;
  int width = code_size + 1;
  testing::LzwBlockBuilder block(code_size);
  auto put = [&](uint32_t code) { block.Put(code, width); };
  const bool keep = variant.full == LzwFullTable::kKeep;
  // Writes a string's code and adds (code, index), unless the table is full;
  // true when a clear code followed.
  auto write = [&](uint32_t code, uint8_t index) {
    put(code);
    if (next_code == 4096 && keep) return false;
    if (next_code >> width) {
      if (width < 12) {
        ++width;
      } else {
        put(clear);
        table.clear();
        next_code = clear + 2, width = code_size + 1;
        return true;
      }
    }
    table.emplace(std::make_pair(code, index), next_code++);  // emplace keeps an existing string
    return false;
  };
  struct Match { size_t length; uint32_t code, shorter; };
  auto longest = [&](size_t at, bool pick) {
    Match m{1, c.first[at], c.first[at]};
    if (pick) (*chosen)[at] = c.first[at];
    for (size_t i = at + 1; i < n; ++i) {
      auto it = table.find({m.code, c.first[i]});
      if (it == table.end()) it = table.find({m.code, c.second[i]});
      if (it == table.end()) break;
      if (pick) (*chosen)[i] = it->first.second;
      m = {m.length + 1, it->second, m.code};
    }
    return m;
  };
  put(clear);
  size_t at = 0;
  for (;;) {
    const Match now = longest(at, true);
    const size_t end = at + now.length;
    if (end == n) {
      put(now.code);
      if (next_code < 4096 && (next_code >> width) && width < 12) ++width;
      break;
    }
    const bool room = next_code < 4096;
    bool cut = false;
    if (variant.parse != LzwParse::kLongest && (room || keep) && now.length >= 2) {
      // (code, first[end]) is new: the longest string stopped there.
      auto added = table.end();
      if (room) added = table.emplace(std::make_pair(now.code, c.first[end]), next_code).first;
      const size_t ahead = longest(end, false).length;
      const size_t wary = variant.parse == LzwParse::kLookAheadWary && room ? 1 : 0;
      cut = ahead <= 8 && longest(end - 1, false).length >= ahead + 2 + wary;
      if (room) table.erase(added);
    }
    if (cut) {
      write(now.shorter, c.first[end - 1]);
      at = end - 1;
    } else {
      write(now.code, c.first[end]);
      at = end;
    }
  }
  put(clear + 1);
  return block.Finish();
}

// Runs (where strings grow long and cuts are rare), noise (where the table
// fills and clears or stays full) and pixels with and without choices.
TEST(GifShaping, LookAheadEncoderMatchesThePlainLookAhead) {
  LzwEncoder lzw;
  for (int bits : {4, 8})
    for (int levels : {2, 256})
      for (bool choices : {false, true})
        for (LzwParse parse : {LzwParse::kLookAhead, LzwParse::kLookAheadWary})
          for (LzwFullTable full : {LzwFullTable::kClear, LzwFullTable::kKeep}) {
            const size_t count = levels == 2 ? 3000 : bits == 8 ? 10000 : 20000;  // noise fills the table
            Choices c = MakeChoices(count, levels, 1 << bits, static_cast<uint32_t>(bits + levels));
            if (!choices) c.second = c.first;
            std::vector<uint8_t> chosen(count), plain_chosen(count);
            MemorySink sink;
            ASSERT_EQ(lzw.EncodeChoosing(sink, c.first.data(), c.second.data(), count, bits, {parse, full},
                                         chosen.data()),
                      GifStatus::kOk);
            const std::vector<uint8_t> plain = PlainLookAheadEncode(c, LzwCodeSize(bits), {parse, full}, &plain_chosen);
            ASSERT_EQ(sink.bytes(), plain) << bits << " " << levels << " " << choices << " " << static_cast<int>(parse);
            EXPECT_EQ(chosen, plain_chosen);
          }
}

// Without a choice the plain encoder is the classic one: byte for byte what
// the fast encoder writes, which the LZW tests hold against a reference.
TEST(GifShaping, ChoosingEncoderWithoutChoicesEqualsTheFastEncoder) {
  LzwEncoder fast, plain;
  for (int bits : {4, 8}) {
    ImageBlock image = testing::NoiseImage(157, 211, static_cast<uint32_t>(bits), bits == 8 ? 256 : 16);
    ImageBlock indices = ImageCreate(image.width(), image.height(), nullptr, 8);
    std::vector<uint8_t> flat;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) {
        const uint8_t v = static_cast<uint8_t>(ImageGetPixel(image, x, y) % (1u << bits));
        ImageSetPixel(indices, x, y, v);
        flat.push_back(v);
      }
    MemorySink a, b;
    ASSERT_EQ(fast.Encode(a, indices, bits), GifStatus::kOk);
    std::vector<uint8_t> chosen(flat.size());
    ASSERT_EQ(plain.EncodeChoosing(b, flat.data(), flat.data(), flat.size(), bits, {}, chosen.data()),
              GifStatus::kOk);
    EXPECT_EQ(a.bytes(), b.bytes()) << bits;
  }
  std::vector<uint8_t> too_large{1, 2, 16}, chosen(3);
  MemorySink sink;
  EXPECT_EQ(plain.EncodeChoosing(sink, too_large.data(), too_large.data(), 3, 4, {}, chosen.data()),
            GifStatus::kIndexTooLarge);
  EXPECT_TRUE(sink.bytes().empty());
}

// A repeating dither, as a fixed palette makes of a smooth ramp: the look-
// ahead's cuts keep the table from learning the long strings such patterns
// are made of, so the shaper must find the longest-string parse better and
// write no frame larger than it.
TEST(GifShaping, RepeatingPatternsKeepTheLongestStrings) {
  constexpr int kSide = 96;
  uint8_t table[kPaletteBytes] = {};
  for (int i = 0; i < 16; ++i) table[3 * i] = static_cast<uint8_t>(17 * i);
  GifFrameShaper shaper;
  ASSERT_TRUE(shaper.Start(kSide, kSide, table, 4));
  LzwEncoder longest;
  for (int k = 0; k < 12; ++k) {
    ImageBlock frame = ImageCreate(kSide, kSide, table, 8);
    std::vector<uint8_t> flat, chosen(kSide * kSide);
    for (int y = 0; y < kSide; ++y)
      for (int x = 0; x < kSide; ++x) {
        const int level = (x + k) / 12, dither = (x + 2 * y) % 3 == 0;  // a ramp dithered in thirds
        flat.push_back(static_cast<uint8_t>((level + dither) % 16));
        ImageSetPixel(frame, x, y, flat.back());
      }
    GifFrameInput in;
    in.image = &frame;
    GifShapedFrame out;
    ASSERT_EQ(shaper.Shape(in, &out), GifStatus::kOk);
    MemorySink plain;
    ASSERT_EQ(longest.EncodeChoosing(plain, flat.data(), flat.data(), flat.size(), 4, {}, chosen.data()),
              GifStatus::kOk);
    EXPECT_LE(out.data.bytes().size(), plain.bytes().size()) << "frame " << k;
  }
}

// ---------------------------------------------------------------- shaped animations

constexpr int kW = 37, kH = 29;
constexpr int kUnchanged = 15;  // the build's reserved index for unchanged pixels

// A 16-entry table whose entries 3 and 9 repeat entry 1's colour, as an
// adaptive palette with the background placed twice has.
void Table(uint8_t* rgb) {
  std::memset(rgb, 0, kPaletteBytes);
  for (int i = 0; i < 16; ++i) {
    rgb[3 * i] = static_cast<uint8_t>(i * 16);
    rgb[3 * i + 1] = static_cast<uint8_t>(255 - i * 9);
    rgb[3 * i + 2] = static_cast<uint8_t>(i * i);
  }
  for (int dup : {3, 9}) std::memcpy(rgb + 3 * dup, rgb + 3, 3);
}

int32_t Rgb(const uint8_t* table, int i) { return table[3 * i] << 16 | table[3 * i + 1] << 8 | table[3 * i + 2]; }

// Frames as the build delivers them: a moving block over a changing field,
// unchanged pixels marked kUnchanged after the first, one frame with nothing
// changed, and what the viewer must see after each.
struct Animation {
  std::vector<ImageBlock> frames;
  std::vector<std::vector<int32_t>> shown;
};

Animation MakeAnimation(const uint8_t* table, int count) {
  Animation a;
  std::vector<int32_t> screen(kW * kH, -1);
  uint8_t rgb_bgr[kPaletteBytes];
  std::memcpy(rgb_bgr, table, kPaletteBytes);
  uint32_t s = 7;
  for (int k = 0; k < count; ++k) {
    ImageBlock f = ImageCreate(kW, kH, rgb_bgr, 8);
    for (int y = 0; y < kH; ++y)
      for (int x = 0; x < kW; ++x) {
        s = s * 1103515245u + 12345u;
        int v = (x / 5 + y / 4 + k) % 15;
        if (x >= k * 3 && x < k * 3 + 8 && y > 4 && y < 20) v = 9;  // the block, in a duplicate colour
        const bool keep = k > 0 && (k == 3 || (s >> 16) % 4 != 0);
        ImageSetPixel(f, x, y, static_cast<Colour>(keep ? kUnchanged : v));
        if (!keep) screen[static_cast<size_t>(y * kW + x)] = Rgb(table, v);
      }
    a.frames.push_back(std::move(f));
    a.shown.push_back(screen);
  }
  return a;
}

std::vector<uint8_t> Write(GifFrameShaper& shaper, const uint8_t* table, const Animation& a,
                           const std::vector<bool>& clear_behind = {}) {
  MemorySink sink;
  GifWriter writer(sink);
  GifScreen screen;
  screen.width = kW, screen.height = kH, screen.global_table = table, screen.table_bits = 4;
  EXPECT_EQ(writer.WriteHeader(screen), GifStatus::kOk);
  EXPECT_TRUE(shaper.Start(kW, kH, table, 4));
  for (size_t k = 0; k < a.frames.size(); ++k) {
    GifFrameInput in;
    in.image = &a.frames[k];
    in.transparent = k == 0 ? -1 : kUnchanged;
    in.clear_behind = k < clear_behind.size() && clear_behind[k];
    in.delay = 5;
    GifShapedFrame out;
    EXPECT_EQ(shaper.Shape(in, &out), GifStatus::kOk);
    EXPECT_EQ(WriteShapedFrame(writer, out), GifStatus::kOk);
  }
  EXPECT_EQ(writer.WriteTrailer(), GifStatus::kOk);
  return sink.bytes();
}

testing::DecodedGif Decode(const std::vector<uint8_t>& bytes) {
  testing::DecodedGif gif;
  std::string error;
  EXPECT_TRUE(testing::DecodeGif(bytes, &gif, &error)) << error;
  return gif;
}

TEST(GifShaping, AnimationsShowExactlyTheBuildsPicturesInFewerBytes) {
  uint8_t table[kPaletteBytes];
  Table(table);
  Animation a = MakeAnimation(table, 6);
  GifFrameShaper shaper;
  std::vector<uint8_t> bytes = Write(shaper, table, a);
  testing::DecodedGif gif = Decode(bytes);
  ASSERT_EQ(gif.frames.size(), 6u);
  EXPECT_EQ(testing::ComposeFrames(gif), a.shown);

  // Nothing changed in frame 3: one pixel. Drawn over the last picture, every
  // frame keeps it; the duplicate colours are written as their first index.
  EXPECT_EQ(gif.frames[3].width * gif.frames[3].height, 1);
  for (const auto& f : gif.frames) {
    EXPECT_EQ(f.control->disposal(), 1);
    // (3, never shown, is free to be the transparent index.)
    const int t = f.control->has_transparency() ? f.control->transparent_index : -1;
    EXPECT_TRUE(std::none_of(f.indices.begin(), f.indices.end(), [t](uint8_t i) { return (i == 3 || i == 9) && i != t; }));
  }

  // The frames as the build made them, written whole, take more room.
  MemorySink plain;
  GifWriter writer(plain);
  GifScreen screen;
  screen.width = kW, screen.height = kH, screen.global_table = table, screen.table_bits = 4;
  ASSERT_EQ(writer.WriteHeader(screen), GifStatus::kOk);
  for (size_t k = 0; k < a.frames.size(); ++k) {
    GifGraphicControl control;
    control.flags = GifControlFlags(GifDisposal::kKeep, k > 0);
    control.transparent_index = kUnchanged;
    GifImageDescriptor d;
    d.width = kW, d.height = kH, d.bits = 4;
    ASSERT_EQ(writer.WriteGraphicControl(control), GifStatus::kOk);
    ASSERT_EQ(writer.WriteFrame(d, a.frames[k]), GifStatus::kOk);
  }
  ASSERT_EQ(writer.WriteTrailer(), GifStatus::kOk);
  EXPECT_LT(bytes.size(), plain.bytes().size());
}

// A frame of a few low indices codes in few bits even under a 256-entry
// table, its transparent index moved to the lowest index it does not show.
TEST(GifShaping, FewLowIndicesCodeInFewBits) {
  uint8_t table[kPaletteBytes];
  for (int i = 0; i < 256; ++i) table[3 * i] = table[3 * i + 1] = table[3 * i + 2] = static_cast<uint8_t>(i);
  ImageBlock a = ImageCreate(kW, kH, table, 8), b = ImageCreate(kW, kH, table, 8);
  for (int y = 0; y < kH; ++y)
    for (int x = 0; x < kW; ++x) {
      ImageSetPixel(a, x, y, static_cast<Colour>((x + y) % 3 == 0 ? 5 : 0));
      ImageSetPixel(b, x, y, static_cast<Colour>(x < 10 ? 255 : (x * y) % 4));  // 4 is never shown
    }
  MemorySink sink;
  GifWriter writer(sink);
  GifScreen screen;
  screen.width = kW, screen.height = kH, screen.global_table = table, screen.table_bits = 8;
  ASSERT_EQ(writer.WriteHeader(screen), GifStatus::kOk);
  GifFrameShaper shaper;
  ASSERT_TRUE(shaper.Start(kW, kH, table, 8));
  for (const ImageBlock* f : {&a, &b}) {
    GifFrameInput in;
    in.image = f;
    in.transparent = f == &a ? -1 : 255;
    GifShapedFrame out;
    ASSERT_EQ(shaper.Shape(in, &out), GifStatus::kOk);
    ASSERT_EQ(WriteShapedFrame(writer, out), GifStatus::kOk);
  }
  ASSERT_EQ(writer.WriteTrailer(), GifStatus::kOk);
  testing::DecodedGif gif = Decode(sink.bytes());
  ASSERT_EQ(gif.frames.size(), 2u);
  EXPECT_EQ(gif.frames[0].lzw.min_code_size, 3);  // indices 0 and 5
  EXPECT_EQ(gif.frames[1].lzw.min_code_size, 3);
  EXPECT_EQ(gif.frames[1].control->transparent_index, 4);
  std::vector<int32_t> want(kW * kH);
  for (int y = 0; y < kH; ++y)
    for (int x = 0; x < kW; ++x) {
      const int v = x < 10 ? ((x + y) % 3 == 0 ? 5 : 0) : (x * y) % 4;
      want[static_cast<size_t>(y * kW + x)] = v << 16 | v << 8 | v;
    }
  EXPECT_EQ(testing::ComposeFrames(gif)[1], want);
}

TEST(GifShaping, ClearedBackgroundsAndOwnTablesStartThePictureAfresh) {
  uint8_t table[kPaletteBytes];
  Table(table);
  Animation a = MakeAnimation(table, 4);
  // Frame 1 in colours of its own: the frames after it cannot lean on the
  // picture as global-table indices, so they draw their own pixels whole.
  uint8_t* entry = a.frames[1].colour_table() + 4 * 2;
  entry[0] ^= 0x55;
  GifFrameShaper shaper;
  testing::DecodedGif gif = Decode(Write(shaper, table, a));
  ASSERT_EQ(gif.frames.size(), 4u);
  EXPECT_FALSE(gif.frames[1].local_table.empty());
  EXPECT_TRUE(gif.frames[2].local_table.empty());
  auto shown = testing::ComposeFrames(gif);
  EXPECT_EQ(shown[0], a.shown[0]);
  EXPECT_EQ(shown[3], [&] {
    // Frame 1's changed pixels in its own colours, then as built.
    std::vector<int32_t> want = a.shown[3];
    for (int y = 0; y < kH; ++y)
      for (int x = 0; x < kW; ++x) {
        const size_t at = static_cast<size_t>(y * kW + x);
        bool later = false;
        for (int k = 2; k <= 3; ++k) later |= ImageGetPixel(a.frames[static_cast<size_t>(k)], x, y) != kUnchanged;
        if (!later && ImageGetPixel(a.frames[1], x, y) == 2) want[at] = Rgb(table, 2) ^ 0x55;
      }
    return want;
  }());

  // A transparent background: every frame alone, cropped to what it shows,
  // and disposed to the background.
  GifFrameShaper cleared;
  testing::DecodedGif alone = Decode(Write(cleared, table, a, {true, true, true, true}));
  for (size_t k = 1; k < alone.frames.size(); ++k) {
    EXPECT_EQ(alone.frames[k].control->disposal(), 2);
    PixelBox visible = VisibleBounds(a.frames[k], kUnchanged);
    if (visible.empty()) visible = PixelBox{0, 0, 1, 1};  // the least a frame can be
    EXPECT_EQ(PixelBox({alone.frames[k].left, alone.frames[k].top, alone.frames[k].width, alone.frames[k].height}),
              visible);
  }
}

}  // namespace
}  // namespace tess
