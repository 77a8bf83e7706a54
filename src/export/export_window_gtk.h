// The "Nebro - Export" window: the format list (PDF first and chosen), the chosen format's
// description, Export and Cancel.
#pragma once

#include <gtk/gtk.h>

#include <string>

#include "settings/settings.h"

namespace nebro::exports {

// Shows the window over `owner` and returns at once; Export closes it and exports `editor`'s
// document (at `documentPath`) in the chosen format.
void ShowExportWindow(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                      const settings::AppSettings& settings);

}  // namespace nebro::exports
