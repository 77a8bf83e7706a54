#include "appearance/toolbar_gtk.h"

#include <array>
#include <cmath>
#include <memory>

#include "appearance/current_theme.h"
#include "gtk/drawing_gtk.h"
#include "gtk/drawn_parts_accessible_gtk.h"
#include "gtk/object_ptr_gtk.h"

namespace nebro::appearance {
namespace {

constexpr const char* kStateKey = "nebro-toolbar";

struct ToolbarWidgetState {
  Toolbar toolbar;
  ToolbarCommandSink sink;
};

ToolbarWidgetState* WidgetStateOf(GtkWidget* widget) {
  return widget ? static_cast<ToolbarWidgetState*>(g_object_get_data(G_OBJECT(widget), kStateKey)) : nullptr;
}

Toolbar* StateOf(GtkWidget* widget) {
  ToolbarWidgetState* state = WidgetStateOf(widget);
  return state ? &state->toolbar : nullptr;
}

void Repaint(GtkWidget* widget) { gtk_widget_queue_draw(widget); }

// Paints the queued area now rather than at the next frame, so a pressed button is seen even
// when its command keeps the main loop busy.
void PaintNow(GtkWidget* widget) {
  if (GdkWindow* window = gtk_widget_get_window(widget)) {
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    gdk_window_process_updates(window, FALSE);
    G_GNUC_END_IGNORE_DEPRECATIONS
  }
}

// The hand over an enabled button, the arrow (the parent's cursor) elsewhere.
void UpdateCursor(GtkWidget* widget, const Toolbar& t) {
  GdkWindow* window = gtk_widget_get_window(widget);
  if (!window) return;
  if (t.hot >= 0) {
    GObjectPtr<GdkCursor> hand(gdk_cursor_new_for_display(gdk_window_get_display(window), GDK_HAND2));
    gdk_window_set_cursor(window, hand.get());
  } else {
    gdk_window_set_cursor(window, nullptr);
  }
}

void SetHot(GtkWidget* widget, Toolbar& t, int hot) {
  if (t.hot == hot) return;
  t.hot = hot;
  UpdateCursor(widget, t);
  Repaint(widget);
}


void DrawButton(cairo_t* cr, PangoLayout* layout, const ToolbarButton& b, const ToolbarButtonLook& look) {
  const ToolbarRect& r = b.rect;
  const double w = r.right - r.left, h = r.bottom - r.top;
  // The outline runs along the outermost pixels of the rectangle, so its path lies on their
  // centres.
  RoundedRectangle(cr, r.left + 0.5, r.top + 0.5, w - 1, h - 1, kToolbarCornerDiameter / 2.0);
  SetSourceColour(cr, look.fill);
  cairo_fill_preserve(cr);
  SetSourceColour(cr, look.outline);
  cairo_set_line_width(cr, 1);
  cairo_stroke(cr);

  const double lineLeft = r.left + 4, lineWidth = w - 8;
  if (look.accentLine) FillRect(cr, lineLeft, r.top + 1, lineWidth, 2, look.accent);
  if (look.highlightLine) FillRect(cr, lineLeft, r.top + 1, lineWidth, 1, look.highlight);

  pango_layout_set_text(layout, b.label.c_str(), -1);
  PangoRectangle ink, logical;
  pango_layout_get_pixel_extents(layout, &ink, &logical);
  SetSourceColour(cr, look.text);
  cairo_move_to(cr, r.left + std::floor((w - logical.width) / 2) - logical.x,
                r.top + std::floor((h - logical.height) / 2) - logical.y);
  pango_cairo_show_layout(cr, layout);
}

// GTK hands the handler an off-screen buffer of the widget's size and shows it in one step once
// the handler returns, so painting straight into `cr` is the double buffering the toolbar needs.
gboolean OnDraw(GtkWidget* widget, cairo_t* cr, gpointer) {
  try {
    const Toolbar* t = StateOf(widget);
    if (!t) return FALSE;
    const ThemeColors& theme = GetThemeColors();
    const int width = gtk_widget_get_allocated_width(widget);
    const int height = gtk_widget_get_allocated_height(widget);
    const ToolbarChrome chrome = ToolbarChromeColours(theme);
    FillRect(cr, 0, 0, width, height, chrome.background);
    FillRect(cr, 0, 0, width, 1, chrome.topLine);
    FillRect(cr, 0, height - 1, width, 1, chrome.bottomLine);

    GObjectPtr<PangoLayout> layout(gtk_widget_create_pango_layout(widget, nullptr));
    FontDescriptionPtr font(pango_font_description_new());
    pango_font_description_set_family(font.get(), kToolbarFontFace);
    pango_font_description_set_weight(font.get(), PANGO_WEIGHT_NORMAL);
    pango_font_description_set_absolute_size(font.get(), kToolbarFontPixels * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);

    for (int i = 0; i < kToolbarButtonCount; ++i) {
      DrawButton(cr, layout.get(), t->buttons[i], ToolbarButtonLookFor(*t, i, theme));
    }
  } catch (...) {
    g_warning("Nebro: painting the toolbar failed");
  }
  return FALSE;  // the strip is complete; later handlers may still add to it
}

void OnSizeAllocate(GtkWidget* widget, GdkRectangle* allocation, gpointer) {
  if (Toolbar* t = StateOf(widget)) {
    LayoutToolbar(*t, allocation->width);
    Repaint(widget);
  }
}

gboolean OnMotion(GtkWidget* widget, GdkEventMotion* event, gpointer) {
  if (Toolbar* t = StateOf(widget)) {
    SetHot(widget, *t, ToolbarHitTest(*t, static_cast<int>(event->x), static_cast<int>(event->y)));
  }
  return FALSE;
}

gboolean OnLeave(GtkWidget* widget, GdkEventCrossing*, gpointer) {
  if (Toolbar* t = StateOf(widget)) {
    t->hot = -1;
    UpdateCursor(widget, *t);
    Repaint(widget);
  }
  return FALSE;
}

// The command fires when the button goes down, not on release.
gboolean OnButtonPress(GtkWidget* widget, GdkEventButton* event, gpointer) {
  // A double click arrives as two presses plus a 2BUTTON_PRESS; each press counts once.
  if (event->type != GDK_BUTTON_PRESS || event->button != GDK_BUTTON_PRIMARY) return FALSE;
  Toolbar* t = StateOf(widget);
  if (!t) return FALSE;
  const int index = ToolbarHitTest(*t, static_cast<int>(event->x), static_cast<int>(event->y));
  if (index < 0) return TRUE;
  try {
    ToolbarButton& b = t->buttons[index];
    b.pressed = true;
    Repaint(widget);
    PaintNow(widget);
    b.pressed = false;
    Repaint(widget);
    // The command may do anything, including replacing the toolbar: nothing of it is used after.
    const ToolbarCommandSink sink = WidgetStateOf(widget)->sink;
    if (sink) sink(static_cast<int>(b.commandId));
  } catch (...) {
    g_warning("Nebro: a toolbar command failed");
  }
  return TRUE;
}

gboolean OnButtonRelease(GtkWidget* widget, GdkEventButton* event, gpointer) {
  if (event->button != GDK_BUTTON_PRIMARY) return FALSE;
  if (Toolbar* t = StateOf(widget)) {
    for (ToolbarButton& b : t->buttons) b.pressed = false;
    Repaint(widget);
  }
  return TRUE;
}

// A button whose window is not built yet says so when the pointer rests on it.
gboolean OnQueryTooltip(GtkWidget* widget, gint x, gint y, gboolean, GtkTooltip* tooltip, gpointer) {
  const Toolbar* t = StateOf(widget);
  if (!t) return FALSE;
  for (const ToolbarButton& b : t->buttons) {
    if (!b.built && b.rect.Contains(x, y)) {
      gtk_tooltip_set_text(tooltip, kNotBuiltText);
      return TRUE;
    }
  }
  return FALSE;
}

}  // namespace

GtkWidget* CreateToolbar(const CommandTable& commands, ToolbarCommandSink sink) {
  // Screen readers see a tool bar of push buttons with the state the widget keeps.
  DrawnPartsModel parts;
  parts.role = ATK_ROLE_TOOL_BAR;
  parts.partRole = ATK_ROLE_PUSH_BUTTON;
  parts.count = kToolbarButtonCount;
  parts.part = [](GtkWidget* area, int i) {
    DrawnPart part;
    if (const Toolbar* t = StateOf(area)) {
      const ToolbarButton& b = t->buttons[static_cast<size_t>(i)];
      part = {b.label, b.enabled, {b.rect.left, b.rect.top, b.rect.right - b.rect.left, b.rect.bottom - b.rect.top}};
    }
    return part;
  };
  parts.activate = ActivateToolbarButton;
  GtkWidget* widget = NewDrawnPartsArea(std::move(parts));
  gtk_widget_set_name(widget, "NebroToolbar");
  // Every button whole, with a gap on either side: this sets how narrow the window may get.
  gtk_widget_set_size_request(widget, kToolbarRowWidth + 2 * kToolbarButtonGap, kToolbarHeight);
  gtk_widget_add_events(widget, GDK_POINTER_MOTION_MASK | GDK_LEAVE_NOTIFY_MASK | GDK_BUTTON_PRESS_MASK |
                                    GDK_BUTTON_RELEASE_MASK);
  auto* state = new ToolbarWidgetState{MakeToolbar(commands), std::move(sink)};
  g_object_set_data_full(G_OBJECT(widget), kStateKey, state,
                         [](gpointer p) { delete static_cast<ToolbarWidgetState*>(p); });
  g_signal_connect(widget, "draw", G_CALLBACK(OnDraw), nullptr);
  g_signal_connect(widget, "size-allocate", G_CALLBACK(OnSizeAllocate), nullptr);
  g_signal_connect(widget, "motion-notify-event", G_CALLBACK(OnMotion), nullptr);
  g_signal_connect(widget, "leave-notify-event", G_CALLBACK(OnLeave), nullptr);
  g_signal_connect(widget, "button-press-event", G_CALLBACK(OnButtonPress), nullptr);
  g_signal_connect(widget, "button-release-event", G_CALLBACK(OnButtonRelease), nullptr);
  gtk_widget_set_has_tooltip(widget, TRUE);
  g_signal_connect(widget, "query-tooltip", G_CALLBACK(OnQueryTooltip), nullptr);
  return widget;
}

void RefreshToolbarState(GtkWidget* widget, bool documentModified) {
  Toolbar* t = StateOf(widget);
  if (!t) return;
  const int hotBefore = t->hot;
  std::array<bool, kToolbarButtonCount> before{};
  for (int i = 0; i < kToolbarButtonCount; ++i) before[i] = t->buttons[i].enabled;
  UpdateToolbarEnabled(*t, documentModified);
  for (int i = 0; i < kToolbarButtonCount; ++i) {
    if (t->buttons[i].enabled != before[i]) NotifyDrawnPartChanged(widget, i);
  }
  if (t->hot != hotBefore) UpdateCursor(widget, *t);
  Repaint(widget);
}

const Toolbar* ToolbarState(GtkWidget* toolbar) { return StateOf(toolbar); }

bool ActivateToolbarButton(GtkWidget* toolbar, int index) {
  ToolbarWidgetState* state = WidgetStateOf(toolbar);
  if (!state || index < 0 || index >= kToolbarButtonCount || !state->toolbar.buttons[index].enabled) return false;
  struct Press {
    GObjectPtr<GtkWidget> toolbar;
    int command;
  };
  auto* press = new Press{GObjectPtr<GtkWidget>(GTK_WIDGET(g_object_ref(toolbar))),
                          static_cast<int>(state->toolbar.buttons[index].commandId)};
  g_idle_add([](gpointer data) -> gboolean {
    std::unique_ptr<Press> p(static_cast<Press*>(data));
    ToolbarWidgetState* s = WidgetStateOf(p->toolbar.get());
    if (s && s->sink) s->sink(p->command);
    return G_SOURCE_REMOVE;
  }, press);
  return true;
}

}  // namespace nebro::appearance
