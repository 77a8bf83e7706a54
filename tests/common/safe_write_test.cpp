#include "common/safe_write.h"

#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>

#include "../support/disk_fixtures.h"

using namespace nebro;
using namespace nebro::test;

namespace {

mode_t ModeOf(const std::string& path) {
  struct stat st {};
  stat(path.c_str(), &st);
  return st.st_mode & 07777;
}

// The streamed form, in pieces of at most 10 KiB.
SafeWriteResult Stream(const std::string& path, const std::string& bytes, bool commit = true) {
  SafeFileWriter writer;
  if (const SafeWriteResult opened = writer.Open(path); !opened.Ok()) return opened;
  for (size_t at = 0; at < bytes.size(); at += 10240) writer.Write(bytes.substr(at, 10240));
  return commit ? writer.Commit() : SafeWriteResult();  // else dropped uncommitted
}

}  // namespace

TEST(SafeWrite, KeepsPermissionsOwnerAndHardLinks) {
  TempFolder folder;
  const std::string path = folder / "script.sh";
  ASSERT_TRUE(SafeWriteFile(path, "#!/bin/sh\n").Ok());
  const mode_t mask = umask(022);
  umask(mask);
  EXPECT_EQ(ModeOf(path), 0666 & ~mask);  // a new file: the usual 0666 less the umask

  chmod(path.c_str(), 0751);
  ASSERT_TRUE(Stream(path, "#!/bin/sh\necho hi\n").Ok());
  EXPECT_EQ(ModeOf(path), 0751u);
  struct stat st {};
  if (geteuid() == 0) {
    // Someone else's file written by root keeps its owner.
    ASSERT_EQ(chown(path.c_str(), kNobody, kNobody), 0);
    ASSERT_TRUE(SafeWriteFile(path, "owned").Ok());
    stat(path.c_str(), &st);
    EXPECT_EQ(st.st_uid, kNobody);
    EXPECT_EQ(st.st_gid, kNobody);
    EXPECT_EQ(ModeOf(path), 0751u);
    // A user who may write root's file but not give a file to root rewrites it in place.
    ASSERT_EQ(chown(path.c_str(), 0, 0), 0);
    chmod(path.c_str(), 0666);
    for (bool streamed : {false, true}) {
      AsNobody nobody;
      const SafeWriteResult r = streamed ? Stream(path, "streamed") : SafeWriteFile(path, "in place");
      EXPECT_TRUE(r.Ok() && r.inPlace) << r.errnoValue;
    }
    stat(path.c_str(), &st);
    EXPECT_EQ(st.st_uid, 0u);
    EXPECT_EQ(ReadBytes(path), "streamed");
  }

  // A file with a second name: both names see the new text, whichever form wrote it.
  const std::string other = folder / "other-name.sh";
  ASSERT_EQ(link(path.c_str(), other.c_str()), 0);
  ASSERT_TRUE(SafeWriteFile(path, "linked").Ok());
  EXPECT_EQ(ReadBytes(other), "linked");
  ASSERT_TRUE(Stream(path, "linked again").Ok());
  EXPECT_EQ(ReadBytes(other), "linked again");
  EXPECT_TRUE(OnlyNames(folder.Path(), {"script.sh", "other-name.sh"}));
}

TEST(SafeWrite, FollowsSymbolicLinksToTheRealFile) {
  TempFolder folder;
  mkdir((folder / "real").c_str(), 0755);
  const std::string real = folder / "real/target.txt";
  WriteBytes(real, "before");
  chmod(real.c_str(), 0640);
  ASSERT_EQ(symlink("real/target.txt", (folder / "relative-link").c_str()), 0);
  ASSERT_EQ(symlink((folder / "relative-link").c_str(), (folder / "link-to-link").c_str()), 0);

  const SafeWriteResult r = SafeWriteFile(folder / "link-to-link", "after");
  ASSERT_TRUE(r.Ok()) << r.errnoValue;
  EXPECT_EQ(r.target, real);
  for (const char* link : {"link-to-link", "relative-link"}) {
    struct stat st {};
    ASSERT_EQ(lstat((folder / link).c_str(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode)) << link;  // the links stay links
  }
  EXPECT_EQ(ReadBytes(real), "after");
  EXPECT_EQ(ModeOf(real), 0640u);
  EXPECT_TRUE(OnlyNames(folder / "real", {"target.txt"}));

  // A dangling link creates its target; a loop is an error that changes nothing.
  ASSERT_EQ(symlink("real/created.txt", (folder / "dangling").c_str()), 0);
  ASSERT_TRUE(Stream(folder / "dangling", "made").Ok());
  EXPECT_EQ(ReadBytes(folder / "real/created.txt"), "made");
  ASSERT_EQ(symlink("loop-b", (folder / "loop-a").c_str()), 0);
  ASSERT_EQ(symlink("loop-a", (folder / "loop-b").c_str()), 0);
  const SafeWriteResult loop = SafeWriteFile(folder / "loop-a", "x");
  EXPECT_EQ(loop.failure, SafeWriteFailure::FollowLink);
  EXPECT_EQ(loop.errnoValue, ELOOP);
}

TEST(SafeWrite, FailuresLeaveTheOldFileAndNoTemporaryFile) {
  TempFolder folder;
  const std::string disk = folder / "small";
  if (!MountSmallTmpfs(folder, disk, 64 * 1024)) GTEST_SKIP() << kNoMountsReason;
  const std::string path = disk + "/notes.txt";
  const std::string original(20 * 1024, 'o'), bigger(100 * 1024, 'n');
  WriteBytes(path, original);
  EXPECT_EQ(SafeWriteFile(path, bigger).failure, SafeWriteFailure::Write);
  EXPECT_EQ(Stream(path, bigger).failure, SafeWriteFailure::Write);
  Stream(path, "abandoned", false);
  EXPECT_EQ(ReadBytes(path), original);
  EXPECT_TRUE(OnlyNames(disk, {"notes.txt"}));

  // Rewritten in place (a file with a second name): the space is reserved before the first old
  // byte is overwritten, so the full disk is found in time there too.
  ASSERT_EQ(link(path.c_str(), (disk + "/second-name.txt").c_str()), 0);
  EXPECT_EQ(SafeWriteFile(path, bigger).failure, SafeWriteFailure::ReserveSpace);
  EXPECT_EQ(ReadBytes(path), original);
  EXPECT_TRUE(SafeWriteFile(path, "fits").Ok());
  EXPECT_EQ(ReadBytes(disk + "/second-name.txt"), "fits");
}

TEST(SafeWrite, FilesThatCannotBeReplacedAreRewrittenInPlace) {
  TempFolder folder;
  // A folder that takes no new file: a stream into its writable file is gathered in memory and
  // rewrites the file only at Commit, so an abandoned stream changes nothing.
  const std::string closed = folder / "closed";
  MakeClosedFolderWithWritableFile(closed, "old text that is longer");
  {
    AsNobody nobody;
    Stream(closed + "/writable.txt", "abandoned", false);
    EXPECT_EQ(ReadBytes(closed + "/writable.txt"), "old text that is longer");
    const std::string big(300 * 1024, 'b');
    EXPECT_TRUE(Stream(closed + "/writable.txt", big).inPlace);
    EXPECT_TRUE(ReadBytes(closed + "/writable.txt") == big);
  }

  // A file mounted over another, as containers do with single configuration files: the name
  // cannot be replaced by a rename.
  const std::string source = folder / "source.conf", shown = folder / "shown.conf";
  WriteBytes(source, "original");
  WriteBytes(shown, "hidden below the mount");
  if (!PrivateMounts() || mount(source.c_str(), shown.c_str(), nullptr, MS_BIND, nullptr) != 0) {
    GTEST_SKIP() << kNoMountsReason;
  }
  folder.AddMount(shown);
  EXPECT_TRUE(SafeWriteFile(shown, "edited").Ok());
  EXPECT_EQ(ReadBytes(source), "edited");
  EXPECT_TRUE(Stream(shown, "streamed").Ok());
  EXPECT_EQ(ReadBytes(source), "streamed");
  EXPECT_TRUE(OnlyNames(folder.Path(), {"closed", "source.conf", "shown.conf"}));
}

TEST(SafeWrite, DevicesAndPipesAreWrittenOnlyWhenAsked) {
  EXPECT_EQ(SafeWriteFile("/dev/null", "x").failure, SafeWriteFailure::NotRegularFile);
  SafeWriteOptions direct;
  direct.writeDevicesDirectly = true;
  // A pipe reached through /proc, as /dev/stdout is when the output is piped.
  int pipeFds[2];
  ASSERT_EQ(pipe(pipeFds), 0);
  const std::string viaProc = "/proc/self/fd/" + std::to_string(pipeFds[1]);
  EXPECT_TRUE(SafeWriteFile(viaProc, "through the pipe", direct).Ok());
  close(pipeFds[1]);
  char got[64] = {};
  EXPECT_EQ(read(pipeFds[0], got, sizeof got), 16);
  EXPECT_STREQ(got, "through the pipe");
  close(pipeFds[0]);
}

TEST(SafeWrite, TemporaryFilesThatACrashLeftBehindGoAtTheNextWrite) {
  TempFolder folder;
  const std::string target = folder / "notes.txt";
  WriteBytes(target, "old");
  auto aged = [&](const std::string& name, int secondsAgo) {
    WriteBytes(folder / name, std::string(1000, 'x'));
    EXPECT_TRUE(SetFileTime(folder / name, (time(nullptr) - secondsAgo) * int64_t{1'000'000'000}));
    return folder / name;
  };
  const std::string crashed = aged(".notes.txt.nebro-00000000000000aa", 3600);
  const std::string justMade = aged(".notes.txt.nebro-00000000000000bb", 0);
  const std::string inUse = aged(".notes.txt.nebro-00000000000000cc", 3600);
  const std::string otherFile = aged(".other.txt.nebro-00000000000000dd", 3600);
  // Another writer still holds its file.
  const int writer = open(inUse.c_str(), O_RDWR);
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  ASSERT_EQ(fcntl(writer, F_OFD_SETLK, &lock), 0);

  ASSERT_TRUE(SafeWriteFile(target, "new").Ok());
  EXPECT_EQ(ReadBytes(target), "new");
  EXPECT_FALSE(std::filesystem::exists(crashed));
  EXPECT_TRUE(std::filesystem::exists(justMade));
  EXPECT_TRUE(std::filesystem::exists(inUse));
  EXPECT_TRUE(std::filesystem::exists(otherFile));
  close(writer);
}
