#include <gtest/gtest.h>

#include "shell/browser.h"
#include "tests/support/fake_platform.h"

namespace tess {
namespace {

using testing::FakePlatform;

constexpr const char* kManualPageError =
    " There has been an error displaying the manual page. Please ensure that there is an "
    "application installed on your system capable of opening HTML documents associated "
    "with the file extension .HTM.";

TEST(BrowserAddress, OnlySpacesAreEscaped) {
  EXPECT_EQ(EscapeAddress("a b  c"), "a%20b%20%20c");
  EXPECT_EQ(EscapeAddress("C:\\My Files\\x#%20.html"), "C:\\My%20Files\\x#%20.html");
  EXPECT_EQ(EscapeAddress(""), "");
}

TEST(BrowserAddress, LowerCaseHttpIsAWebAddressWithoutAnchor) {
  EXPECT_EQ(BrowserAddress("http://example.com/a b", "#top"), "http://example.com/a%20b");
  EXPECT_EQ(BrowserAddress("https://x", ""), "https://x");
  EXPECT_EQ(BrowserAddress("httpd.html", "#A"), "httpd.html");  // four letters are enough
}

TEST(BrowserAddress, AnythingElseIsALocalFileWithItsAnchor) {
  EXPECT_EQ(BrowserAddress("HTTP://example.com", ""), "file:///HTTP://example.com");
  EXPECT_EQ(BrowserAddress("Http x", "#b c"), "file:///Http%20x#b%20c");
  EXPECT_EQ(BrowserAddress("C:\\Program Files\\Tess\\ZEPHYRA1.HTML", "#TILE"),
            "file:///C:\\Program%20Files\\Tess\\ZEPHYRA1.HTML#TILE");
  EXPECT_EQ(BrowserAddress("htt", ""), "file:///htt");
}

TEST(OpenInBrowser, PassesAddressOriginalTextAndShowMode) {
  FakePlatform platform;
  RecordingReporter reporter;
  EXPECT_EQ(OpenInBrowser(platform, reporter, "/tmp/my page.html", "#A B", true), 1);
  ASSERT_EQ(platform.browser_launches.size(), 1u);
  EXPECT_EQ(platform.browser_launches[0].target, "file:////tmp/my%20page.html#A%20B");
  EXPECT_EQ(platform.browser_launches[0].original, "/tmp/my page.html");
  EXPECT_TRUE(platform.browser_launches[0].maximised);
  EXPECT_TRUE(reporter.messages.empty());
}

TEST(OpenInBrowser, FailureShowsTheManualPageError) {
  FakePlatform platform;
  platform.browser_succeeds = false;
  RecordingReporter reporter;
  EXPECT_EQ(OpenInBrowser(platform, reporter, "http://x", "", false), 1);
  ASSERT_EQ(reporter.messages.size(), 1u);
  EXPECT_EQ(reporter.messages[0], kManualPageError);
  EXPECT_FALSE(platform.browser_launches[0].maximised);
}

TEST(OpenGeneratedFile, ReportsRefusalToTheCaller) {
  FakePlatform platform;
  EXPECT_TRUE(OpenGeneratedFile(platform, "/tmp/preview.html", false));
  platform.open_succeeds = false;
  EXPECT_FALSE(OpenGeneratedFile(platform, "/tmp/preview.html", true));
  ASSERT_EQ(platform.opened_documents.size(), 2u);
  EXPECT_EQ(platform.opened_documents[1].target, "/tmp/preview.html");  // not escaped
  EXPECT_TRUE(platform.opened_documents[1].maximised);
  EXPECT_TRUE(platform.browser_launches.empty());
}

}  // namespace
}  // namespace tess
