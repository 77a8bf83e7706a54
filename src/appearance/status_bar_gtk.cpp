#include "appearance/status_bar_gtk.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "appearance/current_theme.h"
#include "gtk/drawn_parts_accessible_gtk.h"
#include "gtk/drawing_gtk.h"
#include "gtk/object_ptr_gtk.h"
#include "scintilla/caret_place_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"

namespace nebro::appearance {
namespace {

using namespace sci;

constexpr const char* kStateKey = "nebro-status-bar";
constexpr int kGripSize = 14;

struct StatusBarState {
  GtkWidget* editor;  // the editor whose caret and document the parts describe
  StatusTexts texts;
};

StatusBarState* StateOf(GtkWidget* widget) {
  return widget ? static_cast<StatusBarState*>(g_object_get_data(G_OBJECT(widget), kStateKey)) : nullptr;
}

// The width of a digit in the bar's font: the unit the part widths are measured in.
int DigitWidth(GtkWidget* widget) {
  GObjectPtr<PangoLayout> layout(gtk_widget_create_pango_layout(widget, "0"));
  int w = 0, h = 0;
  pango_layout_get_pixel_size(layout.get(), &w, &h);
  return w;
}

// The bar is as high as a line of the desktop font plus a little air, like a native status bar.
void FitHeightToFont(GtkWidget* widget) {
  GObjectPtr<PangoLayout> layout(gtk_widget_create_pango_layout(widget, "Ln"));
  int w = 0, h = 0;
  pango_layout_get_pixel_size(layout.get(), &w, &h);
  // Never narrower than its parts: the window cannot be made so narrow that the zoom goes.
  gtk_widget_set_size_request(widget, StatusBarMinimumWidth(DigitWidth(widget)), std::max(22, h + 8));
}

// The grip is offered only where it can do something: a resizable window that is not maximised.
GtkWindow* ResizableToplevel(GtkWidget* widget) {
  GtkWidget* top = gtk_widget_get_toplevel(widget);
  if (!GTK_IS_WINDOW(top) || !gtk_window_get_resizable(GTK_WINDOW(top))) return nullptr;
  if (gtk_window_is_maximized(GTK_WINDOW(top))) return nullptr;
  return GTK_WINDOW(top);
}

// Six dots in a triangle at the bottom-right corner.
void DrawGrip(cairo_t* cr, int width, int height, Colour c) {
  SetSourceColour(cr, c);
  for (int row = 0; row < 3; ++row) {  // row 0 on top holds one dot, the bottom row three
    for (int k = 0; k <= row; ++k) cairo_rectangle(cr, width - 5 - 4 * k, height - 5 - 4 * (2 - row), 2, 2);
  }
  cairo_fill(cr);
}

// Painted into GTK's off-screen buffer of the widget, which is shown in one step.
gboolean OnDraw(GtkWidget* widget, cairo_t* cr, gpointer) {
  try {
    const StatusBarState* state = StateOf(widget);
    if (!state) return FALSE;
    const ThemeColors& theme = GetThemeColors();
    const int width = gtk_widget_get_allocated_width(widget);
    const int height = gtk_widget_get_allocated_height(widget);
    FillRect(cr, 0, 0, width, height, theme.marginBackground);
    FillRect(cr, 0, 0, width, 1, theme.border);

    const auto edges = StatusPartEdges(width, DigitWidth(widget));
    GObjectPtr<PangoLayout> layout(gtk_widget_create_pango_layout(widget, nullptr));
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
    int left = 0;
    for (int i = 0; i < kStatusPartCount; ++i) {
      const int right = edges[i] < 0 ? width : edges[i];
      const std::string& text = state->texts[i];
      const int textLeft = left + 2, textRight = right - 2;
      if (!text.empty() && textRight > textLeft) {
        pango_layout_set_text(layout.get(), text.c_str(), -1);
        pango_layout_set_width(layout.get(), (textRight - textLeft) * PANGO_SCALE);
        PangoRectangle logical;
        pango_layout_get_pixel_extents(layout.get(), nullptr, &logical);
        const int top = 1, areaHeight = height - 1;
        cairo_save(cr);
        cairo_rectangle(cr, textLeft, top, textRight - textLeft, areaHeight);
        cairo_clip(cr);
        SetSourceColour(cr, theme.marginText);
        cairo_move_to(cr, textLeft, top + std::floor((areaHeight - logical.height) / 2.0) - logical.y);
        pango_cairo_show_layout(cr, layout.get());
        cairo_restore(cr);
      }
      if (i < kStatusPartCount - 1 && edges[i] >= 0 && edges[i] < width) {
        FillRect(cr, edges[i], 3, 1, std::max(0, height - 6), theme.border);
      }
      left = right;
    }
    if (ResizableToplevel(widget)) DrawGrip(cr, width, height, theme.border);
  } catch (...) {
    g_warning("Nebro: painting the status bar failed");
  }
  return TRUE;
}

gboolean OnButtonPress(GtkWidget* widget, GdkEventButton* event, gpointer) {
  if (event->type != GDK_BUTTON_PRESS || event->button != GDK_BUTTON_PRIMARY) return FALSE;
  GtkWindow* window = ResizableToplevel(widget);
  const int width = gtk_widget_get_allocated_width(widget);
  const int height = gtk_widget_get_allocated_height(widget);
  if (!window || event->x < width - kGripSize || event->y < height - kGripSize) return FALSE;
  gtk_window_begin_resize_drag(window, GDK_WINDOW_EDGE_SOUTH_EAST, event->button, static_cast<int>(event->x_root),
                               static_cast<int>(event->y_root), event->time);
  return TRUE;
}

void OnStyleUpdated(GtkWidget* widget, gpointer) { FitHeightToFont(widget); }

}  // namespace

GtkWidget* CreateStatusBar(GtkWidget* editor) {
  // Screen readers see a status bar of five labels holding the parts' texts.
  DrawnPartsModel parts;
  parts.role = ATK_ROLE_STATUSBAR;
  parts.partRole = ATK_ROLE_LABEL;
  parts.count = kStatusPartCount;
  parts.part = [](GtkWidget* area, int i) {
    DrawnPart part;
    const StatusTexts texts = StatusBarTexts(area);
    const std::string& text = texts[static_cast<size_t>(i)];
    part.name = text.substr(std::min(text.find_first_not_of(' '), text.size()));
    const auto edges = StatusBarPartEdges(area);
    const int left = i == 0 ? 0 : edges[static_cast<size_t>(i) - 1];
    const int right = i == kStatusPartCount - 1 ? gtk_widget_get_allocated_width(area) : edges[static_cast<size_t>(i)];
    part.area = {left, 0, right - left, gtk_widget_get_allocated_height(area)};
    return part;
  };
  GtkWidget* widget = NewDrawnPartsArea(std::move(parts));
  gtk_widget_set_name(widget, "NebroStatusBar");
  gtk_widget_add_events(widget, GDK_BUTTON_PRESS_MASK);
  g_object_set_data_full(G_OBJECT(widget), kStateKey, new StatusBarState{editor, {}},
                         [](gpointer p) { delete static_cast<StatusBarState*>(p); });
  FitHeightToFont(widget);
  g_signal_connect(widget, "draw", G_CALLBACK(OnDraw), nullptr);
  g_signal_connect(widget, "button-press-event", G_CALLBACK(OnButtonPress), nullptr);
  g_signal_connect(widget, "style-updated", G_CALLBACK(OnStyleUpdated), nullptr);
  return widget;
}

void UpdateStatusBar(GtkWidget* statusBar, document::TextEncoding encoding, const char* notice) {
  StatusBarState* state = StateOf(statusBar);
  GtkWidget* e = state ? state->editor : nullptr;
  if (!state || !e) return;
  StatusInput in;
  const sptr_t caret = Send(e, SCI_GETCURRENTPOS);
  in.firstVisibleLine = static_cast<long>(Send(e, SCI_GETFIRSTVISIBLELINE));
  in.caretY = CaretY(e);
  in.textHeight = static_cast<int>(Send(e, SCI_TEXTHEIGHT, 0));
  in.column = static_cast<long>(Send(e, SCI_GETCOLUMN, static_cast<uptr_t>(caret)));
  const sptr_t start = Send(e, SCI_GETSELECTIONSTART), end = Send(e, SCI_GETSELECTIONEND);
  if (end > start) in.selectedCharacters = static_cast<long>(Send(e, SCI_COUNTCHARACTERS, static_cast<uptr_t>(start), end));
  in.encoding = static_cast<int>(encoding);
  in.eolMode = static_cast<int>(Send(e, SCI_GETEOLMODE));
  in.zoom = static_cast<int>(Send(e, SCI_GETZOOM));
  const std::string notices = std::string(PlainReasonNotice(gPlainReason)) + (notice ? notice : "");
  in.notice = notices.c_str();
  StatusTexts texts = MakeStatusTexts(in);
  if (texts != state->texts) {
    const StatusTexts before = std::exchange(state->texts, std::move(texts));
    for (int i = 0; i < kStatusPartCount; ++i) {
      if (before[static_cast<size_t>(i)] != state->texts[static_cast<size_t>(i)]) NotifyDrawnPartChanged(statusBar, i);
    }
    gtk_widget_queue_draw(statusBar);
  }
}

StatusTexts StatusBarTexts(GtkWidget* statusBar) {
  const StatusBarState* state = StateOf(statusBar);
  return state ? state->texts : StatusTexts{};
}

std::array<int, kStatusPartCount> StatusBarPartEdges(GtkWidget* statusBar) {
  return StatusPartEdges(gtk_widget_get_allocated_width(statusBar), DigitWidth(statusBar));
}

}  // namespace nebro::appearance
