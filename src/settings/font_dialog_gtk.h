// The Font dialog: the editor's face, size, bold and italic, with a preview.
#pragma once

#include <gtk/gtk.h>

#include <functional>

namespace nebro::settings {

// Opens the modal Font dialog over `owner` on the font of the settings record. OK stores the
// chosen font there, saves the settings and gives `editor` and the line-number `margin` (either
// may be null) the new font by applying the theme again, then calls `closed(true)`; Cancel,
// Escape or closing change nothing and call `closed(false)`. A size outside 1-144 is refused
// with a message and the dialog stays open.
void ShowFontDialog(GtkWindow* owner, GtkWidget* editor, GtkWidget* margin,
                    std::function<void(bool changed)> closed = {});

}  // namespace nebro::settings
