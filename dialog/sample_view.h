// The main dialog's live sample as one picture: the selected style's frame 0
// centred in the sample's inner rectangle, the style's background colour
// around it and, when asked, a light-grey key line one pixel outside it. The
// front end only frames the control and blits this picture.
//
// Invariants: the picture is always exactly inner width x inner height,
// 24-bit; an image larger than the inner rectangle is cut, never scaled; the
// offsets are (inner - image) / 2 rounded toward zero, so a larger image is
// cut evenly on both sides.
#pragma once

#include <cstdint>
#include <string>

#include "image/image.h"
#include "styles/style.h"

namespace tess {

inline constexpr Colour kSampleKeyLineColour = MakeColour(192, 192, 192);

// Where the image stands in the inner rectangle (inner coordinates).
struct SamplePlacement {
  int32_t x = 0, y = 0;
  int32_t width = 0, height = 0;
};
SamplePlacement PlaceSample(int32_t inner_width, int32_t inner_height, int32_t image_width,
                            int32_t image_height);

// "%d x %d pixels".
std::string SampleSizeText(int32_t width, int32_t height);

// The inner picture: `surround` everywhere, the image at its placement, the
// key line around it when `key_line`. Null for a non-positive inner size, a
// null image or when memory is short.
ImageBlock ComposeSample(const ImageBlock& image, int32_t inner_width, int32_t inner_height,
                         Colour surround, bool key_line);

struct SampleRender {
  ImageBlock picture;  // inner width x inner height; null on failure
  int32_t image_width = 0;
  int32_t image_height = 0;
};

// Renders the style's preview (it reads its own tile size from the page) and
// composes it on the style's background colour, or on `no_background` for
// styles without one. A null picture means the style could not render: the
// front end then shows an empty sample.
SampleRender RenderSample(const StyleEntry& style, const ParamReader& reader, Random& random,
                          int32_t inner_width, int32_t inner_height, Colour no_background,
                          bool key_line);

}  // namespace tess
