#include "gtk/message_box_gtk.h"

#include <optional>

#include <gdk/gdkkeysyms.h>

#include "appearance/current_theme.h"
#include "appearance/title_bar_gtk.h"
#include "gtk/drawing_gtk.h"
#include "gtk/shutdown_gtk.h"
#include "gtk/trace_gtk.h"
#include "gtk/widget_style_gtk.h"

namespace nebro {
namespace {

MessageBoxHook hook;
int openBoxes = 0;

// Counts a box as open for as long as it exists, whoever answers it.
struct OpenBox {
  OpenBox() { ++openBoxes; }
  ~OpenBox() { --openBoxes; }
};

// The colours boxes are drawn in: the current theme's, unless a window of another look (the
// viewer's paper) asked for its own.
std::optional<appearance::ThemeColors> ownLook;

const appearance::ThemeColors& BoxColours() { return ownLook ? *ownLook : appearance::GetThemeColors(); }

// Background and text colours are made once per look and reused until it changes.
int brushTheme = -1;
std::string brushCss;

const std::string& BrushCss() {
  const int theme = ownLook ? -2 : static_cast<int>(appearance::CurrentThemeId());
  if (theme != brushTheme) {
    const appearance::ThemeColors& t = BoxColours();
    brushCss = "* { background-color: " + ColourText(t.dialogBackground) + "; color: " +
               ColourText(t.dialogText) + "; }";
    brushTheme = theme;
  }
  return brushCss;
}

struct BoxState {
  int kind;
  int result = -1;
  GMainLoop* loop = nullptr;
};

// Dialog units to pixels from the dialog font's average character size.
struct DialogUnits {
  double x, y;
};

DialogUnits MeasureDialogUnits(GtkWidget* widget) {
  PangoLayout* layout = gtk_widget_create_pango_layout(
      widget, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
  PangoFontDescription* font = pango_font_description_from_string("Segoe UI 9");
  pango_layout_set_font_description(layout, font);
  int w, h;
  pango_layout_get_pixel_size(layout, &w, &h);
  pango_font_description_free(font);
  g_object_unref(layout);
  return {(w / 52.0) / 4.0, h / 8.0};
}

void Finish(BoxState* state, int result) {
  if (result < 0 || state->result >= 0) return;
  state->result = result;
  if (state->loop) g_main_loop_quit(state->loop);
}

gboolean OnButtonDraw(GtkWidget* button, cairo_t* cr, gpointer data) {
  const auto* state = static_cast<BoxState*>(data);
  const int id = GPOINTER_TO_INT(g_object_get_data(G_OBJECT(button), "nebro-id"));
  const appearance::ThemeColors& t = BoxColours();
  const GtkStateFlags flags = gtk_widget_get_state_flags(button);
  const bool pressed = flags & GTK_STATE_FLAG_ACTIVE;
  const bool focused = gtk_widget_has_focus(button);
  ButtonLook look{pressed ? t.buttonFacePressed : t.buttonFace,
                  focused ? t.buttonFocusBorder : t.pressedBackground,
                  focused ? t.strongText : t.controlText, focused};
  DrawPushButton(button, cr, look, MessageBoxLabel(state->kind, id));
  return TRUE;
}

void OnButtonClicked(GtkButton* button, gpointer data) {
  auto* state = static_cast<BoxState*>(data);
  Finish(state, MessageBoxResultFor(state->kind, GPOINTER_TO_INT(g_object_get_data(G_OBJECT(button), "nebro-id"))));
}

gboolean OnKey(GtkWidget*, GdkEventKey* event, gpointer data) {
  if (event->keyval != GDK_KEY_Escape) return FALSE;
  auto* state = static_cast<BoxState*>(data);
  Finish(state, MessageBoxResultFor(state->kind, kMbEscapeId));
  return TRUE;
}

gboolean OnDelete(GtkWidget*, GdkEvent*, gpointer data) {
  auto* state = static_cast<BoxState*>(data);
  Finish(state, MessageBoxCloseResult(state->kind));
  return TRUE;  // the box is destroyed by ShowMessageBox once the loop ends
}

}  // namespace

void SetMessageBoxHook(MessageBoxHook h) { hook = std::move(h); }

void SetMessageBoxLook(std::optional<appearance::ThemeColors> look) {
  ownLook = std::move(look);
  brushTheme = -1;
}

int MessageBoxBrushTheme() { return brushTheme; }

int OpenMessageBoxes() { return openBoxes; }

int ShowMessageBox(GtkWindow* owner, int kind, const std::string& text, const std::string& title) {
  // A box asked for while the program ends is answered as if closed, without showing.
  if (ShuttingDown()) return MessageBoxCloseResult(kind);
  const OpenBox open;
  if (hook) return hook(kind, text, title);

  BoxState state{kind};
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_widget_set_name(window, "NebroMessageBox");
  gtk_window_set_title(GTK_WINDOW(window), title.c_str());
  gtk_window_set_modal(GTK_WINDOW(window), TRUE);
  gtk_window_set_resizable(GTK_WINDOW(window), FALSE);
  gtk_window_set_type_hint(GTK_WINDOW(window), GDK_WINDOW_TYPE_HINT_DIALOG);
  // Screen readers announce a dialog (and read its text) where they would pass over a frame.
  if (AtkObject* a11y = gtk_widget_get_accessible(window)) atk_object_set_role(a11y, ATK_ROLE_DIALOG);
  if (owner) {
    gtk_window_set_transient_for(GTK_WINDOW(window), owner);
    gtk_window_set_position(GTK_WINDOW(window), GTK_WIN_POS_CENTER_ON_PARENT);
  } else {
    gtk_window_set_position(GTK_WINDOW(window), GTK_WIN_POS_CENTER);
  }
  appearance::SetDarkTitleBar(BoxColours().isDark);
  SetWidgetCss(window, BrushCss());

  const MessageBoxLayout layout = ComputeMessageBoxLayout(kind, text, MessageBoxWidthFor(text));
  const DialogUnits du = MeasureDialogUnits(window);
  auto px = [](double units, double scale) { return static_cast<int>(units * scale + 0.5); };

  GtkWidget* fixed = gtk_fixed_new();
  gtk_container_add(GTK_CONTAINER(window), fixed);
  gtk_widget_set_size_request(fixed, px(layout.dialogWidth, du.x), px(layout.dialogHeight, du.y));

  GtkWidget* label = gtk_label_new(nullptr);
  gtk_label_set_text(GTK_LABEL(label), text.c_str());  // no markup, no mnemonics
  gtk_label_set_justify(GTK_LABEL(label), GTK_JUSTIFY_CENTER);
  gtk_label_set_line_wrap(GTK_LABEL(label), TRUE);
  gtk_widget_set_name(label, "2500");
  SetWidgetCss(label, BrushCss());
  gtk_widget_set_size_request(label, px(layout.dialogWidth - 2 * kMbMargin, du.x), px(layout.textHeight, du.y));
  gtk_fixed_put(GTK_FIXED(fixed), label, px(kMbMargin, du.x), px(kMbMargin, du.y));

  GtkWidget* first = nullptr;
  // Sizes and gaps are rounded to pixels once, so every button and every gap come out equal.
  const int buttonWidth = px(kMbButtonWidth, du.x);
  const int gap = layout.buttons.size() > 1
                      ? px(layout.buttons[1].x - layout.buttons[0].x - kMbButtonWidth, du.x)
                      : 0;
  int x = layout.buttons.empty() ? 0 : px(layout.buttons[0].x, du.x);
  for (const MessageBoxButton& b : layout.buttons) {
    // No label child: the face is drawn by OnButtonDraw, and GTK's own label would widen a
    // button with a long label ("Don't Save") past its place, onto its neighbour.
    GtkWidget* button = gtk_button_new();
    if (AtkObject* a11y = gtk_widget_get_accessible(button)) atk_object_set_name(a11y, b.label);
    gtk_widget_set_name(button, std::to_string(b.id).c_str());
    SetWidgetCss(button, "button { padding: 0; min-width: 0; min-height: 0; }");
    g_object_set_data(G_OBJECT(button), "nebro-id", GINT_TO_POINTER(b.id));
    gtk_widget_set_size_request(button, buttonWidth, px(kMbButtonHeight, du.y));
    gtk_widget_set_can_focus(button, TRUE);
    g_signal_connect(button, "draw", G_CALLBACK(OnButtonDraw), &state);
    g_signal_connect(button, "clicked", G_CALLBACK(OnButtonClicked), &state);
    gtk_fixed_put(GTK_FIXED(fixed), button, x, px(layout.buttonTop, du.y));
    x += buttonWidth + gap;
    if (!first) first = button;
  }

  g_signal_connect(window, "key-press-event", G_CALLBACK(OnKey), &state);
  g_signal_connect(window, "delete-event", G_CALLBACK(OnDelete), &state);
  gtk_widget_show_all(window);
  if (first) gtk_widget_grab_focus(first);
  Trace("Nebro: Message box shown: %s", title.c_str());

  state.loop = g_main_loop_new(nullptr, FALSE);
  ModalLoopStarted({[](void* data) {
                      auto* box = static_cast<BoxState*>(data);
                      Finish(box, MessageBoxCloseResult(box->kind));
                    }, &state});
  if (state.result < 0) g_main_loop_run(state.loop);
  ModalLoopEnded(&state);
  g_main_loop_unref(state.loop);
  state.loop = nullptr;
  gtk_widget_destroy(window);
  return state.result;
}

}  // namespace nebro
