// Shared by the tests of the glossy-bead effects: page settings over the
// configuration's defaults, and a plain compositor that draws a scene on a
// canvas three tiles wide and high, without any wrap-around, and keeps the
// middle tile. A renderer that forgot to wrap an element, or wrapped it
// wrongly, differs from it wherever that element crosses an edge.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/alloc.h"
#include "dialog/settings_reader.h"
#include "image/frame_list.h"
#include "shell/settings.h"
#include "styles/gloss.h"
#include "styles/style_table.h"

namespace tess::testing {

// The configuration's StyleNNN defaults, with some values changed.
struct BeadConfig {
  int number;
  Settings settings;
  explicit BeadConfig(int style_number) : number(style_number) {}
  BeadConfig& Set(std::string_view param, int32_t value) {
    settings.SetStyleNumber(number, param, value);
    return *this;
  }
  int32_t Get(std::string_view param) const { return settings.StyleNumber(number, param); }
  const StyleEntry& Style() const { return *StyleByNumber(number); }
  SettingsReader Reader() const { return SettingsReader(settings, Style()); }
};

inline bool SameBytes(const ImageBlock& a, const ImageBlock& b) {
  return a && b && a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

// Frames `ks` of one record made from `config`.
inline std::vector<ImageBlock> RenderFrames(const BeadConfig& config, std::vector<int> ks) {
  SettingsReader reader = config.Reader();
  Random random;
  std::unique_ptr<StyleRecord> record = config.Style().init(reader, random);
  std::vector<ImageBlock> frames;
  if (!record) return frames;
  for (int k : ks) frames.push_back(record->RenderFrame(k < 0 ? record->FrameCount() + k : k));
  return frames;
}

// What the plain compositor draws: shadows first (each pixel darkened by the
// strongest shadow over it), then the sprites in order.
struct SceneSprite {
  const ImageBlock* sprite;  // 32-bit, coverage in the top byte
  int32_t x, y;              // top-left, any value
};
struct SceneShadow {
  const GlossMask* mask;
  int32_t x, y;
};

inline int32_t Fold(int64_t c, int32_t length) {
  int64_t r = c % length;
  return static_cast<int32_t>(r < 0 ? r + length : r);
}

// Sprites and masks must be no larger than the tile, so that their copies on
// the big canvas do not overlap one another.
inline ImageBlock ComposeOnBigCanvas(int32_t w, int32_t h, Colour background, int opacity,
                                     const std::vector<SceneShadow>& shadows,
                                     const std::vector<SceneSprite>& sprites,
                                     const ImageBlock* base = nullptr) {
  const int32_t bw = 3 * w, bh = 3 * h;
  std::vector<Colour> big(static_cast<size_t>(bw) * bh);
  std::vector<int> cover(big.size(), 0);
  for (int32_t y = 0; y < bh; ++y)
    for (int32_t x = 0; x < bw; ++x)
      big[static_cast<size_t>(y) * bw + x] = base ? ImageGetPixel(*base, x % w, y % h) : background;
  auto each_copy = [&](int32_t x, int32_t y, int32_t sw, int32_t sh,
                       const std::function<void(size_t, int32_t, int32_t)>& visit) {
    for (int oy = 0; oy < 3; ++oy)
      for (int ox = 0; ox < 3; ++ox)
        for (int32_t j = 0; j < sh; ++j)
          for (int32_t i = 0; i < sw; ++i) {
            const int32_t bx = Fold(x, w) + (ox - 1) * w + w + i,
                          by = Fold(y, h) + (oy - 1) * h + h + j;
            if (bx >= 0 && bx < bw && by >= 0 && by < bh)
              visit(static_cast<size_t>(by) * bw + bx, i, j);
          }
  };
  for (const SceneShadow& s : shadows)
    each_copy(s.x, s.y, s.mask->width, s.mask->height, [&](size_t at, int32_t i, int32_t j) {
      cover[at] =
          std::max<int>(cover[at], s.mask->cover[static_cast<size_t>(j) * s.mask->width + i]);
    });
  for (size_t at = 0; at < big.size(); ++at) {
    const unsigned a = static_cast<unsigned>(cover[at]) * static_cast<unsigned>(opacity) / 255;
    Colour c = big[at], out = 0;
    for (int shift = 0; shift < 24; shift += 8)
      out |= (((c >> shift) & 0xFF) * (255 - a) / 255) << shift;
    big[at] = out;
  }
  for (const SceneSprite& s : sprites)
    each_copy(s.x, s.y, s.sprite->width(), s.sprite->height(),
              [&](size_t at, int32_t i, int32_t j) {
                const Colour p = ImageGetPixel(*s.sprite, i, j);
                const unsigned a = p >> 24;
                Colour d = big[at], out = 0;
                for (int shift = 0; shift < 24; shift += 8)
                  out |= (((p >> shift) & 0xFF) * a / 255 + ((d >> shift) & 0xFF) * (255 - a) / 255)
                         << shift;
                big[at] = out;
              });
  ImageBlock tile = ImageCreate(w, h, nullptr, 24);
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x)
      ImageSetPixel(tile, x, y, big[static_cast<size_t>(y + h) * bw + x + w]);
  return tile;
}

// Builds the whole animation with every allocation failing in turn: each
// build either fails cleanly (ASan checks that nothing leaks) or, if the
// failing allocation came after the last frame, succeeds.
inline void SweepAllocationFailures(const BeadConfig& config) {
  SettingsReader reader = config.Reader();
  long allocations = 0;
  {
    FrameList frames;
    Random random;
    AllocFailureScope count(1L << 30);
    ASSERT_TRUE(StyleBuild(config.Style(), reader, random, 5, frames));
    allocations = count.Count();
  }
  ASSERT_GT(allocations, 0);
  int failed = 0;
  for (long fail_at = 0; fail_at < allocations; ++fail_at) {
    FrameList frames;
    Random random;
    AllocFailureScope scope(fail_at);
    failed += !StyleBuild(config.Style(), reader, random, 5, frames);
  }
  EXPECT_EQ(failed, allocations);
}

}  // namespace tess::testing
