// Reading frames made elsewhere: binary PPM ("P6", maxval 255), the simplest
// format every image tool writes. A file may hold several images one after
// another, as netpbm tools and video encoders write them to a pipe. Every
// refusal comes with a one-line reason naming what was wrong.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "image/image.h"

namespace tess::cli {

// GIF sizes are 16-bit.
constexpr int32_t kPpmMaxSide = 65535;

// Parses the image starting at `data`: header, then width x height RGB
// triples, converted to a 24-bit block. On success *consumed is the number of
// bytes the image took. On failure *error says why (no prefix, no full stop).
bool ParsePpm(const uint8_t* data, size_t size, ImageBlock* image, size_t* consumed,
              std::string* error);

// Every image in `bytes`, in order; whitespace after the last is allowed.
// The error of a later image names its number ("image 2: ...").
bool ParsePpmImages(const std::vector<uint8_t>& bytes, std::vector<ImageBlock>* images,
                    std::string* error);

}  // namespace tess::cli
