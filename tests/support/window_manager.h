// A real window manager (openbox) on the test's own X server, for behaviour that only exists
// under one: activation, focus handed back when a dialog closes, the close button.
#pragma once

#include <gdk/gdkx.h>
#include <gtk/gtk.h>
#include <signal.h>
#include <sys/wait.h>

#include <cstdlib>

#include "support/gui_helpers.h"

namespace nebro::testing {

// Starts openbox once per process and waits until it has announced itself on the root window.
inline bool StartWindowManager() {
  static pid_t manager = 0;
  if (manager > 0) return true;
  gchar* argv[] = {const_cast<gchar*>("openbox"), const_cast<gchar*>("--sm-disable"), nullptr};
  GPid pid = 0;
  if (!g_spawn_async(nullptr, argv, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, &pid, nullptr)) return false;
  manager = pid;
  std::atexit([] {
    kill(manager, SIGTERM);
    waitpid(manager, nullptr, 0);
  });
  GdkDisplay* display = gdk_display_get_default();
  const Atom check = gdk_x11_get_xatom_by_name_for_display(display, "_NET_SUPPORTING_WM_CHECK");
  return WaitUntil([&] {
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(GDK_DISPLAY_XDISPLAY(display), GDK_ROOT_WINDOW(), check, 0, 1, False, AnyPropertyType, &type,
                       &format, &count, &after, &data);
    if (data) XFree(data);
    return count > 0;
  }, 10);
}

}  // namespace nebro::testing
