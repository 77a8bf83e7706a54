// The Find & Replace window: a modeless tool window beside the editor for literal search and
// replace, with its options and histories kept in the settings record.
#pragma once

#include <gtk/gtk.h>

#include "settings/settings.h"

namespace nebro::search {

// Opens the window over `owner` for `editor`, or brings the open one to the front; either way
// the selection (when it lies on one line) becomes the find text and "Find what" has the focus.
// The check boxes and histories are read from `settings` and written back to it (and its file).
// The window closes with `owner`, and goes on working when the editor's document is replaced.
void ShowFindReplace(GtkWindow* owner, GtkWidget* editor, settings::AppSettings& settings);

// The open window, or null.
GtkWidget* FindReplaceWindow();

}  // namespace nebro::search
