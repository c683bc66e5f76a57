// The shared parts of every style: the generator, the colour pick, fills laid
// over a whole tile, and the preview/build calling order.
#include "styles/style.h"

#include <algorithm>
#include <cstdlib>

#include "fills/fill_render.h"

namespace tess {

FountainRecord ParamReader::Fountain(int id) const {
  FountainRecord record;  // the default fountain unless the id has a built-in one
  BuiltInFountain(id, record);
  return record;
}

int32_t Random::Next() {
  m_state = m_state * 0x000015A400004E35ull + 1;
  return static_cast<int32_t>((m_state >> 32) & 0x7FFFFFFFu);
}

int32_t Random::NextShort() {
  uint32_t low = static_cast<uint32_t>(m_state) * 0x015A4E35u + 1;
  m_state = (m_state & 0xFFFFFFFF00000000ull) | low;
  return static_cast<int32_t>((low >> 16) & 0x7FFF);
}

int ColourPick::Pick(Random& random) {
  if (m_count < 2) {
    m_previous = 0;
    return 0;
  }
  int r = 0;
  for (int tries = 0; tries < 16; ++tries) {
    r = random.Below(m_count);
    if (r != m_previous) break;
  }
  m_previous = r;
  return r;
}

std::vector<FillDescriptor> CollectFills(const ParamReader& reader, const int (&colour_ids)[5],
                                         const int (&enable_ids)[4]) {
  std::vector<FillDescriptor> fills;
  fills.push_back(reader.Fill(colour_ids[0]));
  for (int i = 0; i < 4; ++i)
    if (reader.Checked(enable_ids[i])) fills.push_back(reader.Fill(colour_ids[i + 1]));
  return fills;
}

// ---------------------------------------------------------------- seamless fills
//
// A fill is drawn for a picture, not for a tile: a linear sweep has its two
// colours at opposite edges, and an off-centre ring gradient is cut off
// unevenly, so tiles of it would meet at a hard step. Folding such an axis
// (the even columns going out, the odd ones coming back) keeps every
// neighbour within two source pixels of each other, the last column next to
// the first included, and uses each column exactly once, so the colours and
// their proportions stay those of the fill. Fills that already wrap (a
// centred ring gradient, an even checker) are left exactly as drawn.
namespace {

// Sum over the other axis of the channel differences between columns a and b
// (rows when `down`).
uint64_t LineStep(const ImageBlock& image, int32_t a, int32_t b, bool down) {
  uint64_t sum = 0;
  const int32_t along = down ? image.width() : image.height();
  for (int32_t t = 0; t < along; ++t) {
    const uint8_t* p = down ? image.Row(a) + 3 * size_t(t) : image.Row(t) + 3 * size_t(a);
    const uint8_t* q = down ? image.Row(b) + 3 * size_t(t) : image.Row(t) + 3 * size_t(b);
    for (int ch = 0; ch < 3; ++ch) sum += static_cast<uint64_t>(std::abs(p[ch] - q[ch]));
  }
  return sum;
}

// Whether the step from the last column to the first (rows when `down`) is no
// larger than twice the largest step inside. A hard edge inside, like a
// checker's cell border, may be as large as the seam; twice leaves room for a
// ring gradient whose centre falls between two pixels.
bool EdgesMeet(const ImageBlock& image, bool down) {
  const int32_t length = down ? image.height() : image.width();
  if (length < 3) return true;
  uint64_t largest = 0;
  for (int32_t i = 0; i + 1 < length; ++i)
    largest = std::max(largest, LineStep(image, i, i + 1, down));
  return LineStep(image, length - 1, 0, down) <= 2 * largest;
}

// The source column that column x of a folded axis shows.
int32_t Fold(int32_t x, int32_t length) {
  return 2 * x < length ? 2 * x : 2 * (length - 1 - x) + 1;
}

}  // namespace

ImageBlock RenderSeamlessFill(const FillDescriptor& fill, int32_t width, int32_t height) {
  ImageBlock image = RenderFill(fill, width, height);
  if (!image) return {};
  const bool fold_across = !EdgesMeet(image, false), fold_down = !EdgesMeet(image, true);
  if (!fold_across && !fold_down) return image;
  ImageBlock folded = ImageCreate(width, height, nullptr, 24);
  if (!folded) return {};
  for (int32_t y = 0; y < height; ++y) {
    const uint8_t* from = image.Row(fold_down ? Fold(y, height) : y);
    uint8_t* to = folded.Row(y);
    for (int32_t x = 0; x < width; ++x, to += 3) {
      const uint8_t* p = from + 3 * static_cast<size_t>(fold_across ? Fold(x, width) : x);
      to[0] = p[0], to[1] = p[1], to[2] = p[2];
    }
  }
  return folded;
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
