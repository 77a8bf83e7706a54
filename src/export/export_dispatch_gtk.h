// Exporting the open document: the Save dialog of each format, the size limits that offer the
// read-only viewer instead, and the exporters run under the progress window with their
// completion questions.
#pragma once

#include <gtk/gtk.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "settings/settings.h"

namespace nebro::exports {

// Exports `editor`'s document (at `documentPath`, empty when untitled) in format `formatId`
// (ExportFormatId). Returns whether an export was started or done; a cancelled Save dialog,
// a declined question and an unknown id return false. Long exports go on after the return,
// under their progress window.
bool ExportDocument(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                    const settings::AppSettings& settings, int32_t formatId);

// What ExportDocument does once the Save dialog has answered `outputPath` (HTML, RTF and
// plain text).
bool ExportDocumentTo(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                      const settings::AppSettings& settings, int32_t formatId, const std::string& outputPath);

// Writes the editor's text to a new temporary ".txt" file in the data folder and opens it in
// the read-only viewer.
void OpenAsPlainTextInViewer(GtkWindow* owner, GtkWidget* editor);

// The Save dialog of the exports.
inline constexpr std::string_view kExportSaveTitle = "Export File - Nebro";
inline constexpr std::string_view kAllFilesFilter = "All Files";

inline constexpr std::string_view kPdfExportTitle = "Nebro - PDF Export";

// "PDF exported successfully.\n\nExport time:  <elapsed>\n\nOpen PDF?"
std::string PdfDoneQuestion(uint64_t milliseconds);

}  // namespace nebro::exports
