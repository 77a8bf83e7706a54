// Printing through the system print dialog: the same pages, split and footer as the preview.
#pragma once
#include <gtk/gtk.h>

#include <string>

#include "print/page_layout_gtk.h"

namespace nebro::print {

// Shows the print dialog for `doc` and prints; `jobName` names the job ("Nebro Document" for a
// document without a path). Tells the user when the document is empty or the job fails.
void PrintPages(GtkWindow* owner, const PagedDocument& doc, const std::string& jobName);

// Ctrl+P: paginates the editor's text and prints it.
void PrintEditor(GtkWindow* owner, GtkWidget* editor, const PageStyle& style,
                 const std::string& documentPath);

}  // namespace nebro::print
