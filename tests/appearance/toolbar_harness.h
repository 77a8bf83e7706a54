// A window for the GUI tests of the editor's companions: the toolbar on top, the line-number
// margin left of a real Scintilla editor, the status bar at the bottom, wired to the editor's
// notifications the way the main window wires them.
#pragma once

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "app/main_window_gtk.h"
#include "appearance/line_numbers_gtk.h"
#include "appearance/status_bar_gtk.h"
#include "appearance/theme_gtk.h"
#include "appearance/toolbar_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"
#include "settings/settings.h"

namespace nebro::testing {

// Runs the main loop until nothing is pending, then lets the window finish a queued layout so
// that allocations are up to date.
// A resize of the toplevel takes a round trip to the X server (request, then the configure
// notification), hence two rounds.
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

// Repaints the whole window and returns once the frame has been drawn and the X server has it
// (for screenshots taken from outside the process).
inline void PaintAndWait(GtkWidget* window) {
  GdkFrameClock* clock = gtk_widget_get_frame_clock(window);
  if (!clock) return;
  bool painted = false;
  const gulong handler = g_signal_connect_swapped(clock, "after-paint", G_CALLBACK(+[](bool* flag) { *flag = true; }), &painted);
  gtk_widget_queue_draw(window);
  while (!painted) g_main_context_iteration(nullptr, TRUE);
  g_signal_handler_disconnect(clock, handler);
  gdk_display_sync(gtk_widget_get_display(window));
}

inline void OnHarnessNotify(GtkWidget*, gint, sci::SCNotification* n, gpointer) {
  switch (n->nmhdr.code) {
    case sci::SCN_UPDATEUI:
      UpdateStatusBar();
      UpdateMargin();
      break;
    case sci::SCN_MODIFIED:
      if (n->linesAdded != 0) UpdateMargin();
      break;
    case sci::SCN_ZOOM:
      UpdateMargin();
      UpdateStatusBar();
      break;
    default: break;
  }
}

class ChromeWindow {
 public:
  ChromeWindow(int width, int height) {
    gMain = MainWindow();
    window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_default_size(GTK_WINDOW(window), width, height);
    editor = sci::NewEditor();
    gMain.window = window;
    gMain.editor = editor;
    sci::Send(editor, sci::SCI_SETCODEPAGE, sci::SC_CP_UTF8);
    sci::Send(editor, sci::SCI_SETEOLMODE, sci::SC_EOL_CRLF);  // as a new document has
    ApplyTheme();

    toolbar = CreateToolbar();
    margin = CreateLineNumberMargin();
    statusBar = CreateStatusBar();
    gMain.toolbar = toolbar;
    gMain.margin = margin;
    gMain.statusBar = statusBar;

    box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    gtk_box_pack_start(GTK_BOX(box), toolbar, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(row), margin, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(row), editor, TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(box), row, TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(box), statusBar, FALSE, FALSE, 0);
    gtk_container_add(GTK_CONTAINER(window), box);
    g_signal_connect(editor, sci::kNotifySignal, G_CALLBACK(OnHarnessNotify), nullptr);
    gtk_widget_show_all(window);
    Pump(window);
    UpdateMargin();
    UpdateStatusBar();
    Pump(window);
  }
  ~ChromeWindow() {
    gtk_widget_destroy(window);
    gMain = MainWindow();
    Pump();
  }
  ChromeWindow(const ChromeWindow&) = delete;
  ChromeWindow& operator=(const ChromeWindow&) = delete;

  sci::sptr_t Send(long message, sci::uptr_t w = 0, sci::sptr_t l = 0) { return sci::Send(editor, message, w, l); }
  void SetText(const std::string& text) { sci::SendPtr(editor, sci::SCI_SETTEXT, 0, text.c_str()); }
  int Width(GtkWidget* w) { return gtk_widget_get_allocated_width(w); }

  GtkWidget* window = nullptr;
  GtkWidget* box = nullptr;
  GtkWidget* editor = nullptr;
  GtkWidget* toolbar = nullptr;
  GtkWidget* margin = nullptr;
  GtkWidget* statusBar = nullptr;
};

// Settings at their defaults in a throw-away folder, fonts aliased, Scintilla loaded.
class ChromeTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    char name[] = "/tmp/nebro-chrome-XXXXXX";
    configDir = mkdtemp(name);
    SetConfigRoot(configDir);
    LoadFontAliases();
    if (!sci::ScintillaLoaded()) {
      ASSERT_EQ(sci::LoadScintilla(), sci::LibraryLoad::Ok);
    }
  }
  static void TearDownTestSuite() { std::filesystem::remove_all(configDir); }
  void SetUp() override {
    SetDefaultSettings(gSettings);
    gSettings.lineNumbers = true;
  }

  static inline std::string configDir;
};

// A synthesized mouse event delivered through the main loop's dispatcher, as the X server's
// would be.
inline void SendButton(GtkWidget* widget, GdkEventType type, int x, int y, unsigned button = 1) {
  GdkEvent* e = gdk_event_new(type);
  e->button.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(widget)));
  e->button.x = x;
  e->button.y = y;
  e->button.button = button;
  e->button.time = GDK_CURRENT_TIME;
  gdk_event_set_device(e, gdk_seat_get_pointer(gdk_display_get_default_seat(gtk_widget_get_display(widget))));
  gtk_main_do_event(e);
  gdk_event_free(e);
}

inline void SendMotion(GtkWidget* widget, int x, int y) {
  GdkEvent* e = gdk_event_new(GDK_MOTION_NOTIFY);
  e->motion.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(widget)));
  e->motion.x = x;
  e->motion.y = y;
  e->motion.time = GDK_CURRENT_TIME;
  gdk_event_set_device(e, gdk_seat_get_pointer(gdk_display_get_default_seat(gtk_widget_get_display(widget))));
  gtk_main_do_event(e);
  gdk_event_free(e);
}

inline void SendLeave(GtkWidget* widget) {
  GdkEvent* e = gdk_event_new(GDK_LEAVE_NOTIFY);
  e->crossing.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(widget)));
  e->crossing.mode = GDK_CROSSING_NORMAL;
  e->crossing.detail = GDK_NOTIFY_ANCESTOR;
  e->crossing.time = GDK_CURRENT_TIME;
  gdk_event_set_device(e, gdk_seat_get_pointer(gdk_display_get_default_seat(gtk_widget_get_display(widget))));
  gtk_main_do_event(e);
  gdk_event_free(e);
}

// The widget as it paints itself, in an image of its allocated size.
struct Snapshot {
  cairo_surface_t* surface = nullptr;
  int width = 0, height = 0;
  explicit Snapshot(GtkWidget* widget) {
    width = gtk_widget_get_allocated_width(widget);
    height = gtk_widget_get_allocated_height(widget);
    surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_t* cr = cairo_create(surface);
    gtk_widget_draw(widget, cr);
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

inline int ColourDistance(Colour a, Colour b) {
  return std::abs(static_cast<int>(RedOf(a)) - static_cast<int>(RedOf(b))) +
         std::abs(static_cast<int>(GreenOf(a)) - static_cast<int>(GreenOf(b))) +
         std::abs(static_cast<int>(BlueOf(a)) - static_cast<int>(BlueOf(b)));
}

}  // namespace nebro::testing
