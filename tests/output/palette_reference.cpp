// Reference remaps and octree: slow, literal, and easy to check by eye.
#include "tests/output/palette_reference.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "output/palette.h"
#include "output/quantize.h"

namespace tess::testing {
namespace {

// The colour of a pixel: palettised pixels through the block's colour table.
Colour ColourAt(const ImageBlock& image, int x, int y) {
  Colour value = ImageGetPixel(image, x, y);
  if (image.bits() > 8) return value & 0xFFFFFF;
  uint8_t pal[kPaletteBytes];
  ImageGetPalette(image, pal);
  return MakeColour(pal[3 * value], pal[3 * value + 1], pal[3 * value + 2]);
}

int PickIndex(int r, int g, int b, const uint8_t* rgb, int count, int bits, bool fast,
              const std::vector<uint8_t>& lookup) {
  if (NormaliseBitCount(bits) == 1) return Luminance(r, g, b) >= 129 ? 1 : 0;
  if (!fast) return NearestColour(r, g, b, rgb, count);
  int exact = ExactColour(r, g, b, rgb, count);
  return exact >= 0 ? exact : lookup[LookupKey(r, g, b)];
}

// Built only for FastRemap, where it is used.
std::vector<uint8_t> Lookup(const uint8_t* rgb, int count, bool fast) {
  std::vector<uint8_t> lookup;
  if (!fast) return lookup;
  lookup.resize(kLookupEntries);
  BuildColourLookup(rgb, count, lookup.data());
  return lookup;
}

ImageBlock DitherBlackWhite(const ImageBlock& source, const uint8_t* rgb, const RemapOptions& options) {
  const int w = source.width(), h = source.height();
  ImageBlock out = ImageCreate(w, h, rgb, 1);
  uint8_t curve[256];
  BuildToneCurve(options.dither_brightness, options.dither_contrast, curve);
  std::vector<int> gray(static_cast<size_t>(w) * h);
  auto at = [&](int x, int y) -> int& { return gray[static_cast<size_t>(y) * w + x]; };
  int lo = 255, hi = 0;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      Colour c = ColourAt(source, x, y);
      at(x, y) = Luminance(ColourRed(c), ColourGreen(c), ColourBlue(c));
      lo = std::min(lo, at(x, y));
      hi = std::max(hi, at(x, y));
    }
  auto add = [](int& v, int d) { v = std::clamp(v + d, 0, 255); };
  for (int y = h - 1; y >= 0; --y) {  // stored order
    for (int x = 0; x < w; ++x) {
      int v = curve[at(x, y)];
      bool white = v > (lo + hi) / 2;
      ImageSetPixel(out, x, y, white ? 1 : 0);
      int e = (v - (white ? hi : lo)) >> 4;
      if (y > 0) {
        if (x + 1 < w) add(at(x + 1, y - 1), e);
        if (x - 1 >= 0) add(at(x - 1, y - 1), 3 * e);
        add(at(x, y - 1), 5 * e);
      }
      if (x + 1 < w) add(at(x + 1, y), 7 * e);
    }
  }
  return out;
}

// --- Octree, with owned nodes and per-pixel classification ---

struct Node {
  double pixels = 0, red = 0, green = 0, blue = 0, error = 0;
  int id = 0, level = 0, census = 0;
  Node* parent = nullptr;
  std::unique_ptr<Node> child[8];
};

struct Tree {
  Node root;
  int depth = 0;
  long nodes = 1;
  long colours = 0;
  double pruning = 0, next = 0;

  void Classify(int r, int g, int b) {
    Node* node = &root;
    double mr = 127.5, mg = 127.5, mb = 127.5, half = 128;
    for (int level = 1; level <= depth; ++level) {
      half /= 2;
      int bit = 8 - level;
      int id = ((r >> bit) & 1) * 4 + ((g >> bit) & 1) * 2 + ((b >> bit) & 1);
      mr += (id & 4) ? half : -half;
      mg += (id & 2) ? half : -half;
      mb += (id & 1) ? half : -half;
      if (!node->child[id]) {
        node->child[id] = std::make_unique<Node>();
        node->child[id]->id = id;
        node->child[id]->level = level;
        node->child[id]->parent = node;
        node->census |= 1 << id;
        ++nodes;
        if (level == depth) ++colours;
      }
      node = node->child[id].get();
      double d = (r - mr) * (r - mr) + (g - mg) * (g - mg) + (b - mb) * (b - mb);
      node->error += d;
      root.error += d;
    }
    node->pixels += 1;
    node->red += r;
    node->green += g;
    node->blue += b;
  }
  void Merge(Node* node) {
    for (int id = 0; id < 8; ++id)
      if (node->census & (1 << id)) Merge(node->child[id].get());
    node->parent->census &= ~(1 << node->id);
    node->parent->pixels += node->pixels;
    node->parent->red += node->red;
    node->parent->green += node->green;
    node->parent->blue += node->blue;
    --nodes;
  }
  void PruneLevel(Node* node) {
    for (int id = 0; id < 8; ++id)
      if (node->census & (1 << id)) PruneLevel(node->child[id].get());
    if (node->level == depth) Merge(node);
  }
  void Reduce(Node* node) {
    for (int id = 0; id < 8; ++id)
      if (node->census & (1 << id)) Reduce(node->child[id].get());
    if (node != &root && node->error <= pruning) {
      Merge(node);
    } else {
      if (node->pixels != 0) ++colours;
      if (node->error < next) next = node->error;
    }
  }
  void Assign(Node* node, uint8_t* rgb, int* made) {
    for (int id = 0; id < 8; ++id)
      if (node->census & (1 << id)) Assign(node->child[id].get(), rgb, made);
    if (node->pixels == 0) return;
    double n = node->pixels;
    rgb[3 * *made + 0] = static_cast<uint8_t>((node->red + 0.5 * n) / n);
    rgb[3 * *made + 1] = static_cast<uint8_t>((node->green + 0.5 * n) / n);
    rgb[3 * *made + 2] = static_cast<uint8_t>((node->blue + 0.5 * n) / n);
    ++*made;
  }
};

}  // namespace

ImageBlock ReferenceRemap(const ImageBlock& source, const uint8_t* rgb, int bits, int count,
                          const RemapOptions& options) {
  ImageBlock out = ImageCreate(source.width(), source.height(), rgb, bits);
  std::vector<uint8_t> lookup = Lookup(rgb, count, options.fast_remap);
  for (int y = 0; y < source.height(); ++y)
    for (int x = 0; x < source.width(); ++x) {
      Colour c = ColourAt(source, x, y);
      ImageSetPixel(out, x, y,
                    PickIndex(ColourRed(c), ColourGreen(c), ColourBlue(c), rgb, count, bits,
                              options.fast_remap, lookup));
    }
  return out;
}

ImageBlock ReferenceDither(const ImageBlock& source, const uint8_t* rgb, int bits, int count,
                           const RemapOptions& options) {
  if (NormaliseBitCount(bits) == 1) return DitherBlackWhite(source, rgb, options);
  const int w = source.width(), h = source.height();
  ImageBlock out = ImageCreate(w, h, rgb, bits);
  std::vector<uint8_t> lookup = Lookup(rgb, count, options.fast_remap);
  std::vector<int> cur(3 * w), next(3 * w);  // red, green, blue per pixel
  for (int y = h - 1; y >= 0; --y) {       // stored order: bottom line first
    for (int x = 0; x < w; ++x) {
      Colour c = ColourAt(source, x, y);
      cur[3 * x] += ColourRed(c);
      cur[3 * x + 1] += ColourGreen(c);
      cur[3 * x + 2] += ColourBlue(c);
    }
    for (int x = 0; x < w; ++x) {
      int v[3];
      for (int k = 0; k < 3; ++k) v[k] = std::clamp(cur[3 * x + k], 0, 255);
      int index = PickIndex(v[0], v[1], v[2], rgb, count, bits, options.fast_remap, lookup);
      ImageSetPixel(out, x, y, index);
      for (int k = 0; k < 3; ++k) {
        int err = v[k] - rgb[3 * index + k];
        if (x + 1 < w) cur[3 * (x + 1) + k] += (err * 7) >> 4;
        if (y > 0) {
          if (x - 1 > 0) next[3 * (x - 1) + k] += (err * 3) >> 4;
          if (x + 1 < w) next[3 * (x + 1) + k] += err >> 4;
          next[3 * x + k] += (err * 5) >> 4;
        }
      }
    }
    cur = next;
    std::fill(next.begin(), next.end(), 0);
  }
  return out;
}

ImageBlock ReferenceSubstitute(const ImageBlock& remapped, const ImageBlock& source, Colour background,
                               int index) {
  ImageBlock out = DuplicateGlobalBlock(remapped);
  for (int y = 0; y < std::min(out.height(), source.height()); ++y)
    for (int x = 0; x < std::min(out.width(), source.width()); ++x)
      if ((ImageGetPixel(source, x, y) & 0xFFFFFF) == (background & 0xFFFFFF))
        ImageSetPixel(out, x, y, static_cast<Colour>(index));
  return out;
}

bool ReferenceAdaptivePalette(int* count, uint8_t* rgb, const FrameList& frames, bool* pruned_level) {
  int wanted = *count == 0 ? 256 : std::clamp(*count, 1, 256);
  std::fill(rgb, rgb + kPaletteBytes, 0);
  Tree tree;
  tree.depth = OctreeDepth(wanted);
  if (pruned_level) *pruned_level = false;
  std::vector<Colour> stored;
  long distinct = 0;
  for (int f = 0; f < frames.count(); ++f) {
    const ImageBlock& image = frames[f].image;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) {
        Colour c = ColourAt(image, x, y);
        if (std::find(stored.begin(), stored.end(), c) == stored.end()) {
          if (stored.size() < 256) stored.push_back(c);
          ++distinct;
        }
      }
    for (int y = image.height() - 1; y >= 0; --y) {
      if (tree.nodes > kOctreeMaxNodes && tree.depth > 2) {
        tree.PruneLevel(&tree.root);
        --tree.depth;
        if (pruned_level) *pruned_level = true;
      }
      for (int x = 0; x < image.width(); ++x) {
        Colour c = ColourAt(image, x, y);
        tree.Classify(ColourRed(c), ColourGreen(c), ColourBlue(c));
      }
    }
  }
  if (distinct <= wanted) {
    for (size_t i = 0; i < stored.size(); ++i) {
      rgb[3 * i] = ColourRed(stored[i]);
      rgb[3 * i + 1] = ColourGreen(stored[i]);
      rgb[3 * i + 2] = ColourBlue(stored[i]);
    }
    *count = static_cast<int>(distinct);
    return true;
  }
  tree.next = 0;
  while (tree.colours > wanted) {
    tree.pruning = tree.next;
    tree.next = tree.root.error - 1;
    tree.colours = 0;
    tree.Reduce(&tree.root);
  }
  int made = 0;
  tree.Assign(&tree.root, rgb, &made);
  *count = made;
  return true;
}

}  // namespace tess::testing
