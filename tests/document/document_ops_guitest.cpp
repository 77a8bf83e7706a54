// Opening, saving, the questions and the recent-files list, driven through DispatchCommand and
// the message-box hook against the real editor.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "common/command_ids.h"
#include "gtk/progress_gtk.h"
#include "app/main_window_gtk.h"
#include "gtk/message_box_gtk.h"
#include "appearance/themes.h"
#include "common/utf.h"
#include "document/document_ops_gtk.h"
#include "appearance/current_theme.h"
#include "document/file_load.h"
#include "document/file_load_gtk.h"
#include "document/recovery.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"
#include "settings/settings.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::document;
using namespace nebro::sci;
using namespace nebro::app;
using namespace nebro::appearance;
using namespace nebro::settings;
namespace fs = std::filesystem;

// From support/failing_disk.c: writes (or flushes) of the files under a prefix end in EIO.
extern "C" void FailWritesAndFlushes(const char* writesUnder, const char* flushesUnder);

namespace {

class DocumentOps : public nebro::testing::MainWindowTest {
 protected:
  void Configure() override {
    width = 600;
    height = 400;
    boxesExpected = true;
  }
  std::string Title() { return gtk_window_get_title(GTK_WINDOW(gMain.window)); }
};

}  // namespace

TEST_F(DocumentOps, FailedSaveTellsAndKeepsEverything) {
  fs::create_directory(folder + "/sub");
  const std::string path = WriteFile("sub/a.txt", "old text");
  ASSERT_TRUE(LoadDocument(path));
  Type(" and more");
  CloseDocumentLock(gMain.doc);
  fs::remove_all(folder + "/sub");  // the folder is gone: the save cannot be done
  EXPECT_FALSE(SaveDocument(MainDocumentWindow()));
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0].text, "Cannot save file.\nThe folder no longer exists");
  EXPECT_EQ(asked[0].title, "Nebro \xC3\xA2\xE2\x82\xAC\xE2\x80\x9D Error");
  EXPECT_TRUE(gMain.doc.modified);
  EXPECT_EQ(Title(), "Nebro - a.txt *");
  EXPECT_EQ(Text(), "old text and more");

  // A disk that fails once while the text is written, or while it is flushed: the same, and the
  // file is as it was, also when it was being rewritten in place (it has a second name) and the
  // old content had to be put back.
  const std::string disk = folder + "/disk/";
  fs::create_directory(disk);
  ASSERT_TRUE(LoadDocument(WriteFile("disk/b.txt", "old text")));
  SetText("changed");
  for (int step = 0; step < 4; ++step) {
    if (step == 2) {
      ASSERT_EQ(link((disk + "b.txt").c_str(), (disk + "b2.txt").c_str()), 0);
    }
    FailWritesAndFlushes(step % 2 ? nullptr : disk.c_str(), step % 2 ? disk.c_str() : nullptr);
    EXPECT_TRUE(DispatchCommand(kCmdSave));
    FailWritesAndFlushes(nullptr, nullptr);
    EXPECT_EQ(asked.back().text, "Cannot save file.\nThe disk reported an input/output error");
    EXPECT_TRUE(gMain.doc.modified);
    EXPECT_EQ(ReadFile(disk + "b.txt"), "old text") << "step " << step;
    const std::vector<std::string> names = {"b.txt", "b2.txt"};  // no new file left beside it
    EXPECT_TRUE(test::OnlyNames(disk, {names.begin(), names.begin() + (step < 2 ? 1 : 2)}));
  }
  EXPECT_EQ(asked.size(), 5u);
  EXPECT_FALSE(fs::exists(RecoveryBackupFileFor(GetSettingsFolder(), getpid())));  // put back
}

TEST_F(DocumentOps, QuestionsBeforeLeavingADocument) {
  const std::string path = WriteFile("q.txt", "text");
  ASSERT_TRUE(LoadDocument(path));
  // Unmodified and present: nothing is asked.
  EXPECT_EQ(PromptSaveChanges(MainDocumentWindow()), 7);
  EXPECT_TRUE(asked.empty());

  Type("!");
  answers = {kMbResultCancel};
  DispatchCommand(kCmdNew);  // Cancel: the document stays
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0].kind, kMbSaveDontSaveCancel);
  EXPECT_EQ(asked[0].text, "Save changes to \"q.txt\"?");
  EXPECT_EQ(asked[0].title, "Nebro");
  EXPECT_EQ(gMain.doc.path, path);

  // Moved: the folder is still there.
  fs::rename(path, folder + "/q2.txt");
  answers = {kMbResultCancel};
  PromptSaveChanges(MainDocumentWindow());
  EXPECT_EQ(asked.back().text,
            "\"q.txt\" was moved or renamed while open in Nebro.\nDo you want to save your changes?");

  // Save writes it back to where it was.
  answers = {kMbResultSaveOrYes};
  EXPECT_EQ(PromptSaveChanges(MainDocumentWindow()), 6);
  answers = {kMbResultSaveOrYes};
  ASSERT_TRUE(ConfirmLeavingDocument(MainDocumentWindow()));
  EXPECT_EQ(ReadFile(path), "text!");

  // Don't Save on New gives an untitled, empty document.
  Type("?");
  answers = {kMbResultDontSaveOrNo};
  DispatchCommand(kCmdNew);
  EXPECT_EQ(gMain.doc.path, "");
  EXPECT_EQ(Text(), "");
  EXPECT_FALSE(gMain.doc.modified);
  EXPECT_EQ(Title(), "Nebro - Untitled");
  EXPECT_EQ(Send(SCI_GETEOLMODE), SC_EOL_LF);  // new documents end their lines the Linux way
  EXPECT_EQ(Send(SCI_CANUNDO), 0);
}

TEST_F(DocumentOps, ActivationOffersToWriteBackAGoneFile) {
  fs::create_directory(folder + "/f");
  const std::string path = WriteFile("f/gone.txt", "keep me");
  ASSERT_TRUE(LoadDocument(path));
  CheckDocumentOnActivation(MainDocumentWindow());
  EXPECT_TRUE(asked.empty());

  fs::remove_all(folder + "/f");
  answers = {kMbResultCancel};
  CheckDocumentOnActivation(MainDocumentWindow());
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0].text, "\"gone.txt\" was deleted from disk.\n\nDo you want to save it to the original location?");
  EXPECT_EQ(asked[0].title, "Nebro \xC3\xA2\xE2\x82\xAC\xE2\x80\x9D File Changed");
  EXPECT_EQ(gMain.doc.path, path);
  // Cancel: not asked again until the user has left the window and come back.
  CheckDocumentOnActivation(MainDocumentWindow());
  EXPECT_EQ(asked.size(), 1u);
  DocumentWindowDeactivated();
  // Questions never stack: an activation while a question is open waits.
  SetMessageBoxHook([&](int, const std::string& text, const std::string&) {
    asked.push_back({0, text, ""});
    if (asked.size() == 2) CheckDocumentOnActivation(MainDocumentWindow());
    return asked.size() == 2 ? kMbResultCancel : kMbResultDontSaveOrNo;
  });
  EXPECT_FALSE(ConfirmLeavingDocument(MainDocumentWindow()));
  ASSERT_EQ(asked.size(), 2u);
  EXPECT_EQ(asked[1].text, "\"gone.txt\" was deleted from disk while open in Nebro.\nDo you want to restore it to the original location?");

  CheckDocumentOnActivation(MainDocumentWindow());  // Don't Save
  EXPECT_EQ(gMain.doc.path, "");
  EXPECT_EQ(Text(), "keep me");
  // The text now exists nowhere on disk: it counts as unsaved, and New asks before dropping it.
  EXPECT_EQ(Title(), "Nebro - Untitled *");
  SetMessageBoxHook([&](int, const std::string& text, const std::string&) {
    asked.push_back({0, text, ""});
    return kMbResultCancel;
  });
  EXPECT_TRUE(DispatchCommand(kCmdNew));
  ASSERT_EQ(asked.size(), 4u);
  EXPECT_EQ(asked[3].text, "Save changes to \"Untitled\"?");
  EXPECT_EQ(Text(), "keep me");
}

TEST_F(DocumentOps, RecentFilesCommands) {
  std::vector<std::string> paths;
  for (int i = 0; i < 11; ++i) paths.push_back(WriteFile("r" + std::to_string(i) + ".txt", "x"));
  for (const std::string& p : paths) ASSERT_TRUE(LoadDocument(p));
  auto entry = [](int i) { return Utf16ToUtf8(FieldText(gSettings.recentFiles[i])); };
  EXPECT_EQ(entry(0), paths[10]);
  EXPECT_EQ(entry(9), paths[1]);  // the eleventh file pushed the first out

  // Opening entry 4 moves it to the top.
  DispatchCommand(kCmdRecentOpenFirst + 4);
  EXPECT_EQ(gMain.doc.path, paths[6]);
  EXPECT_EQ(entry(0), paths[6]);
  EXPECT_EQ(entry(1), paths[10]);

  // A missing file is offered for removal.
  fs::remove(paths[10]);
  answers = {kMbResultSaveOrYes};
  DispatchCommand(kCmdRecentOpenFirst + 1);
  ASSERT_FALSE(asked.empty());
  EXPECT_EQ(asked.back().text, "\"r10.txt\" no longer exists on disk.\n\nRemove it from the Recent Files list?");
  EXPECT_EQ(asked.back().kind, kMbYesNo);
  EXPECT_EQ(entry(1), paths[9]);
  EXPECT_EQ(gMain.doc.path, paths[6]);

  DispatchCommand(kCmdRecentRemoveFirst + 0);
  EXPECT_EQ(entry(0), paths[9]);
  EXPECT_EQ(entry(9), "");

  answers = {kMbResultDontSaveOrNo};
  DispatchCommand(kCmdRecentClear);
  EXPECT_EQ(asked.back().text, "Clear the entire Recent Files list?");
  EXPECT_EQ(asked.back().title, "Nebro - Recent Files");
  EXPECT_EQ(entry(0), paths[9]);
  answers = {kMbResultSaveOrYes};
  DispatchCommand(kCmdRecentClear);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(entry(i), "");
  // Every change was saved at once.
  AppSettings saved;
  ASSERT_TRUE(LoadSettingsFrom(GetSettingsFilePath(), saved));
  EXPECT_EQ(FieldText(saved.recentFiles[0]), u"");
}

TEST_F(DocumentOps, DropsAndAutoSave) {
  const std::string a = WriteFile("a.txt", "A");
  const std::string b = WriteFile("b.md", "B");
  ASSERT_TRUE(LoadDocument(a));
  Type("1");
  OpenDroppedFile(MainDocumentWindow(), a);  // the open file again: nothing happens, nothing is asked
  EXPECT_TRUE(asked.empty());
  EXPECT_EQ(Text(), "A1");

  // Auto-save writes a modified document with a path.
  AutoSaveTick(MainDocumentWindow());
  EXPECT_EQ(ReadFile(a), "A1");
  EXPECT_FALSE(gMain.doc.modified);

  answers = {kMbResultDontSaveOrNo};
  Type("2");
  OpenDroppedFile(MainDocumentWindow(), b);
  EXPECT_EQ(asked.size(), 1u);
  EXPECT_EQ(gMain.doc.path, b);
  EXPECT_EQ(Text(), "B");
  EXPECT_EQ(ReadFile(a), "A1");

  // Untitled documents are never auto-saved; nothing is asked.
  answers = {kMbResultDontSaveOrNo};
  Type("x");
  DispatchCommand(kCmdNew);
  Type("new text");
  const size_t before = asked.size();
  AutoSaveTick(MainDocumentWindow());
  EXPECT_EQ(asked.size(), before);
  EXPECT_TRUE(gMain.doc.modified);
}

namespace {

// Answers the next file chooser: picks `name` in `folder`, or cancels when `name` is empty. The
// chooser takes its folder asynchronously, so the answer waits until the chooser names the
// wanted file, and is given again until the chooser has gone.
void AnswerChooser(const std::string& folder, const std::string& name) {
  struct Answer {
    std::string folder, name;
    GtkWidget* chooser = nullptr;
  };
  g_timeout_add(10, [](gpointer data) -> gboolean {
    auto* a = static_cast<Answer*>(data);
    if (a->chooser) {
      if (!gtk_widget_get_mapped(a->chooser)) {  // answered and gone
        g_object_unref(a->chooser);
        delete a;
        return G_SOURCE_REMOVE;
      }
      if (a->name.empty()) {
        gtk_dialog_response(GTK_DIALOG(a->chooser), GTK_RESPONSE_CANCEL);
        return G_SOURCE_CONTINUE;
      }
      gchar* chosen = gtk_file_chooser_get_filename(GTK_FILE_CHOOSER(a->chooser));
      const bool ready = chosen && a->folder + "/" + a->name == chosen;
      g_free(chosen);
      if (ready) {
        gtk_dialog_response(GTK_DIALOG(a->chooser), GTK_RESPONSE_ACCEPT);
      } else {
        gtk_file_chooser_set_current_folder(GTK_FILE_CHOOSER(a->chooser), a->folder.c_str());
        gtk_file_chooser_set_current_name(GTK_FILE_CHOOSER(a->chooser), a->name.c_str());
      }
      return G_SOURCE_CONTINUE;
    }
    GList* top = gtk_window_list_toplevels();
    for (GList* l = top; l; l = l->next) {
      // A chooser answered before may linger a moment after its answer: take a fresh one.
      if (GTK_IS_FILE_CHOOSER(l->data) && gtk_widget_get_mapped(GTK_WIDGET(l->data)) &&
          !g_object_get_data(G_OBJECT(l->data), "nebro-answered")) {
        a->chooser = GTK_WIDGET(g_object_ref(l->data));
      }
    }
    g_list_free(top);
    if (!a->chooser) return G_SOURCE_CONTINUE;
    g_object_set_data(G_OBJECT(a->chooser), "nebro-answered", GINT_TO_POINTER(1));
    if (!a->name.empty()) {
      EXPECT_STREQ(gtk_window_get_title(GTK_WINDOW(a->chooser)), "Save As - Nebro");
    }
    return G_SOURCE_CONTINUE;
  }, new Answer{folder, name});
}

}  // namespace

TEST_F(DocumentOps, SaveAsWritesTheChosenFile) {
  // An untitled document goes through Save As; cancelling changes nothing.
  Type("hello");
  AnswerChooser(folder, "");
  EXPECT_FALSE(SaveDocument(MainDocumentWindow()));
  EXPECT_TRUE(gMain.doc.modified);
  EXPECT_EQ(gMain.doc.path, "");

  // A name without an extension gets ".txt".
  AnswerChooser(folder, "chosen");
  ASSERT_TRUE(DispatchCommand(kCmdSave));
  EXPECT_EQ(gMain.doc.path, folder + "/chosen.txt");
  EXPECT_EQ(ReadFile(folder + "/chosen.txt"), "hello");
  EXPECT_FALSE(gMain.doc.modified);
  EXPECT_EQ(Title(), "Nebro - chosen.txt");

  // Save As of a loaded file writes the new file and leaves the old one as it was.
  const std::string old = WriteFile("old.txt", "# kept");
  ASSERT_TRUE(LoadDocument(old));
  Type(" and changed");
  AnswerChooser(folder, "renamed.md");
  ASSERT_TRUE(DispatchCommand(kCmdSaveAs));
  EXPECT_EQ(ReadFile(old), "# kept");
  EXPECT_EQ(ReadFile(folder + "/renamed.md"), "# kept and changed");
  EXPECT_EQ(gMain.doc.path, folder + "/renamed.md");
  EXPECT_EQ(gLanguage, kLangMarkdown);  // the new name chose the language
  // The new file is the one that is locked now.
  EXPECT_EQ(OpenDocumentFile(folder + "/renamed.md").error, kOpenErrorLocked);
  EXPECT_EQ(OpenDocumentFile(old).error, 0);
}

TEST_F(DocumentOps, LargeFilesLoadWhileTheWindowKeepsPainting) {
  std::string text;
  for (int i = 0; i < 200000; ++i) text += "line " + std::to_string(i) + " of a large file\r\n";
  const std::string path = WriteFile("large.txt", "\xEF\xBB\xBF" + text);
  SetBackgroundLoadThreshold(1 << 20);

  // The load goes on while the main loop runs: the progress window is up when the command
  // returns, the document arrives later.
  bool done = false, loaded = false;
  LoadAsDocument(MainDocumentWindow(), path, [&](bool ok) {
    loaded = ok;
    done = true;
  });
  EXPECT_FALSE(done);
  EXPECT_TRUE(FileLoadInProgress());
  EXPECT_NE(nebro::testing::FindWindow("NebroLoadProgress"), nullptr);
  // A close request waits for the load.
  EXPECT_FALSE(RequestClose());
  ASSERT_TRUE(nebro::testing::WaitUntil([&] { return done; }));
  ASSERT_TRUE(loaded);
  SetBackgroundLoadThreshold(32ull << 20);
  EXPECT_FALSE(FileLoadInProgress());
  EXPECT_TRUE(Text() == text);
  EXPECT_EQ(gMain.doc.encoding, TextEncoding::Utf8Bom);
  EXPECT_EQ(Send(SCI_GETEOLMODE), SC_EOL_CRLF);
  EXPECT_EQ(Title(), "Nebro - large.txt");
  EXPECT_FALSE(gMain.doc.modified);
  EXPECT_EQ(Send(SCI_CANUNDO), 0);

  // A refused file is refused the same way on this path.
  const std::string binary = WriteFile("large.bin", std::string("\x7F" "ELF") + std::string(3 << 20, 'x'));
  SetBackgroundLoadThreshold(1 << 20);
  EXPECT_FALSE(LoadDocument(binary));
  SetBackgroundLoadThreshold(32ull << 20);
  ASSERT_FALSE(asked.empty());
  EXPECT_EQ(asked.back().text, "Cannot open binary file.\n\n");
  EXPECT_TRUE(Text() == text);  // the editor kept what it had
}

TEST_F(DocumentOps, ACancelledLoadLeavesTheShownDocumentAsItWas) {
  const std::string shown = WriteFile("shown.txt", "kept");
  ASSERT_TRUE(LoadDocument(shown));
  Type("!");
  const std::string big = WriteFile("big.txt", std::string(100u << 20, 'x'));
  bool done = false, loaded = true;
  LoadAsDocument(MainDocumentWindow(), big, [&](bool ok) {
    loaded = ok;
    done = true;
  });
  CancelProgressJobs();  // what Cancel, Escape and a signal do
  ASSERT_TRUE(nebro::testing::WaitUntil([&] { return done; }));
  EXPECT_FALSE(loaded);
  ASSERT_EQ(Send(SCI_GETLENGTH), 5);  // (not the 100 MB text, which would flood the report)
  EXPECT_EQ(Text(), "kept!");
  EXPECT_EQ(gMain.doc.path, shown);
  EXPECT_EQ(Title(), "Nebro - shown.txt *");
  EXPECT_TRUE(asked.empty());  // cancelling is not an error
}
