// Per-user paths composed from the platform's folders and separator, and the
// one call that creates folders.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "shell/paths.h"
#include "tests/support/fake_platform.h"
#include "tests/support/temp_folder.h"

namespace tess {
namespace {

using testing::FakePlatform;

FakePlatform Folders(std::string app, std::string docs, char separator) {
  FakePlatform p;
  p.app_data = std::move(app);
  p.documents = std::move(docs);
  p.separator = separator;
  return p;
}

TEST(Paths, MakerAndPluginFoldersWithThePlatformSeparatorAddedOnlyWhenMissing) {
  FakePlatform posix = Folders("/cfg", "/docs/", '/');
  EXPECT_EQ(AppDataPath(posix, ""), "/cfg/Brindlewood/");
  EXPECT_EQ(ConfigFilePath(posix), "/cfg/Brindlewood/zephyra1.ini");
  EXPECT_EQ(DocumentsPath(posix, "b.ts1"), "/docs/b.ts1");
  EXPECT_EQ(PluginDataPath(posix, "FountainLibrary.fln"), "/cfg/Brindlewood/Tessarine 1/FountainLibrary.fln");
  EXPECT_EQ(FillFilePath(posix, 3001), "/cfg/Brindlewood/Tessarine 1/Fill03001.flp");
  FakePlatform win = Folders("C:\\", "D:\\Docs", '\\');
  EXPECT_EQ(DocumentsPath(win, "untitled.ts1"), "D:\\Docs\\untitled.ts1");
  EXPECT_EQ(FillFilePath(win, 7), "C:\\Brindlewood\\Tessarine 1\\Fill00007.flp");
  EXPECT_EQ(FillFilePath(win, 123456), "C:\\Brindlewood\\Tessarine 1\\Fill123456.flp");
  // Only the platform's own separator counts as already present.
  FakePlatform mixed = Folders("C:/data/", "", '\\');
  EXPECT_EQ(AppDataPath(mixed, "a"), "C:/data/\\Brindlewood\\a");
  // Without the folders: empty paths, or relative ones inside the plug-in folder.
  FakePlatform none = Folders("", "", '\\');
  EXPECT_EQ(DocumentsPath(none, "untitled.ts1"), "");
  EXPECT_EQ(ConfigFilePath(none), "");
  EXPECT_EQ(FillFilePath(none, 3001), "");
  EXPECT_EQ(PluginDataPath(none, "zephyra1.mtx"), "Tessarine 1\\zephyra1.mtx");
}

TEST(Paths, ComposingCreatesNothingAndEnsureFolderExistsCreatesNestedFolders) {
  namespace fs = std::filesystem;
  testing::TempFolder dir;
  FakePlatform p = Folders(dir / "root", "", '/');
  FillFilePath(p, 3001);
  ConfigFilePath(p);
  std::string folder = PluginDataPath(p, "");  // ends in the separator
  EXPECT_FALSE(fs::exists(dir / "root"));
  EXPECT_TRUE(EnsureFolderExists(folder));
  EXPECT_TRUE(fs::is_directory(dir / "root/Brindlewood/Tessarine 1"));
  EXPECT_TRUE(EnsureFolderExists(folder));
  EXPECT_FALSE(EnsureFolderExists(""));
  // A file where a folder should be is not a folder.
  testing::WriteBytes(dir / "plain", {});
  EXPECT_FALSE(EnsureFolderExists(dir / "plain"));
  EXPECT_FALSE(EnsureFolderExists(dir / "plain/below"));
}

}  // namespace
}  // namespace tess
