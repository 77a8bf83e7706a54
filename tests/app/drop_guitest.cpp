// Files dragged from another program (here a second window of this X server offering a URI list)
// and dropped with the real XDND protocol: on the text, as on the rest of the window, the first
// file opens.
#include <gtest/gtest.h>

#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::testing;

namespace {

// Runs xdotool with `args` while this process keeps answering the X server.
void Xdotool(const std::string& args) {
  const std::string command = "xdotool " + args;
  gchar* argv[] = {const_cast<gchar*>("/bin/sh"), const_cast<gchar*>("-c"), const_cast<gchar*>(command.c_str()), nullptr};
  GPid pid = 0;
  bool done = false;
  ASSERT_TRUE(g_spawn_async(nullptr, argv, nullptr, G_SPAWN_DO_NOT_REAP_CHILD, nullptr, nullptr, &pid, nullptr));
  g_child_watch_add(pid, [](GPid p, gint, gpointer flag) {
    *static_cast<bool*>(flag) = true;
    g_spawn_close_pid(p);
  }, &done);
  ASSERT_TRUE(WaitUntil([&] { return done; }));
}

void OnDragDataGet(GtkWidget* w, GdkDragContext*, GtkSelectionData* data, guint, guint, gpointer) {
  gchar* list[] = {static_cast<gchar*>(g_object_get_data(G_OBJECT(w), "uris")), nullptr};
  gtk_selection_data_set_uris(data, list);
}

void SetFlag(bool* flag) { *flag = true; }

class DropTest : public MainWindowTest {
 protected:
  // Drags a URI list from a window of its own at (1000, 700) to the window point (x, y) of the
  // main window, step by step: each step waits until GTK has seen the previous one.
  void DragTo(int x, int y, const std::string& uris) {
    GtkWidget* source = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_move(GTK_WINDOW(source), 1000, 700);
    gtk_window_set_default_size(GTK_WINDOW(source), 80, 80);
    gtk_drag_source_set(source, GDK_BUTTON1_MASK, nullptr, 0, GDK_ACTION_COPY);
    gtk_drag_source_add_uri_targets(source);
    g_object_set_data_full(G_OBJECT(source), "uris", g_strdup(uris.c_str()), g_free);
    g_signal_connect(source, "drag-data-get", G_CALLBACK(OnDragDataGet), nullptr);
    bool begun = false, over = false, ended = false;
    g_signal_connect_swapped(source, "drag-begin", G_CALLBACK(SetFlag), &begun);
    g_signal_connect_swapped(source, "drag-end", G_CALLBACK(SetFlag), &ended);
    const gulong overEditor = g_signal_connect_swapped(app::gMain.editor, "drag-motion", G_CALLBACK(SetFlag), &over);
    const gulong overWindow = g_signal_connect_swapped(app::gMain.window, "drag-motion", G_CALLBACK(SetFlag), &over);
    gtk_widget_show(source);
    Pump(source);

    Xdotool("mousemove 1040 740 mousedown 1 mousemove 1060 760 mousemove 1070 770");
    EXPECT_TRUE(WaitUntil([&] { return begun; }, 10)) << "the drag never began";
    int rootX = 0, rootY = 0;
    gdk_window_get_origin(gtk_widget_get_window(app::gMain.window), &rootX, &rootY);
    Xdotool("mousemove " + std::to_string(rootX + x) + " " + std::to_string(rootY + y) + " mousemove " +
            std::to_string(rootX + x + 4) + " " + std::to_string(rootY + y + 4));
    EXPECT_TRUE(WaitUntil([&] { return over; }, 10)) << "the drag never reached the window";
    Xdotool("mouseup 1");
    // The source must live until the drop has taken its data.
    EXPECT_TRUE(WaitUntil([&] { return ended; }, 10)) << "the drag never ended";
    g_signal_handler_disconnect(app::gMain.editor, overEditor);
    g_signal_handler_disconnect(app::gMain.window, overWindow);
    gtk_widget_destroy(source);
  }
};

}  // namespace

TEST_F(DropTest, AFileDroppedOnTheTextOrTheToolbarOpens) {
  const std::string first = WriteFile("first.txt", "dropped on the text");
  const std::string second = WriteFile("second.txt", "dropped on the toolbar");
  int x = 0, y = 0;
  gtk_widget_translate_coordinates(app::gMain.editor, app::gMain.window, 300, 200, &x, &y);
  DragTo(x, y, "file://" + first + "\r\nfile://" + second);  // only the first file counts
  EXPECT_TRUE(WaitUntil([&] { return app::gMain.doc.path == first; }, 10)) << "document: " << app::gMain.doc.path;
  EXPECT_EQ(Text(), "dropped on the text");

  gtk_widget_translate_coordinates(app::gMain.toolbar, app::gMain.window, 4, 4, &x, &y);
  DragTo(x, y, "file://" + second);
  EXPECT_TRUE(WaitUntil([&] { return app::gMain.doc.path == second; }, 10)) << "document: " << app::gMain.doc.path;
  EXPECT_EQ(Text(), "dropped on the toolbar");
}
