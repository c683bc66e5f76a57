// Help requests: the reference handed to the host, and the message shown when
// the host refuses or offers no help service.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shell/help.h"
#include "shell/strings.h"

namespace tess {
namespace {

class RecordingHelp final : public HelpService {
 public:
  explicit RecordingHelp(bool accept) : m_accept(accept) {}
  bool DisplayHelp(const std::string& reference) override {
    references.push_back(reference);
    return m_accept;
  }
  std::vector<std::string> references;

 private:
  bool m_accept;
};

TEST(ShowHelp, PassesTheManualPageWithItsAnchor) {
  EXPECT_EQ(HelpReference("other.html", "x y"), "other.html#x y");
  RecordingHelp host(true);
  RecordingReporter reporter;
  EXPECT_EQ(ShowHelp(&host, reporter, kHelpAnchorMainDialog), 1);
  EXPECT_EQ(ShowHelp(&host, reporter, ""), 1);  // no anchor, no "#"
  EXPECT_EQ(host.references, (std::vector<std::string>{"ZEPHYRA1.HTML#PREFACE", "ZEPHYRA1.HTML"}));
  EXPECT_TRUE(reporter.messages.empty());
}

TEST(ShowHelp, RefusalOrMissingServiceReportsTheHelpError) {
  RecordingHelp host(false);
  RecordingReporter reporter;
  EXPECT_EQ(ShowHelp(&host, reporter, kHelpAnchorGradient), 1);
  EXPECT_EQ(ShowHelp(nullptr, reporter, kHelpAnchorTile), 1);
  EXPECT_EQ(host.references, std::vector<std::string>{"ZEPHYRA1.HTML#GRADIENT"});
  EXPECT_EQ(reporter.messages,
            std::vector<std::string>(2, "There has been an error displaying the Help document."));
}

}  // namespace
}  // namespace tess
