// Checks shared by the tests of effects that blend grey masks with wrap-around
// (Snow, Hyperspace): pages from the configuration's defaults, the plain plane
// a wrapped frame must equal, and checks that go through the style entry.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/alloc.h"
#include "dialog/settings_reader.h"
#include "draw/draw.h"
#include "fills/fill_store.h"
#include "fills/fill_text.h"
#include "shell/settings.h"
#include "styles/slot_paint.h"
#include "styles/style_table.h"
#include "tests/support/golden.h"

namespace tess::testing {

// A style's page as the configuration's defaults hold it, with some values
// changed; fills other than Simple go to a fill store beside the settings.
struct EffectSetup {
  int style = 0;
  Settings settings;
  PageRecords records;

  explicit EffectSetup(int number) : style(number) {}
  EffectSetup& Set(std::string_view param, int32_t value) {
    settings.SetStyleNumber(style, param, value);
    return *this;
  }
  // `slot` 1..5 paints with the fill written as `tessarine help fills` says.
  EffectSetup& SetFill(int slot, std::string_view text) {
    FillDescriptor fill;
    std::string error;
    EXPECT_TRUE(ParseFill(text, fill, error)) << error;
    records.fills.Put(PageControlId(style, 10 + slot), fill);
    return Set("FillColor" + std::to_string(slot),
               static_cast<int32_t>(fill.kind << 24 | fill.colour));
  }
  int32_t Get(std::string_view param) const { return settings.StyleNumber(style, param); }
  SettingsReader Reader() const { return SettingsReader(settings, *StyleByNumber(style), &records); }
  std::unique_ptr<StyleRecord> Init() const {
    Random random;
    return StyleByNumber(style)->init(Reader(), random);
  }
};

inline bool SameBytes(const ImageBlock& a, const ImageBlock& b) {
  return a && b && a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

// A plain copy of the wrapped blends: each mask is drawn, without any wrap,
// at its copies one tile apart on a plane three tiles wide and high, and the
// middle tile is read back. Masks must be smaller than the tile, so a mask's
// copies never overlap.
class PlaneReference {
 public:
  PlaneReference(int32_t width, int32_t height, Colour background)
      : m_width(width), m_height(height),
        m_plane(SolidImage({0, 0, 3 * width, 3 * height}, background)) {}

  void Blend(const ImageBlock& mask, int32_t x, int32_t y, SlotPaints::Handle paint,
             const ImageBlock* picture, int opacity) {
    EXPECT_LT(mask.width(), m_width);
    EXPECT_LT(mask.height(), m_height);
    const int32_t left = WrapIndex(x, m_width), top = WrapIndex(y, m_height);
    for (int32_t sy = 0; sy < 3 * mask.height(); ++sy)
      for (int32_t sx = 0; sx < 3 * mask.width(); ++sx) {
        const int32_t mx = sx % mask.width(), my = sy % mask.height();
        const int32_t px = left + mx + sx / mask.width() * m_width;
        const int32_t py = top + my + sy / mask.height() * m_height;
        if (px >= 3 * m_width || py >= 3 * m_height) continue;
        const unsigned a = ColourBlue(ImageGetPixel(mask, mx, my)) * unsigned(opacity) / 255;
        const Colour c = picture ? ImageGetPixel(*picture, mx, my) : paint.colour;
        const Colour d = ImageGetPixel(m_plane, px, py);
        Colour out = 0;
        for (int s = 0; s < 24; s += 8)
          out |= (((c >> s) & 0xFF) * a / 255 + ((d >> s) & 0xFF) * (255 - a) / 255) << s;
        ImageSetPixel(m_plane, px, py, out);
      }
  }

  ImageBlock MiddleTile() const {
    ImageBlock tile = ImageCreate(m_width, m_height, nullptr, 24);
    ImageCopyRect(tile, 0, 0, m_plane, m_width, m_height, m_width, m_height);
    return tile;
  }

 private:
  int32_t m_width, m_height;
  ImageBlock m_plane;
};

// Each change of one setting shows in frame 0 (frame 1 for Frames, which
// changes the speed), and the unchanged page draws the same bytes again.
inline void ExpectEverySettingShows(const EffectSetup& base,
                                    const std::vector<std::pair<const char*, int32_t>>& changes) {
  auto record = base.Init();
  ImageBlock frame0 = record->RenderFrame(0), frame1 = record->RenderFrame(1);
  EXPECT_TRUE(SameBytes(base.Init()->RenderFrame(0), frame0));
  for (const auto& [key, value] : changes) {
    EffectSetup changed = base;
    const bool later = std::string_view(key) == "Frames";
    ImageBlock frame = changed.Set(key, value).Init()->RenderFrame(later ? 1 : 0);
    EXPECT_FALSE(SameBytes(frame, later ? frame1 : frame0)) << key;
  }
}

// Every allocation of a build failing in turn: the build fails without
// leaking (ASan checks), since nothing in it is optional.
inline void ExpectEveryAllocationFailureFailsTheBuild(const EffectSetup& setup) {
  const StyleEntry& style = *StyleByNumber(setup.style);
  SettingsReader reader = setup.Reader();
  long total = 0;
  {
    Random random;
    FrameList frames;
    AllocFailureScope count(1L << 30);
    ASSERT_TRUE(StyleBuild(style, reader, random, 4, frames));
    total = count.Count();
  }
  for (long fail_at = 0; fail_at < total; ++fail_at) {
    Random random;
    FrameList frames;
    AllocFailureScope scope(fail_at);
    EXPECT_FALSE(StyleBuild(style, reader, random, 4, frames)) << fail_at;
  }
}

// Frames 0, 1 and N-1 of each named setup into `golden`.
inline void AddGoldenFrames(GoldenSet& golden, const std::string& name, const EffectSetup& setup) {
  auto record = setup.Init();
  ASSERT_TRUE(record) << name;
  const int n = record->FrameCount();
  for (int k : {0, 1, n - 1})
    golden.Add(name + "_frame" + std::to_string(k), ImageChecksum(record->RenderFrame(k)));
}

}  // namespace tess::testing
