// Applying the active theme to an editor, and switching themes.
#pragma once

#include <gtk/gtk.h>

#include "appearance/current_theme.h"

namespace nebro::appearance {

// The active theme's colours, the stored font and the language styles on `editor`.
void ApplyThemeToEditor(GtkWidget* editor);

// Switches theme: stores it, saves the settings and tells every window that follows theme
// changes. Numbers above 5 are ignored.
void SetTheme(ThemeId id, bool chosenByUser);

}  // namespace nebro::appearance
