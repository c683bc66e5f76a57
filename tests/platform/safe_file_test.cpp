// SafeFile on POSIX against real files, links, pipes and devices: what stands
// at the path decides where the bytes go, a failure never touches the old
// file, and leftovers are told apart by the process that made them.
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
#include "tests/support/write_failure_sweep.h"

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

TEST(SafeFile, AFullDiskAtAnyByteLeavesTheOldFileAndNamesTheCause) {
  TempFolder dir;
  const std::string path = dir / "f.txt";
  const std::string text(300, 'n');
  testing::SweepWriteFailures({path}, [&] { WriteText(path, "previous"); }, [&] { return WriteAll(path, text); });
  std::string error;
  {
    SafeFileFailureScope full(10);
    EXPECT_FALSE(WriteAll(path, text, &error));
  }
  EXPECT_EQ(error, "No space left on device");
  if (fs::exists("/dev/full")) {
    EXPECT_FALSE(WriteAll("/dev/full", text, &error));
    EXPECT_EQ(error, "No space left on device");
  }
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

TEST(SafeFile, CanWriteSaysWhatOpenWouldRefuse) {
  TempFolder dir;
  std::string reason;
  EXPECT_TRUE(SafeFile::CanWrite(dir / "new.gif", &reason));
  EXPECT_TRUE(SafeFile::CanWrite("/dev/null", &reason));
  EXPECT_FALSE(SafeFile::CanWrite(dir.path(), &reason));
  EXPECT_EQ(reason, "Is a directory");
  EXPECT_FALSE(SafeFile::CanWrite(dir / "no/such/out.gif", &reason));
  EXPECT_EQ(reason, "No such file or directory");
  WriteText(dir / "plain", "");
  EXPECT_FALSE(SafeFile::CanWrite(dir / "plain/out.gif", &reason));
  EXPECT_EQ(reason, "Not a directory");
  EXPECT_EQ(FolderEntries(dir.path()), std::vector<std::string>{"plain"});
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

TEST(SafeFile, SignalsRemoveOpenTemporariesAndStillKillTheProcess) {
  TempFolder dir;
  const std::string path = dir / "sig.gif";
  for (int signal_number : {SIGINT, SIGTERM, SIGHUP}) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
      RemoveTemporariesOnSignals();
      SafeFile file;
      if (!file.Open(path) || !file.Write("partial", 7)) _exit(3);
      if (write(ready[1], "r", 1) != 1) _exit(4);
      for (;;) pause();
    }
    char c;
    ASSERT_EQ(read(ready[0], &c, 1), 1);
    close(ready[0]);
    close(ready[1]);
    EXPECT_EQ(FolderEntries(dir.path()).size(), 1u) << "the temporary exists while the child waits";
    kill(child, signal_number);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal_number) << signal_number;
    EXPECT_TRUE(FolderEntries(dir.path()).empty()) << signal_number;
  }
}

}  // namespace
}  // namespace tess
