// Where the caret is on the screen, asked without making Scintilla lay out the caret's line when
// the answer does not need it: laying out a line of 100 MB takes about half a second.
#pragma once

#include <gtk/gtk.h>

namespace nebro::sci {

// The caret's y pixel in the editor's text area (as SCI_POINTYFROMPOSITION answers).
int CaretY(GtkWidget* editor);

}  // namespace nebro::sci
