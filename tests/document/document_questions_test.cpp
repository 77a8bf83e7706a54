#include "document/document_questions.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "common/utf.h"
#include "../support/disk_fixtures.h"

using namespace nebro;
using namespace nebro::document;
using namespace nebro::test;

// The questions as the real window asks them (Save changes for a present, moved or untitled
// document; the deleted file on activation) are checked in document_ops_guitest and
// toolbar_guitest; these are the other wordings and the disk rule's edges.
TEST(DiskStatus, PresentMovedAndDeletedFromTheFileSystem) {
  TempFolder folder;
  mkdir((folder / "project").c_str(), 0755);
  const std::string path = folder / "project/notes.md";
  WriteBytes(path, "x");
  EXPECT_EQ(CheckDocumentOnDisk(""), DiskStatus::Present);  // untitled
  EXPECT_EQ(CheckDocumentOnDisk(path), DiskStatus::Present);
  // Renaming only the file: moved or renamed; the whole folder gone: deleted.
  ASSERT_EQ(std::rename(path.c_str(), (folder / "project/renamed.md").c_str()), 0);
  EXPECT_EQ(CheckDocumentOnDisk(path), DiskStatus::Moved);
  std::filesystem::remove_all(folder / "project");
  EXPECT_EQ(CheckDocumentOnDisk(path), DiskStatus::Deleted);
  // A name with no folder part at all counts as deleted; a file at the root as moved.
  EXPECT_EQ(CheckDocumentOnDisk("no-such-file-here.txt"), DiskStatus::Deleted);
  EXPECT_EQ(CheckDocumentOnDisk("/no-such-file-at-the-root.txt"), DiskStatus::Moved);
}

TEST(SaveChangesQuestion, WordingFollowsModifiedFlagAndDiskStatus) {
  const std::string path = "/home/ann/report.txt";
  EXPECT_EQ(SaveChangesQuestion(path, true, DiskStatus::Deleted).text,
            "\"report.txt\" was deleted from disk while open in Nebro.\n"
            "Do you want to save your changes?");
  // Unmodified but gone: offer to put it back.
  const DocumentQuestion q = SaveChangesQuestion(path, false, DiskStatus::Deleted);
  EXPECT_TRUE(q.ask);
  EXPECT_EQ(q.text,
            "\"report.txt\" was deleted from disk while open in Nebro.\n"
            "Do you want to restore it to the original location?");
  EXPECT_EQ(SaveChangesQuestion(path, false, DiskStatus::Moved).text,
            "\"report.txt\" was moved or renamed while open in Nebro.\n"
            "Do you want to restore it to the original location?");

  // The box's buttons: Save, Don't Save; Cancel, Escape and closing all cancel.
  EXPECT_EQ(PromptAnswer(133), kAnswerSave);
  EXPECT_EQ(PromptAnswer(134), kAnswerDontSave);
  for (int other : {132, 131, -1}) EXPECT_EQ(PromptAnswer(other), kAnswerCancel) << other;
}

TEST(FileChangedQuestion, AskedOnlyForAFileThatWent) {
  EXPECT_FALSE(FileChangedQuestion("", DiskStatus::Deleted).ask);
  const DocumentQuestion q = FileChangedQuestion("/a/b.txt", DiskStatus::Moved);
  EXPECT_TRUE(q.ask);
  EXPECT_EQ(q.text,
            "\"b.txt\" was moved or renamed outside of Nebro.\n\n"
            "Do you want to save it to the original location?");
}

TEST(DocumentDisplayName, TextAfterTheLastSlash) {
  EXPECT_EQ(DocumentDisplayName(""), "Untitled");
  EXPECT_EQ(DocumentDisplayName("/a/b/c.txt"), "c.txt");
  EXPECT_EQ(DocumentDisplayName("plain.txt"), "plain.txt");
  EXPECT_EQ(DocumentDisplayName("/a/back\\slash"), "back\\slash");  // not a separator here
  EXPECT_EQ(DocumentDisplayName("/a/caf\xE9"), "caf\xEF\xBF\xBD");   // not UTF-8: shown as U+FFFD
}
