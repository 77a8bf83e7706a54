#include "print/print_job_gtk.h"

#include "gtk/message_box.h"
#include "gtk/message_box_gtk.h"
#include "print/pdf_export_gtk.h"
#include "print/print_texts.h"
#include "scintilla/scintilla_loader_gtk.h"

namespace nebro::print {

void PrintPages(GtkWindow* owner, const PagedDocument& doc, const std::string& jobName) {
  if (doc.lines.empty()) {
    ShowMessageBox(owner, kMbOk, kPrintEmptyText, kPrintTitle);
    return;
  }
  GtkPrintOperation* operation = gtk_print_operation_new();
  gtk_print_operation_set_job_name(operation, jobName.c_str());
  DrawPagesOf(operation, doc);
  GError* error = nullptr;
  const GtkPrintOperationResult run =
      gtk_print_operation_run(operation, GTK_PRINT_OPERATION_ACTION_PRINT_DIALOG, owner, &error);
  if (run == GTK_PRINT_OPERATION_RESULT_ERROR) {
    ShowMessageBox(owner, kMbOk, kPrintStartFailedText, kPrintTitle);
  }
  if (error) g_error_free(error);
  g_object_unref(operation);
}

void PrintEditor(GtkWindow* owner, GtkWidget* editor, const PageStyle& style,
                 const std::string& documentPath) {
  const PagedDocument doc = PaginateDocument(sci::DocumentCopy(editor), style);
  PrintPages(owner, doc, PrintDocumentName(documentPath));
}

}  // namespace nebro::print
