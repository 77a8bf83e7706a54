#include "appearance/reading_look_gtk.h"

#include "appearance/lexer_setup_gtk.h"
#include "appearance/themes.h"
#include "appearance/title_bar_gtk.h"
#include "common/colour.h"
#include "gtk/message_box_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"

namespace nebro::appearance {

using namespace sci;

void ApplyReadingLook(GtkWidget* editor) {
  constexpr Colour paper = Rgb(0xF5, 0xEF, 0xDC);
  constexpr Colour ink = Rgb(0x2D, 0x1E, 0x0F);
  SendPtr(editor, SCI_STYLESETFONT, STYLE_DEFAULT, "Georgia");
  Send(editor, SCI_STYLESETSIZE, STYLE_DEFAULT, 12);
  Send(editor, SCI_STYLESETBOLD, STYLE_DEFAULT, 0);
  Send(editor, SCI_STYLESETITALIC, STYLE_DEFAULT, 0);
  Send(editor, SCI_STYLECLEARALL);
  Send(editor, SCI_STYLESETBACK, STYLE_DEFAULT, paper);
  Send(editor, SCI_STYLESETFORE, STYLE_DEFAULT, ink);
  Send(editor, SCI_STYLECLEARALL);
  Send(editor, SCI_SETFOLDMARGINCOLOUR, 1, paper);
  Send(editor, SCI_SETFOLDMARGINHICOLOUR, 1, paper);
  Send(editor, SCI_SETCARETFORE, Rgb(0x50, 0x32, 0x14));
  Send(editor, SCI_SETCARETPERIOD, 0);
  Send(editor, SCI_SETCARETWIDTH, 1);
  Send(editor, SCI_SETSELBACK, 1, Rgb(0xC8, 0xB4, 0x8C));
  Send(editor, SCI_SETSELFORE, 1, Rgb(0x14, 0x0A, 0x00));
  Send(editor, SCI_SETWRAPMODE, SC_WRAP_WORD);
  Send(editor, SCI_SETHSCROLLBAR, 0);
  Send(editor, SCI_SETMARGINLEFT, 0, 28);
  Send(editor, SCI_SETMARGINRIGHT, 0, 28);
  SetDarkTitleBar(false);
  // The viewer's boxes are printed on the same paper (Sepia's buttons suit it).
  ThemeColors boxes = ThemeColorsFor(5);
  boxes.dialogBackground = paper;
  boxes.dialogText = ink;
  SetMessageBoxLook(boxes);
  StyleEditorFrame(editor, ThemeColorsFor(1));  // light, like the paper
}

}  // namespace nebro::appearance
