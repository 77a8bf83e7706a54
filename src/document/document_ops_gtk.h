// Opening, saving, starting anew and the questions that guard them, on the main window.
#pragma once

#include <string>

namespace nebro {

// The Open dialog, then the load. True when a file was chosen and loaded.
bool OpenFileDialog();
// Writes the document to its path (Save As for an untitled one). True when it counts as saved;
// on failure the user is told, the document stays modified and the file on disk is untouched.
bool SaveDocument();
// The Save dialog, then the save to the chosen file. False when cancelled or failed.
bool SaveDocumentAs();
// The unsaved-changes question: 6 save, 7 go on, 2 cancel.
int PromptSaveChanges();
// Runs the question and, on Save, the save. True when the caller may go on.
bool ConfirmLeavingDocument();
// Empties the editor into a fresh untitled document and gives the memory back.
void NewDocument();
// Loads `path` and, on success, makes it the document (title, status, toolbar, recent files).
bool LoadAsDocument(const std::string& path);
// The recent-files commands.
void OpenRecentFile(int index);
void RemoveRecentFileEntry(int index);
void ClearRecentFileList();
// A dropped file: the same file again is ignored; otherwise the question, then the load.
void OpenDroppedFile(const std::string& path);
// When the window becomes active: offers to write back a file that has gone from disk.
void CheckDocumentOnActivation();
// The auto-save timer's action: saves a modified document that has a path.
void AutoSaveTick();
// (Re)starts the auto-save timer; 0 minutes stops it.
void RestartAutoSaveTimer(int minutes);

}  // namespace nebro
