#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shell/help.h"
#include "shell/strings.h"

namespace tess {
namespace {

constexpr const char* kHelpError = "There has been an error displaying the Help document.";

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

TEST(HelpReference, AnchorOnlyWhenNotEmpty) {
  EXPECT_EQ(HelpReference(kManualPage, ""), "ZEPHYRA1.HTML");
  EXPECT_EQ(HelpReference(kManualPage, kHelpAnchorGradient), "ZEPHYRA1.HTML#GRADIENT");
  EXPECT_EQ(HelpReference("other.html", "x y"), "other.html#x y");
}

TEST(ShowHelp, AcceptedReferenceShowsNoMessage) {
  RecordingHelp host(true);
  RecordingReporter reporter;
  EXPECT_EQ(ShowHelp(&host, reporter, kHelpAnchorMainDialog), 1);
  ASSERT_EQ(host.references.size(), 1u);
  EXPECT_EQ(host.references[0], "ZEPHYRA1.HTML#PREFACE");
  EXPECT_TRUE(reporter.messages.empty());
}

TEST(ShowHelp, RefusalOrMissingServiceReportsTheHelpError) {
  RecordingHelp host(false);
  RecordingReporter reporter;
  EXPECT_EQ(ShowHelp(&host, reporter, ""), 1);
  ASSERT_EQ(host.references.size(), 1u);
  EXPECT_EQ(host.references[0], "ZEPHYRA1.HTML");
  EXPECT_EQ(ShowHelp(nullptr, reporter, kHelpAnchorTile), 1);
  ASSERT_EQ(reporter.messages.size(), 2u);
  EXPECT_EQ(reporter.messages[0], kHelpError);
  EXPECT_EQ(reporter.messages[1], kHelpError);
}

}  // namespace
}  // namespace tess
