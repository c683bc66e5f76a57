// PPM frames: any bytes are refused with a reason or give images whose
// pixels, written back as PPM, parse to the same images.
#include <string>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "host/cli/ppm.h"
#include "image/image.h"

namespace {

void AppendPpm(const tess::ImageBlock& image, std::vector<uint8_t>& out) {
  const std::string header =
      "P6\n" + std::to_string(image.width()) + " " + std::to_string(image.height()) + "\n255\n";
  out.insert(out.end(), header.begin(), header.end());
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const tess::Colour c = tess::ImageGetPixel(image, x, y);
      out.push_back(tess::ColourRed(c));
      out.push_back(tess::ColourGreen(c));
      out.push_back(tess::ColourBlue(c));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::vector<uint8_t> bytes(data, data + size);
  std::vector<tess::ImageBlock> images;
  std::string error;
  if (!tess::cli::ParsePpmImages(bytes, &images, &error)) {
    FUZZ_CHECK(!error.empty());
    return 0;
  }
  FUZZ_CHECK(!images.empty());

  std::vector<uint8_t> written;
  for (const tess::ImageBlock& image : images) AppendPpm(image, written);
  std::vector<tess::ImageBlock> again;
  FUZZ_CHECK(tess::cli::ParsePpmImages(written, &again, &error));
  FUZZ_CHECK(again.size() == images.size());
  for (size_t i = 0; i < images.size(); ++i) {
    FUZZ_CHECK(again[i].width() == images[i].width() && again[i].height() == images[i].height());
    FUZZ_CHECK(again[i].bits() == 24);
    for (int y = 0; y < images[i].height(); ++y)
      for (int x = 0; x < images[i].width(); ++x)
        FUZZ_CHECK(tess::ImageGetPixel(again[i], x, y) == tess::ImageGetPixel(images[i], x, y));
  }
  return 0;
}
