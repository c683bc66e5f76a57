// Helpers shared by the test suites: deterministic test pictures and small
// comparisons that make failures readable.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "image/image.h"

namespace tess::testing {

// A 24-bit picture whose pixels come from a fixed pseudo-random stream, so
// tests see varied colours without depending on the product's generator.
ImageBlock NoiseImage(int width, int height, uint32_t seed, int levels = 256);

// A 24-bit picture with smooth gradients and a few hard edges, like natural
// images: what quantizer and dither tests need.
ImageBlock NaturalImage(int width, int height, uint32_t seed);

// Every pixel value, top-down, through the reference accessor.
std::vector<Colour> Pixels(const ImageBlock& image);

// The folder of the source tree, for golden files and test data.
std::string SourceDir();

}  // namespace tess::testing
