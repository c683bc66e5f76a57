// Shared by the tests of the glossy-bead effects: settings over the
// configuration's defaults, the properties every effect keeps, and a plain
// compositor that draws each element at every wrapped copy on a canvas three
// tiles wide and high, with no wrap-around of its own, and keeps the middle
// tile: a renderer that wraps wrongly, or not at all, differs from it.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "dialog/settings_reader.h"
#include "image/frame_list.h"
#include "shell/settings.h"
#include "styles/gloss.h"
#include "styles/style_table.h"
#include "tests/support/golden.h"

namespace tess::testing {

struct BeadConfig {
  int number;
  Settings settings;
  explicit BeadConfig(int style_number) : number(style_number) {}
  BeadConfig& Set(std::string_view key, int32_t value) {
    settings.SetStyleNumber(number, key, value);
    return *this;
  }
  int32_t Get(std::string_view key) const { return settings.StyleNumber(number, key); }
  const StyleEntry& Style() const { return *StyleByNumber(number); }
  SettingsReader Reader() const { return SettingsReader(settings, Style()); }
};

inline bool SameBytes(const ImageBlock& a, const ImageBlock& b) {
  return a && b && a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

// Frame k (counted back from N when negative) of a fresh record.
inline ImageBlock RenderFrame(const BeadConfig& config, int k) {
  Random random;
  std::unique_ptr<StyleRecord> record = config.Style().init(config.Reader(), random);
  return record->RenderFrame(k < 0 ? record->FrameCount() + k : k);
}

// Frames N and N + 1 repeat frames 0 and 1, which differ; the next seed
// gives another picture.
inline void ExpectLoopAndSeed(const BeadConfig& config) {
  Random random;
  std::unique_ptr<StyleRecord> record = config.Style().init(config.Reader(), random);
  const int n = record->FrameCount();
  ImageBlock f0 = record->RenderFrame(0), f1 = record->RenderFrame(1);
  EXPECT_TRUE(SameBytes(record->RenderFrame(n), f0));
  EXPECT_TRUE(SameBytes(record->RenderFrame(n + 1), f1));
  EXPECT_FALSE(SameBytes(f0, f1));
  BeadConfig other = config;
  EXPECT_FALSE(SameBytes(RenderFrame(other.Set("Seed", config.Get("Seed") + 1), 0), f0));
}

// Each change shows in frame k, and the changes name every stored setting.
inline void ExpectEverySettingShows(const BeadConfig& base,
                                    const std::vector<std::pair<const char*, int32_t>>& changes,
                                    int k) {
  std::set<std::string> keys, changed;
  for (const PageControl& control : base.Style().page)
    if (control.key) keys.insert(control.key);
  for (const auto& change : changes) changed.insert(change.first);
  EXPECT_EQ(keys, changed);
  const ImageBlock before = RenderFrame(base, k);
  for (const auto& [key, value] : changes) {
    BeadConfig c = base;
    EXPECT_FALSE(SameBytes(before, RenderFrame(c.Set(key, value), k))) << key;
  }
}

// Every allocation of a build failing in turn fails it; ASan sees no leak.
inline void ExpectEveryAllocationFailureFailsTheBuild(const BeadConfig& config) {
  auto build = [&] {
    FrameList frames;
    Random random;
    return StyleBuild(config.Style(), config.Reader(), random, 5, frames);
  };
  long allocations = 0;
  {
    AllocFailureScope count(1L << 30);
    ASSERT_TRUE(build());
    allocations = count.Count();
  }
  for (long fail_at = 0; fail_at < allocations; ++fail_at) {
    AllocFailureScope scope(fail_at);
    EXPECT_FALSE(build()) << fail_at;
  }
}

// Frames 0, 1 and N-1 of each case against tests/data/golden/<stem>.txt. A
// difference means the picture changed: check it is intended, then rebuild
// the target regenerate-golden-<test>.
inline void ExpectGoldenFrames(const char* stem,
                               const std::vector<std::pair<const char*, BeadConfig>>& cases) {
  GoldenSet golden(stem);
  for (const auto& [name, config] : cases)
    for (int k : {0, 1, -1})
      golden.Add(std::string(name) + "_frame" + (k < 0 ? "last" : std::to_string(k)),
                 ImageChecksum(RenderFrame(config, k)));
  EXPECT_TRUE(golden.Verify());
}

// ---------------------------------------------------------------- plain compositor

struct SceneSprite {
  const ImageBlock* sprite;  // 32-bit, coverage in the top byte
  int32_t x, y;              // top-left, any value
};
struct SceneShadow {
  const GlossMask* mask;
  int32_t x, y;
};

// Shadows first, each pixel darkened by the strongest one over it, then the
// sprites in order, over `base` or the plain background. Sprites and masks
// must not be larger than the tile.
inline ImageBlock ComposeOnBigCanvas(int32_t w, int32_t h, Colour background, int opacity,
                                     const std::vector<SceneShadow>& shadows,
                                     const std::vector<SceneSprite>& sprites,
                                     const ImageBlock* base = nullptr) {
  const int32_t bw = 3 * w;
  std::vector<Colour> big(size_t(bw) * 3 * h);
  std::vector<unsigned> cover(big.size(), 0);
  for (size_t at = 0; at < big.size(); ++at)
    big[at] = base ? ImageGetPixel(*base, int(at % bw) % w, int(at / bw) % h) : background;
  // visit(index, i, j) for pixel (i, j) of every copy of a sw x sh thing at (x, y).
  auto copies = [&](int32_t x, int32_t y, int32_t sw, int32_t sh, auto visit) {
    for (int32_t oy = 0; oy < 3 * h; oy += h)
      for (int32_t ox = 0; ox < 3 * w; ox += w)
        for (int32_t j = 0; j < sh; ++j)
          for (int32_t i = 0; i < sw; ++i) {
            const int32_t bx = (x % w + w) % w + ox + i, by = (y % h + h) % h + oy + j;
            if (bx < bw && by < 3 * h) visit(size_t(by) * bw + bx, i, j);
          }
  };
  auto mix = [](Colour ink, Colour ground, unsigned a) {
    Colour out = 0;
    for (int s = 0; s < 24; s += 8)
      out |= (((ink >> s) & 0xFF) * a / 255 + ((ground >> s) & 0xFF) * (255 - a) / 255) << s;
    return out;
  };
  for (const SceneShadow& s : shadows)
    copies(s.x, s.y, s.mask->width, s.mask->height, [&](size_t at, int32_t i, int32_t j) {
      cover[at] = std::max<unsigned>(cover[at], s.mask->cover[size_t(j) * s.mask->width + i]);
    });
  for (size_t at = 0; at < big.size(); ++at) big[at] = mix(0, big[at], cover[at] * opacity / 255);
  for (const SceneSprite& s : sprites)
    copies(s.x, s.y, s.sprite->width(), s.sprite->height(), [&](size_t at, int32_t i, int32_t j) {
      const Colour p = ImageGetPixel(*s.sprite, i, j);
      big[at] = mix(p, big[at], p >> 24);
    });
  ImageBlock tile = ImageCreate(w, h, nullptr, 24);
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x) ImageSetPixel(tile, x, y, big[size_t(y + h) * bw + x + w]);
  return tile;
}

// Frame k of a record that draws GlossItems, as the plain compositor draws it.
template <class Record>
ImageBlock PlainFrame(const Record& r, int k) {
  std::vector<GlossItem> items;
  r.Items(k, items);
  std::vector<SceneShadow> shadows;
  std::vector<SceneSprite> sprites;
  for (const GlossItem& item : items) {
    const int64_t offset = 4 * int64_t{r.shadow_offset()};
    const GlossPlace s = item.sprites->PlaceShadow(item.x + offset, item.y + offset);
    const GlossPlace at = item.sprites->Place(item.x, item.y);
    if (r.shadow_opacity() > 0) shadows.push_back({&item.sprites->Shadow(s.phase), s.x, s.y});
    sprites.push_back({&item.sprites->Sprite(item.paint, at.phase), at.x, at.y});
  }
  return ComposeOnBigCanvas(r.width(), r.height(), r.background(), r.shadow_opacity(), shadows,
                            sprites);
}

}  // namespace tess::testing
