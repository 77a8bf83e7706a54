#include "app/gtk_util_gtk.h"

#include <cmath>
#include <cstring>

namespace nebro {

void SetSourceColour(cairo_t* cr, Colour c) {
  cairo_set_source_rgb(cr, RedOf(c) / 255.0, GreenOf(c) / 255.0, BlueOf(c) / 255.0);
}

void RoundedRectangle(cairo_t* cr, double x, double y, double w, double h, double r) {
  cairo_new_sub_path(cr);
  cairo_arc(cr, x + w - r, y + r, r, -M_PI / 2, 0);
  cairo_arc(cr, x + w - r, y + h - r, r, 0, M_PI / 2);
  cairo_arc(cr, x + r, y + h - r, r, M_PI / 2, M_PI);
  cairo_arc(cr, x + r, y + r, r, M_PI, 3 * M_PI / 2);
  cairo_close_path(cr);
}

void DrawPushButton(GtkWidget* button, cairo_t* cr, const ButtonLook& look, const char* label) {
  const double w = gtk_widget_get_allocated_width(button);
  const double h = gtk_widget_get_allocated_height(button);
  RoundedRectangle(cr, 0.5, 0.5, w - 1, h - 1, 4);
  SetSourceColour(cr, look.face);
  cairo_fill_preserve(cr);
  SetSourceColour(cr, look.border);
  cairo_set_line_width(cr, 1);
  cairo_stroke(cr);

  PangoLayout* layout = gtk_widget_create_pango_layout(button, label);
  PangoFontDescription* font = pango_font_description_from_string("Segoe UI 9");
  pango_layout_set_font_description(layout, font);
  int tw, th;
  pango_layout_get_pixel_size(layout, &tw, &th);
  SetSourceColour(cr, look.text);
  cairo_move_to(cr, std::floor((w - tw) / 2), std::floor((h - th) / 2));
  pango_cairo_show_layout(cr, layout);
  pango_font_description_free(font);
  g_object_unref(layout);
}

void SetWidgetCss(GtkWidget* widget, const std::string& css) {
  auto* provider = static_cast<GtkCssProvider*>(g_object_get_data(G_OBJECT(widget), "nebro-css"));
  if (!provider) {
    provider = gtk_css_provider_new();
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(provider),
                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_set_data_full(G_OBJECT(widget), "nebro-css", provider, g_object_unref);
  }
  gtk_css_provider_load_from_data(provider, css.c_str(), -1, nullptr);
}

GtkWidget* FindChildByName(GtkWidget* root, const char* name) {
  if (!root) return nullptr;
  if (std::strcmp(gtk_widget_get_name(root), name) == 0) return root;
  if (!GTK_IS_CONTAINER(root)) return nullptr;
  GList* children = gtk_container_get_children(GTK_CONTAINER(root));
  GtkWidget* found = nullptr;
  for (GList* l = children; l && !found; l = l->next) found = FindChildByName(GTK_WIDGET(l->data), name);
  g_list_free(children);
  return found;
}

}  // namespace nebro
