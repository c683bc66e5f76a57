// SafeFile on POSIX against real files, links, pipes and devices: what stands
// at the path decides where the bytes go, an abandoned file never touches the
// old one, and leftovers are told apart by the process that made them. Full
// disks are swept with each writer; signals with the real command line.
#include "platform/safe_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "tests/support/temp_folder.h"
#include "tests/support/write_failure_sweep.h"  // FolderEntries

namespace tess {
namespace {

namespace fs = std::filesystem;
using testing::FolderEntries;
using testing::ReadText;
using testing::TempFolder;
using testing::WriteText;

bool WriteAll(const std::string& path, const std::string& text, std::string* error = nullptr) {
  SafeFile file;
  const bool ok = file.Open(path) && file.Write(text.data(), text.size()) && file.Commit();
  if (error) *error = file.error();
  return ok;
}

// A process id that certainly belongs to no running process: a child that
// has exited and been reaped.
uint32_t DeadPid() {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  waitpid(child, nullptr, 0);
  return static_cast<uint32_t>(child);
}

TEST(SafeFile, ReplacesOnlyOnCommitAndKeepsTheOldFileOtherwise) {
  TempFolder dir;
  const std::string path = dir / "a.bin";
  WriteText(path, "old");
  chmod(path.c_str(), 0640);
  {
    SafeFile file;
    ASSERT_TRUE(file.Open(path));
    ASSERT_TRUE(file.Write("new!", 4));
    EXPECT_EQ(ReadText(path), "old");  // nothing visible before the commit
    EXPECT_EQ(FolderEntries(dir.path()).size(), 2u);
  }  // destroyed uncommitted: abandoned
  EXPECT_EQ(ReadText(path), "old");
  EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"a.bin"});

  // Bigger than the buffer, so the write reaches the disk in several pieces.
  std::string big(200000, 'x');
  for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>('a' + i % 26);
  ASSERT_TRUE(WriteAll(path, big));
  EXPECT_EQ(ReadText(path), big);
  struct stat st;
  ASSERT_EQ(stat(path.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u) << "the replacement keeps the old permissions";
  EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"a.bin"});
}

TEST(SafeFile, LinksAreWrittenThroughAndStayLinks) {
  TempFolder dir;
  fs::create_directory(dir / "real");
  WriteText(dir / "real/target.gif", "old");
  fs::create_symlink("real/target.gif", dir / "link.gif");      // relative
  fs::create_symlink(dir / "link.gif", dir / "chain.gif");        // a link to a link
  fs::create_symlink(dir / "real/missing.gif", dir / "dangling.gif");

  ASSERT_TRUE(WriteAll(dir / "chain.gif", "through"));
  EXPECT_TRUE(fs::is_symlink(dir / "link.gif"));
  EXPECT_TRUE(fs::is_symlink(dir / "chain.gif"));
  EXPECT_EQ(ReadText(dir / "real/target.gif"), "through");

  // A dangling link names the file to create.
  ASSERT_TRUE(WriteAll(dir / "dangling.gif", "made"));
  EXPECT_TRUE(fs::is_symlink(dir / "dangling.gif"));
  EXPECT_EQ(ReadText(dir / "real/missing.gif"), "made");

  fs::create_symlink("loop.gif", dir / "loop.gif");
  std::string error;
  EXPECT_FALSE(WriteAll(dir / "loop.gif", "x", &error));
  EXPECT_EQ(error, "Too many levels of symbolic links");
}

TEST(SafeFile, DevicesAndPipesAreWrittenDirectlyAndFoldersRefused) {
  TempFolder dir;
  ASSERT_TRUE(WriteAll("/dev/null", "gone"));
  // The system's own links name a pipe no path reaches: written through them.
  if (fs::exists("/proc/self/fd")) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_TRUE(WriteAll("/proc/self/fd/" + std::to_string(ends[1]), "via fd"));
    char got[8] = {};
    EXPECT_EQ(read(ends[0], got, sizeof got), 6);
    EXPECT_STREQ(got, "via fd");
    close(ends[0]);
    close(ends[1]);
  }
  struct stat st;
  ASSERT_EQ(stat("/dev/null", &st), 0);
  EXPECT_TRUE(S_ISCHR(st.st_mode)) << "/dev/null must stay a device";

  const std::string fifo = dir / "pipe";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::string received;
  std::thread reader([&] { received = ReadText(fifo); });
  EXPECT_TRUE(WriteAll(fifo, "down the pipe"));
  reader.join();
  EXPECT_EQ(received, "down the pipe");
  EXPECT_TRUE(fs::is_fifo(fifo));

  fs::create_directory(dir / "folder");
  std::string error;
  EXPECT_FALSE(WriteAll(dir / "folder", "x", &error));
  EXPECT_EQ(error, "Is a directory");
  EXPECT_TRUE(fs::is_directory(dir / "folder"));
  EXPECT_TRUE(fs::is_empty(dir / "folder"));
}

TEST(SafeFile, TemporaryNamesCarryTheirOwnerAndOthersAreNotMistaken) {
  const std::string path = "/some/where/out.gif";
  const std::string name = SafeFile::TemporaryName(path, 4242, 0xabc);
  EXPECT_EQ(name, "/some/where/.out.gif.4242-00000abc.part");
  uint32_t pid = 0;
  EXPECT_TRUE(SafeFile::TemporaryOwner(path, ".out.gif.4242-00000abc.part", &pid));
  EXPECT_EQ(pid, 4242u);
  for (const char* foreign : {".out.gif.part", ".other.gif.4242-00000abc.part", ".out.gif.4242-00000abc.parts",
                              ".out.gif.x42-00000abc.part", ".out.gif.4242-0000abc.part", ".out.gif.-00000abc.part",
                              ".out.gif.4242-0000ABCD.part", "out.gif", ".out.gif.99999999999-00000abc.part"})
    EXPECT_FALSE(SafeFile::TemporaryOwner(path, foreign, &pid)) << foreign;
}

TEST(SafeFile, LeftoversOfDeadProcessesGoOnTheNextWriteOthersStay) {
  TempFolder dir;
  const std::string path = dir / "out.gif";
  const std::string dead = SafeFile::TemporaryName(path, DeadPid(), 1);
  const std::string live = SafeFile::TemporaryName(path, static_cast<uint32_t>(getppid()), 2);
  const std::string other = SafeFile::TemporaryName(dir / "other.gif", DeadPid(), 3);
  for (const std::string& p : {dead, live, other}) WriteText(p, "left");
  ASSERT_TRUE(WriteAll(path, "fresh"));
  EXPECT_FALSE(fs::exists(dead));
  EXPECT_TRUE(fs::exists(live)) << "a running process's temporary must stay";
  EXPECT_TRUE(fs::exists(other)) << "only this path's leftovers are swept";
}

}  // namespace
}  // namespace tess
