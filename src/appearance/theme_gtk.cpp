#include "appearance/theme_gtk.h"

#include <fontconfig/fontconfig.h>

#include <cstring>

#include "app/main_window_gtk.h"
#include "appearance/style_maps.h"
#include "common/utf.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/settings.h"

namespace nebro {
namespace {

using namespace sci;

// The font face as UTF-8, at most 63 bytes, never cutting a character in two.
std::string FontFaceUtf8() {
  std::string face = Utf16ToUtf8(FieldText(gSettings.fontName));
  if (face.size() > 63) {
    size_t n = 63;
    while (n > 0 && (static_cast<unsigned char>(face[n]) & 0xC0) == 0x80) --n;
    face.resize(n);
  }
  return face;
}

void SetDefaultStyleFromFont(GtkWidget* editor, const ThemeColors& t) {
  const std::string face = FontFaceUtf8();
  SendPtr(editor, SCI_STYLESETFONT, STYLE_DEFAULT, face.c_str());
  Send(editor, SCI_STYLESETSIZE, STYLE_DEFAULT, gSettings.fontSize);
  Send(editor, SCI_STYLESETBACK, STYLE_DEFAULT, t.editorBackground);
  Send(editor, SCI_STYLESETFORE, STYLE_DEFAULT, t.editorText);
}

void ApplyStyleMap(GtkWidget* editor, const ThemeColors& t) {
  Send(editor, SCI_STYLECLEARALL);
  for (const ResolvedStyle& s : ResolveStyleMap(gLanguage, t, gSettings.fontBold, gSettings.fontItalic)) {
    Send(editor, SCI_STYLESETFORE, s.style, s.fore);
    Send(editor, SCI_STYLESETBACK, s.style, s.back);
    Send(editor, SCI_STYLESETBOLD, s.style, s.bold);
    Send(editor, SCI_STYLESETITALIC, s.style, s.italic);
  }
}

void HideOwnMargins(GtkWidget* editor) {
  for (int m = 0; m <= 4; ++m) Send(editor, SCI_SETMARGINWIDTHN, m, 0);
}

void SetLineNumberColours(GtkWidget* editor, const ThemeColors& t) {
  Send(editor, SCI_SETMARGINBACKN, 0, t.lineNumberBackground);
  Send(editor, SCI_STYLESETBACK, STYLE_LINENUMBER, t.lineNumberBackground);
  Send(editor, SCI_STYLESETFORE, STYLE_LINENUMBER, t.lineNumberText);
}

// Scroll bars and other GTK parts of the editor follow the theme through CSS.
void ThemeEditorFrame(GtkWidget* editor, bool dark) {
  GtkStyleContext* ctx = gtk_widget_get_style_context(editor);
  if (dark) gtk_style_context_add_class(ctx, "nebro-dark");
  else gtk_style_context_remove_class(ctx, "nebro-dark");
  gtk_widget_queue_draw(editor);
}

constexpr const char* kFontAliases = R"(<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <alias binding="same"><family>Consolas</family><accept><family>monospace</family></accept></alias>
  <alias binding="same"><family>Segoe UI</family><accept><family>sans-serif</family></accept></alias>
  <alias binding="same"><family>Georgia</family><accept><family>serif</family></accept></alias>
</fontconfig>
)";

}  // namespace

void LoadFontAliases() {
  FcConfig* config = FcConfigGetCurrent();
  if (config) FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8*>(kFontAliases), FcFalse);
}

void SetDarkTitleBar(GtkWidget*, bool dark) {
  // The decorations of every window of the process follow one preference.
  g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", dark ? TRUE : FALSE, nullptr);
}

void ApplyLanguageStyles(GtkWidget* editor) {
  const ThemeColors& t = GetThemeColors();
  SetDefaultStyleFromFont(editor, t);
  ApplyStyleMap(editor, t);
  HideOwnMargins(editor);
  SetLineNumberColours(editor, t);
}

void ApplyTheme() {
  GtkWidget* editor = gMain.editor;
  if (!editor) return;
  const ThemeColors& t = GetThemeColors();
  SetDarkTitleBar(gMain.window, t.isDark);
  SetDefaultStyleFromFont(editor, t);
  Send(editor, SCI_SETFOLDMARGINCOLOUR, 1, t.editorBackground);
  Send(editor, SCI_SETFOLDMARGINHICOLOUR, 1, t.editorBackground);
  Send(editor, SCI_SETCARETFORE, t.caret);
  Send(editor, SCI_SETSELBACK, 1, t.selectionBackground);
  Send(editor, SCI_SETSELFORE, 1, t.selectionText);
  ApplyLanguageStyles(editor);
  Send(editor, SCI_STYLESETBOLD, STYLE_DEFAULT, gSettings.fontBold);
  Send(editor, SCI_STYLESETITALIC, STYLE_DEFAULT, gSettings.fontItalic);
  HideOwnMargins(editor);
  RepaintChrome();
  ThemeEditorFrame(editor, t.isDark);
}

void SetTheme(ThemeId id, bool chosenByUser) {
  if (id >= kThemeCount) return;
  gSettings.theme = id;
  gThemeChosenByUser = chosenByUser;
  ApplyTheme();
  SetDarkTitleBar(gMain.window, id == 0 || id == 4);
  SaveSettings(gSettings);
}

void SetupLexer(GtkWidget* editor, const std::string& path) {
  const LanguageId id = DetectLanguage(Utf8ToUtf16(path));
  gLanguage = id;
  const ThemeColors& t = GetThemeColors();
  const CreateLexerFunction create = CreateLexerFn();
  bool plain = id == kLangPlainText || !create;
  if (!plain) {
    if (ILexer* lexer = create(LexerName(id))) {
      SendPtr(editor, SCI_SETILEXER, 0, lexer);
      SetDefaultStyleFromFont(editor, t);
      for (int set = 0; set < 2; ++set) {
        if (const char* words = KeywordList(id, set)) SendPtr(editor, SCI_SETKEYWORDS, set, words);
      }
      ApplyStyleMap(editor, t);
      HideOwnMargins(editor);
    } else {
      plain = true;
    }
  }
  if (plain) {
    if (create) {
      if (ILexer* nullLexer = create("null")) SendPtr(editor, SCI_SETILEXER, 0, nullLexer);
    }
    // Plain styling keeps the font as it is.
    Send(editor, SCI_STYLECLEARALL);
    Send(editor, SCI_STYLESETFORE, STYLE_DEFAULT, t.editorText);
    Send(editor, SCI_STYLESETBACK, STYLE_DEFAULT, t.editorBackground);
    Send(editor, SCI_STYLESETBOLD, STYLE_DEFAULT, gSettings.fontBold);
    Send(editor, SCI_STYLESETITALIC, STYLE_DEFAULT, gSettings.fontItalic);
    Send(editor, SCI_STYLECLEARALL);
  }
  SetLineNumberColours(editor, t);
}

void ApplySystemThemePreference() {
  const ThemeId theme = gSettings.theme;
  if (gThemeChosenByUser) {
    SetDarkTitleBar(gMain.window, theme != 1 && theme != 5);
    return;
  }
  // The desktop's colour-scheme preference where it can be read; otherwise light.
  bool light = true;
  GSettingsSchemaSource* source = g_settings_schema_source_get_default();
  if (GSettingsSchema* schema = source ? g_settings_schema_source_lookup(source, "org.gnome.desktop.interface", TRUE) : nullptr) {
    if (g_settings_schema_has_key(schema, "color-scheme")) {
      GSettings* settings = g_settings_new("org.gnome.desktop.interface");
      gchar* scheme = g_settings_get_string(settings, "color-scheme");
      light = std::strcmp(scheme, "prefer-dark") != 0;
      g_free(scheme);
      g_object_unref(settings);
    }
    g_settings_schema_unref(schema);
  }
  SetDarkTitleBar(gMain.window, !light);
  if (static_cast<ThemeId>(light) != theme) SetTheme(light ? 1 : 0, false);
}

void ApplyReadingLook(GtkWidget* editor) {
  constexpr Colour paper = Rgb(0xF5, 0xEF, 0xDC);
  SendPtr(editor, SCI_STYLESETFONT, STYLE_DEFAULT, "Georgia");
  Send(editor, SCI_STYLESETSIZE, STYLE_DEFAULT, 12);
  Send(editor, SCI_STYLESETBOLD, STYLE_DEFAULT, 0);
  Send(editor, SCI_STYLESETITALIC, STYLE_DEFAULT, 0);
  Send(editor, SCI_STYLECLEARALL);
  Send(editor, SCI_STYLESETBACK, STYLE_DEFAULT, paper);
  Send(editor, SCI_STYLESETFORE, STYLE_DEFAULT, Rgb(0x2D, 0x1E, 0x0F));
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
  SetDarkTitleBar(gMain.window, false);
  ThemeEditorFrame(editor, false);
}

}  // namespace nebro
