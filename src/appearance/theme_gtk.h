// Applying themes, language styles and the reading look to the editor and the windows.
#pragma once

#include <gtk/gtk.h>

#include <string>

#include "appearance/current_theme.h"

namespace nebro {

// Makes "Consolas", "Segoe UI" and "Georgia" resolve to the installed monospace, sans and serif
// faces when those fonts are missing. Call before the first window.
void LoadFontAliases();

// The title bar follows the theme's dark flag.
void SetDarkTitleBar(GtkWidget* window, bool dark);

// Switches theme: stores it, applies it, saves the settings. Numbers above 5 are ignored.
void SetTheme(ThemeId id, bool chosenByUser);
// Re-applies the active theme to the editor and the window's parts.
void ApplyTheme();
// STYLE_DEFAULT from the font and theme, the language's style map, the line-number colours.
void ApplyLanguageStyles(GtkWidget* editor);
// Chooses the language from the path and installs its lexer, keywords and styles.
void SetupLexer(GtkWidget* editor, const std::string& path);
// The title bar from the desktop's light/dark preference (only when the user chose no theme).
void ApplySystemThemePreference();
// The fixed look of the read-only viewer.
void ApplyReadingLook(GtkWidget* editor);

}  // namespace nebro
