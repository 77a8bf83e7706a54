// Small GTK and cairo helpers shared by the windows: colours, rounded buttons, CSS.
#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <string>

#include "common/colour.h"

namespace nebro {

struct GObjectUnref {
  void operator()(gpointer p) const { if (p) g_object_unref(p); }
};
template <typename T>
using GObjectPtr = std::unique_ptr<T, GObjectUnref>;

struct GFreeDeleter {
  void operator()(gpointer p) const { g_free(p); }
};
using GCharPtr = std::unique_ptr<gchar, GFreeDeleter>;

void SetSourceColour(cairo_t* cr, Colour c);
void RoundedRectangle(cairo_t* cr, double x, double y, double w, double h, double radius);

// Paints an owner-drawn push button: face, outline, centred label.
struct ButtonLook {
  Colour face, border, text;
};
void DrawPushButton(GtkWidget* button, cairo_t* cr, const ButtonLook& look, const char* label);

// Replaces a widget's own CSS with `css` (one provider per widget, kept on the widget).
void SetWidgetCss(GtkWidget* widget, const std::string& css);

// Finds a descendant by its widget name (the control ids are used as names).
GtkWidget* FindChildByName(GtkWidget* root, const char* name);

}  // namespace nebro
