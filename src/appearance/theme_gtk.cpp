#include "appearance/theme_gtk.h"

#include "appearance/lexer_setup_gtk.h"
#include "appearance/title_bar_gtk.h"
#include "gtk/theme_broadcast_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/settings.h"

namespace nebro::appearance {

using namespace sci;

void ApplyThemeToEditor(GtkWidget* editor) {
  if (!editor) return;
  const ThemeColors& t = GetThemeColors();
  SetDefaultStyleFromFont(editor, t);
  Send(editor, SCI_SETFOLDMARGINCOLOUR, 1, t.editorBackground);
  Send(editor, SCI_SETFOLDMARGINHICOLOUR, 1, t.editorBackground);
  Send(editor, SCI_SETCARETFORE, t.caret);
  Send(editor, SCI_SETSELBACK, 1, t.selectionBackground);
  Send(editor, SCI_SETSELFORE, 1, t.selectionText);
  ApplyLanguageStyles(editor);
  Send(editor, SCI_STYLESETBOLD, STYLE_DEFAULT, settings::gSettings.fontBold);
  Send(editor, SCI_STYLESETITALIC, STYLE_DEFAULT, settings::gSettings.fontItalic);
  HideOwnMargins(editor);
  StyleEditorFrame(editor, t);
}

void SetTheme(ThemeId id, bool chosenByUser) {
  if (id >= kThemeCount) return;
  settings::gSettings.theme = id;
  gThemeChosenByUser = chosenByUser;
  SetDarkTitleBar(id == 0 || id == 4);
  BroadcastThemeChange();
  settings::SaveSettings(settings::gSettings);
}

}  // namespace nebro::appearance
