// The open document's recovery copy, kept up to date beside the window, and the offer at
// start-up of the copies that editors which ended without saving left behind.
#pragma once

#include "document/document_ops_gtk.h"
#include "document/recovery.h"

namespace nebro::document {

// After every change of the text: a modified document's copy is written within a few seconds
// of the first change, then at most every 30 seconds, on a thread of its own.
void NoteChangeForRecovery(const DocumentWindow& w);
// The document was saved, replaced or closed: its copy goes.
void RemoveRecoveryCopy();
// Writes the copy of a modified document at once and keeps it (the editor ends on a signal).
void KeepRecoveryCopyNow(const DocumentWindow& w);
// True while the document is too large for a copy (the status bar says so).
bool RecoveryCopySkipped();

// Asks about each copy left by an editor that is no longer running, newest first. True when
// one was restored into `w` (marked modified, with its original path).
bool OfferRecoveryCopies(const DocumentWindow& w);

}  // namespace nebro::document
