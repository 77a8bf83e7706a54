// The controls of the program's dialogs in the theme's colours: rounded push buttons in the
// theme's button colours, and entries, drop-down lists, check boxes, group frames and lists in
// its dialog colours. Both follow theme changes by themselves.
#pragma once

#include <gtk/gtk.h>

namespace nebro {

// A push button with a mnemonic label ("Select _Font..."), painted as a rounded rectangle in the
// current theme's button colours; its accessible name is the label without the underscore.
GtkWidget* CreateThemedButton(const char* mnemonicLabel);

// A left-aligned label whose mnemonic moves the focus to `target` (and names it for screen
// readers).
GtkWidget* CreateFieldLabel(const char* mnemonic, GtkWidget* target);

// Gives the controls inside `window` (a themed window) the theme's colours.
void ThemeDialogControls(GtkWidget* window);

// The theme's colours for the pop-up list of a drop-down list (a window of its own, outside the
// dialog).
void ThemeComboPopup(GtkWidget* combo);

}  // namespace nebro
