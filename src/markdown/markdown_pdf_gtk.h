// PDF export of Markdown documents: the rendered page (the one the HTML export writes) is printed
// to a PDF file by the helper program nebro-markdown-pdf, which holds the browser engine. The
// editor itself never loads the engine; it runs the helper and waits for it through the main
// loop, so the progress window stays responsive and Cancel ends the helper.
#pragma once

#include <gtk/gtk.h>

#include <string>
#include <string_view>

#include "markdown/markdown_html.h"
#include "print/page_style.h"
#include "settings/settings.h"

namespace nebro::markdown {

// The helper program: beside the running executable, else the one the build made.
std::string MarkdownPdfToolPath();

// Renders `editor`'s text and prints it to `outputPath` on the paper and with the margins of
// Page Setup (the settings' page), under the progress window, then asks
// whether to open the PDF. Returns whether the export was started.
bool ExportMarkdownPdf(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                       const settings::AppSettings& settings, const std::string& outputPath);

// The same for the command line, waiting for the helper: true when `outputPath` was written,
// else false with the reason in `error`. The sheet and margins are `sheet`'s.
bool WriteMarkdownPdf(std::string_view markdownUtf8, const MarkdownPageOptions& options,
                      const print::PageStyle& sheet, const std::string& outputPath, std::string& error);

inline constexpr std::string_view kStatusExporting = "Exporting...";

}  // namespace nebro::markdown
