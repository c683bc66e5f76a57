// A small style table for driving the command line in process: "Tiles"
// renders a block moving over its page's background and stores its settings
// under the Style000 keys, so --set, --save and the settings reader work on
// real configuration keys; "Pending Effect" has no renderer yet; "Broken"
// fails on its second frame.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "fills/fill_render.h"
#include "styles/page_layout.h"
#include "styles/style.h"

namespace tess::testing {

constexpr int kTilesNumber = 0;
constexpr int TilesId(int n) { return PageControlId(kTilesNumber, n); }

inline constexpr std::array kTilesPage = {
    page::Spin(TilesId(page::kFramesControl), page::kLeft, 0, "Frames:", "Frames", {2, 32760, 64}),
    page::Spin(TilesId(page::kWidthControl), page::kLeft, 1, "Width:", "Width", {16, 1024, 128}),
    page::Spin(TilesId(page::kDepthControl), page::kLeft, 2, "Depth:", "Depth", {16, 1024, 128}),
    page::Spin(TilesId(page::kSeedControl), page::kLeft, 3, "Seed:", "Seed", {100, 32760, 1000}),
    page::Background(kTilesNumber, page::kRight, 0),
    page::Check(TilesId(page::kFirstOwnControl), page::kLeft, 4, "Smooth", "Smooth"),
    page::FillButton(TilesId(page::ColourControl(1)), page::kRight, 1, "Color 1:", "FillColor1"),
};

// Frame k: the background everywhere and a 4 x 4 block three pixels further
// right each frame, its colour changing with k and with the seed; the top
// row shows the "Color 1" fill as the tile-sized image the fill renders.
class TilesRecord final : public StyleRecord {
 public:
  explicit TilesRecord(const ParamReader& r)
      : m_frames(r.Spin(TilesId(page::kFramesControl))),
        m_width(r.Spin(TilesId(page::kWidthControl))),
        m_height(r.Spin(TilesId(page::kDepthControl))),
        m_seed(r.Spin(TilesId(page::kSeedControl))),
        m_background(r.ColourValue(TilesId(page::kBackgroundControl))),
        m_fill(RenderFill(r.Fill(TilesId(page::ColourControl(1))), m_width, m_height)) {}

  int FrameCount() const override { return m_frames; }

  ImageBlock RenderFrame(int k) override {
    ImageBlock image = ImageCreate(m_width, m_height, nullptr, 24);
    if (!image) return image;
    for (int y = 0; y < m_height; ++y)
      for (int x = 0; x < m_width; ++x) ImageSetPixel(image, x, y, m_background);
    Colour block = MakeColour(40 * k + 20, m_seed & 0xFF, 200);
    for (int y = 5; y < 9; ++y)
      for (int x = 0; x < 4; ++x) ImageSetPixel(image, (3 * k + x) % m_width, y % m_height, block);
    for (int x = 0; m_fill && x < m_width; ++x) ImageSetPixel(image, x, 0, ImageGetPixel(m_fill, x, 0));
    return image;
  }

 private:
  int m_frames, m_width, m_height, m_seed;
  Colour m_background;
  ImageBlock m_fill;
};

class BrokenRecord final : public StyleRecord {
 public:
  int FrameCount() const override { return 3; }
  ImageBlock RenderFrame(int k) override { return k == 0 ? ImageCreate(8, 8, nullptr, 24) : ImageBlock(); }
};

inline std::unique_ptr<StyleRecord> InitTiles(const ParamReader& r, Random&) {
  return std::make_unique<TilesRecord>(r);
}
inline std::unique_ptr<StyleRecord> InitBroken(const ParamReader&, Random&) {
  return std::make_unique<BrokenRecord>();
}

enum CliTestStyle { kTiles = 0, kPending = 1, kBroken = 2 };

inline const std::vector<StyleEntry>& CliTestStyles() {
  static const std::vector<StyleEntry> styles = {
      {"Tiles", kTilesNumber, kTilesPage, &InitTiles, &page::BackgroundQuery<kTilesNumber>},
      {"Pending Effect", 10, {}, nullptr, &page::NoBackground},
      {"Broken", 17, {}, &InitBroken, &page::NoBackground},
  };
  return styles;
}

}  // namespace tess::testing
