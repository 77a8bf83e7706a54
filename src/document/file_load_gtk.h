// Loading a file into the editor, with the refusals shown in message boxes. Large files load on
// a worker under a progress window while the editor keeps painting.
#pragma once

#include <gtk/gtk.h>

#include <cstdint>
#include <functional>
#include <string>

#include "document/document_state.h"

namespace nebro::document {

// The window a load reports to, the editor it fills and the document it describes.
struct LoadTarget {
  GtkWindow* owner = nullptr;
  GtkWidget* editor = nullptr;
  DocumentState* doc = nullptr;
};

// Loads `path` into the editor. On success the document's encoding and lock are the new file's
// (its path is the caller's to set) and `done(true)` runs; on failure the editor and the
// document are unchanged, the user has been told why (except for a load already in progress)
// and `done(false)` runs. Small files finish before FileLoad returns; large ones later.
void FileLoad(const LoadTarget& target, const std::string& path, std::function<void(bool loaded)> done);

// True while a file is being loaded.
bool FileLoadInProgress();

// Files of at least this many bytes load on a worker under a progress window.
void SetBackgroundLoadThreshold(uint64_t bytes);

// Closes the document's lock, if any.
void CloseDocumentLock(DocumentState& doc);

// Clears the search highlights (indicators 8, 9 and 10) over the whole text.
void ClearSearchIndicators(GtkWidget* editor);

}  // namespace nebro::document
