#include "print/pdf_export_gtk.h"

#include <glib/gstdio.h>
#include <unistd.h>

#include <cstring>

#include "common/safe_write.h"

namespace nebro::print {
namespace {

void OnDrawPage(GtkPrintOperation*, GtkPrintContext* context, gint page, gpointer data) {
  const auto* doc = static_cast<const PagedDocument*>(data);
  cairo_t* cr = gtk_print_context_get_cairo_context(context);
  // The device's units to layout pixels.
  cairo_scale(cr, gtk_print_context_get_dpi_x(context) / kLayoutDpi,
              gtk_print_context_get_dpi_y(context) / kLayoutDpi);
  DrawPage(cr, *doc, page);
}

}  // namespace

GtkPageSetup* NewPageSetupFor(const PageStyle& style) {
  GtkPageSetup* setup = gtk_page_setup_new();
  GtkPaperSize* paper = gtk_paper_size_new_custom(
      "nebro-paper", "Paper", style.paper.width / 100.0, style.paper.height / 100.0, GTK_UNIT_MM);
  gtk_page_setup_set_paper_size(setup, paper);
  gtk_paper_size_free(paper);
  gtk_page_setup_set_orientation(setup, GTK_PAGE_ORIENTATION_PORTRAIT);
  for (auto set : {gtk_page_setup_set_left_margin, gtk_page_setup_set_right_margin,
                   gtk_page_setup_set_top_margin, gtk_page_setup_set_bottom_margin}) {
    set(setup, 0, GTK_UNIT_MM);
  }
  return setup;
}

void DrawPagesOf(GtkPrintOperation* operation, const PagedDocument& doc) {
  gtk_print_operation_set_n_pages(operation, doc.PageCount());
  gtk_print_operation_set_use_full_page(operation, TRUE);
  gtk_print_operation_set_unit(operation, GTK_UNIT_POINTS);
  GtkPageSetup* setup = NewPageSetupFor(doc.style);
  gtk_print_operation_set_default_page_setup(operation, setup);
  g_object_unref(setup);
  g_signal_connect(operation, "draw-page", G_CALLBACK(OnDrawPage),
                   const_cast<PagedDocument*>(&doc));
}

PdfExportResult ExportPagedPdf(GtkWindow* owner, const PagedDocument& doc,
                               const std::string& path) {
  PdfExportResult result;
  if (doc.lines.empty()) {
    result.error = "The document is empty. Nothing to export.";
    return result;
  }
  // The print operation writes a private file first; the PDF then replaces the target in one
  // safe write, so a failed export never leaves half a PDF where an old file was.
  gchar* scratch = nullptr;
  GError* error = nullptr;
  const int fd = g_file_open_tmp("nebro-XXXXXX.pdf", &scratch, &error);
  if (fd < 0) {
    result.error = std::string("Cannot create PDF file.\n") + (error ? error->message : "");
    if (error) g_error_free(error);
    return result;
  }
  close(fd);
  GtkPrintOperation* operation = gtk_print_operation_new();
  DrawPagesOf(operation, doc);
  gtk_print_operation_set_export_filename(operation, scratch);
  const GtkPrintOperationResult run =
      gtk_print_operation_run(operation, GTK_PRINT_OPERATION_ACTION_EXPORT, owner, &error);
  g_object_unref(operation);
  gchar* bytes = nullptr;
  gsize length = 0;
  if (run == GTK_PRINT_OPERATION_RESULT_ERROR || !g_file_get_contents(scratch, &bytes, &length, nullptr)) {
    result.error = std::string("Error writing PDF file.\n") + (error ? error->message : "");
  } else {
    const SafeWriteResult written = SafeWriteFile(path, std::string_view(bytes, length));
    if (written.Ok()) {
      result.ok = true;
      result.pages = doc.PageCount();
    } else {
      result.error = std::string("Cannot create PDF file.\n") + std::strerror(written.errnoValue);
    }
  }
  g_free(bytes);
  if (error) g_error_free(error);
  g_unlink(scratch);
  g_free(scratch);
  return result;
}

PdfExportResult ExportPdf(GtkWindow* owner, const std::string& text, const PageStyle& style,
                          const std::string& path) {
  const PagedDocument doc = PaginateDocument(text, style);
  return ExportPagedPdf(owner, doc, path);
}

}  // namespace nebro::print
