// The status bar widget: a custom-drawn bar of five parts below the editor (caret position,
// selection size, encoding, line endings, zoom), with a size grip at its right end.
#pragma once

#include <gtk/gtk.h>

#include "appearance/status_bar.h"
#include "document/text_decode.h"

namespace nebro::appearance {

// A new "NebroStatusBar" drawing area describing `editor`, with empty parts; its height follows
// the desktop font.
GtkWidget* CreateStatusBar(GtkWidget* editor);

// Recomputes the five parts from the editor and the document's encoding and repaints when a text
// changed. Does nothing for a null status bar.
// `notice` (may be empty) follows the caret's place, after the reason for plain colours.
void UpdateStatusBar(GtkWidget* statusBar, document::TextEncoding encoding, const char* notice = "");

// The texts the status bar shows now (all empty for a null status bar).
StatusTexts StatusBarTexts(GtkWidget* statusBar);

// The parts' right edges as painted at the widget's current width (the last is -1).
std::array<int, kStatusPartCount> StatusBarPartEdges(GtkWidget* statusBar);

}  // namespace nebro::appearance
