#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>

#include "shell/paths.h"
#include "tests/support/fake_platform.h"

namespace tess {
namespace {

using testing::FakePlatform;

// A folder name no other test run uses at the same time.
std::filesystem::path ScratchFolder(const char* name) {
  return std::filesystem::temp_directory_path() /
         (std::string(name) + "-" + std::to_string(std::random_device{}()));
}

FakePlatform Posix(std::string app, std::string docs) {
  FakePlatform p;
  p.app_data = std::move(app);
  p.documents = std::move(docs);
  return p;
}

FakePlatform Windows(std::string app, std::string docs) {
  FakePlatform p = Posix(std::move(app), std::move(docs));
  p.separator = '\\';
  return p;
}

TEST(AppDataPath, MakerFolderWithThePlatformSeparator) {
  FakePlatform posix = Posix("/home/u/.config", "/home/u/Documents");
  EXPECT_EQ(AppDataPath(posix, "x.bin"), "/home/u/.config/Brindlewood/x.bin");
  EXPECT_EQ(AppDataPath(posix, ""), "/home/u/.config/Brindlewood/");
  FakePlatform win = Windows("C:\\Users\\u\\AppData\\Roaming", "");
  EXPECT_EQ(AppDataPath(win, "x.bin"), "C:\\Users\\u\\AppData\\Roaming\\Brindlewood\\x.bin");
}

TEST(AppDataPath, SeparatorAddedOnlyWhenMissing) {
  FakePlatform posix = Posix("/cfg/", "/docs/");
  EXPECT_EQ(AppDataPath(posix, "a"), "/cfg/Brindlewood/a");
  EXPECT_EQ(DocumentsPath(posix, "b.ts1"), "/docs/b.ts1");
  FakePlatform win = Windows("C:\\", "D:\\Docs");
  EXPECT_EQ(AppDataPath(win, "a"), "C:\\Brindlewood\\a");
  EXPECT_EQ(DocumentsPath(win, "untitled.ts1"), "D:\\Docs\\untitled.ts1");
  // Only the platform's own separator counts as already present.
  FakePlatform mixed = Windows("C:/data/", "");
  EXPECT_EQ(AppDataPath(mixed, "a"), "C:/data/\\Brindlewood\\a");
}

TEST(PluginPaths, PluginFolderInsideTheMakerFolder) {
  FakePlatform posix = Posix("/cfg", "/docs");
  EXPECT_EQ(PluginDataPath(posix, "FountainLibrary.fln"),
            "/cfg/Brindlewood/Tessarine 1/FountainLibrary.fln");
  EXPECT_EQ(ConfigFilePath(posix), "/cfg/Brindlewood/zephyra1.ini");
  std::string fill = FillFilePath(posix, 3001);
  EXPECT_EQ(fill, "/cfg/Brindlewood/Tessarine 1/Fill03001.flp");
  EXPECT_TRUE(fill.ends_with("Tessarine 1/Fill03001.flp"));
  FakePlatform win = Windows("C:\\AppData", "");
  EXPECT_EQ(FillFilePath(win, 7), "C:\\AppData\\Brindlewood\\Tessarine 1\\Fill00007.flp");
  EXPECT_EQ(FillFilePath(win, 123456), "C:\\AppData\\Brindlewood\\Tessarine 1\\Fill123456.flp");
  EXPECT_EQ(PluginDataPath(win, "zephyra1.fft"),
            "C:\\AppData\\Brindlewood\\Tessarine 1\\zephyra1.fft");
}

TEST(PluginPaths, MissingFoldersGiveEmptyOrRelativePaths) {
  FakePlatform posix = Posix("", "");
  EXPECT_EQ(AppDataPath(posix, "x"), "");
  EXPECT_EQ(DocumentsPath(posix, "untitled.ts1"), "");
  EXPECT_EQ(ConfigFilePath(posix), "");
  EXPECT_EQ(FillFilePath(posix, 3001), "");
  EXPECT_EQ(PluginDataPath(posix, "zephyra1.mtx"), "Tessarine 1/zephyra1.mtx");
  FakePlatform win = Windows("", "");
  EXPECT_EQ(PluginDataPath(win, "zephyra1.mtx"), "Tessarine 1\\zephyra1.mtx");
}

TEST(PluginPaths, ComposingCreatesNothing) {
  namespace fs = std::filesystem;
  fs::path root = ScratchFolder("tess-paths-nothing");
  FakePlatform p = Posix(root.string(), root.string());
  FillFilePath(p, 3001);
  PluginDataPath(p, "x");
  ConfigFilePath(p);
  EXPECT_FALSE(fs::exists(root));
}

TEST(EnsureFolderExists, CreatesNestedFoldersAndAcceptsExistingOnes) {
  namespace fs = std::filesystem;
  fs::path root = ScratchFolder("tess-paths-ensure");
  FakePlatform p = Posix(root.string(), "");
  std::string folder = PluginDataPath(p, "");  // ends in the separator
  EXPECT_TRUE(EnsureFolderExists(folder));
  EXPECT_TRUE(fs::is_directory(root / "Brindlewood" / "Tessarine 1"));
  EXPECT_TRUE(EnsureFolderExists(folder));
  EXPECT_FALSE(EnsureFolderExists(""));
  // A file where a folder should be is not a folder.
  std::string file = (root / "plain").string();
  FILE* f = std::fopen(file.c_str(), "w");
  ASSERT_NE(f, nullptr);
  std::fclose(f);
  EXPECT_FALSE(EnsureFolderExists(file));
  EXPECT_FALSE(EnsureFolderExists(file + "/below"));
  std::error_code ec;
  fs::remove_all(root, ec);
}

}  // namespace
}  // namespace tess
