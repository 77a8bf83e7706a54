#include "appearance/line_numbers_gtk.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>

#include "appearance/current_theme.h"
#include "gtk/drawing_gtk.h"
#include "gtk/drawn_parts_accessible_gtk.h"
#include "gtk/object_ptr_gtk.h"
#include "common/utf.h"
#include "scintilla/caret_place_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/settings.h"

namespace nebro::appearance {
namespace {

using namespace sci;

constexpr const char* kWidthKey = "nebro-margin-width";
constexpr const char* kEditorKey = "nebro-margin-editor";
// The face name is handed over as at most this many UTF-8 bytes.
constexpr size_t kFaceBytes = 31;
constexpr int kWheelLines = 3;

int RememberedWidth(GtkWidget* margin) { return GPOINTER_TO_INT(g_object_get_data(G_OBJECT(margin), kWidthKey)); }
void RememberWidth(GtkWidget* margin, int width) {
  g_object_set_data(G_OBJECT(margin), kWidthKey, GINT_TO_POINTER(width));
}
GtkWidget* EditorOf(GtkWidget* margin) { return static_cast<GtkWidget*>(g_object_get_data(G_OBJECT(margin), kEditorKey)); }

constexpr const char* kToldKey = "nebro-margin-told";

// "Lines 1 to 40 of 200": the document lines the margin numbers now.
std::string VisibleLinesText(GtkWidget* e) {
  if (!e) return "";
  const long count = static_cast<long>(Send(e, SCI_GETLINECOUNT));
  const sptr_t top = Send(e, SCI_GETFIRSTVISIBLELINE);
  const long first = static_cast<long>(Send(e, SCI_DOCLINEFROMVISIBLE, static_cast<uptr_t>(top))) + 1;
  const long last = std::min<long>(
      count, static_cast<long>(Send(e, SCI_DOCLINEFROMVISIBLE, static_cast<uptr_t>(top + Send(e, SCI_LINESONSCREEN) - 1))) + 1);
  return "Lines " + std::to_string(first) + " to " + std::to_string(std::max(first, last)) + " of " +
         std::to_string(count);
}

std::string FaceName() {
  std::string face = Utf16ToUtf8(settings::FieldText(settings::gSettings.fontName));
  if (face.size() > kFaceBytes) {
    size_t n = kFaceBytes;
    while (n > 0 && (static_cast<unsigned char>(face[n]) & 0xC0) == 0x80) --n;
    face.resize(n);
  }
  return face;
}

// The same face the editor asks Pango for, so that a missing font falls back to the same
// substitute in both and the rows keep their height.
FontDescriptionPtr NumberFont(int zoom) {
  FontDescriptionPtr font(pango_font_description_new());
  pango_font_description_set_family(font.get(), FaceName().c_str());
  pango_font_description_set_weight(font.get(), PANGO_WEIGHT_NORMAL);
  pango_font_description_set_size(font.get(), MarginFontPoints(settings::gSettings.fontSize, zoom) * PANGO_SCALE);
  return font;
}

// Painted into GTK's off-screen buffer of the widget, which is shown in one step.
gboolean OnDraw(GtkWidget* margin, cairo_t* cr, gpointer) {
  try {
    const ThemeColors& theme = GetThemeColors();
    const int width = gtk_widget_get_allocated_width(margin);
    const int height = gtk_widget_get_allocated_height(margin);
    FillRect(cr, 0, 0, width, height, theme.lineNumberBackground);
    FillRect(cr, width - 1, 0, 1, height, theme.border);
    GtkWidget* e = EditorOf(margin);
    if (!e) return TRUE;

    GObjectPtr<PangoLayout> layout(gtk_widget_create_pango_layout(margin, nullptr));
    auto font = NumberFont(static_cast<int>(Send(e, SCI_GETZOOM)));
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);

    MarginView view;
    view.firstVisibleLine = static_cast<long>(Send(e, SCI_GETFIRSTVISIBLELINE));
    view.textHeight = static_cast<int>(Send(e, SCI_TEXTHEIGHT, 0));
    view.clientHeight = height;
    view.caretY = CaretY(e);
    view.lineCount = static_cast<long>(Send(e, SCI_GETLINECOUNT));
    const int h = view.textHeight < 1 ? 16 : view.textHeight;
    const auto docLine = [e](long display) {
      return static_cast<long>(Send(e, SCI_DOCLINEFROMVISIBLE, static_cast<uptr_t>(display)));
    };
    const int right = width - kMarginRightPadding;
    for (const MarginRow& row : MarginRowsToPaint(view, docLine)) {
      char number[24];
      std::snprintf(number, sizeof number, "%ld", row.number);
      pango_layout_set_text(layout.get(), number, -1);
      PangoRectangle logical;
      pango_layout_get_pixel_extents(layout.get(), nullptr, &logical);
      // Each number stays inside its own row, so that rows lower than the numbers' font (the
      // editor zoomed below 6 points) do not smear into each other.
      cairo_save(cr);
      cairo_rectangle(cr, 0, row.top, right, h);
      cairo_clip(cr);
      SetSourceColour(cr, row.current ? theme.currentLineNumberText : theme.lineNumberText);
      cairo_move_to(cr, right - logical.width - logical.x, row.top + std::floor((h - logical.height) / 2.0) - logical.y);
      pango_cairo_show_layout(cr, layout.get());
      cairo_restore(cr);
    }
  } catch (...) {
    g_warning("Nebro: painting the line numbers failed");
  }
  return TRUE;
}

// A click only hands the keyboard back to the editor: no line selection, no bookmarks.
gboolean OnButtonPress(GtkWidget* margin, GdkEventButton*, gpointer) {
  if (GtkWidget* editor = EditorOf(margin)) gtk_widget_grab_focus(editor);
  return TRUE;
}

gboolean OnScroll(GtkWidget* margin, GdkEventScroll* event, gpointer) {
  GtkWidget* editor = EditorOf(margin);
  if (!editor) return FALSE;
  long lines = 0;
  if (event->direction == GDK_SCROLL_UP) lines = -kWheelLines;
  else if (event->direction == GDK_SCROLL_DOWN) lines = kWheelLines;
  else if (event->direction == GDK_SCROLL_SMOOTH) lines = std::lround(event->delta_y * kWheelLines);
  if (lines != 0) Send(editor, SCI_LINESCROLL, 0, lines);
  return TRUE;
}

}  // namespace

GtkWidget* CreateLineNumberMargin(GtkWidget* editor) {
  // Screen readers see a panel named "Line numbers" whose one label tells which lines show.
  DrawnPartsModel model;
  model.role = ATK_ROLE_PANEL;
  model.partRole = ATK_ROLE_LABEL;
  model.count = 1;
  model.part = [](GtkWidget* area, int) {
    DrawnPart part;
    part.name = VisibleLinesText(EditorOf(area));
    part.area = {0, 0, gtk_widget_get_allocated_width(area), gtk_widget_get_allocated_height(area)};
    return part;
  };
  GtkWidget* margin = NewDrawnPartsArea(std::move(model));
  if (AtkObject* a11y = gtk_widget_get_accessible(margin)) atk_object_set_name(a11y, "Line numbers");
  gtk_widget_set_name(margin, "NebroMargin");
  gtk_widget_add_events(margin, GDK_BUTTON_PRESS_MASK | GDK_SCROLL_MASK);
  g_object_set_data(G_OBJECT(margin), kEditorKey, editor);
  const int width = MarginWidth(editor);
  RememberWidth(margin, width);
  gtk_widget_set_size_request(margin, width, -1);
  g_signal_connect(margin, "draw", G_CALLBACK(OnDraw), nullptr);
  g_signal_connect(margin, "button-press-event", G_CALLBACK(OnButtonPress), nullptr);
  g_signal_connect(margin, "scroll-event", G_CALLBACK(OnScroll), nullptr);
  return margin;
}

int MarginWidth(GtkWidget* e) {
  if (!settings::gSettings.lineNumbers || !e) return 0;
  const long lines = static_cast<long>(Send(e, SCI_GETLINECOUNT));
  const int nine = static_cast<int>(SendPtr(e, SCI_TEXTWIDTH, STYLE_LINENUMBER, "9"));
  return MarginWidth(lines, nine);
}

void UpdateMargin(GtkWidget* margin) {
  if (!settings::gSettings.lineNumbers || !margin) return;
  const int width = MarginWidth(EditorOf(margin));
  if (width != RememberedWidth(margin)) {
    RememberWidth(margin, width);
    gtk_widget_set_size_request(margin, width, -1);  // queues a new layout of the window
  }
  std::string lines = VisibleLinesText(EditorOf(margin));
  auto* told = static_cast<std::string*>(g_object_get_data(G_OBJECT(margin), kToldKey));
  if (!told || *told != lines) {
    g_object_set_data_full(G_OBJECT(margin), kToldKey, new std::string(std::move(lines)),
                           [](gpointer p) { delete static_cast<std::string*>(p); });
    NotifyDrawnPartChanged(margin, 0);
  }
  gtk_widget_queue_draw(margin);
}

}  // namespace nebro::appearance
