// Adaptive palette: first-appearance distinct colours, else an octree colour
// reduction. The tree's shape, its node count and limit, its reduction passes
// and its assignment order are those of the classic octree quantizer, and the
// palettes are bit for bit those of a literal pointer-node version (the tests
// keep one). Three things are done differently, for speed and memory:
//
// 1. There are no node objects. A node of level L is a cell of an 8^L grid,
//    numbered by interleaving the top L bits of red, green and blue, so its
//    parent is cell >> 3 and its child number is its low three bits. While
//    classifying only the deepest level holds pixels, in a LeafTable: pages
//    of eight sibling cells, made as parents first get pixels and found by
//    parent cell through a directory, until half of all parents have one and
//    they move into one array of every cell. So memory follows the colours
//    present (a few hundred KB for a rendered 128x128 frame) and ends at
//    that one array (10.5 MB at depth 6), 1.5 times it while the pages move.
//    The upper levels are byte flags (37 KB at most) that keep the node
//    count. Reduction works on a compact tree built once from the leaves in
//    cell order: per level, the nodes in cell order, the children of a node a
//    contiguous run of the level below.
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
#include <new>

#include "base/alloc.h"
#include "output/pixel_rows.h"

namespace tess {
namespace {

// The deepest tree AdaptivePalette asks for (256 colours); the per-level
// arrays are sized for it.
constexpr int kMaxDepth = 6;
static_assert(OctreeDepth(256) == kMaxDepth && OctreeDepth(1) >= 2);

constexpr uint32_t Cells(int level) { return uint32_t{1} << (3 * level); }

// Reduction replay states of a node; 0 until the replay reaches it.
constexpr uint8_t kCounted = 1;  // counts as a colour in the current pass
constexpr uint8_t kOut = 2;      // its error is at or below the threshold
constexpr uint8_t kMerged = 4;   // merged into its parent

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
  uint32_t node;    // level << 24 | index in the level
  uint32_t parent;  // index of the node's parent in its level
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

// The pixel sums of the cells of one level, in pages of the eight children
// of one parent cell (siblings, the colours most alike, side by side), found
// by parent through a directory. A page is made when its parent first gets
// pixels, in blocks made as needed, so memory follows the parents in use.
// Past half of all parents, the pages move once into one array of every
// cell, page p + 1 at parent p: what a dense level costs, and in cell order.
// A cell is in use when its pixel count is not 0.
class LeafTable {
 public:
  // An empty table for a level of `cells` cells (64 to Cells(kMaxDepth)).
  // False when memory is short.
  bool Init(uint32_t cells) {
    m_cells = cells;
    m_page_of = AllocBuffer<uint32_t>(cells / 8);
    return m_page_of != nullptr;
  }
  // The sums of `cell`, zero while it is not in use (the caller then gives
  // it pixels). Valid until the next call; null when memory is short.
  CellSums* Find(uint32_t cell) {
    if (m_dense) return &m_dense[cell];  // as through the directory, a load sooner
    if (m_page_of[cell >> 3] == 0 && !NewPage(cell >> 3)) return nullptr;
    return Page(m_page_of[cell >> 3]) + (cell & 7);
  }
  // visit(cell, sums) for every cell in use, in cell order.
  template <class Visit>
  void ForEach(Visit visit) {
    for (uint32_t parent = 0; parent < m_cells / 8; ++parent) {
      if (m_page_of[parent] == 0) continue;
      CellSums* page = Page(m_page_of[parent]);
      for (uint32_t id = 0; id < 8; ++id)
        if (page[id].pixels != 0) visit(8 * parent + id, page[id]);
    }
  }
  // Merges each cell into its parent: the table then holds the level above.
  // False when memory is short.
  bool Coarsen();
  // The sums of the `n` cells in use, in cell order, with their cells in
  // `cells`; the table is left empty. Null when memory is short.
  Buffer<CellSums> Pack(uint32_t* cells, uint32_t n);

 private:
  static constexpr uint32_t kBlockPages = 256;  // 80 KiB

  // Half the parents: past this a dense level costs less than twice the pages.
  uint32_t SparsePages() const { return m_cells / 16; }

  // Page numbers count from 1: 0 in the directory means none.
  CellSums* Page(uint32_t number) {
    const uint32_t i = number - 1;
    return m_dense ? &m_dense[8 * i] : &m_blocks[i / kBlockPages][8 * (i % kBlockPages)];
  }
  bool NewPage(uint32_t parent);
  bool MakeDense();

  uint32_t m_cells = 0;  // of the level held
  uint32_t m_pages = 0;
  Buffer<uint32_t> m_page_of;  // page number per parent cell
  // Up to SparsePages() pages in blocks, then every page here.
  Buffer<CellSums> m_blocks[Cells(kMaxDepth) / 16 / kBlockPages];
  Buffer<CellSums> m_dense;
};

bool LeafTable::NewPage(uint32_t parent) {
  if (m_pages == SparsePages()) return MakeDense();
  Buffer<CellSums>& block = m_blocks[m_pages / kBlockPages];
  if (!block && !(block = AllocBuffer<CellSums>(8 * std::min(kBlockPages, SparsePages())))) return false;
  m_page_of[parent] = ++m_pages;
  return true;
}

bool LeafTable::MakeDense() {
  Buffer<CellSums> dense = AllocBuffer<CellSums>(m_cells);
  if (!dense) return false;
  for (uint32_t parent = 0; parent < m_cells / 8; ++parent) {
    if (m_page_of[parent] != 0) std::copy_n(Page(m_page_of[parent]), 8, &dense[8 * parent]);
    m_page_of[parent] = parent + 1;
  }
  for (Buffer<CellSums>& block : m_blocks) block.reset();
  m_dense = std::move(dense);
  m_pages = m_cells / 8;
  return true;
}

bool LeafTable::Coarsen() {
  LeafTable above;
  if (!above.Init(m_cells / 8)) return false;
  bool ok = true;
  ForEach([&](uint32_t cell, const CellSums& s) {
    CellSums* merged = ok ? above.Find(cell >> 3) : nullptr;
    if (merged) merged->Add(s);
    ok = merged != nullptr;
  });
  if (ok) *this = std::move(above);
  return ok;
}

Buffer<CellSums> LeafTable::Pack(uint32_t* cells, uint32_t n) {
  // A dense table packs in place: the i-th cell in use never lies before
  // entry i.
  Buffer<CellSums> sums;
  if (!m_dense && !(sums = AllocBuffer<CellSums>(n))) return sums;
  CellSums* to = m_dense ? m_dense.get() : sums.get();
  uint32_t i = 0;
  ForEach([&](uint32_t cell, const CellSums& s) { cells[i] = cell, to[i++] = s; });
  if (m_dense) sums = std::move(m_dense);
  *this = LeafTable();
  return sums;
}

// One level of the compact tree that reduction works on: its nodes in cell
// order. The children of node i of the level above are nodes first[i] to
// first[i + 1] - 1 of this one. Every node holds pixels.
struct Level {
  uint32_t count = 0;
  Buffer<uint32_t> cell;
  Buffer<CellSums> sums;
  Buffer<uint32_t> first;  // count + 1 entries; none at the deepest level
  // The reduction replay: kCounted, kOut and kMerged.
  Buffer<uint8_t> state;

  // The deepest level takes its sums from the LeafTable and has no children.
  bool Allocate(uint32_t n, bool upper) {
    count = n;
    cell = AllocBuffer<uint32_t>(n);
    state = AllocBuffer<uint8_t>(n);
    if (upper) sums = AllocBuffer<CellSums>(n), first = AllocBuffer<uint32_t>(n + size_t{1});
    return cell && state && (!upper || (sums && first));
  }
};

class Octree {
 public:
  explicit Octree(int depth) : m_depth(std::min(depth, kMaxDepth)) {}
  bool Init();
  // False when memory is short.
  bool ClassifyRow(const uint8_t* bgr, int width);
  // Builds the compact tree, computes the errors and replays the reduction.
  // False when memory is short.
  bool Reduce(int wanted);
  int Assign(uint8_t* rgb);

 private:
  void NoteNewLeaf(uint32_t cell);
  bool PruneLevel();
  bool BuildLeafLevel();
  bool BuildParentLevel(int level);
  bool FindLastThreshold(int wanted);
  long MergeSubtree(int level, uint32_t index);
  void AssignNode(int level, uint32_t index, uint8_t* rgb, int* made);

  int m_depth;
  long m_nodes = 1;  // the root
  long m_colours = 0;
  // Errors of the cells the node limit merged away: the root's error still
  // counts what those pixels added on the way down.
  double m_retired_error = 0;
  // The deepest level while classifying; emptied into the compact tree.
  LeafTable m_leaves;
  // m_exists[L]: 1 for the cells of levels 1 .. depth - 1 that are nodes.
  Buffer<uint8_t> m_exists[kMaxDepth];
  // Levels 0 (the root) to depth of the compact tree.
  Level m_level[kMaxDepth + 1];
  long m_counted = 0;
};

bool Octree::Init() {
  if (!m_leaves.Init(Cells(m_depth))) return false;
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

bool Octree::ClassifyRow(const uint8_t* bgr, int width) {
  // A tree this large is coarsened before going on. Depth never drops below 2.
  if (m_nodes > kOctreeMaxNodes && m_depth > 2 && !PruneLevel()) return false;
  const int shift = 3 * (8 - m_depth);
  // Neighbouring runs often fall in one cell: it is looked up once.
  uint32_t last = std::numeric_limits<uint32_t>::max();
  CellSums* s = nullptr;
  for (int x = 0; x < width;) {
    const uint8_t* p = bgr + 3 * x;
    int run = 1;
    while (x + run < width && std::memcmp(p, p + 3 * run, 3) == 0) ++run;
    const uint32_t r = p[2], g = p[1], b = p[0];
    const uint32_t cell = (kMorton.red[r] | kMorton.green[g] | kMorton.blue[b]) >> shift;
    if (cell != last) {
      if (!(s = m_leaves.Find(cell))) return false;
      if (s->pixels == 0) NoteNewLeaf(cell);
      last = cell;
    }
    const uint64_t w = static_cast<uint64_t>(run);
    s->pixels += w;
    s->red += w * r;
    s->green += w * g;
    s->blue += w * b;
    s->squares += w * (r * r + g * g + b * b);
    x += run;
  }
  return true;
}

// Merges every deepest node into its parent.
bool Octree::PruneLevel() {
  m_leaves.ForEach([this](uint32_t cell, const CellSums& s) {
    m_retired_error += CellError(s, m_depth, cell);
    --m_nodes;
  });
  m_exists[m_depth - 1].reset();
  --m_depth;
  return m_leaves.Coarsen();
}

bool Octree::Reduce(int wanted) {
  if (!BuildLeafLevel()) return false;
  for (int level = m_depth - 1; level >= 0; --level)
    if (!BuildParentLevel(level)) return false;
  return m_colours <= wanted || FindLastThreshold(wanted);
}

// The leaves, in cell order as the table gives them.
bool Octree::BuildLeafLevel() {
  uint32_t n = 0;
  m_leaves.ForEach([&n](uint32_t, const CellSums&) { ++n; });
  Level& leaves = m_level[m_depth];
  if (!leaves.Allocate(n, false)) return false;
  return (leaves.sums = m_leaves.Pack(leaves.cell.get(), n)) != nullptr;
}

// A node of `level` for each run of children of one parent cell.
bool Octree::BuildParentLevel(int level) {
  const Level& below = m_level[level + 1];
  Level& here = m_level[level];
  uint32_t n = 0;
  for (uint32_t i = 0; i < below.count; ++i) n += i == 0 || below.cell[i] >> 3 != below.cell[i - 1] >> 3;
  if (!here.Allocate(n, true)) return false;
  uint32_t p = 0;
  for (uint32_t i = 0; i < below.count; ++i) {
    const uint32_t parent = below.cell[i] >> 3;
    if (p == 0 || parent != here.cell[p - 1]) here.cell[p] = parent, here.first[p++] = i;
    here.sums[p - 1].Add(below.sums[i]);
  }
  here.first[n] = below.count;
  return true;
}

int Octree::Assign(uint8_t* rgb) {
  int made = 0;
  if (m_level[0].count != 0) AssignNode(0, 0, rgb, &made);
  return made;
}

// Children first, in child-number order, over the nodes the reduction keeps.
// A kept node holds its own pixels and those of its merged children: its
// subtree's sums less those of its kept children. Of the nodes this reaches,
// the replay marked kOut exactly those with an error at or below the last
// threshold (a node merged with an ancestor is never reached); with no
// replay, none.
void Octree::AssignNode(int level, uint32_t index, uint8_t* rgb, int* made) {
  const Level& here = m_level[level];
  CellSums own = here.sums[index];
  if (level < m_depth) {
    const Level& below = m_level[level + 1];
    for (uint32_t child = here.first[index]; child < here.first[index + 1]; ++child) {
      const CellSums& s = below.sums[child];
      if (below.state[child] & kOut) continue;
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
  size_t n = 0;
  for (int level = 1; level <= m_depth; ++level) n += m_level[level].count;
  Buffer<Ranked> sorted = AllocBuffer<Ranked>(n);
  if (!sorted) return false;

  // The root's error is the sum of all others plus the retired ones, as when
  // each pixel added to it on the way down.
  double root_error = m_retired_error;
  size_t count = 0;
  for (int level = 1; level <= m_depth; ++level) {
    const Level& above = m_level[level - 1];
    const Level& here = m_level[level];
    for (uint32_t p = 0; p < above.count; ++p)
      for (uint32_t i = above.first[p]; i < above.first[p + 1]; ++i) {
        const double error = CellError(here.sums[i], level, here.cell[i]);
        root_error += error;
        sorted[count++] = {static_cast<uint64_t>(error * 4), static_cast<uint32_t>(level) << 24 | i, p};
      }
  }
  // Cells were needed for the errors only: the sort's memory can take theirs.
  for (Level& level : m_level) level.cell.reset();
  if (!SortByError(sorted.get(), n)) return false;

  // Only the deepest nodes hold pixels of their own; the root never does.
  Level& leaves = m_level[m_depth];
  for (uint32_t i = 0; i < leaves.count; ++i) leaves.state[i] = kCounted;
  m_counted = leaves.count;
  bool root_counted = false;

  auto state_of = [this](uint32_t node) -> uint8_t& { return m_level[node >> 24].state[node & 0xFFFFFF]; };
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
        uint8_t& parent = m_level[level - 1].state[sorted[below_t].parent];
        if (parent == 0) parent = kCounted, ++m_counted;
      }
    }
    next_pointer = std::max(next_pointer, below_t);
    while (next_pointer < n && (state_of(sorted[next_pointer].node) & kMerged)) ++next_pointer;
    double next = root_error - 1;
    if (next_pointer < n) next = std::min(next, sorted[next_pointer].error());

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
long Octree::MergeSubtree(int level, uint32_t index) {
  uint8_t& state = m_level[level].state[index];
  if (state & kMerged) return 0;  // and so is everything below it
  if (state & kCounted) --m_counted;
  state = kOut | kMerged;
  long merged = 1;
  if (level < m_depth)
    for (uint32_t child = m_level[level].first[index]; child < m_level[level].first[index + 1]; ++child)
      merged += MergeSubtree(level + 1, child);
  return merged;
}

// Scans a frame top-down for its distinct colours. False once there are more
// than `wanted` (or memory is short: `*short_of_memory` says which).
bool ScanDistinct(const ImageBlock& image, int wanted, DistinctColours& distinct, bool* short_of_memory) {
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(3 * static_cast<size_t>(image.width()));
  *short_of_memory = !scratch;
  if (!scratch) return false;
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* bgr = BgrRow(image, y, scratch.get());
    uint32_t previous = 0xFFFFFFFFu;
    for (int x = 0; x < image.width(); ++x) {
      const uint8_t* p = bgr + 3 * x;
      uint32_t colour = MakeColour(p[2], p[1], p[0]);
      if (colour == previous) continue;  // already counted
      previous = colour;
      if (!distinct.Add(colour, wanted)) return false;
    }
  }
  return true;
}

// The frames' distinct colours, stopping as soon as there are more than
// `wanted`. False when memory is short.
bool ScanDistinct(const FrameList& frames, int wanted, DistinctColours& distinct) {
  for (int f = 0; f < frames.count(); ++f) {
    if (!frames[f].image) continue;
    bool short_of_memory = false;
    if (!ScanDistinct(frames[f].image, wanted, distinct, &short_of_memory)) return !short_of_memory;
  }
  return true;
}

bool ClassifyFrame(const ImageBlock& image, Octree& tree) {
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(3 * static_cast<size_t>(image.width()));
  if (!scratch) return false;
  for (int y = image.height() - 1; y >= 0; --y)  // stored order: bottom line first
    if (!tree.ClassifyRow(BgrRow(image, y, scratch.get()), image.width())) return false;
  return true;
}

bool ClassifyFrames(const FrameList& frames, Octree& tree) {
  for (int f = 0; f < frames.count(); ++f)
    if (frames[f].image && !ClassifyFrame(frames[f].image, tree)) return false;
  return true;
}

int Wanted(int count) { return count == 0 ? 256 : std::clamp(count, 1, 256); }

}  // namespace

bool AdaptivePalette(int* count, uint8_t* rgb, const FrameList& frames) {
  int wanted = Wanted(*count);
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

// ---------------------------------------------------------------- frame by frame

class AdaptivePaletteBuilder::State {
 public:
  explicit State(int wanted) : m_tree(OctreeDepth(wanted)) {}
  bool Init() {
    m_distinct = AllocBuffer<DistinctColours>(1);
    return m_distinct && m_tree.Init();
  }
  // The scan stops for good at the first frame that goes past `wanted`, as
  // the whole-list scan returns there.
  bool Add(const ImageBlock& image, int wanted) {
    if (!m_past_wanted) {
      bool short_of_memory = false;
      m_past_wanted = !ScanDistinct(image, wanted, m_distinct[0], &short_of_memory);
      if (short_of_memory) return false;
    }
    return ClassifyFrame(image, m_tree);
  }
  bool Finish(int wanted, int* count, uint8_t* rgb) {
    if (m_distinct[0].count() <= wanted) {
      m_distinct[0].CopyTo(rgb);
      *count = m_distinct[0].count();
      return true;
    }
    if (!m_tree.Reduce(wanted)) return false;
    *count = m_tree.Assign(rgb);
    return true;
  }

 private:
  Buffer<DistinctColours> m_distinct;
  bool m_past_wanted = false;
  Octree m_tree;
};

AdaptivePaletteBuilder::AdaptivePaletteBuilder(int count) : m_wanted(Wanted(count)) {}

AdaptivePaletteBuilder::~AdaptivePaletteBuilder() = default;

bool AdaptivePaletteBuilder::AddFrame(const ImageBlock& image) {
  if (m_failed) return false;
  if (!m_state) {
    m_state.reset(new (std::nothrow) State(m_wanted));
    m_failed = !m_state || !m_state->Init();
    if (m_failed) return false;
  }
  if (image && !m_state->Add(image, m_wanted)) m_failed = true;
  return !m_failed;
}

bool AdaptivePaletteBuilder::Finish(int* count, uint8_t* rgb) {
  std::memset(rgb, 0, kPaletteBytes);
  if (m_failed) return false;
  // No frames: what the whole-list form makes of an empty list.
  if (!m_state) {
    *count = 0;
    return true;
  }
  bool done = m_state->Finish(m_wanted, count, rgb);
  m_state.reset();
  m_failed = true;  // once only
  return done;
}

}  // namespace tess
