// Small styles for driving the build: a block that moves over a flat
// background (so consecutive frames share most pixels), a frame full of
// distinct colours (for the adaptive palette), and entries that fail, render
// nothing or answer the background query in each way a real style can. The
// block's colour can come from the process-wide generator, as a real style's
// draws do, so a build that renders twice must restore it in between. The
// page reader (tests/support/map_reader.h) and PageBackground also serve the
// build bench.
#pragma once

#include <memory>
#include <new>
#include <vector>

#include "styles/style.h"
#include "tests/support/map_reader.h"

namespace tess::testing {

// Page control ids of the test styles.
constexpr int kTestFrames = 901;
constexpr int kTestWidth = 902;
constexpr int kTestHeight = 903;
constexpr int kTestBackground = 904;
constexpr int kTestFailAt = 905;    // frame k + 1 fails to render; 0 never
constexpr int kTestRich = 906;      // 1: every pixel a different colour
constexpr int kTestThrowAt = 907;   // frame k + 1 runs out of memory in a container; 0 never
constexpr int kTestDrawn = 908;     // 1: the block's colour is drawn from the generator
constexpr int kTestFlat = 909;      // 1: frames filled a row at a time, fast at large sizes

class TestRecord final : public StyleRecord {
 public:
  TestRecord(const ParamReader& r, Random& random)
      : m_random(random),
        m_frames(r.Spin(kTestFrames)),
        m_width(r.Spin(kTestWidth)),
        m_height(r.Spin(kTestHeight)),
        m_bg(r.ColourValue(kTestBackground)),
        m_fail_at(r.Spin(kTestFailAt)),
        m_throw_at(r.Spin(kTestThrowAt)),
        m_rich(r.Checked(kTestRich)),
        m_drawn(r.Checked(kTestDrawn)),
        m_flat(r.Checked(kTestFlat)) {}

  int FrameCount() const override { return m_frames; }

  ImageBlock RenderFrame(int k) override {
    if (m_fail_at == k + 1) return {};
    if (m_throw_at == k + 1) throw std::bad_alloc();
    ImageBlock image = ImageCreate(m_width, m_height, nullptr, 24);
    if (!image) return image;
    if (m_flat) {
      for (int y = 0; y < m_height; ++y)
        for (uint8_t* p = image.Row(y); p < image.Row(y) + 3 * m_width; p += 3)
          p[0] = ColourBlue(m_bg), p[1] = ColourGreen(m_bg), p[2] = ColourRed(m_bg);
    } else {
      for (int y = 0; y < m_height; ++y)
        for (int x = 0; x < m_width; ++x)
          ImageSetPixel(image, x, y, m_rich ? MakeColour(x * 15 + k, y * 13 + 3 * k, (x + y) * 7) : m_bg);
    }
    // A 3 x 2 block that moves two pixels per frame and changes colour.
    const int green = m_drawn ? m_random.Below(256) : (40 * k) & 0xFF;
    for (int y = 1; y < 3; ++y)
      for (int x = 0; x < 3; ++x)
        ImageSetPixel(image, (2 * k + x) % m_width, y, MakeColour(200, green, 90 + x));
    return image;
  }

 private:
  Random& m_random;
  int m_frames, m_width, m_height;
  Colour m_bg;
  int m_fail_at, m_throw_at;
  bool m_rich, m_drawn, m_flat;
};

inline std::unique_ptr<StyleRecord> InitTest(const ParamReader& r, Random& random) {
  return std::make_unique<TestRecord>(r, random);
}

// Like a real style with a "Background:" button: -1 when asked whether it
// forbids transparency, so the transparent background is always off.
inline Colour PageBackground(const ParamReader& r, int flag) {
  return flag ? kNoColour : r.ColourValue(kTestBackground);
}
// A style that allows the transparent background.
inline Colour AllowsTransparency(const ParamReader& r, int flag) {
  return flag ? 0 : r.ColourValue(kTestBackground);
}
inline Colour NoSingleBackground(const ParamReader&, int) { return kNoColour; }

enum TestStyleIndex {
  kStyleMoving = 0,     // background query as real styles answer it
  kStyleTransparent,    // allows the transparent background
  kStyleNoBackground,   // no background query: bg stays black
  kStyleNoSingle,       // query answers -1
  kStyleNoInit,         // cannot render
};

inline std::vector<StyleEntry> TestStyles() {
  return {
      {"Moving", 900, {}, &InitTest, &PageBackground},
      {"Transparent", 901, {}, &InitTest, &AllowsTransparency},
      {"No background", 902, {}, &InitTest, nullptr},
      {"No single background", 903, {}, &InitTest, &NoSingleBackground},
      {"No init", 904, {}, nullptr, &PageBackground},
  };
}

}  // namespace tess::testing
