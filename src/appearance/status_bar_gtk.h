// The status bar widget: a custom-drawn bar of five parts below the editor (caret position,
// selection size, encoding, line endings, zoom), with a size grip at its right end.
#pragma once

#include <gtk/gtk.h>

#include "appearance/status_bar.h"

namespace nebro {

// A new "NebroStatusBar" drawing area with empty parts; its height follows the desktop font.
GtkWidget* CreateStatusBar();

// Recomputes the five parts of gMain.statusBar from gMain.editor and gMain.doc and repaints
// when a text changed. Does nothing while the status bar or the editor does not exist.
void UpdateStatusBar();

// The texts the status bar shows now (all empty while there is no status bar).
StatusTexts StatusBarTexts();

// The parts' right edges as painted at the widget's current width (the last is -1).
std::array<int, kStatusPartCount> StatusBarPartEdges(GtkWidget* statusBar);

}  // namespace nebro
