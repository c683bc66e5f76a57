// The progress line: nothing at all when disabled, redraws only on change,
// and a blank line after clearing.
#include "host/cli/progress_bar.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tess::cli {
namespace {

TEST(ProgressBar, LineShowsStatusBarAndPercent) {
  EXPECT_EQ(FormatProgressLine("Remapping", 0, 0), "Remapping");
  std::string half = FormatProgressLine("Building", 5, 10);
  EXPECT_EQ(half, "Building [" + std::string(15, '#') + std::string(15, '.') + "]  50%");
  EXPECT_EQ(FormatProgressLine("", 20, 10), "[" + std::string(30, '#') + "] 100%");  // held to the total
}

TEST(ProgressBar, LineAddsTheTimeLeft) {
  const std::string bar = FormatProgressLine("Building", 5, 10);
  EXPECT_EQ(FormatProgressLine("Building", 5, 10, 0), bar + "  about 0:00 left");
  EXPECT_EQ(FormatProgressLine("Building", 5, 10, 83), bar + "  about 1:23 left");
  EXPECT_EQ(FormatProgressLine("Building", 5, 10, 3 * 3600 + 5 * 60 + 7), bar + "  about 3:05:07 left");
}

// The estimate is the pace of the phase so far, from its own start: a second
// phase (new total) does not inherit the first one's time.
TEST(ProgressBar, EstimatesFromThePaceOfThePhaseOnceItHasRunASecond) {
  std::ostringstream out;
  double now = 100;
  ProgressBar bar(out, true, [&now] { return now; });
  bar.SetStatus("Building");
  bar.Update(0, 100);
  now += 0.5;
  bar.Update(10, 100);
  EXPECT_EQ(out.str().substr(out.str().rfind('\r') + 1), FormatProgressLine("Building", 10, 100));
  now += 1.5;  // 2 s for 20 frames: 8 s for the other 80
  bar.Update(20, 100);
  EXPECT_EQ(out.str().substr(out.str().rfind('\r') + 1), FormatProgressLine("Building", 20, 100, 8));
  now += 10;
  bar.Update(0, 50);  // the next pass
  bar.SetStatus("Quantizing");
  now += 2;
  bar.Update(25, 50);
  EXPECT_EQ(out.str().substr(out.str().rfind('\r') + 1), FormatProgressLine("Quantizing", 25, 50, 2));
}

TEST(ProgressBar, RedrawsOnChangeClearsToBlankAndIsSilentWhenDisabled) {
  std::ostringstream out;
  ProgressBar bar(out, true);
  bar.SetStatus("Building");
  bar.Update(0, 1000);
  std::string after_first = out.str();
  bar.Update(1, 1000);  // neither a cell nor a percent more
  EXPECT_EQ(out.str(), after_first);
  bar.Update(500, 1000);
  EXPECT_NE(out.str(), after_first);
  std::string line = FormatProgressLine("Building", 500, 1000);
  bar.Clear();
  std::string all = out.str();
  EXPECT_EQ(all.substr(all.size() - line.size() - 2), "\r" + std::string(line.size(), ' ') + "\r");
  size_t before = all.size();
  bar.Clear();  // nothing drawn: nothing written
  EXPECT_EQ(out.str().size(), before);

  std::ostringstream quiet;
  ProgressBar disabled(quiet, false);
  disabled.SetStatus("Building");
  disabled.Update(3, 4);
  EXPECT_EQ(quiet.str(), "");
}

}  // namespace
}  // namespace tess::cli
