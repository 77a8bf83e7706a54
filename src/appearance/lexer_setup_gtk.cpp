#include "appearance/lexer_setup_gtk.h"

#include <algorithm>

#include "appearance/current_theme.h"
#include "appearance/style_maps.h"
#include "common/colour.h"
#include "common/utf.h"
#include "gtk/widget_style_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/settings.h"

namespace nebro::appearance {
namespace {

using namespace sci;

// The font face as UTF-8, at most 63 bytes, never cutting a character in two.
std::string FontFaceUtf8() {
  std::string face = Utf16ToUtf8(settings::FieldText(settings::gSettings.fontName));
  if (face.size() > 63) {
    size_t n = 63;
    while (n > 0 && (static_cast<unsigned char>(face[n]) & 0xC0) == 0x80) --n;
    face.resize(n);
  }
  return face;
}

void ApplyStyleMap(GtkWidget* editor, const ThemeColors& t) {
  Send(editor, SCI_STYLECLEARALL);
  for (const ResolvedStyle& s : ResolveStyleMap(gLanguage, t, settings::gSettings.fontBold, settings::gSettings.fontItalic)) {
    Send(editor, SCI_STYLESETFORE, s.style, s.fore);
    Send(editor, SCI_STYLESETBACK, s.style, s.back);
    Send(editor, SCI_STYLESETBOLD, s.style, s.bold);
    Send(editor, SCI_STYLESETITALIC, s.style, s.italic);
  }
}

void SetLineNumberColours(GtkWidget* editor, const ThemeColors& t) {
  Send(editor, SCI_SETMARGINBACKN, 0, t.lineNumberBackground);
  Send(editor, SCI_STYLESETBACK, STYLE_LINENUMBER, t.lineNumberBackground);
  Send(editor, SCI_STYLESETFORE, STYLE_LINENUMBER, t.lineNumberText);
}

}  // namespace

void SetDefaultStyleFromFont(GtkWidget* editor, const ThemeColors& t) {
  const std::string face = FontFaceUtf8();
  SendPtr(editor, SCI_STYLESETFONT, STYLE_DEFAULT, face.c_str());
  Send(editor, SCI_STYLESETSIZE, STYLE_DEFAULT, settings::gSettings.fontSize);
  // In a font whose ASCII characters are all as wide, Scintilla lays out ASCII text by counting
  // instead of measuring it with Pango (a line of millions of characters in a moment); it checks
  // the font first, so other fonts are measured as before.
  Send(editor, SCI_STYLESETCHECKMONOSPACED, STYLE_DEFAULT, 1);
  Send(editor, SCI_STYLESETBACK, STYLE_DEFAULT, t.editorBackground);
  Send(editor, SCI_STYLESETFORE, STYLE_DEFAULT, t.editorText);
}

void HideOwnMargins(GtkWidget* editor) {
  for (int m = 0; m <= 4; ++m) Send(editor, SCI_SETMARGINWIDTHN, m, 0);
}

void StyleEditorFrame(GtkWidget* editor, const ThemeColors& t) {
  GtkStyleContext* ctx = gtk_widget_get_style_context(editor);
  if (t.isDark) gtk_style_context_add_class(ctx, "nebro-dark");
  else gtk_style_context_remove_class(ctx, "nebro-dark");
  const std::string css =
      "scrollbar, scrollbar trough { background-color: " + ColourText(t.editorBackground) +
      "; border-color: " + ColourText(t.border) + "; }\n"
      "scrollbar slider { background-color: " + ColourText(t.mutedText) +
      "; border: none; border-radius: 6px; min-width: 8px; min-height: 8px; }\n"
      "scrollbar slider:hover, scrollbar slider:active { background-color: " + ColourText(t.marginText) + "; }\n";
  // The scroll bars are the editor's internal children: only forall reaches them.
  gtk_container_forall(GTK_CONTAINER(editor), [](GtkWidget* child, gpointer data) {
    if (GTK_IS_SCROLLBAR(child)) SetWidgetCss(child, *static_cast<const std::string*>(data));
  }, const_cast<std::string*>(&css));
  gtk_widget_queue_draw(editor);
}

void ApplyLanguageStyles(GtkWidget* editor) {
  const ThemeColors& t = GetThemeColors();
  SetDefaultStyleFromFont(editor, t);
  ApplyStyleMap(editor, t);
  HideOwnMargins(editor);
  SetLineNumberColours(editor, t);
}

namespace {

void ApplyPlainStyling(GtkWidget* editor, const ThemeColors& t) {
  const CreateLexerFunction create = CreateLexerFn();
  if (create) {
    if (ILexer* nullLexer = create("null")) SendPtr(editor, SCI_SETILEXER, 0, nullLexer);
  }
  // Plain styling keeps the font as it is.
  Send(editor, SCI_STYLECLEARALL);
  Send(editor, SCI_STYLESETFORE, STYLE_DEFAULT, t.editorText);
  Send(editor, SCI_STYLESETBACK, STYLE_DEFAULT, t.editorBackground);
  Send(editor, SCI_STYLESETBOLD, STYLE_DEFAULT, settings::gSettings.fontBold);
  Send(editor, SCI_STYLESETITALIC, STYLE_DEFAULT, settings::gSettings.fontItalic);
  Send(editor, SCI_STYLECLEARALL);
}

}  // namespace

void SetupLexer(GtkWidget* editor, const std::string& path) {
  const LanguageId id = DetectLanguage(Utf8ToUtf16(path));
  gLanguage = id;
  const ThemeColors& t = GetThemeColors();
  const CreateLexerFunction create = CreateLexerFn();
  const size_t length = static_cast<size_t>(Send(editor, SCI_GETLENGTH));
  // Past the size limit every document, plain text too, is shown without colours and unwrapped:
  // wrapping millions of lines in one go (Ctrl+End) stops the window for minutes.
  if (length > kLargeDocumentLimit) gPlainReason = PlainReason::LargeDocument;
  else gPlainReason = PlainReasonFor(DocumentText(editor), id != kLangPlainText);
  ApplyWordWrap(editor);
  bool plain = id == kLangPlainText || !create || gPlainReason != PlainReason::None;
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
  if (plain) ApplyPlainStyling(editor, t);
  SetLineNumberColours(editor, t);
}

void ApplyWordWrap(GtkWidget* editor) {
  const bool wrap = settings::gSettings.wordWrap && !Unwrapped(gPlainReason);
  Send(editor, SCI_SETWRAPMODE, wrap ? SC_WRAP_WORD : SC_WRAP_NONE);
  Send(editor, SCI_SETHSCROLLBAR, !wrap);
  // Scintilla goes on laying lines out at the old wrap width until it next wraps; making a line
  // visible wraps at once.
  if (!wrap) Send(editor, SCI_ENSUREVISIBLE, 0);
}

bool GuardLongLines(GtkWidget* editor, sptr_t position, std::string_view inserted) {
  if (gPlainReason == PlainReason::LargeDocument) return false;
  const bool coloured = gLanguage != kLangPlainText;
  PlainReason reason = PlainReason::None;
  if (static_cast<size_t>(Send(editor, SCI_GETLENGTH)) > kLargeDocumentLimit) {
    reason = PlainReason::LargeDocument;
  } else {
    // The first and last lines of the insertion joined text that was there; the ones between
    // are the inserted text's own.
    const auto lineLength = [&](sptr_t at) {
      return static_cast<size_t>(Send(editor, SCI_LINELENGTH, static_cast<uptr_t>(Send(editor, SCI_LINEFROMPOSITION, static_cast<uptr_t>(at)))));
    };
    const size_t joined = std::max(lineLength(position), lineLength(position + static_cast<sptr_t>(inserted.size())));
    if (joined > kUnwrappedLineLimit || HasLineLongerThan(inserted, kUnwrappedLineLimit)) reason = PlainReason::UnwrappedLine;
    else if (coloured && (joined > kLongLineLimit || HasLineLongerThan(inserted, kLongLineLimit))) reason = PlainReason::LongLine;
  }
  const PlainReason before = gPlainReason;
  if (reason <= before) return false;
  gPlainReason = reason;
  // Unwrapped at once, before the caret is scrolled into view and the line laid out.
  if (Unwrapped(reason)) ApplyWordWrap(editor);
  if (!coloured || before != PlainReason::None) return true;
  // Not from inside the change's own notification: before the next paint styles the line.
  g_object_ref(editor);
  g_idle_add_full(G_PRIORITY_HIGH, [](gpointer data) -> gboolean {
    auto* e = static_cast<GtkWidget*>(data);
    if (gtk_widget_get_parent(e) && gPlainReason != PlainReason::None) ApplyPlainStyling(e, GetThemeColors());
    g_object_unref(e);
    return G_SOURCE_REMOVE;
  }, editor, nullptr);
  return true;
}

}  // namespace nebro::appearance
