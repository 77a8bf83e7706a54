// The shell every window of the program is built in: its title, the theme's colours, its owner,
// Escape to close, and repainting when the theme changes.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <string>

namespace nebro {

struct ThemedWindowOptions {
  GtkWindow* parent = nullptr;  // kept above it and centred on it
  std::string title;
  std::string name;  // the widget name: a CSS id, and how tests find the window
  bool modal = false;
  bool resizable = true;
  bool closeOnEscape = true;  // Escape sends a close request, which the window may refuse
};

// A new toplevel in the theme's dialog colours. `restyle` (may be empty) repaints the window's
// own parts; it runs after every theme change while the window exists.
GtkWidget* CreateThemedWindow(const ThemedWindowOptions& options, std::function<void(GtkWidget* window)> restyle = {});

}  // namespace nebro
