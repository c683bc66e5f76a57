// The style framework: how an effect declares its settings page, how it reads
// its settings, the shared random generator and colour pick, and the calling
// order of preview and build that makes the preview equal to frame 0.
//
// Sections: reading settings · random generator ·
// colour pick · style entries · scrolling · preview and build.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "controls/page_control.h"
#include "fills/fill_descriptor.h"
#include "fills/fountain.h"
#include "image/frame_list.h"
#include "image/image.h"

namespace tess {

// ---------------------------------------------------------------- reading settings

// Pages are declared as controls/page_control.h's PageControl; each kind's
// rules are controls/control_kinds.h's.

// How settings reach a style, by control id. The command-line host implements
// it over the settings object, the Windows dialog over its controls.
class ParamReader {
 public:
  virtual ~ParamReader() = default;
  // The clamped value of a spin control.
  virtual int32_t Spin(int id) const = 0;
  virtual bool Checked(int id) const = 0;
  // Colour or fill button: the colour value (0x00BBGGRR in the low 24 bits).
  virtual Colour ColourValue(int id) const = 0;
  // Index drop-down: the selected index.
  virtual int32_t Selection(int id) const = 0;
  // Direction picker: its value, the selected cell's index (a value from
  // elsewhere is kept as it is; each effect decides what it draws).
  virtual int32_t Picker(int id) const = 0;
  // "Color N" slot: the fill the slot paints with. Its Simple colour is
  // ColourValue(id). Readers without fill records answer a Simple fill.
  virtual FillDescriptor Fill(int id) const {
    FillDescriptor fill;
    fill.colour = ColourValue(id);
    return fill;
  }
  // "Fountain:" control: the fountain it holds. Readers without fountain
  // records answer the built-in fountain of that control number, or the
  // default fountain.
  virtual FountainRecord Fountain(int id) const;
};

// ---------------------------------------------------------------- random generator

// The generator every seeded effect draws from: a 64-bit linear congruential
// state. The sequence is part of the product (a seed must give the same
// picture everywhere), so every rule here is exact.
class Random {
 public:
  // Low half = seed, high half = 0.
  void Seed(uint32_t seed) { m_state = seed; }
  // S = S * 0x000015A400004E35 + 1; the high half with its top bit cleared.
  int32_t Next();
  // Advances only the low half: L = L * 0x015A4E35 + 1; bits 16..30 of L.
  int32_t NextShort();
  // Draw modulo n (signed remainder); 0 without drawing when n is 0.
  int32_t Below(int32_t n) { return n == 0 ? 0 : Next() % n; }
  int32_t BelowShort(int32_t n) { return n == 0 ? 0 : NextShort() % n; }

  uint64_t state() const { return m_state; }

 private:
  uint64_t m_state = 0;
};

// ---------------------------------------------------------------- colour pick

// Picks element colours so that neighbours rarely share one: up to 16 draws
// for an index different from the previous pick. With fewer than two colours
// it draws nothing. It picks a place in the style's list of "Color N" slots,
// so the same draws serve a flat colour and a fill alike.
class ColourPick {
 public:
  explicit ColourPick(int count) : m_count(count) {}
  // An index below the count (0 when the count is below 2).
  int Pick(Random& random);

 private:
  int m_count;
  int m_previous = 0;
};

// The fills of Color 1 always, then of colours 2..5 each when its Enable box
// is checked: the list the colour pick indexes. Each fill's Simple colour is
// the slot's colour value.
std::vector<FillDescriptor> CollectFills(const ParamReader& reader, const int (&colour_ids)[5],
                                         const int (&enable_ids)[4]);

// A fill as a style lays it over the whole tile, pixel (x, y) of the canvas
// taking pixel (x, y) of the image: RenderFill at width x height, then every
// axis on which the picture's opposite edges do not meet is folded into a
// there-and-back sweep, so the image repeats without a seam. Null when
// memory is short. See style.cpp for the fold.
ImageBlock RenderSeamlessFill(const FillDescriptor& fill, int32_t width, int32_t height);

// ---------------------------------------------------------------- style entries

// A style's parameter record for one preview or one build: built once by the
// entry's init, then asked for frames 0, 1, ... in order, each once.
class StyleRecord {
 public:
  virtual ~StyleRecord() = default;
  // N, which a style may lower at initialisation.
  virtual int FrameCount() const = 0;
  // A new W x H 24-bit image, or null when memory is short.
  virtual ImageBlock RenderFrame(int k) = 0;
};

// Sizes of the tile as read from the page ("Width:" and "Depth:").
struct TileSize {
  int32_t width = 0;
  int32_t height = 0;
};

struct StyleEntry {
  const char* name;   // as the effect list shows it
  int number;         // the NNN of the StyleNNN keys; page dialog 7400 + number
  std::span<const PageControl> page;
  // Reads the page, seeds the generator and builds the record; null when
  // memory is short. Null for effects that cannot render yet.
  std::unique_ptr<StyleRecord> (*init)(const ParamReader& reader, Random& random);
  // The page's "Background:" colour as a colour value, or kNoColour when the
  // flag is non-zero or the style has no single background colour. Null for
  // styles without a background query.
  Colour (*background)(const ParamReader& reader, int flag);
  // For a page without a "Frames:" setting: how the frame count follows from
  // the page's other settings, in words the command line's listing shows
  // beside the count itself.
  const char* frames_rule = nullptr;
};

// The twenty effects in list order (the index stored in MainEffect).
std::span<const StyleEntry> StyleTable();
constexpr int kStyleCount = 20;

// The entry with this display name (case-insensitive), or null.
const StyleEntry* FindStyle(std::string_view name);

// ---------------------------------------------------------------- scrolling

// How far a scrolling effect has rolled a picture `length` pixels long at
// frame k of n: trunc(length x p) with the phase p = k / n in double, k
// folded into 0..n-1 first so that frame n is frame 0. The double is part of
// the picture: where length x k / n is a whole number the rounded phase can
// fall just short of it (100 x 29 / 50 gives 57, not 58), so every build must
// make the same double (see scroll_offset.cpp). 0 when n is not positive.
int32_t ScrollOffset(int32_t length, int64_t k, int32_t n);

// ---------------------------------------------------------------- preview and build

// Frame 0 of a fresh initialisation; null on failure or for an effect that
// cannot render yet.
ImageBlock StylePreview(const StyleEntry& style, const ParamReader& reader, Random& random);

// Renders frames 0..N-1 in order into `frames`, each with `delay`, reporting
// (k, N) after each frame. Stops at the first failure and returns false.
bool StyleBuild(const StyleEntry& style, const ParamReader& reader, Random& random,
                int32_t delay, FrameList& frames,
                const std::function<void(int, int)>& progress = {});

}  // namespace tess
