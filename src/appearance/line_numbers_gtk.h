// The line-number margin widget: line numbers painted beside the editor, in the editor's font at
// its zoom, following its scrolling. Scintilla's own margins stay hidden.
#pragma once

#include <gtk/gtk.h>

#include "appearance/line_numbers.h"

namespace nebro::appearance {

// A new "NebroMargin" drawing area beside `editor`, its width requested from MarginWidth(). A
// click in it gives the keyboard focus back to the editor; the mouse wheel over it scrolls the
// editor.
GtkWidget* CreateLineNumberMargin(GtkWidget* editor);

// The margin's width for `editor`: 0 while line numbers are off or there is no editor.
int MarginWidth(GtkWidget* editor);

// After anything that can change the line count, the scroll position, the caret line, the font
// or the zoom: while line numbers are on, a changed width becomes the margin's new size request
// (which lays the window out again), then the margin is repainted.
void UpdateMargin(GtkWidget* margin);

}  // namespace nebro::appearance
