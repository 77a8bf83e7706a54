// Styling widgets with CSS of our own, and finding them again by name.
#pragma once

#include <gtk/gtk.h>

#include <string>

namespace nebro {

// Replaces a widget's own CSS with `css` (one provider per widget, kept on the widget).
void SetWidgetCss(GtkWidget* widget, const std::string& css);

// Adds `css` to a widget and every widget below it: a provider reaches only the widget whose
// style context holds it.
void AddCssToTree(GtkWidget* widget, GtkCssProvider* css);

// Finds a descendant by its widget name (the control ids are used as names).
GtkWidget* FindChildByName(GtkWidget* root, const char* name);

}  // namespace nebro
