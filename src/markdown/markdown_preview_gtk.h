// "MD Preview (HTML)" and the HTML export of Markdown documents: the renderer runs in the
// background under the progress window, and the page opens in the desktop's browser.
#pragma once

#include <gtk/gtk.h>

#include <string>
#include <string_view>

#include "settings/settings.h"

namespace nebro::markdown {

// Renders `editor`'s text to a new temporary page in the data folder and opens it in the
// browser. A document of more than 30,000 lines asks first whether to open it as plain text in
// the viewer instead.
void ShowMarkdownPreview(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                         const settings::AppSettings& settings);

// Renders `editor`'s text to `outputPath`, or to a temporary page for the preview when it is
// empty, under the progress window. Returns whether the rendering was started.
bool ExportMarkdown(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                    const settings::AppSettings& settings, const std::string& outputPath);

inline constexpr int kMarkdownPreviewLineLimit = 30000;
inline constexpr std::string_view kMarkdownExportTitle = "Nebro - MD Export";
inline constexpr std::string_view kMarkdownPreviewTitle = "Nebro - MD Preview";

}  // namespace nebro::markdown
