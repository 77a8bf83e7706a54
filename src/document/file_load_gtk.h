// Loading a file into the editor, with the refusals shown in message boxes.
#pragma once

#include <gtk/gtk.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "app/document_state.h"

namespace nebro {

// True when the file is now in the editor. On false the editor and the document state are
// unchanged and the user has been told why (except for a load already in progress).
bool FileLoad(const std::string& path);

// Replaces the editor's document by a fresh one holding `text`: empty undo history, caret at 0.
// The old document's memory goes with it.
void LoadTextIntoEditor(GtkWidget* editor, const char* text, size_t length);

// True while a file is being loaded (a large one loads while the main loop runs).
bool FileLoadInProgress();

// Files of at least this many bytes load on a worker under a progress window.
void SetBackgroundLoadThreshold(uint64_t bytes);

// Closes the document's lock, if any.
void CloseDocumentLock(DocumentState& doc);

}  // namespace nebro
