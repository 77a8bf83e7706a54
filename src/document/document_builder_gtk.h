// Putting text into the editor as a fresh document: built through Scintilla's loader while no
// view shows it, then switched to in one step.
#pragma once

#include <gtk/gtk.h>

#include <cstddef>

#include "scintilla/scintilla_api.h"

namespace nebro::document {

class DocumentBuilder {
 public:
  explicit DocumentBuilder(GtkWidget* editor, bool stylesNone = false) : editor_(editor), stylesNone_(stylesNone) {}
  ~DocumentBuilder();
  DocumentBuilder(const DocumentBuilder&) = delete;
  DocumentBuilder& operator=(const DocumentBuilder&) = delete;

  // Makes the loader for a text of `length` bytes (UI thread). False when memory runs out.
  bool Begin(size_t length);
  // Adds text; safe on a worker while the loader is attached to no view.
  bool Add(const char* data, size_t length);
  // Shows the new document in the editor: empty undo history, caret at 0. The old document's
  // memory goes with it (UI thread).
  bool Finish();

 private:
  GtkWidget* editor_;
  bool stylesNone_;
  size_t length_ = 0;
  sci::ILoader* loader_ = nullptr;
};

// Replaces the editor's document by a fresh one holding `text`.
void LoadTextIntoEditor(GtkWidget* editor, const char* text, size_t length);

}  // namespace nebro::document
