// Checks every shape effect must pass, run through its style entry: the loop
// in time, the seed, each page setting showing, allocation failures anywhere
// in a build, and golden frames. Effect tests add their own fast-path and
// viewpoint checks, which need the record's options.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "base/alloc.h"
#include "dialog/settings_reader.h"
#include "image/frame_list.h"
#include "shell/settings.h"
#include "styles/style_table.h"
#include "tests/support/golden.h"

namespace tess::testing {

using Changes = std::vector<std::pair<const char*, int32_t>>;

// The configuration's defaults of one style, with some values changed.
struct StyleConfig {
  int style = 0;
  Settings settings;
  StyleConfig(int number, const Changes& a = {}, const Changes& b = {}) : style(number) {
    for (const Changes* c : {&a, &b})
      for (const auto& [key, value] : *c) settings.SetStyleNumber(style, key, value);
  }
  int32_t Get(std::string_view key) const { return settings.StyleNumber(style, key); }
  const StyleEntry& Entry() const { return *StyleByNumber(style); }
  SettingsReader Reader() const { return SettingsReader(settings, Entry()); }
};

inline bool SameBytes(const ImageBlock& a, const ImageBlock& b) {
  return a && b && a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

// Frames ks of one fresh record, asked for in that order.
inline std::vector<ImageBlock> EntryFrames(const StyleConfig& c, const std::vector<int>& ks) {
  std::vector<ImageBlock> frames;
  Random random;
  std::unique_ptr<StyleRecord> record = c.Entry().init(c.Reader(), random);
  if (record)
    for (int k : ks) frames.push_back(record->RenderFrame(k));
  return frames;
}

inline ImageBlock EntryFrame(const StyleConfig& c, int k) {
  std::vector<ImageBlock> frames = EntryFrames(c, {k});
  return frames.empty() ? ImageBlock() : std::move(frames[0]);
}

// Frames N, N + 1 and 2N repeat frames 0 and 1, which differ.
inline void ExpectLoops(const StyleConfig& c) {
  const int n = c.Get("Frames");
  std::vector<ImageBlock> f = EntryFrames(c, {0, 1, n, n + 1, 2 * n});
  ASSERT_EQ(f.size(), 5u);
  EXPECT_TRUE(SameBytes(f[0], f[2]));
  EXPECT_TRUE(SameBytes(f[1], f[3]));
  EXPECT_TRUE(SameBytes(f[0], f[4]));
  EXPECT_FALSE(SameBytes(f[0], f[1]));
}

// The same seed draws the same frames, the next seed others.
inline void ExpectTheSeedDecides(const StyleConfig& c) {
  StyleConfig other = c;
  other.settings.SetStyleNumber(c.style, "Seed", c.Get("Seed") + 1);
  std::vector<ImageBlock> a = EntryFrames(c, {0, 3}), b = EntryFrames(c, {0, 3}),
                          d = EntryFrames(other, {0, 3});
  ASSERT_EQ(d.size(), 2u);
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_TRUE(SameBytes(a[i], b[i]));
    EXPECT_FALSE(SameBytes(a[i], d[i]));
  }
}

// Each change, made alone to `base`, changes frame 1.
inline void ExpectEachChangeShows(int style, const Changes& base, const Changes& changes) {
  const ImageBlock reference = EntryFrame(StyleConfig(style, base), 1);
  for (const auto& change : changes) {
    ImageBlock changed = EntryFrame(StyleConfig(style, base, {change}), 1);
    ASSERT_TRUE(changed) << change.first;
    EXPECT_FALSE(SameBytes(reference, changed)) << change.first;
  }
}

// Every allocation of a whole build failing in turn fails the build (ASan
// checks that nothing leaks), whichever block it was.
inline void ExpectEveryAllocationFailureFailsTheBuild(const StyleConfig& c) {
  long allocations = 0;
  {
    AllocFailureScope count(1L << 30);
    Random random;
    FrameList frames;
    ASSERT_TRUE(StyleBuild(c.Entry(), c.Reader(), random, 10, frames));
    allocations = count.Count();
  }
  ASSERT_GT(allocations, c.Get("Frames"));
  for (long n = 0; n < allocations; ++n) {
    AllocFailureScope fail(n);
    Random random;
    FrameList frames;
    EXPECT_FALSE(StyleBuild(c.Entry(), c.Reader(), random, 10, frames)) << n;
  }
}

// Frames 0, 1 and N-1 of each case, pinned in tests/data/golden/<stem>.txt.
inline void ExpectGoldenFrames(int style, const char* stem,
                               const std::vector<std::pair<const char*, Changes>>& cases) {
  GoldenSet golden(stem);
  for (const auto& [name, changes] : cases) {
    const StyleConfig c(style, changes);
    const int n = c.Get("Frames");
    const int ks[3] = {0, 1, n - 1};
    std::vector<ImageBlock> frames = EntryFrames(c, {ks[0], ks[1], ks[2]});
    ASSERT_EQ(frames.size(), 3u) << name;
    for (size_t i = 0; i < 3; ++i)
      golden.Add(std::string(name) + "_frame" + std::to_string(ks[i]), ImageChecksum(frames[i]));
  }
  EXPECT_TRUE(golden.Verify());
}

}  // namespace tess::testing
