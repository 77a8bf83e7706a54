#include "scintilla/caret_place_gtk.h"

#include "scintilla/scintilla_loader_gtk.h"

namespace nebro::sci {

int CaretY(GtkWidget* editor) {
  const sptr_t caret = Send(editor, SCI_GETCURRENTPOS);
  // Wrapped, the caret's row inside its line comes from the layout; unwrapped, every line is one
  // row high and the line numbers say it all.
  if (Send(editor, SCI_GETWRAPMODE) != SC_WRAP_NONE) return static_cast<int>(Send(editor, SCI_POINTYFROMPOSITION, 0, caret));
  const sptr_t line = Send(editor, SCI_LINEFROMPOSITION, static_cast<uptr_t>(caret));
  const sptr_t row = Send(editor, SCI_VISIBLEFROMDOCLINE, static_cast<uptr_t>(line)) - Send(editor, SCI_GETFIRSTVISIBLELINE);
  return static_cast<int>(row * Send(editor, SCI_TEXTHEIGHT, static_cast<uptr_t>(line)));
}

}  // namespace nebro::sci
