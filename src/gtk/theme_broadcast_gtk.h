// Theme changes as a broadcast: a window that shows theme colours subscribes while it exists, so
// the code that switches themes needs to know no window.
#pragma once

#include <gtk/gtk.h>

#include <functional>

namespace nebro {

// Calls `onChange` after every theme change until `widget` is destroyed. A null widget
// subscribes for the life of the process.
void FollowThemeChanges(GtkWidget* widget, std::function<void()> onChange);

// Tells every subscriber, in the order they subscribed.
void BroadcastThemeChange();

}  // namespace nebro
