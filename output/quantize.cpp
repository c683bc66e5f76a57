// Adaptive palette: first-appearance distinct colours, else an octree colour
// reduction. The tree's shape, its node count and limit, its reduction passes
// and its assignment order are those of the classic octree quantizer, and the
// palettes are bit for bit those of a literal pointer-node version (the tests
// keep one). Three things are done differently, for speed:
//
// 1. The tree is implicit. A node of level L is a cell of an 8^L grid,
//    numbered by interleaving the top L bits of red, green and blue, so its
//    children are cells 8p..8p+7 and its child number is its low three bits.
//    While classifying only the deepest level holds pixels, in one array
//    indexed by cell; the upper levels are byte flags that keep the node
//    count. Allocation is rarer still than with blocks of 1536 nodes, and
//    similar colours sit close together in memory.
// 2. A node's quantize error (the weighted sum of squared distances of the
//    pixels through it to its cell midpoint) is derived once from the sums of
//    its subtree, E = S2 - 2 (mr Sr + mg Sg + mb Sb) + (mr² + mg² + mb²) W,
//    instead of being added level by level for every pixel.
// 3. The reduction loop, which would walk the whole tree once per threshold
//    (thousands of passes), is replayed from the errors sorted once
//    (FindLastThreshold); assignment then walks only the nodes the last pass
//    would have kept.
//
// Why the arithmetic is exact: sums are 64-bit integers while classifying
// (the sum of squares grows by at most 3 * 255² per pixel). Midpoints are
// multiples of 0.5, so every quantity in an error is a multiple of 0.25, and
// the largest, 2 (mr Sr + ...), stays below 3 * 2 * 255.5 * 255 per pixel. A
// double holds every multiple of 0.25 below 2^51 exactly, so for up to
// 5 * 10^9 pixels no sum, product or difference rounds: the errors equal the
// per-pixel sums exactly, whatever the order of the additions.
#include "output/quantize.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "base/alloc.h"
#include "output/pixel_rows.h"

namespace tess {
namespace {

// The deepest tree AdaptivePalette asks for (256 colours); the cell arrays
// are sized for it.
constexpr int kMaxDepth = 6;
static_assert(OctreeDepth(256) == kMaxDepth && OctreeDepth(1) >= 2);

constexpr uint32_t Cells(int level) { return uint32_t{1} << (3 * level); }

// Reduction replay states of a node.
constexpr uint8_t kCounted = 1;  // counts as a colour in the current pass
constexpr uint8_t kOut = 2;      // its error is at or below the threshold
constexpr uint8_t kMerged = 4;   // merged into its parent
constexpr uint8_t kExists = 8;   // the cell is a node of the tree

// Pixel sums of one cell; weights are run lengths. Trivial, so arrays of it
// come zeroed from AllocBuffer.
struct CellSums {
  uint64_t pixels;
  uint64_t red, green, blue;
  uint64_t squares;  // of r² + g² + b²
  void Add(const CellSums& o) {
    pixels += o.pixels, red += o.red, green += o.green, blue += o.blue, squares += o.squares;
  }
};

// Spreads the bits of a channel so that bit i of red lands on 3i + 2, green
// on 3i + 1 and blue on 3i: three bits per level, the child number on top.
struct MortonTable {
  uint32_t red[256], green[256], blue[256];
};
constexpr MortonTable MakeMortonTable() {
  MortonTable t{};
  for (uint32_t v = 0; v < 256; ++v)
    for (int i = 0; i < 8; ++i) {
      uint32_t bit = (v >> i) & 1;
      t.red[v] |= bit << (3 * i + 2);
      t.green[v] |= bit << (3 * i + 1);
      t.blue[v] |= bit << (3 * i);
    }
  return t;
}
constexpr MortonTable kMorton = MakeMortonTable();

// Squared distances of a cell's pixels to its midpoint, from their sums.
double CellError(const CellSums& s, int level, uint32_t cell) {
  uint32_t r = 0, g = 0, b = 0;
  for (int i = level - 1; i >= 0; --i) {
    const uint32_t id = (cell >> (3 * i)) & 7;
    r = 2 * r + (id >> 2), g = 2 * g + ((id >> 1) & 1), b = 2 * b + (id & 1);
  }
  const int size = 256 >> level;
  const double half = (size - 1) / 2.0;
  const double mr = r * size + half, mg = g * size + half, mb = b * size + half;
  const double red = static_cast<double>(s.red), green = static_cast<double>(s.green);
  const double blue = static_cast<double>(s.blue);
  return static_cast<double>(s.squares) - 2 * (mr * red + mg * green + mb * blue) +
         (mr * mr + mg * mg + mb * mb) * static_cast<double>(s.pixels);
}

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

// A node's error as an integer: errors are multiples of 0.25 below 2^51 (see
// the top of the file) and never negative, so error * 4 converts exactly and
// sorts as the error does.
struct Ranked {
  uint64_t quarters;
  uint32_t node;  // level << 24 | cell
  double error() const { return static_cast<double>(quarters) * 0.25; }
};

// Least significant digit first radix sort by error, 11 bits a pass. False
// when memory is short.
bool SortByError(Ranked* items, size_t n) {
  constexpr int kDigitBits = 11;
  constexpr uint64_t kMask = (1u << kDigitBits) - 1;
  Buffer<Ranked> spare = AllocBuffer<Ranked>(n);
  Buffer<uint32_t> start = AllocBuffer<uint32_t>(kMask + 2);
  if (!spare || !start) return false;
  uint64_t largest = 0;
  for (size_t i = 0; i < n; ++i) largest = std::max(largest, items[i].quarters);
  Ranked* from = items;
  Ranked* to = spare.get();
  for (int shift = 0; shift < 64 && (largest >> shift) != 0; shift += kDigitBits) {
    std::fill(start.get(), start.get() + kMask + 2, 0u);
    for (size_t i = 0; i < n; ++i) ++start[((from[i].quarters >> shift) & kMask) + 1];
    for (uint64_t d = 0; d <= kMask; ++d) start[d + 1] += start[d];
    for (size_t i = 0; i < n; ++i) to[start[(from[i].quarters >> shift) & kMask]++] = from[i];
    std::swap(from, to);
  }
  if (from != items) std::copy(from, from + n, items);
  return true;
}

class Octree {
 public:
  explicit Octree(int depth) : m_depth(std::min(depth, kMaxDepth)) {}
  bool Init();
  void ClassifyRow(const uint8_t* bgr, int width);
  // Sums the levels, computes the errors and replays the reduction. False
  // when memory is short.
  bool Reduce(int wanted);
  int Assign(uint8_t* rgb);

 private:
  void NoteNewLeaf(uint32_t cell);
  void PruneLevel();
  bool FindLastThreshold(int wanted);
  long MergeSubtree(int level, uint32_t cell);
  void AssignNode(int level, uint32_t cell, uint8_t* rgb, int* made);

  int m_depth;
  long m_nodes = 1;  // the root
  long m_colours = 0;
  // Errors of the cells the node limit merged away: the root's error still
  // counts what those pixels added on the way down.
  double m_retired_error = 0;
  // m_sums[L]: sums of every cell of level L. Only the deepest level is kept
  // while classifying; Reduce fills the others.
  Buffer<CellSums> m_sums[kMaxDepth + 1];
  // m_exists[L]: 1 for the cells of levels 1 .. depth - 1 that are nodes.
  Buffer<uint8_t> m_exists[kMaxDepth];
  // Nodes with an error at or below this on their path are merged away.
  double m_threshold = -std::numeric_limits<double>::infinity();
  // The reduction replay: per cell of levels 1..depth, kExists, kCounted,
  // kOut and kMerged.
  Buffer<uint8_t> m_state[kMaxDepth + 1];
  long m_counted = 0;
};

bool Octree::Init() {
  m_sums[m_depth] = AllocBuffer<CellSums>(Cells(m_depth));
  if (!m_sums[m_depth]) return false;
  for (int level = 1; level < m_depth; ++level) {
    m_exists[level] = AllocBuffer<uint8_t>(Cells(level));
    if (!m_exists[level]) return false;
  }
  return true;
}

// A cell of the deepest level got its first pixels: it and any ancestors
// that were missing become nodes, and a new deepest node is a new colour.
void Octree::NoteNewLeaf(uint32_t cell) {
  ++m_nodes;
  ++m_colours;
  for (int level = m_depth - 1; level >= 1; --level) {
    cell >>= 3;
    uint8_t& exists = m_exists[level][cell];
    if (exists) break;  // and so do all its ancestors
    exists = 1;
    ++m_nodes;
  }
}

void Octree::ClassifyRow(const uint8_t* bgr, int width) {
  // A tree this large is coarsened before going on. Depth never drops below 2.
  if (m_nodes > kOctreeMaxNodes && m_depth > 2) PruneLevel();
  CellSums* leaves = m_sums[m_depth].get();
  const int shift = 3 * (8 - m_depth);
  for (int x = 0; x < width;) {
    const uint8_t* p = bgr + 3 * x;
    int run = 1;
    while (x + run < width && std::memcmp(p, p + 3 * run, 3) == 0) ++run;
    const uint32_t r = p[2], g = p[1], b = p[0];
    const uint32_t cell = (kMorton.red[r] | kMorton.green[g] | kMorton.blue[b]) >> shift;
    CellSums& s = leaves[cell];
    if (s.pixels == 0) NoteNewLeaf(cell);
    const uint64_t w = static_cast<uint64_t>(run);
    s.pixels += w;
    s.red += w * r;
    s.green += w * g;
    s.blue += w * b;
    s.squares += w * (r * r + g * g + b * b);
    x += run;
  }
}

// Merges every deepest node into its parent, in place: cell p of the level
// above takes cells 8p..8p+7, which lie at or after p, so nothing is
// overwritten before it is read.
void Octree::PruneLevel() {
  CellSums* sums = m_sums[m_depth].get();
  const size_t cells = Cells(m_depth);
  for (size_t c = 0; c < cells; ++c)
    if (sums[c].pixels > 0) {
      m_retired_error += CellError(sums[c], m_depth, static_cast<uint32_t>(c));
      --m_nodes;
    }
  for (size_t p = 0; p < cells / 8; ++p) {
    CellSums merged{};
    for (size_t id = 0; id < 8; ++id) merged.Add(sums[8 * p + id]);
    sums[p] = merged;
  }
  std::memset(sums + cells / 8, 0, (cells - cells / 8) * sizeof(CellSums));
  m_sums[m_depth - 1] = std::move(m_sums[m_depth]);
  m_exists[m_depth - 1].reset();
  --m_depth;
}

bool Octree::Reduce(int wanted) {
  for (int level = m_depth - 1; level >= 0; --level) {
    m_sums[level] = AllocBuffer<CellSums>(Cells(level));
    if (!m_sums[level]) return false;
    for (size_t p = 0; p < Cells(level); ++p)
      for (size_t id = 0; id < 8; ++id) m_sums[level][p].Add(m_sums[level + 1][8 * p + id]);
  }
  return m_colours <= wanted || FindLastThreshold(wanted);
}

int Octree::Assign(uint8_t* rgb) {
  int made = 0;
  AssignNode(0, 0, rgb, &made);
  return made;
}

// Children first, in child-number order, over the nodes the reduction keeps.
// A kept node holds its own pixels and those of its merged children: its
// subtree's sums less those of its kept children.
void Octree::AssignNode(int level, uint32_t cell, uint8_t* rgb, int* made) {
  CellSums own = m_sums[level][cell];
  if (level < m_depth) {
    for (uint32_t id = 0; id < 8; ++id) {
      const uint32_t child = 8 * cell + id;
      const CellSums& s = m_sums[level + 1][child];
      if (s.pixels == 0 || CellError(s, level + 1, child) <= m_threshold) continue;
      AssignNode(level + 1, child, rgb, made);
      own.pixels -= s.pixels, own.red -= s.red, own.green -= s.green, own.blue -= s.blue;
    }
  }
  if (own.pixels == 0 || *made >= 256) return;
  // Adding half the count before dividing rounds the mean to the nearest
  // integer, halves up.
  const uint64_t n = own.pixels;
  rgb[3 * *made + 0] = static_cast<uint8_t>((2 * own.red + n) / (2 * n));
  rgb[3 * *made + 1] = static_cast<uint8_t>((2 * own.green + n) / (2 * n));
  rgb[3 * *made + 2] = static_cast<uint8_t>((2 * own.blue + n) / (2 * n));
  ++*made;
}

// The reduction loop in its plain form is
//   next = 0
//   while colours > wanted:
//     T = next; next = root error - 1; colours = 0
//     visit children first; a node with error <= T merges into its parent
//     with everything below it; any other node counts as a colour when it
//     holds pixels, and lowers next to its error when that is smaller.
// Errors never change, so with P the previous pass's threshold (none for the
// first), a pass visits exactly the nodes whose path from the root has every
// error above P; it merges those with an error <= T on their path; it counts
// a visited node with error > T when it had pixels of its own or has a child
// with error <= T (that child's pixels arrive before the node is checked);
// and next is the least error above T among visited nodes, capped at root
// error - 1. Walking the errors in sorted order keeps all of this up to date:
// when T passes a node's error the node stops counting and its parent starts;
// when P passes it, its subtree is marked merged (each node once); next is
// the first node past T not yet merged. All passes together cost one sort.
bool Octree::FindLastThreshold(int wanted) {
  const size_t n = static_cast<size_t>(m_nodes - 1);
  Buffer<Ranked> sorted = AllocBuffer<Ranked>(n);
  if (!sorted) return false;
  for (int level = 1; level <= m_depth; ++level)
    if (!(m_state[level] = AllocBuffer<uint8_t>(Cells(level)))) return false;

  // The root's error is the sum of all others plus the retired ones, as when
  // each pixel added to it on the way down.
  double root_error = m_retired_error;
  size_t count = 0;
  for (int level = 1; level <= m_depth; ++level)
    for (uint32_t c = 0; c < Cells(level); ++c) {
      const CellSums& s = m_sums[level][c];
      if (s.pixels == 0) continue;
      const double error = CellError(s, level, c);
      m_state[level][c] = kExists;
      root_error += error;
      sorted[count++] = {static_cast<uint64_t>(error * 4), static_cast<uint32_t>(level) << 24 | c};
    }
  if (!SortByError(sorted.get(), n)) return false;

  // Only the deepest nodes hold pixels of their own; the root never does.
  for (uint32_t c = 0; c < Cells(m_depth); ++c)
    if (m_state[m_depth][c] & kExists) m_state[m_depth][c] |= kCounted, ++m_counted;
  bool root_counted = false;

  auto state_of = [this](uint32_t node) -> uint8_t& { return m_state[node >> 24][node & 0xFFFFFF]; };
  size_t below_t = 0, below_p = 0, next_pointer = 0;
  double t = 0;
  for (;;) {
    // Nodes whose error t has reached stop counting; their parents start.
    for (; below_t < n && sorted[below_t].error() <= t; ++below_t) {
      const uint32_t node = sorted[below_t].node;
      uint8_t& state = state_of(node);
      if (state & kCounted) --m_counted;
      state = static_cast<uint8_t>((state & ~kCounted) | kOut);
      const int level = static_cast<int>(node >> 24);
      if (level == 1) {
        root_counted = true;
      } else {
        uint8_t& parent = m_state[level - 1][(node & 0xFFFFFF) >> 3];
        if (parent == kExists) parent |= kCounted, ++m_counted;
      }
    }
    next_pointer = std::max(next_pointer, below_t);
    while (next_pointer < n && (state_of(sorted[next_pointer].node) & kMerged)) ++next_pointer;
    double next = root_error - 1;
    if (next_pointer < n) next = std::min(next, sorted[next_pointer].error());

    m_threshold = t;
    if (m_counted + (root_counted ? 1 : 0) <= wanted) return true;
    // Merge for the next pass the nodes with an error in (P, t] on their path.
    long merged = 0;
    for (size_t r = below_p; r < below_t; ++r) {
      const uint32_t node = sorted[r].node;
      merged += MergeSubtree(static_cast<int>(node >> 24), node & 0xFFFFFF);
    }
    // A pass that merged nothing and cannot raise the threshold would repeat
    // for ever; the error sums make this unreachable, but never hang on it.
    if (merged == 0 && next <= t) return true;
    below_p = below_t;
    t = next;
  }
}

// Marks a node and everything below it merged; returns how many were not yet.
long Octree::MergeSubtree(int level, uint32_t cell) {
  uint8_t& state = m_state[level][cell];
  if (state & kMerged) return 0;  // and so is everything below it
  if (state & kCounted) --m_counted;
  state = kExists | kOut | kMerged;
  long merged = 1;
  if (level < m_depth)
    for (uint32_t id = 0; id < 8; ++id)
      if (m_state[level + 1][8 * cell + id] & kExists) merged += MergeSubtree(level + 1, 8 * cell + id);
  return merged;
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
      tree.ClassifyRow(BgrRow(image, y, scratch.get()), image.width());
  }
  return true;
}

}  // namespace

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
  if (!tree.Init() || !ClassifyFrames(frames, tree) || !tree.Reduce(wanted)) return false;
  *count = tree.Assign(rgb);
  return true;
}

}  // namespace tess
