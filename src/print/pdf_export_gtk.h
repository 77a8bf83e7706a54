// Writing a document's printed pages as a PDF file through the print operation's export to a
// file, so the PDF's pages are the pages the preview shows and the printer prints. The text
// stays text in the PDF (selectable, searchable).
#pragma once
#include <gtk/gtk.h>

#include <string>

#include "print/page_layout_gtk.h"

namespace nebro::print {

struct PdfExportResult {
  bool ok = false;
  int pages = 0;
  std::string error;  // why it failed, for the user
};

// Paginates `text` with `style` and writes the pages to `path`. `owner` may be null.
PdfExportResult ExportPdf(GtkWindow* owner, const std::string& text, const PageStyle& style,
                          const std::string& path);

// The same for pages already split (the preview's own pages).
PdfExportResult ExportPagedPdf(GtkWindow* owner, const PagedDocument& doc,
                               const std::string& path);

// A page setup for `style`'s paper with no margins of its own: the page frame holds the
// margins, so the print operation draws on the whole sheet.
GtkPageSetup* NewPageSetupFor(const PageStyle& style);

// Connects the print operation's page drawing to `doc` (which must outlive the operation).
void DrawPagesOf(GtkPrintOperation* operation, const PagedDocument& doc);

}  // namespace nebro::print
