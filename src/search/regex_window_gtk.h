// The Regex Search window: interactive Find / Next, Find Prev and Replace on the editor's
// selection, Find All / Find More on a background thread into a result list, Replace All, and the
// session's results file.
#pragma once

#include <gtk/gtk.h>

#include "settings/settings.h"

namespace nebro::search {

// Opens the window over `owner` for `editor`, or brings the open one to the front. Its options and
// histories live in `settings`, which it saves when they change.
void ShowRegexDialog(GtkWindow* owner, GtkWidget* editor, settings::AppSettings& settings);

}  // namespace nebro::search
