#include "document/recovery.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "../support/disk_fixtures.h"

using namespace nebro::document;
using namespace nebro::test;

TEST(RecoveryCopies, OnlyWholeCopiesOfEndedEditorsAreFound) {
  TempFolder folder;
  // A process that has ended: its number is free.
  const pid_t ended = fork();
  if (ended == 0) _exit(0);
  waitpid(ended, nullptr, 0);

  const std::string text = std::string("line\r\n\0binary-safe\n", 19);
  ASSERT_TRUE(WriteRecoveryCopy(RecoveryFileFor(folder.Path(), ended), "/home/u/a.txt", 1700000000, text));
  // A copy cut short (a full disk), junk under the same kind of name, and other files.
  const std::string whole = EncodeRecoveryCopy("", 1700000001, "untitled text");
  WriteBytes(RecoveryFileFor(folder.Path(), 999999990), whole.substr(0, whole.size() - 1));
  WriteBytes(RecoveryFileFor(folder.Path(), 999999991), "not a copy");
  WriteBytes(folder.Path() + "/recovery_x.txt", whole);
  WriteBytes(folder.Path() + "/notes.txt", whole);
  WriteBytes(folder.Path() + "/recovery_12-oldx.txt", whole);
  // Old contents kept by two saves of the ended editor (the first could not be written back).
  WriteBytes(RecoveryBackupFileFor(folder.Path(), ended), EncodeRecoveryCopy("/home/u/b.txt", 1600000000, "b"));
  WriteBytes(RecoveryBackupFileFor(folder.Path(), ended, 2), EncodeRecoveryCopy("/home/u/b.txt", 1600000001, "b2"));

  const std::vector<RecoveryCopy> found = FindOrphanedRecoveryCopies(folder.Path());
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[2].pid, ended);
  EXPECT_EQ(found[2].originalPath, "/home/u/a.txt");
  EXPECT_EQ(found[2].writtenAt, 1700000000);
  EXPECT_EQ(found[2].text, text);
  EXPECT_FALSE(found[2].beforeSave);
  EXPECT_TRUE(found[0].beforeSave && found[1].beforeSave);
  EXPECT_EQ(found[0].text + found[1].text, "bb2");

  // This test's own process is running but is no editor; a number nobody has is not running.
  EXPECT_FALSE(EditorProcessRunning(getpid()));
  EXPECT_FALSE(EditorProcessRunning(ended));
}
