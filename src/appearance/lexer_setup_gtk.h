// The editor's styles: the default style from the font and theme, the language's lexer, keyword
// lists and style map, and the colours of Scintilla's own line-number style.
#pragma once

#include <gtk/gtk.h>

#include <string>
#include <string_view>

#include "appearance/themes.h"
#include "scintilla/scintilla_api.h"

namespace nebro::appearance {

// STYLE_DEFAULT from the stored font and the theme `t`.
void SetDefaultStyleFromFont(GtkWidget* editor, const ThemeColors& t);
// STYLE_DEFAULT, the language's style map and the line-number colours in the active theme.
void ApplyLanguageStyles(GtkWidget* editor);
// Chooses the language from the path and installs its lexer, keywords and styles.
void SetupLexer(GtkWidget* editor, const std::string& path);
// Word wrap as the settings say, except for a document past the size limit or with a line of
// megabytes, which stays unwrapped; the horizontal scroll bar shows exactly when lines are not
// wrapped.
void ApplyWordWrap(GtkWidget* editor);
// After `inserted` went in at `position`: a line grown past the long-line limit turns the
// language's colours off before they are worked out, and one past the wrapping limit (or a
// document past the size limit) turns wrapping off too. True when it did.
bool GuardLongLines(GtkWidget* editor, sci::sptr_t position, std::string_view inserted);
// Scintilla's own margins stay hidden: the line numbers are drawn beside the editor.
void HideOwnMargins(GtkWidget* editor);
// Paints the editor's scroll bars in the theme's colours (trough in the text's background, the
// slider in the muted text colour), and marks the frame dark or light.
void StyleEditorFrame(GtkWidget* editor, const ThemeColors& t);

}  // namespace nebro::appearance
