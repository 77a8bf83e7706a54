// Opening, saving, starting anew and the questions that guard them, on the window that shows
// the document. The window hands in its parts; nothing here knows the main window.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <string>

#include "common/command_table.h"
#include "document/document_state.h"

namespace nebro::document {

struct DocumentWindow {
  GtkWindow* owner = nullptr;  // the parent of questions and dialogs
  GtkWidget* editor = nullptr;
  DocumentState* doc = nullptr;
  // Runs after the path, the modified flag or the text changed as a whole: the window updates
  // its title and companions.
  std::function<void()> changed;
};

// The Open dialog, then the load.
void OpenFileDialog(const DocumentWindow& w);
// Writes the document to its path (Save As for an untitled one). True when it counts as saved;
// on failure the user is told, the document stays modified and the file on disk is untouched.
bool SaveDocument(const DocumentWindow& w);
// The Save dialog, then the save to the chosen file. False when cancelled or failed.
bool SaveDocumentAs(const DocumentWindow& w);
// The unsaved-changes question: 6 save, 7 go on, 2 cancel.
int PromptSaveChanges(const DocumentWindow& w);
// Runs the question and, on Save, the save. True when the caller may go on.
bool ConfirmLeavingDocument(const DocumentWindow& w);
// Empties the editor into a fresh untitled document and gives the memory back.
void NewDocument(const DocumentWindow& w);
// Loads `path` and, on success, makes it the document (lexer, title, recent files); then
// `done(loaded)` runs, at once for small files, after the load for large ones.
void LoadAsDocument(const DocumentWindow& w, const std::string& path, std::function<void(bool loaded)> done = {});
// The recent-files commands.
void OpenRecentFile(const DocumentWindow& w, int index);
void RemoveRecentFileEntry(int index);
void ClearRecentFileList(const DocumentWindow& w);
// A dropped file: the same file again is ignored; otherwise the question, then the load.
void OpenDroppedFile(const DocumentWindow& w, const std::string& path);
// When the window becomes active: offers to write back a file that has gone from disk.
// Asks at most once per activation, and never while another question is open.
void CheckDocumentOnActivation(const DocumentWindow& w);
// When the window loses the activation to another program: the next activation checks again.
void DocumentWindowDeactivated();
// The auto-save timer's action: saves a modified document that has a path.
void AutoSaveTick(const DocumentWindow& w);
// (Re)starts the auto-save timer; 0 minutes stops it.
void RestartAutoSaveTimer(const DocumentWindow& w, int minutes);

// The document commands (New, Open, Save, Save As, the recent files) as rows of `table`.
void AddDocumentCommands(CommandTable& table, const DocumentWindow& w);

}  // namespace nebro::document
