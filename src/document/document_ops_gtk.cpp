#include "document/document_ops_gtk.h"

#include <malloc.h>

#include "app/main_window_gtk.h"
#include "app/message_box_gtk.h"
#include "app/trace_gtk.h"
#include "appearance/theme_gtk.h"
#include "common/utf.h"
#include "document/document_questions.h"
#include "document/document_texts.h"
#include "document/file_load_gtk.h"
#include "document/file_save.h"
#include "document/recent_files.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/settings.h"

namespace nebro {
namespace {

using namespace sci;

guint autoSaveTimer = 0;
bool activationCheckRunning = false;

GtkWindow* Owner() { return GTK_WINDOW(gMain.window); }

void AddFilters(GtkFileChooser* chooser, const FileFilter* filters, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    GtkFileFilter* filter = gtk_file_filter_new();
    gtk_file_filter_set_name(filter, std::string(filters[i].label).c_str());
    std::string patterns(filters[i].patterns);
    size_t start = 0;
    while (start <= patterns.size()) {
      size_t end = patterns.find(';', start);
      if (end == std::string::npos) end = patterns.size();
      std::string pattern = patterns.substr(start, end - start);
      if (pattern == "*.*") pattern = "*";  // every file, with or without an extension
      gtk_file_filter_add_pattern(filter, pattern.c_str());
      start = end + 1;
    }
    gtk_file_chooser_add_filter(chooser, filter);
    if (i == 0) gtk_file_chooser_set_filter(chooser, filter);
  }
}

void DocumentBecame(const std::string& path) {
  gMain.doc.path = path;
  gMain.doc.modified = false;
  UpdateTitle();
  RepaintChrome();
}

}  // namespace

bool LoadAsDocument(const std::string& path) {
  if (!FileLoad(path)) return false;
  DocumentBecame(path);
  AddRecentFile(gSettings.recentFiles, Utf8ToUtf16(path));
  SaveSettings(gSettings);
  return true;
}

// Runs a file chooser and returns the chosen path, or "" when cancelled.
static std::string RunChooser(GtkFileChooserNative* dialog) {
  std::string path;
  if (gtk_native_dialog_run(GTK_NATIVE_DIALOG(dialog)) == GTK_RESPONSE_ACCEPT) {
    if (gchar* chosen = gtk_file_chooser_get_filename(GTK_FILE_CHOOSER(dialog))) {
      path = chosen;
      g_free(chosen);
    }
  }
  g_object_unref(dialog);
  return path;
}

bool OpenFileDialog() {
  GtkFileChooserNative* dialog = gtk_file_chooser_native_new(
      std::string(kOpenDialogTitle).c_str(), Owner(), GTK_FILE_CHOOSER_ACTION_OPEN, "_Open", "_Cancel");
  if (!dialog) {
    ShowMessageBox(Owner(), kMbOk, std::string(kTextFileDialogFailed), std::string(kTitleErrorMangled));
    return false;
  }
  AddFilters(GTK_FILE_CHOOSER(dialog), kOpenFileTypes, std::size(kOpenFileTypes));
  const std::string path = RunChooser(dialog);
  return !path.empty() && LoadAsDocument(path);
}

static bool SaveTo(const std::string& path) {
  GtkWidget* editor = gMain.editor;
  const auto length = static_cast<size_t>(Send(editor, SCI_GETLENGTH));
  const char* text = reinterpret_cast<const char*>(Send(editor, SCI_GETCHARACTERPOINTER));
  const SaveResult result = SaveDocumentFile(path, text, length, gMain.doc.encoding, gMain.doc.lockFd);
  if (!result.Ok()) {
    Trace("Nebro: ERROR - Cannot save %s: %s", path.c_str(), result.detail.c_str());
    ShowMessageBox(Owner(), kMbOk, std::string(kTextCannotSave), std::string(kTitleErrorMangled));
    return false;
  }
  Send(editor, SCI_SETSAVEPOINT);
  const bool renamed = path != gMain.doc.path;
  DocumentBecame(path);
  if (!gViewerMode && renamed) SetupLexer(editor, path);  // a new name may mean a new language
  return true;
}

bool SaveDocument() {
  if (gMain.doc.path.empty()) return SaveDocumentAs();
  return SaveTo(gMain.doc.path);
}

bool SaveDocumentAs() {
  GtkFileChooserNative* dialog = gtk_file_chooser_native_new(
      std::string(kSaveAsDialogTitle).c_str(), Owner(), GTK_FILE_CHOOSER_ACTION_SAVE, "_Save", "_Cancel");
  gtk_file_chooser_set_do_overwrite_confirmation(GTK_FILE_CHOOSER(dialog), TRUE);
  AddFilters(GTK_FILE_CHOOSER(dialog), kSaveAsFilters, std::size(kSaveAsFilters));
  if (!gMain.doc.path.empty()) {
    gtk_file_chooser_set_filename(GTK_FILE_CHOOSER(dialog), gMain.doc.path.c_str());
  }
  std::string path = RunChooser(dialog);
  if (path.empty()) return false;
  const size_t slash = path.rfind('/');
  if (path.find('.', slash == std::string::npos ? 0 : slash) == std::string::npos) {
    path += "." + std::string(kSaveAsDefaultExtension);
  }
  return SaveTo(path);
}

int PromptSaveChanges() {
  const DiskStatus status = CheckDocumentOnDisk(gMain.doc.path);
  const DocumentQuestion q = SaveChangesQuestion(gMain.doc.path, gMain.doc.modified, status);
  if (!q.ask) return kAnswerDontSave;
  return PromptAnswer(ShowMessageBox(Owner(), kMbSaveDontSaveCancel, q.text, std::string(q.title)));
}

bool ConfirmLeavingDocument() {
  const int answer = PromptSaveChanges();
  if (answer == kAnswerCancel) return false;
  if (answer == kAnswerSave) return SaveDocument();
  return true;
}

void NewDocument() {
  GtkWidget* editor = gMain.editor;
  CloseDocumentLock(gMain.doc);
  LoadTextIntoEditor(editor, "", 0);
  gMain.doc.path.clear();
  gMain.doc.modified = false;
  gMain.doc.encoding = TextEncoding::Utf8;
  Send(editor, SCI_SETEOLMODE, SC_EOL_CRLF);
  if (!gViewerMode) SetupLexer(editor, "");
  UpdateTitle();
  RepaintChrome();
  malloc_trim(0);  // a large previous document's memory goes back to the system
  gtk_widget_queue_draw(editor);
  for (int indicator : {8, 9, 10}) {
    Send(editor, SCI_SETINDICATORCURRENT, indicator);
    Send(editor, SCI_INDICATORCLEARRANGE, 0, Send(editor, SCI_GETLENGTH));
  }
}

void OpenRecentFile(int index) {
  const std::u16string entry(RecentFileEntry(gSettings.recentFiles, index));
  const std::string path = Utf16ToUtf8(entry);
  switch (RecentOpenFirstStep(entry, !path.empty() && PathExists(path))) {
    case RecentOpenStep::Nothing:
      return;
    case RecentOpenStep::AskRemoveMissing:
      if (ShowMessageBox(Owner(), kMbYesNo, RecentMissingQuestion(entry), std::string(kTitleRecentMissing)) ==
          kMbResultSaveOrYes) {
        RemoveRecentFileEntry(index);
      }
      return;
    case RecentOpenStep::Load:
      break;
  }
  if (!ConfirmLeavingDocument()) return;
  if (path == gMain.doc.path) CloseDocumentLock(gMain.doc);
  LoadAsDocument(path);
}

void RemoveRecentFileEntry(int index) {
  if (RemoveRecentFile(gSettings.recentFiles, index)) SaveSettings(gSettings);
}

void ClearRecentFileList() {
  if (ShowMessageBox(Owner(), kMbYesNo, std::string(kTextClearRecent), std::string(kTitleRecentClear)) ==
      kMbResultSaveOrYes) {
    ClearRecentFiles(gSettings.recentFiles);
    SaveSettings(gSettings);
  }
}

void OpenDroppedFile(const std::string& path) {
  if (path.empty() || path == gMain.doc.path) return;
  if (!ConfirmLeavingDocument()) return;
  CloseDocumentLock(gMain.doc);
  LoadAsDocument(path);
}

void CheckDocumentOnActivation() {
  if (gViewerMode || gMain.doc.path.empty() || activationCheckRunning) return;
  const DiskStatus status = CheckDocumentOnDisk(gMain.doc.path);
  const DocumentQuestion q = FileChangedQuestion(gMain.doc.path, status);
  if (!q.ask) return;
  activationCheckRunning = true;  // the box itself takes and gives back the activation
  const int answer = PromptAnswer(ShowMessageBox(Owner(), kMbSaveDontSaveCancel, q.text, std::string(q.title)));
  activationCheckRunning = false;
  if (answer == kAnswerSave) {
    SaveDocument();
  } else if (answer == kAnswerDontSave) {
    gMain.doc.path.clear();
    CloseDocumentLock(gMain.doc);
    UpdateTitle();
  }
}

void AutoSaveTick() {
  if (gMain.doc.modified && !gMain.doc.path.empty()) SaveDocument();
}

void RestartAutoSaveTimer(int minutes) {
  if (autoSaveTimer) g_source_remove(autoSaveTimer);
  autoSaveTimer = 0;
  if (minutes > 0) {
    autoSaveTimer = g_timeout_add(static_cast<guint>(minutes) * 60000u, [](gpointer) -> gboolean {
      AutoSaveTick();
      return G_SOURCE_CONTINUE;
    }, nullptr);
  }
}

}  // namespace nebro
