// Opening pages in a browser: which addresses are local files, how spaces are
// escaped, and the message shown when no browser opens.
#include <gtest/gtest.h>

#include "shell/browser.h"
#include "tests/support/fake_platform.h"

namespace tess {
namespace {

using testing::FakePlatform;

// Only a lower-case "http" start makes a web address (which drops the
// anchor); anything else is a local file. Only spaces are escaped.
TEST(BrowserAddress, WebAddressesAndLocalFiles) {
  EXPECT_EQ(EscapeAddress("C:\\My Files\\x#%20.html"), "C:\\My%20Files\\x#%20.html");
  EXPECT_EQ(BrowserAddress("http://example.com/a b", "#top"), "http://example.com/a%20b");
  EXPECT_EQ(BrowserAddress("httpd.html", "#A"), "httpd.html");  // four letters are enough
  EXPECT_EQ(BrowserAddress("HTTP://example.com", ""), "file:///HTTP://example.com");
  EXPECT_EQ(BrowserAddress("C:\\Program Files\\Tess\\ZEPHYRA1.HTML", "#TILE"),
            "file:///C:\\Program%20Files\\Tess\\ZEPHYRA1.HTML#TILE");
  EXPECT_EQ(BrowserAddress("htt", ""), "file:///htt");
}

TEST(OpenInBrowser, PassesAddressAndOriginalTextOrShowsTheManualPageError) {
  FakePlatform platform;
  RecordingReporter reporter;
  EXPECT_EQ(OpenInBrowser(platform, reporter, "/tmp/my page.html", "#A B", true), 1);
  ASSERT_EQ(platform.browser_launches.size(), 1u);
  EXPECT_EQ(platform.browser_launches[0].target, "file:////tmp/my%20page.html#A%20B");
  EXPECT_EQ(platform.browser_launches[0].original, "/tmp/my page.html");
  EXPECT_TRUE(platform.browser_launches[0].maximised);
  EXPECT_TRUE(reporter.messages.empty());

  platform.browser_succeeds = false;
  EXPECT_EQ(OpenInBrowser(platform, reporter, "http://x", "", false), 1);
  EXPECT_EQ(reporter.messages,
            std::vector<std::string>{
                " There has been an error displaying the manual page. Please ensure that there is an "
                "application installed on your system capable of opening HTML documents associated "
                "with the file extension .HTM."});
  EXPECT_FALSE(platform.browser_launches[1].maximised);
}

TEST(OpenGeneratedFile, OpensThePathAsItIsAndReportsRefusal) {
  FakePlatform platform;
  EXPECT_TRUE(OpenGeneratedFile(platform, "/tmp/my preview.html", true));
  platform.open_succeeds = false;
  EXPECT_FALSE(OpenGeneratedFile(platform, "/tmp/preview.html", false));
  ASSERT_EQ(platform.opened_documents.size(), 2u);
  EXPECT_EQ(platform.opened_documents[0].target, "/tmp/my preview.html");  // not escaped
  EXPECT_TRUE(platform.opened_documents[0].maximised);
  EXPECT_TRUE(platform.browser_launches.empty());
}

}  // namespace
}  // namespace tess
