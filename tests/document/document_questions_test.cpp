#include "document/document_questions.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "common/utf.h"
#include "../support/disk_fixtures.h"

using namespace nebro;
using namespace nebro::document;
using namespace nebro::test;

TEST(DiskStatus, PresentMovedAndDeletedFromTheFileSystem) {
  TempFolder folder;
  mkdir((folder / "project").c_str(), 0755);
  const std::string path = folder / "project/notes.md";
  WriteBytes(path, "x");
  EXPECT_EQ(CheckDocumentOnDisk(""), DiskStatus::Present);  // untitled
  EXPECT_EQ(CheckDocumentOnDisk(path), DiskStatus::Present);

  // Renaming only the file: moved or renamed.
  ASSERT_EQ(std::rename(path.c_str(), (folder / "project/renamed.md").c_str()), 0);
  EXPECT_EQ(CheckDocumentOnDisk(path), DiskStatus::Moved);

  // The whole folder gone: deleted.
  std::filesystem::remove_all(folder / "project");
  EXPECT_EQ(CheckDocumentOnDisk(path), DiskStatus::Deleted);

  // A name with no folder part at all counts as deleted; a file at the root as moved.
  EXPECT_EQ(CheckDocumentOnDisk("no-such-file-here.txt"), DiskStatus::Deleted);
  EXPECT_EQ(CheckDocumentOnDisk("/no-such-file-at-the-root.txt"), DiskStatus::Moved);

  // The same rule over known answers.
  EXPECT_EQ(DiskStatusFrom("/a/b", true, false), DiskStatus::Present);
  EXPECT_EQ(DiskStatusFrom("/a/b", false, true), DiskStatus::Moved);
  EXPECT_EQ(DiskStatusFrom("/a/b", false, false), DiskStatus::Deleted);
  EXPECT_EQ(DiskStatusFrom("b", false, true), DiskStatus::Deleted);
  EXPECT_EQ(DiskStatusFrom("", false, false), DiskStatus::Present);
}

TEST(SaveChangesQuestion, WordingFollowsModifiedFlagAndDiskStatus) {
  const std::string path = "/home/ann/report.txt";
  // Unmodified and present: nothing is asked, the action goes on.
  EXPECT_FALSE(SaveChangesQuestion(path, false, DiskStatus::Present).ask);

  DocumentQuestion q = SaveChangesQuestion(path, true, DiskStatus::Present);
  EXPECT_TRUE(q.ask);
  EXPECT_EQ(q.text, "Save changes to \"report.txt\"?");
  EXPECT_EQ(q.title, "Nebro");
  EXPECT_EQ(SaveChangesQuestion("", true, DiskStatus::Present).text, "Save changes to \"Untitled\"?");

  q = SaveChangesQuestion(path, true, DiskStatus::Moved);
  EXPECT_EQ(q.text,
            "\"report.txt\" was moved or renamed while open in Nebro.\n"
            "Do you want to save your changes?");
  q = SaveChangesQuestion(path, true, DiskStatus::Deleted);
  EXPECT_EQ(q.text,
            "\"report.txt\" was deleted from disk while open in Nebro.\n"
            "Do you want to save your changes?");
  // Unmodified but gone: offer to put it back.
  q = SaveChangesQuestion(path, false, DiskStatus::Deleted);
  EXPECT_TRUE(q.ask);
  EXPECT_EQ(q.text,
            "\"report.txt\" was deleted from disk while open in Nebro.\n"
            "Do you want to restore it to the original location?");
  q = SaveChangesQuestion(path, false, DiskStatus::Moved);
  EXPECT_EQ(q.text,
            "\"report.txt\" was moved or renamed while open in Nebro.\n"
            "Do you want to restore it to the original location?");

  // The box's buttons: Save, Don't Save; Cancel, Escape and closing all cancel.
  EXPECT_EQ(PromptAnswer(133), kAnswerSave);
  EXPECT_EQ(PromptAnswer(134), kAnswerDontSave);
  EXPECT_EQ(PromptAnswer(132), kAnswerCancel);
  EXPECT_EQ(PromptAnswer(131), kAnswerCancel);
  EXPECT_EQ(PromptAnswer(-1), kAnswerCancel);
  EXPECT_EQ(kAnswerSave, 6);
  EXPECT_EQ(kAnswerDontSave, 7);
  EXPECT_EQ(kAnswerCancel, 2);
}

TEST(FileChangedQuestion, AskedOnlyForAFileThatWent) {
  EXPECT_FALSE(FileChangedQuestion("/a/b.txt", DiskStatus::Present).ask);
  EXPECT_FALSE(FileChangedQuestion("", DiskStatus::Deleted).ask);
  DocumentQuestion q = FileChangedQuestion("/a/b.txt", DiskStatus::Moved);
  EXPECT_TRUE(q.ask);
  EXPECT_EQ(q.text,
            "\"b.txt\" was moved or renamed outside of Nebro.\n\n"
            "Do you want to save it to the original location?");
  EXPECT_EQ(Utf8ToUtf16(q.title), u"Nebro \u00E2\u20AC\u201D File Changed");
  q = FileChangedQuestion("/a/b.txt", DiskStatus::Deleted);
  EXPECT_EQ(q.text,
            "\"b.txt\" was deleted from disk.\n\n"
            "Do you want to save it to the original location?");
}

TEST(DocumentDisplayName, TextAfterTheLastSlash) {
  EXPECT_EQ(DocumentDisplayName(""), "Untitled");
  EXPECT_EQ(DocumentDisplayName("/a/b/c.txt"), "c.txt");
  EXPECT_EQ(DocumentDisplayName("plain.txt"), "plain.txt");
  EXPECT_EQ(DocumentDisplayName("/a/back\\slash"), "back\\slash");  // not a separator here
  EXPECT_EQ(DocumentDisplayName("/a/caf\xE9"), "caf\xEF\xBF\xBD");   // not UTF-8: shown as U+FFFD
}
