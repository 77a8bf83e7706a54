#include "document/document_ops_gtk.h"

#include <malloc.h>

#include <thread>

#include "appearance/lexer_setup_gtk.h"
#include "common/command_ids.h"
#include "common/utf.h"
#include "document/document_builder_gtk.h"
#include "document/document_questions.h"
#include "document/recovery_gtk.h"
#include "document/document_texts.h"
#include "document/file_load_gtk.h"
#include "document/file_save.h"
#include "document/recent_files.h"
#include "gtk/file_chooser_gtk.h"
#include "gtk/message_box_gtk.h"
#include "gtk/trace_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/settings.h"

namespace nebro::document {
namespace {

using namespace sci;

guint autoSaveTimer = 0;
bool activationCheckRunning = false;
// Set once the check has asked: the box's own closing gives the activation back, which is not
// the user coming back to the window. Leaving the window for another program re-arms it.
bool askedThisActivation = false;

template <size_t N>
std::vector<ChooserFilter> Filters(const FileFilter (&filters)[N]) {
  std::vector<ChooserFilter> out;
  for (const FileFilter& f : filters) out.push_back({std::string(f.label), std::string(f.patterns)});
  return out;
}

void DocumentBecame(const DocumentWindow& w, const std::string& path) {
  w.doc->path = DocumentPath(path);
  w.doc->modified = false;
  RemoveRecoveryCopy();
  if (w.changed) w.changed();
}

bool SaveTo(const DocumentWindow& w, const std::string& path) {
  GtkWidget* editor = w.editor;
  const std::string_view text = DocumentText(editor);
  const SaveResult result = SaveDocumentFile(path, text.data(), text.size(), w.doc->encoding, w.doc->lockFd);
  if (!result.Ok()) {
    Trace("Nebro: ERROR - Cannot save %s: %s", path.c_str(), result.detail.c_str());
    ShowMessageBox(w.owner, kMbOk, std::string(kTextCannotSave) + "\n" + SaveFailureReason(result),
                   std::string(kTitleErrorMangled));
    return false;
  }
  Send(editor, SCI_SETSAVEPOINT);
  // Saves write UTF-8: from now on the document describes the file as it is on disk.
  if (w.doc->encoding != TextEncoding::Utf8Bom) w.doc->encoding = TextEncoding::Utf8;
  const bool renamed = path != w.doc->path;
  if (renamed) appearance::SetupLexer(editor, path);  // a new name may mean a new language
  DocumentBecame(w, path);
  return true;
}

}  // namespace

void LoadAsDocument(const DocumentWindow& w, const std::string& path, std::function<void(bool)> done) {
  FileLoad({w.owner, w.editor, w.doc}, path, [w, path, done](bool loaded) {
    if (loaded) {
      appearance::SetupLexer(w.editor, path);
      ClearSearchIndicators(w.editor);
      DocumentBecame(w, path);
      AddRecentFile(settings::gSettings.recentFiles, Utf8ToUtf16(w.doc->path));
      settings::SaveSettings(settings::gSettings);
    }
    if (done) done(loaded);
  });
}

void OpenFileDialog(const DocumentWindow& w) {
  GtkFileChooserNative* dialog = gtk_file_chooser_native_new(
      std::string(kOpenDialogTitle).c_str(), w.owner, GTK_FILE_CHOOSER_ACTION_OPEN, "_Open", "_Cancel");
  if (!dialog) {
    ShowMessageBox(w.owner, kMbOk, std::string(kTextFileDialogFailed), std::string(kTitleErrorMangled));
    return;
  }
  AddChooserFilters(GTK_FILE_CHOOSER(dialog), Filters(kOpenFileTypes));
  const std::string path = RunFileChooser(dialog);
  if (!path.empty()) LoadAsDocument(w, path);
}

bool SaveDocument(const DocumentWindow& w) {
  if (w.doc->path.empty()) return SaveDocumentAs(w);
  return SaveTo(w, w.doc->path);
}

bool SaveDocumentAs(const DocumentWindow& w) {
  GtkFileChooserNative* dialog = gtk_file_chooser_native_new(
      std::string(kSaveAsDialogTitle).c_str(), w.owner, GTK_FILE_CHOOSER_ACTION_SAVE, "_Save", "_Cancel");
  gtk_file_chooser_set_do_overwrite_confirmation(GTK_FILE_CHOOSER(dialog), TRUE);
  if (!w.doc->path.empty()) gtk_file_chooser_set_filename(GTK_FILE_CHOOSER(dialog), w.doc->path.c_str());
  // After the name: the box then shows the document's own type rather than nothing.
  const std::vector<ChooserFilter> filters = Filters(kSaveAsFilters);
  AddChooserFilters(GTK_FILE_CHOOSER(dialog), filters, FilterForFile(filters, w.doc->path));
  std::string path = RunFileChooser(dialog);
  if (path.empty()) return false;
  const size_t slash = path.rfind('/');
  if (path.find('.', slash == std::string::npos ? 0 : slash) == std::string::npos) {
    path += "." + std::string(kSaveAsDefaultExtension);
  }
  return SaveTo(w, path);
}

int PromptSaveChanges(const DocumentWindow& w) {
  const DiskStatus status = CheckDocumentOnDisk(w.doc->path);
  const DocumentQuestion q = SaveChangesQuestion(w.doc->path, w.doc->modified, status);
  if (!q.ask) return kAnswerDontSave;
  return PromptAnswer(ShowMessageBox(w.owner, kMbSaveDontSaveCancel, q.text, std::string(q.title)));
}

bool ConfirmLeavingDocument(const DocumentWindow& w) {
  const int answer = PromptSaveChanges(w);
  if (answer == kAnswerCancel) return false;
  if (answer == kAnswerSave) return SaveDocument(w);
  return true;
}

void NewDocument(const DocumentWindow& w) {
  GtkWidget* editor = w.editor;
  CloseDocumentLock(*w.doc);
  LoadTextIntoEditor(editor, "", 0);
  w.doc->encoding = TextEncoding::Utf8;
  // New documents end their lines as every Linux program does; loaded files keep their own.
  Send(editor, SCI_SETEOLMODE, SC_EOL_LF);
  appearance::SetupLexer(editor, "");
  DocumentBecame(w, "");
  // A large previous document's memory goes back to the system; walking the heap for it takes
  // a while after a large file, so it is done beside the window.
  std::thread([] { malloc_trim(0); }).detach();
  gtk_widget_queue_draw(editor);
  ClearSearchIndicators(editor);
}

void OpenRecentFile(const DocumentWindow& w, int index) {
  const std::u16string entry(RecentFileEntry(settings::gSettings.recentFiles, index));
  const std::string path = Utf16ToUtf8(entry);
  switch (RecentOpenFirstStep(entry, !path.empty() && PathExists(path))) {
    case RecentOpenStep::Nothing:
      return;
    case RecentOpenStep::AskRemoveMissing:
      if (ShowMessageBox(w.owner, kMbYesNo, RecentMissingQuestion(entry), std::string(kTitleRecentMissing)) ==
          kMbResultSaveOrYes) {
        RemoveRecentFileEntry(index);
      }
      return;
    case RecentOpenStep::Load:
      break;
  }
  if (!ConfirmLeavingDocument(w)) return;
  if (path == w.doc->path) CloseDocumentLock(*w.doc);
  LoadAsDocument(w, path);
}

void RemoveRecentFileEntry(int index) {
  if (RemoveRecentFile(settings::gSettings.recentFiles, index)) settings::SaveSettings(settings::gSettings);
}

void ClearRecentFileList(const DocumentWindow& w) {
  if (ShowMessageBox(w.owner, kMbYesNo, std::string(kTextClearRecent), std::string(kTitleRecentClear)) ==
      kMbResultSaveOrYes) {
    ClearRecentFiles(settings::gSettings.recentFiles);
    settings::SaveSettings(settings::gSettings);
  }
}

void OpenDroppedFile(const DocumentWindow& w, const std::string& path) {
  if (path.empty() || path == w.doc->path) return;
  if (!ConfirmLeavingDocument(w)) return;
  CloseDocumentLock(*w.doc);
  LoadAsDocument(w, path);
}

void CheckDocumentOnActivation(const DocumentWindow& w) {
  // Questions never stack: while any box is open, the check waits for the next activation.
  if (w.doc->viewerMode || w.doc->path.empty() || activationCheckRunning || askedThisActivation ||
      OpenMessageBoxes() > 0) {
    return;
  }
  const DiskStatus status = CheckDocumentOnDisk(w.doc->path);
  const DocumentQuestion q = FileChangedQuestion(w.doc->path, status);
  if (!q.ask) return;
  activationCheckRunning = true;  // the box itself takes and gives back the activation
  const int answer = PromptAnswer(ShowMessageBox(w.owner, kMbSaveDontSaveCancel, q.text, std::string(q.title)));
  activationCheckRunning = false;
  askedThisActivation = true;
  if (answer == kAnswerSave) {
    SaveDocument(w);
  } else if (answer == kAnswerDontSave) {
    // The text now lives only in memory: it stays unsaved until the user saves or drops it.
    w.doc->path.clear();
    w.doc->modified = true;
    CloseDocumentLock(*w.doc);
    if (w.changed) w.changed();
  }
}

void DocumentWindowDeactivated() {
  // The deactivations that our own boxes cause do not count.
  if (!activationCheckRunning && OpenMessageBoxes() == 0) askedThisActivation = false;
}

void AutoSaveTick(const DocumentWindow& w) {
  if (w.doc->modified && !w.doc->path.empty()) SaveDocument(w);
}

void RestartAutoSaveTimer(const DocumentWindow& w, int minutes) {
  if (autoSaveTimer) g_source_remove(autoSaveTimer);
  autoSaveTimer = 0;
  if (minutes > 0) {
    autoSaveTimer = g_timeout_add_full(G_PRIORITY_DEFAULT, static_cast<guint>(minutes) * 60000u, [](gpointer data) -> gboolean {
      AutoSaveTick(*static_cast<DocumentWindow*>(data));
      return G_SOURCE_CONTINUE;
    }, new DocumentWindow(w), [](gpointer data) { delete static_cast<DocumentWindow*>(data); });
  }
}

void AddDocumentCommands(CommandTable& table, const DocumentWindow& w) {
  AddCommand(table, {kCmdNew, "New", {"Ctrl+N"}, "", [w] {
                       if (ConfirmLeavingDocument(w)) NewDocument(w);
                     }, {}});
  AddCommand(table, {kCmdOpen, "Open", {"Ctrl+O"}, "", [w] {
                       if (ConfirmLeavingDocument(w)) OpenFileDialog(w);
                     }, {}});
  AddCommand(table, {kCmdSave, "Save", {"Ctrl+S"}, "", [w] { SaveDocument(w); }, {}});
  AddCommand(table, {kCmdSaveAs, "Save As", {"Ctrl+Shift+S"}, "", [w] { SaveDocumentAs(w); }, {}});
  for (int i = 0; i < kRecentFileCount; ++i) {
    AddCommand(table, {kCmdRecentOpenFirst + i, "Open recent file", {}, "", [w, i] { OpenRecentFile(w, i); }, {}});
    AddCommand(table, {kCmdRecentRemoveFirst + i, "Remove recent file", {}, "", [i] { RemoveRecentFileEntry(i); }, {}});
  }
  AddCommand(table, {kCmdRecentClear, "Clear recent files", {}, "", [w] { ClearRecentFileList(w); }, {}});
}

}  // namespace nebro::document
