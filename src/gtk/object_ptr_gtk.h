// Smart pointers for GLib, GObject, Pango and cairo objects: the releaser is part of the type, so
// no exit path forgets an unref.
#pragma once

#include <gtk/gtk.h>

#include <memory>

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

struct GStrvDeleter {
  void operator()(gchar** p) const { g_strfreev(p); }
};
using GStrvPtr = std::unique_ptr<gchar*, GStrvDeleter>;

struct FontDescriptionFree {
  void operator()(PangoFontDescription* d) const { if (d) pango_font_description_free(d); }
};
using FontDescriptionPtr = std::unique_ptr<PangoFontDescription, FontDescriptionFree>;

// A widget looked at later (when a worker has ended) that may have been destroyed meanwhile:
// get() is null once it is gone.
class WidgetWatch {
 public:
  explicit WidgetWatch(GtkWidget* widget) : widget_(widget) {
    if (widget_) g_object_add_weak_pointer(G_OBJECT(widget_), reinterpret_cast<gpointer*>(&widget_));
  }
  WidgetWatch(const WidgetWatch&) = delete;
  WidgetWatch& operator=(const WidgetWatch&) = delete;
  ~WidgetWatch() {
    if (widget_) g_object_remove_weak_pointer(G_OBJECT(widget_), reinterpret_cast<gpointer*>(&widget_));
  }
  GtkWidget* get() const { return widget_; }
  GtkWindow* window() const { return widget_ ? GTK_WINDOW(widget_) : nullptr; }

 private:
  GtkWidget* widget_;
};

}  // namespace nebro
