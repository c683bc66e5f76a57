// Adaptive palette: first-appearance distinct colours, else an octree.
//
// Why the floating-point accumulators are exact: channel values are integers
// and every cell midpoint is a multiple of 0.5 (127.5 moved by 64, 32, ... 0.5),
// so each squared distance is a multiple of 0.25 and at most 3 * 64² per level;
// a pixel adds at most 8 * 3 * 64² = 98304 to the root. A double holds every
// multiple of 0.25 below 2^51 exactly, so all error sums stay exact for up to
// 2^51 / 98304 (over 2 * 10^10) pixels, and the pixel counts and channel totals
// are integers far below 2^53. Exact sums do not depend on the order of the
// additions, which is what lets a run of equal pixels be classified once and
// the root's share be summed per pixel before it is added.
#include "output/quantize.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "base/alloc.h"
#include "output/pixel_rows.h"

namespace tess {
namespace {

struct OctreeNode {
  double pixels;
  double red, green, blue;
  double error;
  OctreeNode* parent;
  OctreeNode* child[8];
  int32_t colour_index;
  uint8_t id;      // child number 0..7 within the parent
  uint8_t level;   // 0 for the root
  uint8_t census;  // bit id set while child[id] is part of the tree
};

// The first 256 distinct colours in order of first appearance, and how many
// distinct colours were seen, found with a small hash set.
class DistinctColours {
 public:
  // False once more than `limit` distinct colours were seen.
  bool Add(uint32_t colour, int limit) {
    uint32_t key = colour + 1;  // zeroed slots read as empty
    uint32_t slot = (colour * 0x9E3779B1u) >> 22;
    while (m_keys[slot] != 0) {
      if (m_keys[slot] == key) return true;
      slot = (slot + 1) % kSlots;
    }
    if (m_count < 256) {
      m_keys[slot] = key;
      m_colours[m_count] = colour;
    }
    return ++m_count <= limit;
  }
  int count() const { return m_count; }
  void CopyTo(uint8_t* rgb) const {
    for (int i = 0; i < std::min(m_count, 256); ++i) {
      rgb[3 * i + 0] = ColourRed(m_colours[i]);
      rgb[3 * i + 1] = ColourGreen(m_colours[i]);
      rgb[3 * i + 2] = ColourBlue(m_colours[i]);
    }
  }

 private:
  // Trivial members: the set lives in a zeroed AllocBuffer block.
  static constexpr uint32_t kSlots = 1024;
  uint32_t m_keys[kSlots];
  uint32_t m_colours[256];
  int m_count;
};

class Octree {
 public:
  explicit Octree(int depth) : m_depth(depth) {}
  bool Init() { return (m_root = NewNode(0, 0, nullptr)) != nullptr; }
  bool ClassifyRow(const uint8_t* bgr, int width);
  void Reduce(int wanted);
  int Assign(uint8_t* rgb);

 private:
  OctreeNode* NewNode(int id, int level, OctreeNode* parent);
  bool Classify(int r, int g, int b, double weight);
  void PruneChild(OctreeNode* node);
  void PruneLevel(OctreeNode* node);
  void ReduceNode(OctreeNode* node);
  void AssignNode(OctreeNode* node, uint8_t* rgb, int* made);

  std::vector<Buffer<OctreeNode>> m_blocks;
  int m_block_used = kOctreeBlockNodes;
  OctreeNode* m_root = nullptr;
  int m_depth;
  long m_nodes = 0;
  long m_colours = 0;
  long m_pruned = 0;
  double m_pruning_threshold = 0;
  double m_next_threshold = 0;
};

OctreeNode* Octree::NewNode(int id, int level, OctreeNode* parent) {
  if (m_block_used == kOctreeBlockNodes) {
    Buffer<OctreeNode> block = AllocBuffer<OctreeNode>(kOctreeBlockNodes);
    if (!block) return nullptr;
    try {
      m_blocks.push_back(std::move(block));
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
    m_block_used = 0;
  }
  OctreeNode* node = &m_blocks.back()[m_block_used++];
  node->id = static_cast<uint8_t>(id);
  node->level = static_cast<uint8_t>(level);
  node->parent = parent;
  ++m_nodes;
  return node;
}

bool Octree::ClassifyRow(const uint8_t* bgr, int width) {
  // A tree this large is close to the memory the original design allowed:
  // coarsen it before going on. Depth never drops below 2.
  if (m_nodes > kOctreeMaxNodes && m_depth > 2) {
    PruneLevel(m_root);
    --m_depth;
  }
  for (int x = 0; x < width;) {
    const uint8_t* p = bgr + 3 * x;
    int run = 1;
    while (x + run < width && std::memcmp(p, p + 3 * run, 3) == 0) ++run;
    if (!Classify(p[2], p[1], p[0], run)) return false;
    x += run;
  }
  return true;
}

bool Octree::Classify(int r, int g, int b, double weight) {
  OctreeNode* node = m_root;
  double mid_r = 127.5, mid_g = 127.5, mid_b = 127.5;
  double half = 128;
  double root_share = 0;
  for (int level = 1; level <= m_depth; ++level) {
    half *= 0.5;
    const int shift = 8 - level;
    const int id = (((r >> shift) & 1) << 2) | (((g >> shift) & 1) << 1) | ((b >> shift) & 1);
    mid_r += (id & 4) ? half : -half;
    mid_g += (id & 2) ? half : -half;
    mid_b += (id & 1) ? half : -half;
    if (!node->child[id]) {
      OctreeNode* child = NewNode(id, level, node);
      if (!child) return false;
      node->child[id] = child;
      node->census = static_cast<uint8_t>(node->census | (1 << id));
      if (level == m_depth) ++m_colours;
    }
    node = node->child[id];
    const double dr = r - mid_r, dg = g - mid_g, db = b - mid_b;
    const double share = weight * (dr * dr + dg * dg + db * db);
    node->error += share;
    root_share += share;
  }
  m_root->error += root_share;
  node->pixels += weight;
  node->red += weight * r;
  node->green += weight * g;
  node->blue += weight * b;
  return true;
}

// Merges a node, and first everything below it, into its parent.
void Octree::PruneChild(OctreeNode* node) {
  for (int id = 0; id < 8; ++id)
    if (node->census & (1 << id)) PruneChild(node->child[id]);
  OctreeNode* parent = node->parent;
  parent->census = static_cast<uint8_t>(parent->census & ~(1 << node->id));
  parent->pixels += node->pixels;
  parent->red += node->red;
  parent->green += node->green;
  parent->blue += node->blue;
  --m_nodes;
  ++m_pruned;
}

void Octree::PruneLevel(OctreeNode* node) {
  for (int id = 0; id < 8; ++id)
    if (node->census & (1 << id)) PruneLevel(node->child[id]);
  if (node->level == m_depth) PruneChild(node);
}

void Octree::Reduce(int wanted) {
  m_next_threshold = 0;
  while (m_colours > wanted) {
    m_pruning_threshold = m_next_threshold;
    m_next_threshold = m_root->error - 1;
    m_colours = 0;
    m_pruned = 0;
    ReduceNode(m_root);
    // A pass that merged nothing and cannot raise the threshold would repeat
    // for ever; the error sums make this unreachable, but never hang on it.
    if (m_pruned == 0 && m_next_threshold <= m_pruning_threshold) break;
  }
}

void Octree::ReduceNode(OctreeNode* node) {
  for (int id = 0; id < 8; ++id)
    if (node->census & (1 << id)) ReduceNode(node->child[id]);
  if (node != m_root && node->error <= m_pruning_threshold) {
    PruneChild(node);
  } else {
    if (node->pixels > 0) ++m_colours;
    if (node->error < m_next_threshold) m_next_threshold = node->error;
  }
}

int Octree::Assign(uint8_t* rgb) {
  int made = 0;
  AssignNode(m_root, rgb, &made);
  return made;
}

void Octree::AssignNode(OctreeNode* node, uint8_t* rgb, int* made) {
  for (int id = 0; id < 8; ++id)
    if (node->census & (1 << id)) AssignNode(node->child[id], rgb, made);
  if (node->pixels <= 0 || *made >= 256) return;
  // Adding half the count rounds the mean to the nearest integer (halves up);
  // the quotient is exact when it is a whole number, so truncation is safe.
  const double n = node->pixels;
  rgb[3 * *made + 0] = static_cast<uint8_t>((node->red + 0.5 * n) / n);
  rgb[3 * *made + 1] = static_cast<uint8_t>((node->green + 0.5 * n) / n);
  rgb[3 * *made + 2] = static_cast<uint8_t>((node->blue + 0.5 * n) / n);
  node->colour_index = *made;
  ++*made;
}

// Scans the frames top-down for their distinct colours, stopping as soon as
// there are more than `wanted`. False when memory is short.
bool ScanDistinct(const FrameList& frames, int wanted, DistinctColours& distinct) {
  for (int f = 0; f < frames.count(); ++f) {
    const ImageBlock& image = frames[f].image;
    if (!image) continue;
    Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(3 * static_cast<size_t>(image.width()));
    if (!scratch) return false;
    for (int y = 0; y < image.height(); ++y) {
      const uint8_t* bgr = BgrRow(image, y, scratch.get());
      uint32_t previous = 0xFFFFFFFFu;
      for (int x = 0; x < image.width(); ++x) {
        const uint8_t* p = bgr + 3 * x;
        uint32_t colour = MakeColour(p[2], p[1], p[0]);
        if (colour == previous) continue;  // already counted
        previous = colour;
        if (!distinct.Add(colour, wanted)) return true;
      }
    }
  }
  return true;
}

bool ClassifyFrames(const FrameList& frames, Octree& tree) {
  for (int f = 0; f < frames.count(); ++f) {
    const ImageBlock& image = frames[f].image;
    if (!image) continue;
    Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(3 * static_cast<size_t>(image.width()));
    if (!scratch) return false;
    for (int y = image.height() - 1; y >= 0; --y)  // stored order: bottom line first
      if (!tree.ClassifyRow(BgrRow(image, y, scratch.get()), image.width())) return false;
  }
  return true;
}

}  // namespace

int OctreeDepth(int colours) {
  int depth = 1;
  for (int c = colours; c != 0; c >>= 2) ++depth;
  return std::clamp(depth, 2, 8);
}

bool AdaptivePalette(int* count, uint8_t* rgb, const FrameList& frames) {
  int wanted = *count == 0 ? 256 : std::clamp(*count, 1, 256);
  std::memset(rgb, 0, kPaletteBytes);

  // Under 6 KiB, but kept off the stack of a host's user-interface thread.
  Buffer<DistinctColours> distinct = AllocBuffer<DistinctColours>(1);
  if (!distinct || !ScanDistinct(frames, wanted, distinct[0])) return false;
  if (distinct[0].count() <= wanted) {
    distinct[0].CopyTo(rgb);
    *count = distinct[0].count();
    return true;
  }

  Octree tree(OctreeDepth(wanted));
  if (!tree.Init() || !ClassifyFrames(frames, tree)) return false;
  tree.Reduce(wanted);
  *count = tree.Assign(rgb);
  return true;
}

}  // namespace tess
