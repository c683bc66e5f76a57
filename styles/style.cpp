// The shared parts of every style: the generator, colour pick and the
// preview/build calling order.
#include "styles/style.h"

namespace tess {

int32_t Random::Next() {
  m_state = m_state * 0x000015A400004E35ull + 1;
  return static_cast<int32_t>((m_state >> 32) & 0x7FFFFFFFu);
}

int32_t Random::NextShort() {
  uint32_t low = static_cast<uint32_t>(m_state) * 0x015A4E35u + 1;
  m_state = (m_state & 0xFFFFFFFF00000000ull) | low;
  return static_cast<int32_t>((low >> 16) & 0x7FFF);
}

Colour ColourPick::Pick(Random& random) {
  int n = static_cast<int>(m_colours.size());
  if (n < 2) {
    m_previous = 0;
    return n == 0 ? 0 : m_colours[0];
  }
  int r = 0;
  for (int tries = 0; tries < 16; ++tries) {
    r = random.Below(n);
    if (r != m_previous) break;
  }
  m_previous = r;
  return m_colours[r];
}

std::vector<Colour> CollectColours(const ParamReader& reader, const int (&colour_ids)[5],
                                   const int (&enable_ids)[4]) {
  std::vector<Colour> colours;
  colours.push_back(reader.ColourValue(colour_ids[0]));
  for (int i = 0; i < 4; ++i)
    if (reader.Checked(enable_ids[i])) colours.push_back(reader.ColourValue(colour_ids[i + 1]));
  return colours;
}

ImageBlock StylePreview(const StyleEntry& style, const ParamReader& reader, Random& random) {
  if (!style.init) return {};
  std::unique_ptr<StyleRecord> record = style.init(reader, random);
  if (!record) return {};
  return record->RenderFrame(0);
}

bool StyleBuild(const StyleEntry& style, const ParamReader& reader, Random& random,
                int32_t delay, FrameList& frames, const std::function<void(int, int)>& progress) {
  if (!style.init) return false;
  std::unique_ptr<StyleRecord> record = style.init(reader, random);
  if (!record) return false;
  int n = record->FrameCount();
  for (int k = 0; k < n; ++k) {
    ImageBlock frame = record->RenderFrame(k);
    if (!frame || !FrameListAddImage(frames, std::move(frame), delay)) return false;
    if (progress) progress(k, n);
  }
  return true;
}

}  // namespace tess
