// What GUI tests share: running the main loop until a condition holds, pictures of widgets as
// they paint themselves, and synthesized pointer and key events.
#pragma once

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <cstdlib>
#include <functional>
#include <string>

#include "common/colour.h"

namespace nebro::testing {

// Runs the main loop until nothing is pending; with a window, also until a queued layout and
// its round trip to the X server are done, so that allocations are up to date.
inline void Pump(GtkWidget* window = nullptr) {
  while (gtk_events_pending()) gtk_main_iteration_do(FALSE);
  if (!window) return;
  for (int round = 0; round < 2; ++round) {
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    gtk_container_check_resize(GTK_CONTAINER(window));
    G_GNUC_END_IGNORE_DEPRECATIONS
    gdk_display_sync(gtk_widget_get_display(window));
    while (gtk_events_pending()) gtk_main_iteration_do(FALSE);
  }
}

// Runs the main loop until `done` holds, waking at least every 10 ms to ask again (for states
// that change outside this process, such as a child's window). False after `seconds`.
inline bool WaitUntil(const std::function<bool()>& done, double seconds = 20) {
  const gint64 end = g_get_monotonic_time() + static_cast<gint64>(seconds * G_USEC_PER_SEC);
  const guint tick = g_timeout_add(10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  bool ok = done();
  while (!ok && g_get_monotonic_time() < end) {
    g_main_context_iteration(nullptr, TRUE);
    ok = done();
  }
  g_source_remove(tick);
  return ok;
}

// The last visible top-level window named `name`, or null.
inline GtkWidget* FindWindow(const std::string& name) {
  GtkWidget* found = nullptr;
  GList* top = gtk_window_list_toplevels();
  for (GList* l = top; l; l = l->next) {
    if (name == gtk_widget_get_name(GTK_WIDGET(l->data)) && gtk_widget_get_visible(GTK_WIDGET(l->data))) {
      found = GTK_WIDGET(l->data);
    }
  }
  g_list_free(top);
  return found;
}

// Repaints the whole window and returns once the frame has been drawn and the X server has it
// (for screenshots taken from outside the process).
inline void PaintAndWait(GtkWidget* window) {
  GdkFrameClock* clock = gtk_widget_get_frame_clock(window);
  if (!clock) return;
  bool painted = false;
  const gulong handler = g_signal_connect_swapped(clock, "after-paint", G_CALLBACK(+[](bool* flag) { *flag = true; }), &painted);
  gtk_widget_queue_draw(window);
  WaitUntil([&] { return painted; });
  g_signal_handler_disconnect(clock, handler);
  gdk_display_sync(gtk_widget_get_display(window));
}

// The widget as it paints itself, in an image of its allocated size; or, `onScreen`, as the X
// server shows it.
struct Snapshot {
  cairo_surface_t* surface = nullptr;
  int width = 0, height = 0;
  explicit Snapshot(GtkWidget* widget, bool onScreen = false) {
    width = gtk_widget_get_allocated_width(widget);
    height = gtk_widget_get_allocated_height(widget);
    surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_t* cr = cairo_create(surface);
    if (!onScreen) gtk_widget_draw(widget, cr);
    GtkWidget* top = gtk_widget_get_toplevel(widget);
    int x = 0, y = 0;
    gtk_widget_translate_coordinates(widget, top, 0, 0, &x, &y);
    if (GdkPixbuf* p = onScreen ? gdk_pixbuf_get_from_window(gtk_widget_get_window(top), x, y, width, height) : nullptr) {
      gdk_cairo_set_source_pixbuf(cr, p, 0, 0);
      cairo_paint(cr);
      g_object_unref(p);
    }
    cairo_destroy(cr);
    cairo_surface_flush(surface);
  }
  ~Snapshot() { cairo_surface_destroy(surface); }
  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;
  // As 0x00BBGGRR, the form of the theme's colours.
  Colour At(int x, int y) const {
    const unsigned char* row = cairo_image_surface_get_data(surface) + y * cairo_image_surface_get_stride(surface);
    const uint32_t px = reinterpret_cast<const uint32_t*>(row)[x];
    return Rgb((px >> 16) & 0xFF, (px >> 8) & 0xFF, px & 0xFF);
  }
};

// The colour a widget's text is drawn in, in its present state.
inline Colour TextColour(GtkWidget* widget) {
  GtkStyleContext* style = gtk_widget_get_style_context(widget);
  GdkRGBA c;
  gtk_style_context_get_color(style, gtk_style_context_get_state(style), &c);
  return Rgb(static_cast<unsigned>(c.red * 255 + 0.5), static_cast<unsigned>(c.green * 255 + 0.5),
             static_cast<unsigned>(c.blue * 255 + 0.5));
}

inline int ColourDistance(Colour a, Colour b) {
  return std::abs(static_cast<int>(RedOf(a)) - static_cast<int>(RedOf(b))) +
         std::abs(static_cast<int>(GreenOf(a)) - static_cast<int>(GreenOf(b))) +
         std::abs(static_cast<int>(BlueOf(a)) - static_cast<int>(BlueOf(b)));
}

// A synthesized pointer event delivered through GTK's dispatcher, as the X server's would be.
inline GdkEvent* PointerEvent(GtkWidget* widget, GdkEventType type) {
  GdkEvent* e = gdk_event_new(type);
  e->any.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(widget)));
  gdk_event_set_device(e, gdk_seat_get_pointer(gdk_display_get_default_seat(gtk_widget_get_display(widget))));
  return e;
}

inline void Deliver(GdkEvent* e) {
  gtk_main_do_event(e);
  gdk_event_free(e);
}

inline void SendButton(GtkWidget* widget, GdkEventType type, int x, int y, unsigned button = 1) {
  GdkEvent* e = PointerEvent(widget, type);
  e->button.x = x;
  e->button.y = y;
  e->button.button = button;
  e->button.time = GDK_CURRENT_TIME;
  Deliver(e);
}

// A key press delivered to `widget`'s window, as the keyboard's would be, with the key's place on
// the keyboard (accelerators are matched by it). Under a window manager, pass the X server's time
// (gdk_x11_get_server_time): it lets a window come to the front only for a request with one.
inline void SendKey(GtkWidget* widget, guint keyval, unsigned state = 0, guint32 time = GDK_CURRENT_TIME) {
  GdkEvent* e = gdk_event_new(GDK_KEY_PRESS);
  e->key.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(widget)));
  e->key.send_event = TRUE;
  e->key.time = time;
  e->key.keyval = keyval;
  e->key.state = state;
  GdkKeymapKey* keys = nullptr;
  gint count = 0;
  if (gdk_keymap_get_entries_for_keyval(gdk_keymap_get_for_display(gtk_widget_get_display(widget)), keyval, &keys,
                                        &count) && count > 0) {
    e->key.hardware_keycode = static_cast<guint16>(keys[0].keycode);
    e->key.group = static_cast<guint8>(keys[0].group);
  }
  g_free(keys);
  gdk_event_set_device(e, gdk_seat_get_keyboard(gdk_display_get_default_seat(gtk_widget_get_display(widget))));
  Deliver(e);
}

inline void SendMotion(GtkWidget* widget, int x, int y) {
  GdkEvent* e = PointerEvent(widget, GDK_MOTION_NOTIFY);
  e->motion.x = x;
  e->motion.y = y;
  e->motion.time = GDK_CURRENT_TIME;
  Deliver(e);
}

inline void SendLeave(GtkWidget* widget) {
  GdkEvent* e = PointerEvent(widget, GDK_LEAVE_NOTIFY);
  e->crossing.mode = GDK_CROSSING_NORMAL;
  e->crossing.detail = GDK_NOTIFY_ANCESTOR;
  e->crossing.time = GDK_CURRENT_TIME;
  Deliver(e);
}

}  // namespace nebro::testing
